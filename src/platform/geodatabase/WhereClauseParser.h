#pragma once

#include "platform/geodatabase/WhereClauseNode.h"

#include <string_view>

namespace brevant::platform::geodatabase::whereclause {

/// The tree of a clause that is not blank. Throws PlatformError (InvalidArgument) quoting the
/// clause and saying where it went wrong.
NodePtr parseClause(std::string_view clause);

} // namespace brevant::platform::geodatabase::whereclause
