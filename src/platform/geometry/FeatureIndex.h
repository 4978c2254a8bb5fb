#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Geometry.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace brevant::platform::geometry {

/// A spatial index over the shapes of a source class (usually polygons), built once, answering
/// for a target shape which source shape contains it, and which source shape is nearest and at
/// what distance. It is the engine of every value transfer and must scale to millions of
/// queries.
///
/// Point queries, the bulk of the work, do not go through GEOS: a GEOS STR-tree with prepared
/// polygons spent most of a statewide transfer in its nearest-neighbour search and in creating
/// a point per query. The index keeps its own packed R-tree (Hilbert-ordered, single-precision
/// boxes rounded outwards) and tests points against the raw rings with an exact orientation
/// predicate, so it answers as GEOS would: a point on an edge or vertex is not contained and is
/// at distance 0. Other shapes use GEOS prepared geometries.
///
/// Shapes are identified by their position in the vector given at construction. When several
/// shapes qualify equally (overlaps, equal distances) the lowest position wins, so answers are
/// deterministic. Null or empty source shapes are never answered.
///
/// Point queries read only immutable data and may run on several threads at once; shape
/// queries prepare source shapes on first use and must not run concurrently.
class FeatureIndex {
public:
    struct Nearest {
        std::size_t index = 0;
        double distance = 0.0;
    };

    explicit FeatureIndex(std::vector<Geometry> shapes);
    ~FeatureIndex();
    FeatureIndex(FeatureIndex&&) noexcept;
    FeatureIndex& operator=(FeatureIndex&&) noexcept;

    std::size_t size() const;
    /// The source shape that contains `shape` (GEOS contains: a point on an edge is not
    /// contained); nullopt when none does.
    std::optional<std::size_t> containing(const Geometry& shape) const;
    /// The nearest source shape at any distance (0 when they meet); nullopt only when the
    /// index holds no shape or `shape` is null/empty.
    std::optional<Nearest> nearest(const Geometry& shape) const;
    /// The same for a point, without building a geometry (the fast path of point transfers).
    std::optional<std::size_t> containing(const Point& p) const;
    std::optional<Nearest> nearest(const Point& p) const;
    /// Positions of the source shapes whose envelope meets `box` (touching counts), ascending.
    std::vector<std::size_t> candidates(const Envelope& box) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace brevant::platform::geometry
