#include "platform/carto/Map.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"

#include <algorithm>

namespace brevant::platform::carto {

using automation::PlatformError;

namespace {
void collectFeatureLayers(const std::vector<std::shared_ptr<Layer>>& layers,
                          std::vector<std::shared_ptr<FeatureLayer>>& out)
{
    for (const auto& layer : layers) {
        if (auto feature = std::dynamic_pointer_cast<FeatureLayer>(layer)) {
            out.push_back(std::move(feature));
        } else if (const auto* group = dynamic_cast<const GroupLayer*>(layer.get())) {
            collectFeatureLayers(group->layers(), out);
        }
    }
}
} // namespace

const std::shared_ptr<Layer>& Map::layer(int index) const
{
    if (index < 0 || index >= layerCount()) {
        throw PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Carto",
                            "map " + m_name + " has no layer " + std::to_string(index) +
                                " (it has " + std::to_string(layerCount()) + ")");
    }
    return m_layers[static_cast<std::size_t>(index)];
}

int Map::indexOf(const Layer& layer) const
{
    for (std::size_t i = 0; i < m_layers.size(); ++i) {
        if (m_layers[i].get() == &layer) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void Map::addLayer(std::shared_ptr<Layer> layer)
{
    if (!layer) {
        throw PlatformError(automation::ErrorNumber::ObjectRequired, "Carto",
                            "cannot add a missing layer to map " + m_name);
    }
    m_layers.insert(m_layers.begin(), layer);
    if (displayTransformation().visibleBounds().isEmpty()) {
        const geometry::Envelope all = fullExtent();
        if (!all.isEmpty()) {
            setExtent(all);
        }
    }
    notify({ViewEvent::Kind::ItemAdded, layer, {}});
}

bool Map::moveLayer(const std::shared_ptr<Layer>& layer, int index)
{
    const auto at = std::find(m_layers.begin(), m_layers.end(), layer);
    if (at == m_layers.end()) {
        return false;
    }
    std::shared_ptr<Layer> moved = *at;
    m_layers.erase(at);
    const int to = std::clamp(index, 0, layerCount());
    m_layers.insert(m_layers.begin() + to, std::move(moved));
    notify({ViewEvent::Kind::ContentsChanged, layer, {}});
    return true;
}

bool Map::deleteLayer(const std::shared_ptr<Layer>& layer)
{
    const auto at = std::find(m_layers.begin(), m_layers.end(), layer);
    if (at == m_layers.end()) {
        return false;
    }
    std::shared_ptr<Layer> deleted = *at;
    m_layers.erase(at);
    notify({ViewEvent::Kind::ItemDeleted, deleted, {}});
    return true;
}

void Map::clearLayers()
{
    m_layers.clear();
    notify({ViewEvent::Kind::ContentsChanged, nullptr, {}});
}

std::vector<std::shared_ptr<FeatureLayer>> Map::featureLayers() const
{
    std::vector<std::shared_ptr<FeatureLayer>> found;
    collectFeatureLayers(m_layers, found);
    return found;
}

void Map::setSpatialReference(const geometry::SpatialReference& spatialReference)
{
    m_spatialReference = spatialReference;
    // Projected systems of this library's data are in meters.
    displayTransformation().setMetersPerUnit(spatialReference.isUnknown() ||
                                                     spatialReference.isGeographic()
                                                 ? DisplayTransformation::MetersPerDegree
                                                 : 1.0);
}

void Map::selectByShape(const geometry::Geometry& shape, const SelectionEnvironment* environment,
                        bool justOne)
{
    const SelectionEnvironment& env = environment ? *environment : m_environment;
    geometry::Geometry search = shape;
    const geometry::ShapeType type = shape.type();
    if (type == geometry::ShapeType::Point || type == geometry::ShapeType::Multipoint) {
        // Without an extent there are no pixels to measure the tolerance in.
        const DisplayTransformation& view = displayTransformation();
        const double tolerance =
            view.visibleBounds().isEmpty() ? 0.0 : view.toMapDistance(env.searchTolerance);
        if (tolerance > 0.0) {
            search = shape.buffer(tolerance);
        }
    }
    const geodatabase::QueryFilter filter = geodatabase::QueryFilter::spatial(search);
    bool found = false;
    for (const auto& layer : featureLayers()) {
        if (!layer->selectable()) {
            continue;
        }
        if (justOne && found) {
            // Only the first feature counts; the other layers combine with nothing.
            layer->selectionSet().combine(SelectionSet(), env.combinationMethod);
            continue;
        }
        found = layer->selectFeatures(filter, env.combinationMethod, justOne) > 0;
    }
}

void Map::clearSelection()
{
    for (const auto& layer : featureLayers()) {
        layer->clearSelection();
    }
}

int Map::selectionCount() const
{
    int count = 0;
    for (const auto& layer : featureLayers()) {
        count += layer->selectionSet().count();
    }
    return count;
}

geometry::Envelope Map::naturalFullExtent() const
{
    geometry::Envelope all;
    for (const auto& layer : m_layers) {
        all = all.united(layer->extent());
    }
    return all;
}

} // namespace brevant::platform::carto
