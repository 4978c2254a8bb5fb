#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/geometry/Geometry.h"

#include <string>

namespace brevant::platform::carto {

/// A graphic element of a page: its shape in page units (inches from the page's lower-left
/// corner) and a name.
class Element : public automation::AutomationObject {
public:
    const geometry::Geometry& geometry() const { return m_geometry; }
    void setGeometry(geometry::Geometry geometry) { m_geometry = std::move(geometry); }
    /// The rectangle the element occupies (empty without a shape).
    geometry::Envelope bounds() const { return m_geometry.envelope(); }

    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }

protected:
    Element() = default;

private:
    geometry::Geometry m_geometry;
    std::string m_name;
};

/// The rectangle between two corners as an element shape.
geometry::Geometry rectangleShape(const geometry::Envelope& rectangle);

} // namespace brevant::platform::carto
