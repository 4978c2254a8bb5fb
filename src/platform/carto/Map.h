#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/carto/ActiveView.h"
#include "platform/carto/SelectionEnvironment.h"
#include "platform/geometry/Geometry.h"
#include "platform/geometry/SpatialReference.h"

#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::carto {

class FeatureLayer;
class Layer;

/// A map of the host's map document: the layers the library draws on. The host owns it; the
/// library keeps a reference handed over through `m_pMap`. Layers are kept in drawing order,
/// index 0 on top. A map is its own active view: adding, deleting and moving layers tell the
/// view's listeners.
class Map : public automation::AutomationObject, public ActiveView {
public:
    explicit Map(std::string name = "Layers") : m_name(std::move(name)) {}

    std::string_view className() const override { return "Map"; }
    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }

    /// The map as its active view.
    ActiveView& activeView() { return *this; }

    int layerCount() const { return static_cast<int>(m_layers.size()); }
    /// Throws PlatformError (9) for an index outside 0..layerCount-1.
    const std::shared_ptr<Layer>& layer(int index) const;
    const std::vector<std::shared_ptr<Layer>>& layers() const { return m_layers; }
    /// Position of a top-level layer, or -1.
    int indexOf(const Layer& layer) const;
    /// Puts a layer on top of the others. The first layer that gives the map an extent sets
    /// the view's extent. Throws PlatformError for a null layer.
    void addLayer(std::shared_ptr<Layer> layer);
    /// Moves a top-level layer to a position (clamped to the layers there are); returns
    /// whether it is on the map.
    bool moveLayer(const std::shared_ptr<Layer>& layer, int index);
    /// Removes a top-level layer; returns whether it was on the map.
    bool deleteLayer(const std::shared_ptr<Layer>& layer);
    void clearLayers();
    /// Feature layers at any depth of group layers, top first.
    std::vector<std::shared_ptr<FeatureLayer>> featureLayers() const;

    /// The coordinate system of the map; it decides the units the scale is computed in.
    const geometry::SpatialReference& spatialReference() const { return m_spatialReference; }
    void setSpatialReference(const geometry::SpatialReference& spatialReference);

    /// The environment of selections made without one.
    SelectionEnvironment& selectionEnvironment() { return m_environment; }
    const SelectionEnvironment& selectionEnvironment() const { return m_environment; }
    /// Selects the features of every selectable feature layer that meet `shape`, combined with
    /// each layer's selection as the environment says (the map's when null). A point or
    /// multipoint reaches as far as the environment's search tolerance in device pixels. With
    /// `justOne` only the first feature found, in layer order, is selected.
    void selectByShape(const geometry::Geometry& shape,
                       const SelectionEnvironment* environment = nullptr, bool justOne = false);
    /// Clears the selection of every feature layer.
    void clearSelection();
    /// Number of selected features over all feature layers.
    int selectionCount() const;

protected:
    /// The union of the layers' extents.
    geometry::Envelope naturalFullExtent() const override;

private:
    std::string m_name;
    std::vector<std::shared_ptr<Layer>> m_layers;
    geometry::SpatialReference m_spatialReference;
    SelectionEnvironment m_environment;
};

} // namespace brevant::platform::carto
