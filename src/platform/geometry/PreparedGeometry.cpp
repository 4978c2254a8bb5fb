#include "platform/geometry/PreparedGeometry.h"

#include "geos/GeosContext.h"

namespace brevant::platform::geometry {

struct PreparedGeometry::Impl {
    geos::PreparedPtr prepared;
};

PreparedGeometry::PreparedGeometry(Geometry geometry)
    : m_geometry(std::move(geometry)), m_impl(std::make_unique<Impl>())
{
    if (!m_geometry.isEmpty()) {
        m_impl->prepared.reset(geos::check(GEOSPrepare_r(geos::context(), m_geometry.geos()),
                                           "cannot prepare a shape"));
    }
}

PreparedGeometry::~PreparedGeometry() = default;

bool PreparedGeometry::intersects(const Geometry& other) const
{
    return m_impl->prepared && !other.isNull() &&
           geos::checkPredicate(
               GEOSPreparedIntersects_r(geos::context(), m_impl->prepared.get(), other.geos()),
               "cannot test intersection");
}

bool PreparedGeometry::containsProperly(const Geometry& other) const
{
    return m_impl->prepared && !other.isNull() &&
           geos::checkPredicate(GEOSPreparedContainsProperly_r(
                                    geos::context(), m_impl->prepared.get(), other.geos()),
                                "cannot test containment");
}

bool PreparedGeometry::covers(const Geometry& other) const
{
    return m_impl->prepared && !other.isNull() &&
           geos::checkPredicate(
               GEOSPreparedCovers_r(geos::context(), m_impl->prepared.get(), other.geos()),
               "cannot test coverage");
}

} // namespace brevant::platform::geometry
