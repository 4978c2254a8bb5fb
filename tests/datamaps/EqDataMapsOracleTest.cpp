// Clipping and value transfer checked against answers computed here, straight from the files
// with OGR and the GEOS C API, so that a fault shared by the library's clip and transfer code
// cannot hide itself.

#include "context/StudyRegionContext.h"
#include "datamaps/EqDataMaps.h"
#include "host/HostServices.h"
#include "host/local/HostBuilder.h"
#include "host/local/HostRoot.h"
#include "host/local/InventoryBuilder.h"
#include "host/local/LocalGisUtilityService.h"
#include "host/local/LocalHostServices.h"
#include "host/local/MapRegistration.h"
#include "host/local/RegionBuilder.h"
#include "host/local/RegionDatabase.h"
#include "samplehost/SampleHost.h"
#include "platform/automation/Collection.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/HostFixture.h"
#include "support/GeosOracle.h"
#include "support/RealData.h"

#include <cpl_error.h>
#include <gdal.h>
#include <geos_c.h>
#include <ogr_api.h>

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <set>

namespace brevant::datamaps {
namespace {

namespace fs = std::filesystem;
namespace local = host::local;
using platform::automation::Collection;
using platform::automation::Variant;
using namespace test::oracle;


void clip(const std::vector<std::string>& codes)
{
    auto collection = std::make_shared<Collection>();
    for (const auto& code : codes) {
        collection->add(Variant(code));
    }
    Variant argument(collection);
    EqDataMaps().ClipHazardDataMaps(argument);
}

struct SiteCode {
    const char* code;
    const char* target;
    const char* field;
};
constexpr SiteCode kSiteCodes[] = {{"SOIL", "eqsrsoil", "stype"},
                                   {"LIQF", "eqsrlqf", "lqfsuscat"},
                                   {"LAND", "eqsrlnd", "lndsuscat"},
                                   {"WATR", "eqsrwdepth", "w_depth"}};

bool valid(const std::string& code, const std::optional<std::string>& value)
{
    if (!value) {
        return true;
    }
    if (std::string(code) == "SOIL") {
        return *value == "A" || *value == "B" || *value == "C" || *value == "D" || *value == "E";
    }
    const double number = std::stod(*value);
    const double top = code == "LIQF" ? 5 : code == "LAND" ? 10 : INFINITY;
    return number >= 0 && number <= top;
}

/// Whether an inventory value equals a map value or default (numbers compared as numbers).
bool sameValue(const std::optional<std::string>& actual, const std::optional<std::string>& wanted)
{
    if (!actual || !wanted) {
        return actual.has_value() == wanted.has_value();
    }
    char* end = nullptr;
    const double a = std::strtod(actual->c_str(), &end);
    if (*end == '\0' && !actual->empty()) {
        return std::abs(a - std::stod(*wanted)) <= 1e-6 * std::max(1.0, std::abs(a));
    }
    return *actual == *wanted;
}

class SampleRegionClipping : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new test::TempDir;
        samplehost::writeSampleHost(root(), samplehost::SampleSize::Small, 7);
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }
    static fs::path root() { return s_dir->path() / "host"; }

    static test::TempDir* s_dir;
};

test::TempDir* SampleRegionClipping::s_dir = nullptr;

