#include "platform/geodatabase/Reprojector.h"

#include "gdal/GdalSupport.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/FeatureClass.h"

#include <ogr_spatialref.h>

namespace brevant::platform::geodatabase {

namespace {
struct TransformDeleter {
    void operator()(OGRCoordinateTransformation* t) const
    {
        OGRCoordinateTransformation::DestroyCT(t);
    }
};

OGRSpatialReference referenceOf(const geometry::SpatialReference& system)
{
    OGRSpatialReference srs;
    srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    gdal::ErrorScope errors;
    if (srs.importFromWkt(system.wkt().c_str()) != OGRERR_NONE) {
        errors.fail("cannot read the coordinate system " + system.name());
    }
    return srs;
}
} // namespace

struct Reprojector::Impl {
    std::unique_ptr<OGRCoordinateTransformation, TransformDeleter> transform;
    std::string description;
};

Reprojector::Reprojector(const geometry::SpatialReference& from,
                         const geometry::SpatialReference& to)
{
    if (from.isUnknown() || to.isUnknown() || from.sameAs(to)) {
        return;
    }
    const OGRSpatialReference source = referenceOf(from);
    const OGRSpatialReference target = referenceOf(to);
    gdal::ErrorScope errors;
    m_impl = std::make_unique<Impl>();
    m_impl->description = "from " + from.name() + " to " + to.name();
    m_impl->transform.reset(OGRCreateCoordinateTransformation(&source, &target));
    if (!m_impl->transform) {
        errors.fail("cannot transform coordinates " + m_impl->description);
    }
}

Reprojector::~Reprojector() = default;

geometry::Geometry Reprojector::apply(const geometry::Geometry& shape) const
{
    if (!m_impl || shape.isEmpty()) {
        return shape;
    }
    std::unique_ptr<OGRGeometry> moved = gdal::toOgr(shape);
    gdal::ErrorScope errors;
    if (moved->transform(m_impl->transform.get()) != OGRERR_NONE) {
        errors.fail("cannot transform a shape " + m_impl->description);
    }
    return gdal::toGeometry(moved.get());
}

std::unique_ptr<Reprojector> overlayReprojector(const FeatureClass& base, const FeatureClass& other)
{
    const auto& to = base.spatialReference();
    const auto& from = other.spatialReference();
    if (to.isUnknown() != from.isUnknown()) {
        const auto describe = [](const FeatureClass& c) {
            return c.name() + " (" +
                   (c.spatialReference().isUnknown() ? std::string("no coordinate system")
                                                     : c.spatialReference().name()) +
                   ")";
        };
        throw automation::PlatformError(
            automation::ErrorNumber::GdalBase + 100, "Geoprocessor",
            "cannot overlay " + describe(other) + " on " + describe(base) +
                ": give both the coordinate system they are in");
    }
    return std::make_unique<Reprojector>(from, to);
}

} // namespace brevant::platform::geodatabase
