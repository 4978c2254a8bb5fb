#pragma once

#include "platform/geometry/Geometry.h"

#include <memory>

namespace brevant::platform::geometry {

/// A shape prepared once for many predicate tests against other shapes (the clip area, an
/// input feature tested against many candidates).
class PreparedGeometry {
public:
    explicit PreparedGeometry(Geometry geometry);
    ~PreparedGeometry();
    PreparedGeometry(const PreparedGeometry&) = delete;
    PreparedGeometry& operator=(const PreparedGeometry&) = delete;

    const Geometry& geometry() const { return m_geometry; }
    bool intersects(const Geometry& other) const;
    /// True when `other` lies in the interior, touching the boundary nowhere.
    bool containsProperly(const Geometry& other) const;
    bool covers(const Geometry& other) const;

private:
    struct Impl;
    Geometry m_geometry;
    std::unique_ptr<Impl> m_impl;
};

} // namespace brevant::platform::geometry
