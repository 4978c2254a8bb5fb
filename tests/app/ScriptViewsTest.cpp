#include "app/CommandLine.h"
#include "samplehost/SampleHost.h"
#include "support/HostFixture.h"

#include <QImage>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

// A sample host's boundary under its tracts, drawn and described the way a script checks a
// map: the tracts' outlines over the boundary's fill, the lake left open.
TEST(ScriptViews, RenderAndDescribeASampleHostsRegion)
{
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    samplehost::writeSampleHost(root, samplehost::SampleSize::Small, 3);
    const fs::path png = dir.path() / "region.png";
    const fs::path pdf = dir.path() / "page.pdf";
    std::istringstream in(
        R"({"add-layer": "RegionBndry.mdb:hzboundary", "name": "Study Region Boundary"}
{"add-layer": "RegionBndry.mdb:hztract", "name": "Tracts", "as": "tracts"}
{"render": ")" + png.string() + R"(", "width": 400, "height": 300}
{"describe": "map"}
{"export-layout": ")" + pdf.string() + R"("}
{"describe": "layout"}
{"add-layer": "RegionBndry.mdb:nothing"}
)");
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(runCommandLine({"script", "--host", root.string(), "-"}, in, out, err), 1)
        << "the last statement fails";
    std::vector<json> results;
    std::istringstream lines(out.str());
    std::string line;
    while (std::getline(lines, line)) {
        results.push_back(json::parse(line));
    }
    ASSERT_EQ(results.size(), 7u) << out.str();
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_TRUE(results[i].at("ok").get<bool>()) << results[i].dump();
    }
    EXPECT_FALSE(results[6].at("ok").get<bool>());

    const QImage image(QString::fromStdString(png.string()));
    ASSERT_EQ(image.size(), QSize(400, 300));
    int filled = 0;
    int white = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            (image.pixelColor(x, y) == Qt::white ? white : filled)++;
        }
    }
    EXPECT_GT(filled, 20000) << "the region covers much of the picture";
    EXPECT_GT(white, 1000) << "and leaves the corners";

    const json& map = results[3].at("result");
    ASSERT_EQ(map.at("layers").size(), 2u);
    EXPECT_EQ(map.at("layers")[0].at("name"), "Tracts") << "the last layer added is on top";
    EXPECT_EQ(map.at("layers")[0].at("class"), "hztract");
    EXPECT_EQ(map.at("layers")[1].at("renderer").at("type"), "simple");
    EXPECT_EQ(map.at("layers")[1].at("renderer").at("symbol").at("type"), "simple fill");
    EXPECT_EQ(map.at("spatialReference"), "GCS_North_American_1983");
    EXPECT_TRUE(fs::file_size(pdf) > 0);
    EXPECT_EQ(results[5].at("result").at("orientation"), "portrait");
}

} // namespace
} // namespace brevant::app
