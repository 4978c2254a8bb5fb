#pragma once

#include "platform/geodatabase/WhereClauseNode.h"

namespace brevant::platform::geodatabase::whereclause {

/// The truth of `root` on the row whose fields `valueOf` reads, as SQLite would compute it
/// from the SQL of toSqliteSql.
Truth evaluate(const Node& root, const WhereClause::ValueOf& valueOf);

} // namespace brevant::platform::geodatabase::whereclause
