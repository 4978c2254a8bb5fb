#include "context/StudyRegionContext.h"
#include "host/HostServices.h"
#include "samplehost/SampleHost.h"
#include "support/HostFixture.h"
#include "support/ScriptRun.h"

#include <QImage>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

using test::runScript;

/// The script creates library objects in this process: the region context they opened on the
/// script's host must not outlive the test.
class FloodStudyCaseScript : public ::testing::Test {
protected:
    void TearDown() override
    {
        context::resetStudyRegionContext();
        host::installHostServices(nullptr);
    }
};

// On the sample region the cases with annual results of option 0 are listed in identifier
// order; the second one is chosen and handed back through the by-reference argument.
TEST_F(FloodStudyCaseScript, TheChosenSampleCaseComesBackThroughTheSelectionDialog)
{
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    samplehost::writeSampleHost(root, samplehost::SampleSize::Small, 3);
    const fs::path png = dir.path() / "flood.png";
    const auto results = runScript(root, R"({"new": "Brevant.EQMapSelDlg", "as": "sel"}
{"dialog": [{"read": "flCombo"}, {"choose": ["flCombo", 1]}, {"read": "flCombo"}, {"screenshot": ")" +
                                             png.string() + R"("}, {"press": "CommandOk"}]}
{"call": "sel.GetflStudyCaseId", "args": [{"i2": 9}]}
{"dialog": [{"choose": ["flCombo", "Combined river and coast"]}, {"press": "CommandCancel"}]}
{"call": "sel.GetflStudyCaseId", "args": [{"i2": 9}]}
)");
    ASSERT_EQ(results.size(), 5u);
    const json& chosen = results[2];
    ASSERT_TRUE(chosen.at("ok").get<bool>()) << chosen.dump();
    EXPECT_EQ(chosen.at("byref"), json::array({2})) << "\"Coastal surge\" is case 2";
    const json& window = chosen.at("dialogs")[0];
    EXPECT_EQ(window.at("form"), "frmFl");
    EXPECT_EQ(window.at("caption"), "Flood Study Case");
    EXPECT_EQ(window.at("values")[0].at("text"), "Levee breach, 100-year");
    EXPECT_EQ(window.at("values")[1].at("text"), "Coastal surge");
    EXPECT_EQ(window.at("closed"), "accepted");

    const json& cancelled = results[4];
    ASSERT_TRUE(cancelled.at("ok").get<bool>()) << cancelled.dump();
    EXPECT_TRUE(cancelled.at("dialogs")[0].at("actions")[0].at("ok").get<bool>())
        << "the third listed case can be chosen by its name";
    EXPECT_EQ(cancelled.at("byref"), json::array({0}));

    const QImage shot(QString::fromStdString(png.string()));
    EXPECT_GT(shot.width(), 150) << "a picture of the real window";
}

} // namespace
} // namespace brevant::app
