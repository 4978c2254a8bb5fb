#pragma once

#include <functional>
#include <string>

namespace brevant::platform::tabular {
class Recordset;
}

namespace brevant::layout {

/// Most identifiers one "OBJECTID In (...)" clause carries: longer lists make clauses that
/// some databases refuse.
inline constexpr int kIdentifiersPerClause = 1501;

/// Walks the recordset from its first record and hands `select` one clause "OBJECTID In (" +
/// identifiers separated by "," + ")" per batch of at most kIdentifiersPerClause values of
/// the first field, in record order. Does nothing for an empty recordset; throws the
/// recordset's error for a Null identifier.
void forEachIdentifierClause(platform::tabular::Recordset& records,
                             const std::function<void(const std::string&)>& select);

} // namespace brevant::layout
