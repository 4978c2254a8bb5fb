#pragma once

#include "platform/geometry/Geometry.h"
#include "platform/geometry/SpatialReference.h"

#include <memory>

namespace brevant::platform::geodatabase {

/// Moves shapes from one coordinate system to another (longitude before latitude for
/// geographic systems, as shapes store them). Between equal or unknown systems it passes
/// shapes through unchanged.
class Reprojector {
public:
    /// Throws PlatformError when no transformation between the two systems exists.
    Reprojector(const geometry::SpatialReference& from, const geometry::SpatialReference& to);
    ~Reprojector();
    Reprojector(const Reprojector&) = delete;
    Reprojector& operator=(const Reprojector&) = delete;

    /// False when shapes pass through unchanged.
    bool changes() const { return static_cast<bool>(m_impl); }
    /// Throws PlatformError when a point cannot be transformed (outside the system's area).
    geometry::Geometry apply(const geometry::Geometry& shape) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

class FeatureClass;

/// What an overlay of `other` on `base` does with `other`'s shapes: moves them into `base`'s
/// coordinate system when the two differ. When one system is known and the other is not, the
/// overlay would silently pair places that do not meet: that is an error naming both.
std::unique_ptr<Reprojector> overlayReprojector(const FeatureClass& base,
                                                const FeatureClass& other);

} // namespace brevant::platform::geodatabase
