#pragma once

#include "platform/automation/Variant.h"
#include "platform/tabular/TableInfo.h"

#include <string>
#include <vector>

namespace brevant::platform::tabular {

/// One column of a query's result.
struct ResultColumn {
    std::string name;
    /// Declared type of the table column it reads; empty for expressions.
    std::string declaredType;
    FieldType type = FieldType::Variant;
    /// Table and column it reads, as the database spells them; empty for expressions.
    std::string sourceTable;
    std::string sourceColumn;
};

/// Every row of a query, read at once (a static cursor): values are automation variants,
/// Null for NULL, 32-bit integers where they fit and doubles otherwise, text as strings and
/// dates of date columns as dates.
struct QueryResult {
    std::vector<ResultColumn> columns;
    std::vector<std::vector<automation::Variant>> rows;
};

} // namespace brevant::platform::tabular
