#pragma once

#include "platform/geodatabase/WhereClause.h"

#include <initializer_list>
#include <string>
#include <string_view>

// Pieces of SQL text that the SQLite and OGR SQL translators write alike.
namespace brevant::platform::geodatabase::whereclause {

/// The pieces one after the other. Built by appending, which also keeps GCC 12 from a false
/// -Wrestrict warning on `"(" + std::string&&` once the visitors are inlined.
std::string joined(std::initializer_list<std::string_view> pieces);
/// A string literal.
std::string quoteText(std::string_view text);
/// The stored name of field `name`, quoted. Throws PlatformError (InvalidArgument) naming the
/// field and `clause` when `resolve` does not know it.
std::string quotedField(const WhereClause::FieldResolver& resolve, const std::string& clause,
                        const std::string& name);

} // namespace brevant::platform::geodatabase::whereclause
