#pragma once

// Answers computed straight from the files with OGR and the GEOS C API, for tests that check
// the library against an independent oracle: a fault shared by the library's own geometry and
// storage code cannot hide itself there.

#include "context/StudyRegionContext.h"
#include "host/HostServices.h"
#include "host/local/LocalHostServices.h"
#include "platform/ui/ScriptedPrompts.h"

#include <cpl_error.h>
#include <gdal.h>
#include <geos_c.h>
#include <gtest/gtest.h>
#include <ogr_api.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::test::oracle {

namespace fs = std::filesystem;

// ---------------------------------------------------------------- GEOS and OGR, owned

struct GeosContext {
    GEOSContextHandle_t handle = GEOS_init_r();
    ~GeosContext() { GEOS_finish_r(handle); }
    GeosContext() = default;
    GeosContext(const GeosContext&) = delete;
    GeosContext& operator=(const GeosContext&) = delete;
};

inline GEOSContextHandle_t geos()
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

inline double area(const GEOSGeometry* g)
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
inline std::vector<Record> readLayer(const fs::path& file, const std::string& layer,
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
inline GeosGeometry unionOf(const std::vector<Record>& records)
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
inline double areaInside(const std::vector<Record>& map, const GEOSGeometry* boundary)
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
        host::installHostServices(std::make_shared<host::local::LocalHostServices>(root));
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

} // namespace brevant::test::oracle