TEST_F(SampleRegionClipping, ClippedMapsAndInventoryAgreeWithADirectComputation)
{
    InstalledHost installed(root());
    clip({"SOIL", "LIQF", "LAND", "WATR"});
    EXPECT_TRUE(installed.prompts().messages().empty()) << "no step failed";

    const auto host = local::HostRoot::load(root());
    const fs::path folder = host.regionFolder(host.currentRegion());
    const local::RegionDatabase region(host.regionDatabasePath(host.currentRegion()));
    const GeosGeometry boundary =
        unionOf(readLayer(folder / "RegionBndry.mdb", "hzboundary", ""));

    std::string soil;
    int16_t liquefaction = 0;
    int16_t landslide = 0;
    float water = 0.0F;
    local::LocalGisUtilityService(root()).GetDefaultSiteValues(soil, liquefaction, landslide, water);
    const std::map<std::string, std::string> defaults = {{"SOIL", soil},
                                                         {"LIQF", std::to_string(liquefaction)},
                                                         {"LAND", std::to_string(landslide)},
                                                         {"WATR", std::to_string(water)}};

    for (const SiteCode& site : kSiteCodes) {
        SCOPED_TRACE(site.code);
        const auto entry = region.userMap(site.code);
        ASSERT_TRUE(entry.has_value());
        const auto source = readLayer(fs::path(folder) / entry->folder / entry->fileName,
                                      entry->className, "");
        const auto clipped = readLayer(folder / "RegionBndry.mdb", site.target, "Type");
        ASSERT_FALSE(clipped.empty());

        double clippedArea = 0.0;
        for (const Record& r : clipped) {
            clippedArea += area(r.shape.get());
            EXPECT_TRUE(valid(site.code, r.value)) << "left unrepaired: " << *r.value;
        }
        const double expectedArea = areaInside(source, boundary.get());
        EXPECT_NEAR(clippedArea, expectedArea, 1e-9 * expectedArea);

        const PolygonLookup lookup(clipped);
        int checked = 0;
        int defaulted = 0;
        for (const auto& inventory : region.inventoryClasses()) {
            if (inventory.kind != "P") {
                continue;
            }
            const auto points =
                readLayer(folder / inventory.databaseName, inventory.tableName, site.field);
            for (const Record& point : points) {
                const auto under = lookup.covering(point.shape.get());
                if (under.empty()) {
                    ++defaulted;
                    EXPECT_TRUE(sameValue(point.value, defaults.at(site.code)))
                        << inventory.tableName << " outside every polygon has "
                        << point.value.value_or("<null>");
                    continue;
                }
                bool matched = false;
                for (const Record* polygon : under) {
                    matched = matched || sameValue(point.value, polygon->value);
                }
                EXPECT_TRUE(matched) << inventory.tableName << " has "
                                     << point.value.value_or("<null>") << ", the map "
                                     << under.front()->value.value_or("<null>");
                ++checked;
            }
        }
        EXPECT_GT(checked, 1000) << "the sample inventory lies on the map";
        (void)defaulted;
    }
}

TEST(RealDataClipping, SanFranciscoHospitalsTakeTheLiquefactionZones)
{
    const fs::path data = test::sharedData();
    if (!fs::exists(data / "tracts/sf_tracts_2010_clipped.geojson") ||
        !fs::exists(data / "hazard-zones/bayarea_LiquefactionSusceptibility.geojson") ||
        !fs::exists(data / "facilities/bayarea_hospitals_spc.geojson")) {
        GTEST_SKIP() << "no real data in " << data;
    }
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    local::initHost(root);
    test::createSanFranciscoRegion(root, dir.path());
    const local::MapReport zones = local::registerMap(
        root, {"", "LIQF",
               {data / "hazard-zones/bayarea_LiquefactionSusceptibility.geojson", ""}, "", "3"});
    local::addInventory(root, {"", "hzCareFlty", 'P', "",
                               local::VectorSource{data / "facilities/bayarea_hospitals_spc.geojson", ""},
                               "id"});
    const auto host = local::HostRoot::load(root);
    local::RegionDatabase region(host.regionDatabasePath(host.currentRegion()));
    region.write("SiteDefaults", "lqfsuscat", "1");

    {
        InstalledHost installed(root);
        clip({"LIQF"});
        EXPECT_TRUE(installed.prompts().messages().empty());
    }

    const fs::path folder = host.regionFolder(host.currentRegion());
    const auto entry = region.inventoryClass("hzCareFlty");
    ASSERT_TRUE(entry.has_value());
    const auto hospitals = readLayer(folder / entry->databaseName, "hzCareFlty", "lqfsuscat");
    const auto zonePolygons = readLayer(zones.database, zones.className, "");
    const PolygonLookup lookup(zonePolygons);
    int inside = 0;
    for (const Record& hospital : hospitals) {
        const bool inZone = !lookup.covering(hospital.shape.get()).empty();
        inside += inZone ? 1 : 0;
        EXPECT_EQ(hospital.value.value_or("<null>"), inZone ? "3" : "1");
    }
    EXPECT_GT(hospitals.size(), 5u);
    EXPECT_GT(inside, 0) << "some hospitals stand on liquefiable ground";
}

} // namespace
} // namespace brevant::datamaps
