#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalGisDataService.h"
#include "host/local/LocalHostServices.h"
#include "host/local/LocalRegionSelectionStore.h"
#include "samplehost/SampleHost.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Row.h"
#include "platform/geodatabase/Table.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/Connection.h"
#include "selection/EQMapSelDlg.h"
#include "support/HostFixture.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <tuple>

namespace brevant::selection {
namespace {

namespace fs = std::filesystem;
namespace gdb = platform::geodatabase;
using platform::automation::Variant;

/// The reference host, with every copy's clause noted.
class NotingGis : public host::local::LocalGisDataService {
public:
    NotingGis(fs::path root, std::vector<std::string>& clauses)
        : LocalGisDataService(std::move(root)), m_clauses(clauses)
    {
    }
    void CopyFeatures(const Variant& source, const Variant& target,
                      const std::string& whereClause) override
    {
        m_clauses.push_back(whereClause);
        LocalGisDataService::CopyFeatures(source, target, whereClause);
    }

private:
    std::vector<std::string>& m_clauses;
};

class NotingHost : public host::local::LocalHostServices {
public:
    explicit NotingHost(fs::path root) : LocalHostServices(root), m_root(std::move(root)) {}
    std::shared_ptr<host::GisDataService> createGisDataService() override
    {
        return std::make_shared<NotingGis>(m_root, clauses);
    }
    std::vector<std::string> clauses;

private:
    fs::path m_root;
};

class CreateBlockData : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new test::TempDir;
        samplehost::writeSampleHost(s_dir->path() / "host", samplehost::SampleSize::Small, 4);
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }

    void SetUp() override
    {
        m_host = std::make_shared<NotingHost>(root());
        host::installHostServices(m_host);
        context::resetStudyRegionContext();
        clearCounties();
        m_dialog = std::make_shared<EQMapSelDlg>();
    }
    void TearDown() override
    {
        m_dialog.reset();
        context::resetStudyRegionContext();
        host::installHostServices(nullptr);
    }

    static fs::path root() { return s_dir->path() / "host"; }
    static std::string stateFolder(const std::string& abbreviation)
    {
        return host::local::HostRoot::load(root()).stateDataFolder() + abbreviation + "/";
    }

    static std::shared_ptr<platform::tabular::Connection> regionDatabase()
    {
        const auto host = host::local::HostRoot::load(root());
        return platform::tabular::Connection::connect(
            "sqlite:" + host.regionDatabasePath(host.currentRegion()).string());
    }

    static void clearCounties()
    {
        host::local::LocalRegionSelectionStore(root()).GetRegionUnits(1);
        regionDatabase()->execute("DELETE FROM RegionCounties");
    }

    /// Stores county codes as chosen, through the store the form writes to.
    static void chooseCounties(const std::vector<std::string>& codes)
    {
        host::local::LocalRegionSelectionStore store(root());
        auto units = store.OpenRegionUnits(1, true).objectAs<platform::tabular::Recordset>();
        for (const auto& code : codes) {
            units->addNew();
            units->setValue(0, code);
            units->setValue(1, std::string("a state"));
        }
        store.SaveRegionUnits(units);
    }

    /// Stores units of a level (column 0, column 1, the host's flag) as chosen.
    static void chooseUnits(int16_t level,
                            const std::vector<std::tuple<std::string, std::string, int>>& units)
    {
        host::local::LocalRegionSelectionStore store(root());
        regionDatabase()->execute(std::string("DELETE FROM ") +
                                  host::local::LocalRegionSelectionStore::tableOf(level));
        auto records = store.OpenRegionUnits(level, true).objectAs<platform::tabular::Recordset>();
        for (const auto& [first, second, flag] : units) {
            records->addNew();
            records->setValue(0, first);
            records->setValue(1, second);
            records->setValue(2, flag);
        }
        store.SaveRegionUnits(records);
    }

