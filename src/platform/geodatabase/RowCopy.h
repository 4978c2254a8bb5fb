#pragma once

#include "platform/geodatabase/QueryFilter.h"

#include <cstdint>

namespace brevant::platform::geodatabase {

class Table;

/// Appends to `target` the rows of `source` that the filter lets through: attributes are
/// matched by name without regard to case (fields the target lacks are dropped, fields the
/// source lacks stay null) and shapes are copied when both have them, moved into the
/// target's coordinate system when the two differ and both are known. Returns how many rows
/// were added.
int64_t appendRows(const Table& source, Table& target, const QueryFilter& filter = {});

} // namespace brevant::platform::geodatabase
