#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::tabular {

/// The kind of value a column or recordset field holds. Variant is a column without a declared
/// type whose values say nothing either (an expression that is Null in every row).
enum class FieldType { Integer, Double, Text, Date, Binary, Variant };

/// One column of a table of the tabular database, as declared.
struct ColumnInfo {
    std::string name;
    /// The type as written in the table's definition ("VARCHAR(5)", "INTEGER", "" for none).
    std::string declaredType;
    FieldType type = FieldType::Variant;
    bool notNull = false;
    /// Position in the primary key counted from 1; 0 when the column is not part of it.
    int primaryKeyPosition = 0;
    /// The column is the row identifier under another name: an insert that leaves it Null
    /// gets a generated value.
    bool rowIdAlias = false;
};

/// A table (or view) of the tabular database: what another layer needs to present it as a
/// table of its own and to write to it.
struct TableInfo {
    enum class Kind { Table, View };

    /// The name as the database spells it, whatever case it was asked for in.
    std::string name;
    Kind kind = Kind::Table;
    /// In storage order.
    std::vector<ColumnInfo> columns;
    /// Names of the primary key's columns in key order; empty when none is declared.
    std::vector<std::string> primaryKey;
    /// The name under which the row identifier can be selected and matched, for tables that
    /// keep one; empty otherwise.
    std::string rowIdColumn;

    /// The column of that name (without regard to case), or null.
    const ColumnInfo* column(std::string_view columnName) const;
};

} // namespace brevant::platform::tabular
