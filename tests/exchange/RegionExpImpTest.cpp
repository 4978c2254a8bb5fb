#include "BrevantClasses.h"

#include "host/local/HostRoot.h"
#include "host/local/LocalScenarioService.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/MemberTable.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::exchange {
namespace {

namespace automation = platform::automation;
namespace geodatabase = platform::geodatabase;
namespace fs = std::filesystem;
using automation::ArgList;
using automation::Variant;
using host::local::HostFolder;
using host::local::HostRoot;
using host::local::LocalScenarioService;
using host::local::RegionDatabase;
using platform::geometry::Geometry;

/// Two regions in the west half; Testville's scenario 3 is a source scenario with a fault.
class ScenarioExchange : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        addRegion("Elsewhere", 2, true, false, true);
        for (const auto& region : {"Testville", "Elsewhere"}) {
            RegionDatabase db(HostRoot::load(root()).regionDatabasePath(region));
            db.write("GENERAL", "EorW", "W");
            db.write("PESH", "ScenarioID", "0");
        }
        const HostRoot host = HostRoot::load(root());
        for (const auto& [folder, file] : {std::pair{HostFolder::Scenario, "SrScenario.mdb"},
                                           std::pair{HostFolder::System,
                                                     "HU/WindField/huStormTrack.mdb"}}) {
            const fs::path base(folder == HostFolder::Scenario ? host.scenarioFolder()
                                                               : host.systemDataFolder());
            fs::create_directories((base / file).parent_path());
            host::local::createDatabase(*host::local::findDatabase(folder, file), base / file);
        }
        m_scenarios = fs::path(host.scenarioFolder()) / "SrScenario.mdb";
        addFault(3, -122.0);
        addFault(4, -121.0);
        LocalScenarioService::putScenario(root(), 3, "S", "Hayward");
        LocalScenarioService::putScenario(root(), 4, "D", "Deterministic");
    }

    void addFault(int id, double x)
    {
        const auto faults =
            geodatabase::Workspace::open(m_scenarios).openFeatureClass("eqSrWestFault");
        geodatabase::InsertCursor insert = faults->insert();
        geodatabase::Row row = faults->createRow();
        row.setShape(Geometry::polyline({{{x, 37.0}, {x, 38.0}}}));
        row.setValue(faults->findField("eqScenarioId"), id);
        insert.insertRow(row);
    }

    /// eqScenarioId and first x of every western fault, in storage order.
    std::vector<std::pair<int, double>> westernFaults() const
    {
        const auto faults =
            geodatabase::Workspace::open(m_scenarios).openFeatureClass("eqSrWestFault");
        std::vector<std::pair<int, double>> found;
        geodatabase::Cursor cursor = faults->search();
        geodatabase::Row row;
        while (cursor.next(row)) {
            found.emplace_back(row.value(faults->findField("eqScenarioId")).toInt32(),
                               row.shape().firstPoint().x);
        }
        return found;
    }

    Variant call(const std::string& member, ArgList args)
    {
        return automation::call(*m_object, member, args);
    }

    std::string carriedFault(const std::string& region) const
    {
        return regionFolder(region) + "eqSrFault.shp";
    }

    std::shared_ptr<automation::AutomationObject> m_object = nullptr;
    fs::path m_scenarios;
};

TEST_F(ScenarioExchange, ASourceScenarioTravelsWithItsFaultUnderANewNumber)
{
    m_object = classes().create("Brevant.RegionExpImp");
    setSetting("PESH", "ScenarioID", "0");
    call("ExportCurrentEQScenario", {Variant("Testville")});
    EXPECT_FALSE(fs::exists(carriedFault("Testville"))) << "scenario 0 exports nothing";

    setSetting("PESH", "ScenarioID", "3");
    call("ExportCurrentEQScenario", {Variant("Testville")});
    ASSERT_TRUE(fs::exists(carriedFault("Testville")));

    // The region folder arrives as another region's: its record and fault come in as
    // scenario 5, the next free number, and the region points to it.
    for (const char* part : {".shp", ".shx", ".dbf", ".prj"}) {
        fs::copy_file(regionFolder("Testville") + "eqSrFault" + part,
                      regionFolder("Elsewhere") + "eqSrFault" + part);
    }
    fs::copy_file(HostRoot::load(root()).regionDatabasePath("Testville"),
                  HostRoot::load(root()).regionDatabasePath("Elsewhere"),
                  fs::copy_options::overwrite_existing);
    call("ImportCurrentEQScenario", {Variant("Elsewhere")});
    LocalScenarioService scenarios(root());
    EXPECT_EQ(scenarios.GetScenarioType(5), "S");
    EXPECT_EQ(scenarios.GetScenarioName(5), "Hayward");
    EXPECT_EQ(RegionDatabase(HostRoot::load(root()).regionDatabasePath("Elsewhere"))
                  .readInt32("PESH", "ScenarioID"),
              5);
    const std::vector<std::pair<int, double>> expected{{3, -122.0}, {4, -121.0}, {5, -122.0}};
    EXPECT_EQ(westernFaults(), expected);
    const auto faults =
        geodatabase::Workspace::open(m_scenarios).openFeatureClass("eqSrWestFault");
    const auto shapeOf = [&](int id) {
        geodatabase::Cursor cursor =
            faults->search(geodatabase::QueryFilter::where("eqScenarioId = " + std::to_string(id)));
        geodatabase::Row row;
        EXPECT_TRUE(cursor.next(row));
        return row.shape();
    };
    EXPECT_TRUE(shapeOf(5).equalsExact(shapeOf(3)));
}