    /// The values of one field over a class's rows.
    static std::multiset<std::string> column(const Variant& featureClass, const std::string& name)
    {
        auto table = featureClass.objectAs<gdb::Table>();
        std::multiset<std::string> values;
        gdb::Cursor cursor = table->search();
        gdb::Row row;
        const int index = table->fields().findField(name);
        while (cursor.next(row)) {
            values.insert(row.value(index).toString());
        }
        return values;
    }
    /// The codes of a statewide class whose code starts with one of `prefixes`.
    static std::multiset<std::string> statewide(const std::string& className,
                                                const std::string& codeField,
                                                const std::set<std::string>& prefixes)
    {
        auto table =
            gdb::Workspace::open(
                host::local::HostRoot::load(root()).stateDataFolder() + "syboundary.mdb", true)
                .openTable(className);
        std::multiset<std::string> codes;
        gdb::Cursor cursor = table->search();
        gdb::Row row;
        const int index = table->fields().findField(codeField);
        while (cursor.next(row)) {
            const std::string code = row.value(index).toString();
            for (const auto& prefix : prefixes) {
                if (code.rfind(prefix, 0) == 0) {
                    codes.insert(code);
                }
            }
        }
        return codes;
    }

    /// The block codes of a block class, by their county field (not by the tract code).
    static std::multiset<std::string> blocks(const std::string& database,
                                             const std::set<std::string>& counties = {})
    {
        auto table = gdb::Workspace::open(database, true).openTable("hzCensusBlock");
        std::multiset<std::string> codes;
        gdb::Cursor cursor = table->search();
        gdb::Row row;
        const int county = table->fields().findField("CountyFips");
        const int block = table->fields().findField("CensusBlock");
        while (cursor.next(row)) {
            if (counties.empty() || counties.count(row.value(county).toString()) > 0) {
                codes.insert(row.value(block).toString());
            }
        }
        return codes;
    }
    static std::multiset<std::string> regionBlocks()
    {
        return blocks(host::local::HostRoot::load(root()).systemDataFolder() + "temp.mdb");
    }
    static std::vector<std::string> countiesOf(const std::string& abbreviation)
    {
        std::set<std::string> counties;
        for (const auto& block : blocks(stateFolder(abbreviation) + "bndrygbs.mdb")) {
            counties.insert(block.substr(0, 5));
        }
        return {counties.begin(), counties.end()};
    }
    std::string errorLog() const
    {
        std::ifstream in(context::studyRegionContext().ErrorLogPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    static test::TempDir* s_dir;
    std::shared_ptr<NotingHost> m_host;
    std::shared_ptr<EQMapSelDlg> m_dialog;
};

test::TempDir* CreateBlockData::s_dir = nullptr;

TEST_F(CreateBlockData, CopiesTheChosenCountiesBlocksAppendingPerStateAndReplacingOnTheFirst)
{
    const auto california = countiesOf("CA");
    const auto nevada = countiesOf("NV");
    ASSERT_GE(california.size(), 3u);
    ASSERT_GE(nevada.size(), 1u);
    chooseCounties({california[0], california[2], nevada[0]});
    const auto caBlocks =
        blocks(stateFolder("CA") + "bndrygbs.mdb", {california[0], california[2]});
    const auto nvBlocks = blocks(stateFolder("NV") + "bndrygbs.mdb", {nevada[0]});
    ASSERT_FALSE(caBlocks.empty());

    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    EXPECT_EQ(regionBlocks(), caBlocks);
    ASSERT_EQ(m_host->clauses.size(), 1u);
    EXPECT_EQ(m_host->clauses[0], "Left(Tract,5) In ('" + california[0] + "','" + california[2] +
                                      "','" + nevada[0] + "')");

    m_dialog->CreateBlockData(Variant(false), stateFolder("NV"));
    auto both = caBlocks;
    both.insert(nvBlocks.begin(), nvBlocks.end());
    EXPECT_EQ(regionBlocks(), both) << "a later state adds its blocks";

    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    EXPECT_EQ(regionBlocks(), caBlocks) << "the first state of a new region replaces them";
    EXPECT_EQ(errorLog(), "");
}

TEST_F(CreateBlockData, SendsAtMost2001CodesACopy)
{
    const auto california = countiesOf("CA");
    std::vector<std::string> codes;
    for (int i = 0; i < 2000; ++i) {
        codes.push_back("99" + std::to_string(100 + i));
    }
    codes.push_back(california[0]);
    chooseCounties(codes);
    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    ASSERT_EQ(m_host->clauses.size(), 1u) << "2001 codes go in one copy";

    // The 2002nd code goes alone in a second copy, and its blocks arrive too. Saving replaces
    // a level's units, so all 2002 are chosen again.
    codes.push_back(california[1]);
    chooseCounties(codes);
    m_host->clauses.clear();
    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    ASSERT_EQ(m_host->clauses.size(), 2u);
    EXPECT_EQ(m_host->clauses[1], "Left(Tract,5) In ('" + california[1] + "')");
    EXPECT_EQ(std::count(m_host->clauses[0].begin(), m_host->clauses[0].end(), '\''), 2 * 2001);
    EXPECT_EQ(regionBlocks(),
              blocks(stateFolder("CA") + "bndrygbs.mdb", {california[0], california[1]}));
}

TEST_F(CreateBlockData, NoChosenCountyIsRecordedAfterTheFirstStateEmptiedTheBlocks)
{
    chooseCounties({countiesOf("CA")[0]});
    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    ASSERT_FALSE(regionBlocks().empty());
    clearCounties();

    m_dialog->CreateBlockData(Variant(true), stateFolder("CA"));
    EXPECT_TRUE(regionBlocks().empty());
    EXPECT_NE(errorLog().find(" CreateBlockData"), std::string::npos) << errorLog();

    // A missing state database is recorded too, and nothing is raised to the host.
    const std::size_t before = errorLog().size();
    m_dialog->CreateBlockData(Variant(false), stateFolder("XX"));
    EXPECT_GT(errorLog().size(), before);
}

using GetSelLayer = CreateBlockData;

TEST_F(GetSelLayer, CandidatesAreTheUnitsInsideTheChosenParentsAndReplaceTheLastOnes)
{
    chooseUnits(0, {{"California", "06", 0}, {"Oregon", "41", 0}});
    m_dialog->OpenLevelClass(1);
    EXPECT_EQ(m_dialog->levelDatabase(),
              host::local::HostRoot::load(root()).stateDataFolder() + "syboundary.mdb");
    Variant candidates;
    m_dialog->GetSelLayer(1, candidates);
    const auto counties = statewide("syCounty", "CountyFips", {"06", "41"});
    ASSERT_FALSE(counties.empty());
    EXPECT_EQ(column(candidates, "CountyFips"), counties);
    EXPECT_EQ(m_host->clauses.back(), "StateFips In ('06','41')") << "a state's code is column 1";
    EXPECT_FALSE(m_dialog->keepCurSel());

    // Tracts of two counties: the county codes stand in column 0, and the counties chosen
    // before are gone from the candidates.
    const auto someCounties = countiesOf("CA");
    chooseUnits(1, {{someCounties[0], "California", 0}, {someCounties[1], "California", 0}});
    m_dialog->OpenLevelClass(2);
    m_dialog->GetSelLayer(2, candidates);
    EXPECT_EQ(column(candidates, "Tract"),
              statewide("sytract", "Tract", {someCounties[0], someCounties[1]}));
    EXPECT_EQ(column(candidates, "CountyFips").count(someCounties[2]), 0u);
    EXPECT_EQ(errorLog(), "");
}

TEST_F(GetSelLayer, AFlaggedParentKeepsTheCurrentSelection)
{
    chooseUnits(0, {{"California", "06", 0}, {"Nevada", "32", 2}, {"Oregon", "41", 0}});
    m_dialog->OpenLevelClass(1);
    Variant candidates;
    m_dialog->GetSelLayer(1, candidates);
    EXPECT_TRUE(m_dialog->keepCurSel());

    // Once set it stays set, whatever the flags of the next level's parents.
    chooseUnits(0, {{"California", "06", 0}});
    m_dialog->GetSelLayer(1, candidates);
    EXPECT_TRUE(m_dialog->keepCurSel());
}

TEST_F(GetSelLayer, AnEmptyParentLevelIsRecordedAndLeavesNoCandidates)
{
    chooseUnits(0, {{"California", "06", 0}});
    m_dialog->OpenLevelClass(1);
    Variant candidates;
    m_dialog->GetSelLayer(1, candidates);
    ASSERT_FALSE(column(candidates, "CountyFips").empty());

    chooseUnits(0, {});
    m_dialog->GetSelLayer(1, candidates);
    EXPECT_TRUE(column(candidates, "CountyFips").empty()) << "emptied before the parents failed";
    EXPECT_NE(errorLog().find(" GetSelLayer"), std::string::npos) << errorLog();
}

using HazardDialogData = CreateBlockData;

/// The object identifiers and key values of a scenario class, in stored order.
std::vector<std::pair<int64_t, std::string>>
scenarioRows(const fs::path& root, const std::string& className, const std::string& keyField)
{
    const auto host = host::local::HostRoot::load(root);
    auto table =
        gdb::Workspace::open(host.scenarioFolder() + "SCENARIO.mdb", true).openTable(className);
    std::vector<std::pair<int64_t, std::string>> rows;
    gdb::Cursor cursor = table->search();
    gdb::Row row;
    const int key = table->fields().findField(keyField);
    while (cursor.next(row)) {
        rows.emplace_back(row.oid(), row.value(key).toString());
    }
    return rows;
}

TEST_F(HazardDialogData, AHistoricalEpicentreOrFaultComesSelectedByItsIdentifier)
{
    const auto epicentres = scenarioRows(root(), "eqEpicenter", "eqEpicenterId");
    ASSERT_GE(epicentres.size(), 2u);
    const auto epicentre = m_dialog->PrepareHazardSelection(1, epicentres[1].second);
    EXPECT_EQ(epicentre.dlgType, 1);
    EXPECT_EQ(epicentre.caption, "Please Select Historical Epicenter");
    EXPECT_EQ(epicentre.boundaryLayer->name(), "Region Boundary");
    EXPECT_EQ(epicentre.layer->name(), epicentre.layer->featureClass()->aliasName());
    EXPECT_EQ(epicentre.layer->selectionSet().ids(), std::vector<int64_t>{epicentres[1].first});
    EXPECT_EQ(epicentre.epicLayer, nullptr);

    const auto faults = scenarioRows(root(), "eqFault", "eqFaultId");
    ASSERT_FALSE(faults.empty());
    const auto fault = m_dialog->PrepareHazardSelection(2, faults.back().second);
    EXPECT_EQ(fault.caption, "Please Select Source Fault");
    EXPECT_EQ(fault.layer->selectionSet().ids(), std::vector<int64_t>{faults.back().first});

    EXPECT_TRUE(
        m_dialog->PrepareHazardSelection(2, "no such fault").layer->selectionSet().isEmpty());
}

TEST_F(HazardDialogData, DefiningAnEpicentreEmptiesTheLastOneAndOnlySMeansTheChosenFault)
{
    const auto& ctx = context::studyRegionContext();
    const auto host = host::local::HostRoot::load(root());
    const Variant points = ctx.GisDataService->OpenFeatureClass(
        "HazardSelection", host.systemDataFolder() + "temp.mdb");
    // An earlier definition's point, taken from the epicentres.
    ctx.GisDataService->CopyFeatures(
        ctx.GisDataService->OpenFeatureClass("eqEpicenter", host.scenarioFolder() + "SCENARIO.mdb"),
        points, "");
    ASSERT_GT(points.objectAs<gdb::Table>()->rowCount(), 0);

    const auto faults = scenarioRows(root(), "eqFault", "eqFaultId");
    const auto onFault = m_dialog->PrepareEpicenterDefinition("S", faults[0].second);
    EXPECT_EQ(points.objectAs<gdb::Table>()->rowCount(), 0);
    EXPECT_EQ(onFault.dlgType, 3);
    EXPECT_EQ(onFault.caption, "Please define epicenter for the selected source fault");
    EXPECT_EQ(onFault.layer->selectionSet().ids(), std::vector<int64_t>{faults[0].first});
    ASSERT_NE(onFault.epicLayer, nullptr);
    EXPECT_EQ(onFault.epicLayer->featureClass()->aliasName(),
              points.objectAs<gdb::Table>()->aliasName());

    for (const char* kind : {"s", "", "A"}) {
        const auto arbitrary = m_dialog->PrepareEpicenterDefinition(kind, faults[0].second);
        EXPECT_EQ(arbitrary.dlgType, 4) << kind;
        EXPECT_EQ(arbitrary.caption, "Please define epicenter for arbitrary event");
        EXPECT_TRUE(arbitrary.layer->selectionSet().isEmpty()) << kind;
    }
    EXPECT_TRUE(
        m_dialog->PrepareEpicenterDefinition("S", "no such fault").layer->selectionSet().isEmpty());
}

} // namespace
} // namespace brevant::selection
