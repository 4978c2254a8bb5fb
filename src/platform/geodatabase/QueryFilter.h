#pragma once

#include "platform/geometry/Geometry.h"

#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

/// Which rows a cursor or count sees: a where clause in the library's dialect (empty: all
/// rows) and, for feature classes, a shape the rows' shapes must intersect (null: no spatial
/// test). `subFields` names the only attribute fields a cursor reads (empty: all of them);
/// the others read as empty. The identifier and shape are always read.
struct QueryFilter {
    std::string whereClause;
    geometry::Geometry intersects;
    std::vector<std::string> subFields;

    static QueryFilter where(std::string clause) { return QueryFilter{std::move(clause), {}, {}}; }
    static QueryFilter spatial(geometry::Geometry shape, std::string clause = {})
    {
        return QueryFilter{std::move(clause), std::move(shape), {}};
    }
    /// All rows, reading only the given attribute fields.
    static QueryFilter fields(std::vector<std::string> names)
    {
        return QueryFilter{{}, {}, std::move(names)};
    }
};

} // namespace brevant::platform::geodatabase
