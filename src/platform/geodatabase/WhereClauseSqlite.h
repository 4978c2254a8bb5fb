#pragma once

#include "platform/geodatabase/WhereClauseNode.h"

#include <string>

namespace brevant::platform::geodatabase::whereclause {

/// The SQLite SQL expression of `root`, every field resolved through `resolve`. Throws
/// PlatformError naming the field and `clause` when a field is unknown.
std::string toSqliteSql(const Node& root, const WhereClause::FieldResolver& resolve,
                        const std::string& clause);

} // namespace brevant::platform::geodatabase::whereclause
