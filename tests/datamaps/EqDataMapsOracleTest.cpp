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
#include "host/sample/SampleHost.h"
#include "platform/automation/Collection.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/HostFixture.h"
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

// ---------------------------------------------------------------- GEOS and OGR, owned

struct GeosContext {
    GEOSContextHandle_t handle = GEOS_init_r();
    ~GeosContext() { GEOS_finish_r(handle); }
    GeosContext() = default;
    GeosContext(const GeosContext&) = delete;
    GeosContext& operator=(const GeosContext&) = delete;
};

GEOSContextHandle_t geos()
{
    static GeosContext context;
    return context.handle;
}

struct GeometryDeleter {
    void operator()(GEOSGeometry* g) const { GEOSGeom_destroy_r(geos(), g); }
};
using GeosGeometry = std::unique_ptr<GEOSGeometry, GeometryDeleter>;

struct PreparedDeleter {
    void operator()(const GEOSPreparedGeometry* g) const { GEOSPreparedGeom_destroy_r(geos(), g); }
};
using Prepared = std::unique_ptr<const GEOSPreparedGeometry, PreparedDeleter>;

struct DatasetCloser {
    void operator()(GDALDatasetH d) const { GDALClose(d); }
};
using Dataset = std::unique_ptr<void, DatasetCloser>;

struct FeatureDeleter {
    void operator()(OGRFeatureH f) const { OGR_F_Destroy(f); }
};
using Feature = std::unique_ptr<void, FeatureDeleter>;

double area(const GEOSGeometry* g)
{
    double value = 0.0;
    GEOSArea_r(geos(), g, &value);
    return value;
}

/// One feature read straight from a file: its shape and one field's value (nullopt for null).
struct Record {
    GeosGeometry shape;
    std::optional<std::string> value;
};

/// Every feature of a layer, with `field` as text; an empty field name reads no value.
std::vector<Record> readLayer(const fs::path& file, const std::string& layer,
                              const std::string& field)
{
    GDALAllRegister();
    // The region's databases are GeoPackages named .mdb; GDAL warns about the extension.
    CPLPushErrorHandler(CPLQuietErrorHandler);
    Dataset dataset(GDALOpenEx(file.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr,
                               nullptr, nullptr));
    CPLPopErrorHandler();
    EXPECT_TRUE(dataset) << file;
    std::vector<Record> records;
    if (!dataset) {
        return records;
    }
    OGRLayerH handle = GDALDatasetGetLayerByName(dataset.get(), layer.c_str());
    EXPECT_NE(handle, nullptr) << layer << " in " << file;
    if (!handle) {
        return records;
    }
    OGR_L_ResetReading(handle);
    const int index = field.empty() ? -1 : OGR_FD_GetFieldIndex(OGR_L_GetLayerDefn(handle), field.c_str());
    EXPECT_TRUE(field.empty() || index >= 0) << field << " of " << layer;
    GEOSWKBReader* reader = GEOSWKBReader_create_r(geos());
    while (Feature feature{OGR_L_GetNextFeature(handle)}) {
        OGRGeometryH shape = OGR_F_GetGeometryRef(feature.get());
        if (!shape) {
            continue;
        }
        std::vector<unsigned char> wkb(OGR_G_WkbSize(shape));
        OGR_G_ExportToIsoWkb(shape, wkbNDR, wkb.data());
        Record record{GeosGeometry(GEOSWKBReader_read_r(geos(), reader, wkb.data(), wkb.size())),
                      std::nullopt};
        if (index >= 0 && OGR_F_IsFieldSetAndNotNull(feature.get(), index)) {
            record.value = OGR_F_GetFieldAsString(feature.get(), index);
        }
        records.push_back(std::move(record));
    }
    GEOSWKBReader_destroy_r(geos(), reader);
    return records;
}

