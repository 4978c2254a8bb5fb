#include "samplehost/SampleHost.h"
#include "support/HostFixture.h"
#include "support/ScriptRun.h"

#include <QImage>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

using test::runScript;

std::vector<std::string> layerNames(const json& described)
{
    std::vector<std::string> names;
    for (const auto& layer : described.at("result").at("layers")) {
        names.push_back(layer.at("name").get<std::string>());
    }
    return names;
}

class LayerControlScript : public ::testing::Test {
protected:
    void SetUp() override
    {
        samplehost::writeSampleHost(root(), samplehost::SampleSize::Small, 3);
    }
    fs::path root() const { return m_dir.path() / "host"; }

    static constexpr const char* kLayers =
        R"({"add-layer": "RegionBndry.mdb:hztract", "name": "Tracts"}
{"add-layer": "RegionBndry.mdb:hzboundary", "name": "Region boundary"}
{"add-layer": "trn.mdb:hzHighwaySegment", "name": "Roads"}
{"add-layer": "trn.mdb:hzHighwayBridge", "name": "Bridges"}
)";

    test::TempDir m_dir;
};

// A user at the command line reorders, hides, rescales and removes layers of the sample map,
// and what follows sees the changes.
TEST_F(LayerControlScript, ActionsChangeTheMapThatLaterStatementsSee)
{
    const fs::path png = m_dir.path() / "layers.png";
    const auto results = runScript(root(), std::string(kLayers) + R"(
{"dialog": [{"select": ["lstLayers", 3]}, {"press": "cmdTop"}, {"read": "lstLayers"}, {"check": ["chkVisible", false]}, {"text": ["txtMax", "12a"]}, {"text": ["txtMax", "25000"]}, {"select": ["lstLayers", 2]}, {"menu": "Remove Layer"}, {"screenshot": ")" +
                                               png.string() + R"("}]}
{"show": "layers"}
{"describe": "map"}
)");
    ASSERT_EQ(results.size(), 7u);
    const json& shown = results[5];
    ASSERT_TRUE(shown.at("ok").get<bool>()) << shown.dump();
    ASSERT_EQ(shown.at("dialogs").size(), 1u);
    const json& window = shown.at("dialogs")[0];
    EXPECT_EQ(window.at("form"), "frmLayer");
    EXPECT_EQ(window.at("caption"), "Layer Control");
    EXPECT_EQ(window.at("actions").size(), 9u);
    for (const auto& action : window.at("actions")) {
        EXPECT_TRUE(action.at("ok").get<bool>()) << action.dump();
    }
    EXPECT_EQ(window.at("values")[0].at("text"), "Tracts");
    EXPECT_EQ(window.at("closed"), "close box: the actions ran out");

    const json& map = results[6];
    EXPECT_EQ(layerNames(map), (std::vector<std::string>{"Tracts", "Bridges", "Region boundary"}));
    const json& tracts = map.at("result").at("layers")[0];
    EXPECT_FALSE(tracts.at("visible").get<bool>());
    EXPECT_EQ(tracts.at("maximumScale").get<double>(), 25000.0);

    const QImage shot(QString::fromStdString(png.string()));
    EXPECT_GT(shot.width(), 200) << "a picture of the real window";
    EXPECT_GT(shot.height(), 200);
}

TEST_F(LayerControlScript, BadActionsAreReportedAndChangeNothing)
{
    const auto results = runScript(root(), std::string(kLayers) + R"(
{"dialog": [{"wiggle": "lstLayers"}]}
{"dialog": [{"select": ["lstLayers", 2]}, {"menu": "mnuRemoveLayer"}, {"check": ["chkVisible", false]}, {"text": ["cmdUp", "1"]}, {"press": "cmdSideways"}, {"click": [-120, 37]}, {"select": ["lstLayers", 9]}]}
{"show": "layers"}
{"describe": "map"}
)");
    ASSERT_EQ(results.size(), 8u);
    EXPECT_FALSE(results[4].at("ok").get<bool>()) << "an unknown action queues nothing";
    EXPECT_NE(results[4].at("error").at("description").get<std::string>().find("wiggle"),
              std::string::npos);

    const json& actions = results[6].at("dialogs")[0].at("actions");
    ASSERT_EQ(actions.size(), 7u) << results[6].dump();
    EXPECT_TRUE(actions[0].at("ok").get<bool>()) << "line 2 is the region boundary";
    EXPECT_EQ(actions[1].at("error"), "menu item mnuRemoveLayer is disabled");
    EXPECT_EQ(actions[2].at("error"), "chkVisible is disabled");
    EXPECT_EQ(actions[3].at("error"), "cmdUp is not a text box");
    EXPECT_EQ(actions[4].at("error"), "no control named cmdSideways in frmLayer");
    EXPECT_EQ(actions[5].at("error"), "frmLayer shows no map");
    EXPECT_EQ(actions[6].at("error"), "lstLayers has no line 9");

    const json& map = results[7].at("result");
    EXPECT_EQ(layerNames(results[7]),
              (std::vector<std::string>{"Bridges", "Roads", "Region boundary", "Tracts"}));
    for (const auto& layer : map.at("layers")) {
        EXPECT_TRUE(layer.at("visible").get<bool>()) << layer.at("name");
    }
}

