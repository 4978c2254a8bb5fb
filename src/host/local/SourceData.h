#pragma once

#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Reprojector.h"
#include "platform/geometry/Geometry.h"

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace brevant::host::local {

/// A user's vector file as the administration commands take it: any source GDAL reads, and the
/// layer to use (empty when the file holds one).
struct VectorSource {
    std::filesystem::path path;
    std::string layer;

    /// "PATH" or "PATH:LAYER", for messages.
    std::string describe() const;
};

/// Opens a source read-only. A file that does not open, a missing layer, or a file of several
/// layers without one named is an InvalidInput host error naming the file.
std::shared_ptr<platform::geodatabase::FeatureClass> openVectorSource(const VectorSource& source);

/// The index of `name` (without regard to case), or, when `name` is empty, of the first of
/// `candidates` the class has. Throws an InvalidInput host error naming file, layer and the
/// field (or the candidates) when there is none.
int requireField(const platform::geodatabase::FeatureClass& table, const VectorSource& source,
                 const std::string& name, std::initializer_list<std::string_view> candidates,
                 const std::string& role);

/// Brings the shapes of a user's file into a region: moved to geographic NAD83 and repaired, so
/// that no invalid shape reaches the region's databases. Counts what it had to change.
class ShapeImporter {
public:
    ShapeImporter(const platform::geometry::SpatialReference& from,
                  platform::geometry::ShapeType wanted);

    /// The shape as a valid shape of the wanted type; a null geometry when nothing usable is
    /// left (the caller skips the feature). Polygons and paths become points by an interior
    /// point when points are wanted.
    platform::geometry::Geometry operator()(const platform::geometry::Geometry& shape);

    /// Shapes that were invalid (self-intersecting rings, degenerate parts) and were repaired.
    int64_t repaired() const { return m_repaired; }
    /// Shapes with nothing usable left.
    int64_t dropped() const { return m_dropped; }

private:
    platform::geodatabase::Reprojector m_reprojector;
    platform::geometry::ShapeType m_wanted;
    int64_t m_repaired = 0;
    int64_t m_dropped = 0;
};

} // namespace brevant::host::local
