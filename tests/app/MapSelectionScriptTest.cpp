#include "context/StudyRegionContext.h"
#include "host/HostServices.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalRegionSelectionStore.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/Recordset.h"
#include "samplehost/SampleHost.h"
#include "support/HostFixture.h"
#include "support/ScriptRun.h"

#include <QImage>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <set>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
namespace gdb = platform::geodatabase;
using json = nlohmann::ordered_json;

/// The sample host, written once: California (06) holds (-120, 37), Nevada (32) (-116.5, 39);
/// the region lies within (-123.9, 36.1) to (-118.8, 39.4); faults "1" to "40".
class MapSelectionScript : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new test::TempDir;
        samplehost::writeSampleHost(s_dir->path() / "host", samplehost::SampleSize::Small, 1);
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }
    void TearDown() override
    {
        context::resetStudyRegionContext();
        host::installHostServices(nullptr);
    }

    static fs::path root() { return s_dir->path() / "host"; }

    static std::vector<std::string> stored(int16_t level, int column)
    {
        auto units = host::local::LocalRegionSelectionStore(root())
                         .GetRegionUnits(level)
                         .objectAs<platform::tabular::Recordset>();
        std::vector<std::string> values;
        for (int i = 0; i < units->recordCount(); ++i) {
            i == 0 ? units->moveFirst() : units->moveNext();
            values.push_back(units->value(column).toString());
        }
        return values;
    }

    /// The codes (field `field`) of a statewide class's features whose `parentField` starts
    /// with one of `parents`.
    static std::set<std::string> codesWithin(const std::string& className, const std::string& field,
                                             const std::string& parentField,
                                             const std::set<std::string>& parents)
    {
        const auto boundaries = gdb::Workspace::open(
            host::local::HostRoot::load(root()).stateDataFolder() + "syboundary.mdb", true);
        auto features = boundaries.openFeatureClass(className);
        const int code = features->findField(field);
        const int parent = features->findField(parentField);
        std::set<std::string> codes;
        auto cursor = features->search();
        while (auto row = cursor.next()) {
            const std::string p = row->value(parent).toString();
            for (const auto& wanted : parents) {
                if (p.starts_with(wanted)) {
                    codes.insert(row->value(code).toString());
                }
            }
        }
        return codes;
    }

    static void expectRan(const json& result)
    {
        ASSERT_TRUE(result.at("ok").get<bool>()) << result.dump();
        for (const auto& action : result.at("dialogs")[0].at("actions")) {
            EXPECT_TRUE(action.at("ok").get<bool>()) << action.dump();
        }
    }

    static test::TempDir* s_dir;
};

test::TempDir* MapSelectionScript::s_dir = nullptr;

// States by clicking, counties after a Back, then tracts: each level offers only the units
// inside the level above, and the store holds what was chosen.
TEST_F(MapSelectionScript, ARegionIsDefinedLevelByLevelByClicking)
{
    const fs::path png = s_dir->path() / "states.png";
    const auto results =
        test::runScript(root(), R"({"new": "Brevant.EQMapSelDlg", "as": "sel"}
{"dialog": [{"click": [-120, 37]}, {"click": [-116.5, 39], "shift": true}, {"screenshot": ")" +
                                    png.string() + R"("}, {"press": "cmdSelectionDone"}]}
{"call": "sel.SelStateDlg"}
{"dialog": [{"read": "cmdSelectionDone"}, {"press": "cmdBack"}]}
{"call": "sel.SelCountyDlg"}
{"dialog": [{"read": "cmdSelectionDone"}, {"tool": "SelectAll"}, {"press": "cmdSelectionDone"}]}
{"call": "sel.SelCountyDlg"}
{"dialog": [{"read": "cmdSelectionDone"}, {"tool": "SelectAll"}, {"press": "cmdSelectionDone"}]}
{"call": "sel.SelTractDlg"}
)");
    ASSERT_EQ(results.size(), 9u);
    for (std::size_t i : {2u, 4u, 6u, 8u}) {
        expectRan(results[i]);
    }
    EXPECT_EQ(results[2].at("dialogs")[0].at("caption"),
              "Please Select State(s) where region is located");
    EXPECT_EQ(stored(0, 1), (std::vector<std::string>{"06", "32"}));
    EXPECT_EQ(stored(0, 0), (std::vector<std::string>{"California", "Nevada"}))
        << "column 0 holds the state's name";

    EXPECT_FALSE(results[4].at("dialogs")[0].at("values")[0].at("enabled").get<bool>())
        << "after Selection Done the next level starts with nothing to finish";
    EXPECT_TRUE(results[6].at("dialogs")[0].at("values")[0].at("enabled").get<bool>())
        << "after Back the level shows its current selection and may be finished as it is";

    const auto counties = stored(1, 0);
    const std::set<std::string> chosenCounties(counties.begin(), counties.end());
    EXPECT_EQ(chosenCounties, codesWithin("syCounty", "CountyFips", "StateFips", {"06", "32"}));
    EXPECT_FALSE(codesWithin("syCounty", "CountyFips", "StateFips", {"41"}).empty())
        << "Oregon's counties exist and were not offered";

    const auto tracts = stored(2, 0);
    EXPECT_EQ(std::set<std::string>(tracts.begin(), tracts.end()),
              codesWithin("sytract", "Tract", "CountyFips", chosenCounties));
    const auto parents = stored(2, 1);
    ASSERT_FALSE(parents.empty());
    EXPECT_EQ(parents[0], tracts[0].substr(0, 5)) << "a tract's parent is its county";

    const QImage shot(QString::fromStdString(png.string()));
    EXPECT_GT(shot.width(), 400);
}