// Restyling through the symbology page: a style, a colour from the queued colour answer, a
// width; the map described afterwards carries them.
TEST_F(LayerControlScript, RestylesTheSelectedLayer)
{
    const auto results = runScript(root(), std::string(kLayers) + R"js(
{"dialog": [{"select": ["lstLayers", 3]}, {"choose": ["cboPolyStyle", "Hollow"]}, {"colour": [255, 0, 0]}, {"press": "picPolyOutline"}, {"text": ["txtPolyOutlineWidth", "2.5"]}, {"read": "picPolyOutline"}, {"read": "fraDisplayPage(2)"}, {"select": ["lstLayers", 0]}, {"choose": ["cboPtStyle", 7]}]}
{"show": "layers"}
{"describe": "map"}
)js");
    ASSERT_EQ(results.size(), 7u);
    const json& window = results[5].at("dialogs")[0];
    const json& actions = window.at("actions");
    ASSERT_EQ(actions.size(), 9u) << window.dump();
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_TRUE(actions[i].at("ok").get<bool>()) << actions[i].dump();
    }
    EXPECT_EQ(actions[8].at("error"), "cboPtStyle has no entry 7");
    EXPECT_EQ(window.at("values")[0].at("text"), "255,000,000");
    EXPECT_TRUE(window.at("values")[1].at("visible").get<bool>()) << "the fill page is shown";

    const json& tracts = results[6].at("result").at("layers")[3];
    ASSERT_EQ(tracts.at("name"), "Tracts");
    const json& symbol = tracts.at("renderer").at("symbol");
    EXPECT_EQ(symbol.at("style"), 1);
    EXPECT_EQ(symbol.at("outline").at("color"), json::array({255, 0, 0}));
    EXPECT_EQ(symbol.at("outline").at("width"), 2.0);
}

// The window keeps its state between showings, and a second showing without actions closes
// at once because nobody can answer.
TEST_F(LayerControlScript, AWindowWithoutActionsClosesAtOnce)
{
    const auto results = runScript(root(), std::string(kLayers) + R"(
{"show": "layers"}
)");
    ASSERT_EQ(results.size(), 5u);
    const json& window = results[4].at("dialogs")[0];
    EXPECT_TRUE(window.at("actions").empty());
    EXPECT_EQ(window.at("closed"), "close box: the actions ran out");
}

// On an X display the window is a real X11 window, and the report says so.
TEST_F(LayerControlScript, OpensAsAnX11WindowUnderXvfb)
{
    if (std::system("command -v xvfb-run > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "xvfb-run is not installed";
    }
    const fs::path script = m_dir.path() / "layers.jsonl";
    const fs::path png = m_dir.path() / "x11.png";
    const fs::path out = m_dir.path() / "out.jsonl";
    {
        std::ofstream lines(script);
        lines << kLayers << R"({"dialog": [{"screenshot": ")" << png.string() << R"("}]})" << '\n'
              << R"({"show": "layers"})" << '\n';
    }
    const std::string command = "env -u QT_QPA_PLATFORM xvfb-run -a '" +
                                std::string(BREVANT_EXECUTABLE) + "' script --host '" +
                                root().string() + "' '" + script.string() + "' > '" + out.string() +
                                "' 2> /dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream in(out);
    std::string line;
    json shown;
    while (std::getline(in, line)) {
        shown = json::parse(line);
    }
    ASSERT_TRUE(shown.contains("dialogs")) << shown.dump();
    EXPECT_EQ(shown.at("dialogs")[0].at("platform"), "xcb");
    EXPECT_FALSE(QImage(QString::fromStdString(png.string())).isNull());
}

} // namespace
} // namespace brevant::app
