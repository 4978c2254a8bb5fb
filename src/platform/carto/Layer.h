#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/geometry/Envelope.h"

#include <string>

namespace brevant::platform::carto {

/// What a layer draws; a layer list tells layers apart by it.
enum class LayerKind { Feature, Group, Annotation, Raster };

/// A layer of a map: a name, a visibility and a scale range. Layers are shared: the map, a
/// group layer and the host may hold the same layer.
class Layer : public automation::AutomationObject {
public:
    virtual LayerKind kind() const = 0;
    /// The area the layer's data cover (empty when there are none).
    virtual geometry::Envelope extent() const = 0;

    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }
    bool visible() const { return m_visible; }
    void setVisible(bool visible) { m_visible = visible; }

    /// The smallest scale (largest denominator) at which the layer is drawn; 0 for no limit.
    double minimumScale() const { return m_minimumScale; }
    void setMinimumScale(double scale) { m_minimumScale = scale; }
    /// The largest scale (smallest denominator) at which the layer is drawn; 0 for no limit.
    double maximumScale() const { return m_maximumScale; }
    void setMaximumScale(double scale) { m_maximumScale = scale; }
    /// True when a map shown at 1:`scale` draws the layer (visibility aside).
    bool inScaleRange(double scale) const
    {
        return (m_minimumScale <= 0.0 || scale <= m_minimumScale) &&
               (m_maximumScale <= 0.0 || scale >= m_maximumScale);
    }

protected:
    explicit Layer(std::string name = {}) : m_name(std::move(name)) {}

private:
    std::string m_name;
    bool m_visible = true;
    double m_minimumScale = 0.0;
    double m_maximumScale = 0.0;
};

} // namespace brevant::platform::carto