// The hazard dialogs hand back what was picked, and nothing after Back.
TEST_F(MapSelectionScript, HazardDialogsHandBackTheirPick)
{
    const auto results = test::runScript(root(), R"({"new": "Brevant.EQMapSelDlg", "as": "sel"}
{"dialog": [{"read": "cmdSelectionDone"}, {"press": "cmdBack"}]}
{"call": "sel.SelFault", "args": ["no such fault"]}
{"dialog": [{"read": "cmdSelectionDone"}, {"press": "cmdSelectionDone"}]}
{"call": "sel.SelFault", "args": ["2"]}
{"dialog": [{"read": "SelectAll"}, {"click": [-121.0, 37.0]}, {"press": "cmdSelectionDone"}]}
{"call": "sel.DefineEpicenter", "args": ["s", "2", {"r8": 9}, {"r8": 9}]}
{"dialog": [{"press": "cmdBack"}]}
{"call": "sel.SelHistoricalEpicenter", "args": ["ev00000002"]}
{"dialog": [{"click": [-121.0, 37.0]}, {"press": "cmdBack"}]}
{"call": "sel.DefineEpicenter", "args": ["S", "2", {"r8": 9}, {"r8": 9}]}
{"dialog": [{"click": [-121.0, 37.0]}, {"read": "cmdSelectionDone"}, {"press": "cmdBack"}]}
{"call": "sel.DefineEpicenter", "args": ["S", "no such fault", {"r8": 9}, {"r8": 9}]}
)");
    ASSERT_EQ(results.size(), 13u);
    expectRan(results[2]);
    EXPECT_FALSE(results[2].at("dialogs")[0].at("values")[0].at("enabled").get<bool>())
        << "an unknown fault preselects nothing";
    EXPECT_EQ(results[2].at("byref"), json::array({""}));

    expectRan(results[4]);
    EXPECT_EQ(results[4].at("byref"), json::array({"2"})) << "the preselected fault, confirmed";

    expectRan(results[6]);
    const json& defined = results[6].at("dialogs")[0];
    EXPECT_EQ(defined.at("caption"), "Please define epicenter for arbitrary event")
        << "only \"S\" places the epicentre on a fault";
    EXPECT_FALSE(defined.at("values")[0].at("visible").get<bool>());
    const auto& where = results[6].at("byref");
    EXPECT_NEAR(where[0].get<double>(), -121.0, 0.02);
    EXPECT_NEAR(where[1].get<double>(), 37.0, 0.02);

    expectRan(results[8]);
    EXPECT_EQ(results[8].at("byref"), json::array({""})) << "Back hands back no epicentre";
    expectRan(results[10]);
    EXPECT_EQ(results[10].at("byref"), json::array({0.0, 0.0})) << "nor a defined one";

    // Without the chosen fault no click lies on it: the user is told, nothing is placed.
    expectRan(results[12]);
    EXPECT_FALSE(results[12].at("dialogs")[0].at("values")[0].at("enabled").get<bool>());
    ASSERT_EQ(results[12].at("messages").size(), 1u) << results[12].dump();
    EXPECT_EQ(results[12].at("messages")[0].at("text"),
              "Defined epicenter does not lie within the fault area");
}

} // namespace
} // namespace brevant::app
