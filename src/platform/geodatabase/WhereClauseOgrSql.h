#pragma once

#include "platform/geodatabase/WhereClauseNode.h"

#include <string>

namespace brevant::platform::geodatabase::whereclause {

/// Whether OGR SQL selects the same rows as `root` whatever the types of its fields.
bool ogrCanExpress(const Node& root);

/// The OGR SQL expression of `root`, every field resolved through `resolve`. Throws
/// PlatformError (InvalidProcedureCall) when ogrCanExpress(root) is false, and as toSqliteSql
/// for an unknown field.
std::string toOgrSqlText(const Node& root, const WhereClause::FieldResolver& resolve,
                         const std::string& clause);

} // namespace brevant::platform::geodatabase::whereclause
