#pragma once

#include "platform/geometry/Geometry.h"

#include <string>

namespace brevant::platform::geodatabase {

/// Which rows a cursor or count sees: a where clause in the library's dialect (empty: all
/// rows) and, for feature classes, a shape the rows' shapes must intersect (null: no spatial
/// test).
struct QueryFilter {
    std::string whereClause;
    geometry::Geometry intersects;

    static QueryFilter where(std::string clause) { return QueryFilter{std::move(clause), {}}; }
    static QueryFilter spatial(geometry::Geometry shape, std::string clause = {})
    {
        return QueryFilter{std::move(clause), std::move(shape)};
    }
};

} // namespace brevant::platform::geodatabase
