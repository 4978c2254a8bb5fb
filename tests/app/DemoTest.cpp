#include "support/Executable.h"
#include "support/HostFixture.h"

#include <QColor>
#include <QImage>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <cpl_error.h>
#include <gdal.h>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <ogr_api.h>

namespace brevant::app {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

json readJson(const fs::path& file)
{
    std::ifstream in(file);
    return json::parse(in);
}

std::string textOf(const fs::path& file)
{
    std::ifstream in(file);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

QColor colourOf(const std::string& text)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    EXPECT_EQ(std::sscanf(text.c_str(), "%d,%d,%d", &red, &green, &blue), 3) << text;
    return QColor(red, green, blue);
}

/// A unique-value map type's colour for each value, as the host's settings give it.
std::map<std::string, QColor> valueColours(const fs::path& classesFile, int type)
{
    std::map<std::string, QColor> colours;
    const json settings = readJson(classesFile);
    for (const auto& mapType : settings.at("mapTypes")) {
        if (mapType.at("type") == type) {
            for (const auto& value : mapType.at("uniqueValues").at("values")) {
                const auto& v = value.at("value");
                colours[v.is_string() ? v.get<std::string>() : v.dump()] =
                    colourOf(value.at("colour").get<std::string>());
            }
        }
    }
    return colours;
}

/// For each value of "type" in a clipped map, a point well inside its largest polygon, read
/// with GDAL alone so that the check owes nothing to the code that drew the map.
std::map<std::string, std::pair<double, double>> samplePoints(const fs::path& database,
                                                              const std::string& className)
{
    GDALAllRegister();
    // The region's databases are GeoPackages under the system's own file names.
    CPLPushErrorHandler(CPLQuietErrorHandler);
    GDALDatasetH data = GDALOpenEx(database.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr,
                                   nullptr, nullptr);
    CPLPopErrorHandler();
    EXPECT_NE(data, nullptr) << database;
    std::map<std::string, std::pair<double, double>> points;
    if (!data) {
        return points;
    }
    OGRLayerH layer = GDALDatasetGetLayerByName(data, className.c_str());
    EXPECT_NE(layer, nullptr) << className;
    std::map<std::string, double> largest;
    OGRFeatureH feature = nullptr;
    while (layer && (feature = OGR_L_GetNextFeature(layer)) != nullptr) {
        const int field = OGR_F_GetFieldIndex(feature, "type");
        OGRGeometryH shape = OGR_F_GetGeometryRef(feature);
        if (field >= 0 && OGR_F_IsFieldSetAndNotNull(feature, field) && shape) {
            const std::string value = OGR_F_GetFieldAsString(feature, field);
            const double area = OGR_G_Area(shape);
            if (area > largest[value]) {
                largest[value] = area;
                OGRGeometryH inside = OGR_G_PointOnSurface(shape);
                points[value] = {OGR_G_GetX(inside, 0), OGR_G_GetY(inside, 0)};
                OGR_G_DestroyGeometry(inside);
            }
        }
        OGR_F_Destroy(feature);
    }
    GDALClose(data);
    return points;
}

/// The pixel of a page that shows the ground point (x, y): the frame shows the extent
/// undistorted, so the mapping is linear.
QPoint pixelOf(const json& page, double x, double y)
{
    const auto& e = page.at("extent");
    const auto& f = page.at("frame");
    const double u = (x - e[0].get<double>()) / (e[2].get<double>() - e[0].get<double>());
    const double v = (e[3].get<double>() - y) / (e[3].get<double>() - e[1].get<double>());
    return QPoint(static_cast<int>(f[0].get<double>() + u * f[2].get<double>()),
                  static_cast<int>(f[1].get<double>() + v * f[3].get<double>()));
}

TEST(Demo, DrawsEachClippedMapInItsClassColoursInsideTheRegion)
{
    test::TempDir temp;
    const fs::path out = temp.path() / "demo";
    const auto run = test::runBrevant("demo --out " + out.string());
    ASSERT_EQ(run.status, 0) << run.out;
    EXPECT_NE(run.out.find("7 maps in"), std::string::npos) << run.out;

    const json report = readJson(out / "demo.json");
    const fs::path host = report.at("host").get<std::string>();
    const fs::path region = host / "Regions" / report.at("region").get<std::string>();
    ASSERT_EQ(report.at("maps").size(), 7u);

    // The user's sites outside the region are counted in the message and left out; all the
    // others are stored.
    ASSERT_EQ(report.at("import messages").size(), 1u);
    const std::string told = report.at("import messages")[0].get<std::string>();
    const std::string head = "There are ";
    ASSERT_EQ(told.rfind(head, 0), 0u) << told;
    const int outside = std::stoi(told.substr(head.size()));
    EXPECT_GT(outside, 0);
    EXPECT_EQ(report.at("schools after import").get<int>() -
                  report.at("schools before import").get<int>(),
              report.at("sites in the user's file").get<int>() - outside);

    // The printable page of the last map names the region and the scenario the demo chose.
    const json& layout = report.at("layout");
    EXPECT_GT(layout.at("scenario").get<int>(), 0);
    const QImage page(QString::fromStdString((out / "layout.png").string()));
    EXPECT_FALSE(page.isNull());
    EXPECT_GT(page.width(), page.height()) << "a landscape page";
    const fs::path text = temp.path() / "layout.txt";
    ASSERT_EQ(std::system(("pdftotext '" + (out / "layout.pdf").string() + "' '" +
                           text.string() + "'")
                              .c_str()),
              0);
    const std::string words = textOf(text);
    // The text extraction keeps one blank of the titles' runs of blanks.
    EXPECT_NE(words.find("Study Region new : " + report.at("region").get<std::string>()),
              std::string::npos)
        << words;
    EXPECT_NE(words.find("Hazard Scenario : Scenario " +
                         std::to_string(layout.at("scenario").get<int>())),
              std::string::npos)
        << words;

    int checked = 0;
    for (const auto& page : report.at("maps")) {
        SCOPED_TRACE(page.dump());
        const QImage image(QString::fromStdString((out / page.at("png").get<std::string>()).string()));
        ASSERT_FALSE(image.isNull());
        EXPECT_GT(page.at("features").get<int>(), 0);

        // A corner of the frame lies beyond the region: a statewide map that escaped the clip
        // would colour it.
        const QPoint corner = pixelOf(page, page.at("extent")[0].get<double>(),
                                      page.at("extent")[3].get<double>()) +
                              QPoint(4, 4);
        EXPECT_EQ(image.pixelColor(corner), QColor(Qt::white));

        const std::string code = page.value("code", "");
        if (code != "SOIL" && code != "LIQF") {
            continue;
        }
        const auto colours = valueColours(host / "System" / "classes.json",
                                          page.at("type").get<int>());
        const auto points = samplePoints(region / "RegionBndry.mdb",
                                         page.at("class").get<std::string>());
        EXPECT_GE(points.size(), 3u) << "the sample maps hold several classes";
        for (const auto& [value, point] : points) {
            ASSERT_TRUE(colours.contains(value))
                << "repair left the value " << value;
            const QPoint pixel = pixelOf(page, point.first, point.second);
            EXPECT_EQ(image.pixelColor(pixel).name().toStdString(),
                      colours.at(value).name().toStdString())
                << code << " " << value << " at " << point.first << ", " << point.second;
            ++checked;
        }
    }
    EXPECT_GE(checked, 6);
}

TEST(Demo, ReplacesAnEarlierDemoButNoOtherFiles)
{
    test::TempDir temp;
    const fs::path mine = temp.path() / "notes";
    fs::create_directories(mine);
    std::ofstream(mine / "plan.txt") << "keep me";
    EXPECT_EQ(test::runBrevant("demo --out " + mine.string()).status, 1);
    EXPECT_EQ(textOf(mine / "plan.txt"), "keep me");
    EXPECT_FALSE(fs::exists(mine / "host"));

    // An earlier demo's own files go; a file the user put beside them stays.
    const fs::path out = temp.path() / "demo";
    fs::create_directories(out);
    std::ofstream(out / "demo.json") << R"({"maps": [{"png": "old.png"}, {"png": "../plan.txt"}]})";
    std::ofstream(out / "old.png") << "stale";
    std::ofstream(out / "mine.txt") << "keep me";
    std::ofstream(temp.path() / "plan.txt") << "keep me";
    EXPECT_EQ(test::runBrevant("demo --out " + out.string() + " --size tiny").status, 2);
    ASSERT_EQ(test::runBrevant("demo --out " + out.string()).status, 0);
    EXPECT_FALSE(fs::exists(out / "old.png"));
    EXPECT_TRUE(fs::exists(out / "soil.png"));
    EXPECT_EQ(textOf(out / "mine.txt"), "keep me");
    EXPECT_EQ(textOf(temp.path() / "plan.txt"), "keep me");
}

} // namespace
} // namespace brevant::app