TEST_F(ScenarioExchange, OtherScenarioTypesMoveTheirRecordOnly)
{
    m_object = classes().create("Brevant.RegionExpImp");
    setSetting("PESH", "ScenarioID", "4");
    call("ExportCurrentScenario", {});
    EXPECT_FALSE(fs::exists(carriedFault("Testville")));
    call("ImportCurrentScenario", {});
    EXPECT_EQ(LocalScenarioService(root()).GetScenarioType(5), "D");
    EXPECT_EQ(westernFaults().size(), 2u);
}

TEST_F(ScenarioExchange, OnlyTheFirstFaultOfTheShapefileIsImported)
{
    m_object = classes().create("Brevant.RegionExpImp");
    // Both faults of a clause that selects them travel; the import keeps the first.
    ArgList exportArgs{Variant(int16_t{3}), Variant("W"), Variant("Elsewhere")};
    call("ExportScenario", exportArgs);
    addFault(3, -120.0);
    ArgList again{Variant(int16_t{3}), Variant("W"), Variant("Elsewhere")};
    call("ExportScenario", again);
    ArgList importArgs{Variant(int16_t{9}), Variant("W"), Variant("Elsewhere")};
    call("ImportScenario", importArgs);
    const auto faults = westernFaults();
    ASSERT_EQ(faults.size(), 4u);
    EXPECT_EQ(faults.back(), (std::pair<int, double>{9, -122.0}));
}

TEST_F(ScenarioExchange, AHalfOtherThanEastOrWestFailsThroughTheTrap)
{
    m_object = classes().create("Brevant.RegionExpImp");
    ArgList args{Variant(int16_t{3}), Variant("N"), Variant("Elsewhere")};
    try {
        call("ExportScenario", args);
        FAIL() << "no error";
    } catch (const automation::AutomationError& error) {
        EXPECT_EQ(error.hex(), "0x8004060C");
    }
    // No class is named, and the conversion fails on the empty name.
    EXPECT_NE(errorLog().find("cannot open  in "), std::string::npos) << errorLog();
    EXPECT_FALSE(fs::exists(carriedFault("Elsewhere")));
}

TEST_F(ScenarioExchange, AHurricaneTrackTravelsByItsScenarioName)
{
    const HostRoot host = HostRoot::load(root());
    const fs::path tracksPath =
        fs::path(host.systemDataFolder()) / "HU/WindField/huStormTrack.mdb";
    {
        const auto tracks =
            geodatabase::Workspace::open(tracksPath).openFeatureClass("DeterministicStormTracks");
        geodatabase::InsertCursor insert = tracks->insert();
        for (const char* name : {"Andrew", "Hugo"}) {
            geodatabase::Row row = tracks->createRow();
            row.setShape(Geometry::polyline({{{-80.0, 25.0}, {-81.0, 26.0}}}));
            row.setValue(tracks->findField("huscenarioName"), std::string(name));
            insert.insertRow(row);
        }
    }
    m_object = classes().create("Brevant.RegionExpImp");
    call("ExportCurrentHuScenario", {Variant("Elsewhere")});
    EXPECT_FALSE(fs::exists(regionFolder("Elsewhere") + "eqHuStorm.shp")) << "no scenario";

    RegionDatabase(host.regionDatabasePath("Elsewhere")).write("HURRICANE", "ScenarioName", "Hugo");
    call("ExportCurrentHuScenario", {Variant("Elsewhere")});
    ASSERT_TRUE(fs::exists(regionFolder("Elsewhere") + "eqHuStorm.shp"));
    call("ImportCurrentHuScenario", {Variant("Elsewhere")});
    const auto tracks =
        geodatabase::Workspace::open(tracksPath).openFeatureClass("DeterministicStormTracks");
    std::vector<std::string> names;
    geodatabase::Cursor cursor = tracks->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        names.push_back(row.value(tracks->findField("huscenarioName")).toString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Andrew", "Hugo", "Hugo"}));
}

} // namespace
} // namespace brevant::exchange