/// The union of the shapes of a polygon layer.
GeosGeometry unionOf(const std::vector<Record>& records)
{
    std::vector<GEOSGeometry*> parts;
    for (const Record& r : records) {
        parts.push_back(GEOSGeom_clone_r(geos(), r.shape.get()));
    }
    GeosGeometry collection(GEOSGeom_createCollection_r(geos(), GEOS_GEOMETRYCOLLECTION,
                                                        parts.data(),
                                                        static_cast<unsigned>(parts.size())));
    return GeosGeometry(GEOSUnaryUnion_r(geos(), collection.get()));
}

/// Area of the polygons of `map` inside `area`. The maps' polygons do not overlap, so this is
/// the area of the map inside the boundary.
double areaInside(const std::vector<Record>& map, const GEOSGeometry* boundary)
{
    Prepared prepared(GEOSPrepare_r(geos(), boundary));
    double total = 0.0;
    for (const Record& r : map) {
        if (GEOSPreparedContainsProperly_r(geos(), prepared.get(), r.shape.get())) {
            total += area(r.shape.get());
        } else if (GEOSPreparedIntersects_r(geos(), prepared.get(), r.shape.get())) {
            GeosGeometry cut(GEOSIntersection_r(geos(), r.shape.get(), boundary));
            total += area(cut.get());
        }
    }
    return total;
}

/// The values of the map polygons under a point (edge included), via an STR-tree.
class PolygonLookup {
public:
    explicit PolygonLookup(const std::vector<Record>& polygons)
        : m_polygons(polygons), m_tree(GEOSSTRtree_create_r(geos(), 10))
    {
        for (std::size_t i = 0; i < polygons.size(); ++i) {
            m_prepared.emplace_back(GEOSPrepare_r(geos(), polygons[i].shape.get()));
            GEOSSTRtree_insert_r(geos(), m_tree, polygons[i].shape.get(),
                                 const_cast<Record*>(&polygons[i]));
        }
    }
    ~PolygonLookup() { GEOSSTRtree_destroy_r(geos(), m_tree); }
    PolygonLookup(const PolygonLookup&) = delete;
    PolygonLookup& operator=(const PolygonLookup&) = delete;

    std::vector<const Record*> covering(const GEOSGeometry* point) const
    {
        std::vector<const Record*> candidates;
        GEOSSTRtree_query_r(
            geos(), m_tree, point,
            [](void* item, void* out) {
                static_cast<std::vector<const Record*>*>(out)->push_back(
                    static_cast<const Record*>(item));
            },
            &candidates);
        std::vector<const Record*> hits;
        for (const Record* candidate : candidates) {
            const auto index = static_cast<std::size_t>(candidate - m_polygons.data());
            if (GEOSPreparedCovers_r(geos(), m_prepared[index].get(), point)) {
                hits.push_back(candidate);
            }
        }
        return hits;
    }

private:
    const std::vector<Record>& m_polygons;
    std::vector<Prepared> m_prepared;
    GEOSSTRtree* m_tree;
};

// ---------------------------------------------------------------- the library under a host

/// Installs the reference host of `root` with scripted prompts for the life of the object.
class InstalledHost {
public:
    explicit InstalledHost(const fs::path& root)
        : m_prompts(std::make_shared<platform::ui::ScriptedPrompts>())
    {
        host::installHostServices(std::make_shared<local::LocalHostServices>(root));
        context::resetStudyRegionContext();
        platform::ui::installUserPrompts(m_prompts);
    }
    ~InstalledHost()
    {
        platform::ui::installUserPrompts(nullptr);
        context::resetStudyRegionContext();
        host::installHostServices(nullptr);
    }
    InstalledHost(const InstalledHost&) = delete;
    InstalledHost& operator=(const InstalledHost&) = delete;

    const platform::ui::ScriptedPrompts& prompts() const { return *m_prompts; }

private:
    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
};

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
        host::sample::writeSampleHost(root(), host::sample::SampleSize::Small, 7);
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
