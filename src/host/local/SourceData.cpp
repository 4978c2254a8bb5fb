#include "host/local/SourceData.h"

#include "host/local/HostErrors.h"
#include "platform/geodatabase/Workspace.h"

#include <algorithm>

namespace brevant::host::local {

using platform::geodatabase::FeatureClass;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;

std::string VectorSource::describe() const
{
    return layer.empty() ? path.string() : path.string() + ":" + layer;
}

std::shared_ptr<FeatureClass> openVectorSource(const VectorSource& source)
{
    std::error_code ec;
    if (!std::filesystem::exists(source.path, ec)) {
        hostError(HostError::InvalidInput, source.path.string() + " does not exist");
    }
    std::optional<Workspace> workspace;
    try {
        workspace = Workspace::open(source.path, true);
    } catch (const platform::automation::PlatformError& e) {
        hostError(HostError::InvalidInput,
                  source.path.string() + " is not a vector file that can be read (" +
                      e.what() + ")");
    }
    const auto names = workspace->datasetNames();
    std::string layer = source.layer;
    if (layer.empty()) {
        if (names.size() != 1) {
            hostError(HostError::InvalidInput,
                      source.path.string() + " holds " + std::to_string(names.size()) +
                          " layers; name one as PATH:LAYER");
        }
        layer = names.front();
    }
    if (!workspace->exists(layer)) {
        hostError(HostError::InvalidInput, source.path.string() + " has no layer " + layer);
    }
    try {
        return workspace->openFeatureClass(layer);
    } catch (const platform::automation::PlatformError& e) {
        hostError(HostError::InvalidInput, e.what());
    }
}

int requireField(const FeatureClass& table, const VectorSource& source, const std::string& name,
                 std::initializer_list<std::string_view> candidates, const std::string& role)
{
    const std::string where = " in layer " + table.name() + " of " + source.path.string();
    if (!name.empty()) {
        const int index = table.findField(name);
        if (index < 0) {
            hostError(HostError::InvalidInput, "no " + role + " field " + name + where);
        }
        return index;
    }
    std::string tried;
    for (const auto candidate : candidates) {
        const int index = table.findField(std::string(candidate));
        if (index >= 0) {
            return index;
        }
        tried += (tried.empty() ? "" : ", ") + std::string(candidate);
    }
    hostError(HostError::InvalidInput,
              "no " + role + " field" + where + " (looked for " + tried + "; name it)");
}

ShapeImporter::ShapeImporter(const platform::geometry::SpatialReference& from, ShapeType wanted)
    : m_reprojector(from, platform::geometry::SpatialReference::nad83()), m_wanted(wanted)
{
}

Geometry ShapeImporter::operator()(const Geometry& shape)
{
    if (shape.isEmpty()) {
        ++m_dropped;
        return {};
    }
    Geometry moved = m_reprojector.apply(shape);
    bool repaired = false;
    if (!moved.isValid()) {
        repaired = true;
        if (moved.type() == ShapeType::Polyline) {
            // Paths that collapse to a point are what make a polyline invalid.
            std::vector<std::vector<Point>> paths;
            for (auto& path : moved.parts()) {
                path.erase(std::unique(path.begin(), path.end()), path.end());
                if (path.size() >= 2) {
                    paths.push_back(std::move(path));
                }
            }
            moved = paths.empty() ? Geometry() : Geometry::polyline(paths);
        } else {
            moved = moved.makeValid();
        }
    }
    Geometry result;
    if (!moved.isNull() && !moved.isEmpty()) {
        if (m_wanted == ShapeType::Point && moved.type() != ShapeType::Point) {
            result = Geometry::point(moved.interiorPoint());
        } else {
            result = moved.asShapeOf(m_wanted);
        }
    }
    if (result.isNull() || result.isEmpty()) {
        ++m_dropped;
        return {};
    }
    m_repaired += repaired ? 1 : 0;
    return result;
}

} // namespace brevant::host::local
