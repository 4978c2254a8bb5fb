#pragma once

#include "platform/carto/Layer.h"

#include <memory>
#include <vector>

namespace brevant::platform::carto {

/// Layers shown and hidden together. Members are drawn in their order, the first on top, as a
/// map's layers are; the group's visibility and scale range apply to all of them.
class GroupLayer : public Layer {
public:
    explicit GroupLayer(std::string name = {}) : Layer(std::move(name)) {}

    std::string_view className() const override { return "GroupLayer"; }
    LayerKind kind() const override { return LayerKind::Group; }
    /// The union of the members' extents.
    geometry::Envelope extent() const override;

    int count() const { return static_cast<int>(m_layers.size()); }
    /// Throws PlatformError (9) for an index outside 0..count-1.
    const std::shared_ptr<Layer>& layer(int index) const;
    const std::vector<std::shared_ptr<Layer>>& layers() const { return m_layers; }
    /// Adds a member below the others; throws PlatformError for a null layer.
    void add(std::shared_ptr<Layer> layer);
    /// Returns whether the layer was a member.
    bool deleteLayer(const std::shared_ptr<Layer>& layer);
    void clear() { m_layers.clear(); }

private:
    std::vector<std::shared_ptr<Layer>> m_layers;
};

} // namespace brevant::platform::carto
