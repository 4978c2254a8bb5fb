#pragma once

#include "platform/automation/Variant.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevant::platform::geodatabase {

/// A where clause in the Access dialect the library's procedures write: `[Bracketed]` or bare
/// names (`table.field` means `field`), numbers, 'single' or "double"-quoted strings, True,
/// False, Null, = <> != < <= > >=, [Not] Like (* ? % _ wildcards), [Not] In (...), Is [Not]
/// Null, [Not] Between a And b, And, Or, Not, + - * /, & (text concatenation) and the functions
/// Left, Right, Mid, Len, UCase, LCase and Trim. Keywords, names and text comparisons ignore
/// letter case.
///
/// One meaning on every storage:
/// - Null in a comparison is unknown, and only true selects a row (`Not (x = 1)` is false
///   for a null x; `x Not In (1, Null)` never holds).
/// - Two texts compare as text, ignoring ASCII letter case; two numbers compare as numbers; a
///   number and a text compare as numbers when the text reads as a number (" 5", "06",
///   "1e2"), otherwise every number sorts before every text.
/// - True is 1 and False is 0; `/` always divides as real numbers and a division by zero is
///   Null; `&` treats one Null side as an empty text; arithmetic reads the leading number of a
///   text (0 when there is none); numbers become text as SQLite writes them ("5", "5.0").
///
/// The parsed clause is shared by copies.
class WhereClause {
public:
    /// Maps a field name as written in the clause to the name stored in the table; nullopt
    /// when the table has no such field. Lookups are expected to ignore letter case.
    using FieldResolver = std::function<std::optional<std::string>(std::string_view name)>;
    /// The value of a field of the row being tested. It is called with the name as written
    /// in the clause (the part after the last '.'), so it should look it up ignoring case.
    using ValueOf = std::function<automation::Variant(std::string_view storedName)>;

    /// The parsed form; defined and used only by the implementation.
    struct Node;

    /// The empty clause, which selects every row.
    WhereClause() = default;

    /// Parses `text`. Empty or blank text gives the empty clause. Throws PlatformError
    /// (InvalidArgument) whose message quotes the clause and says where it went wrong.
    static WhereClause parse(std::string_view text);

    /// True for the clause that selects every row.
    bool isEmpty() const { return !m_root; }
    /// The clause as it was given.
    const std::string& text() const { return m_text; }
    /// The fields the clause names, as written, each once (ignoring letter case), in order of
    /// first appearance.
    std::vector<std::string> fieldNames() const;

    /// A SQLite SQL expression with the meaning above (for GeoPackage and SQLite tables).
    /// Throws PlatformError naming the field and the clause when `resolve` knows a field not.
    std::string toSqlite(const FieldResolver& resolve) const;
    /// An OGR SQL expression (for OGR SQL queries and attribute filters) that selects the same
    /// rows whatever the types of the fields. Only valid when needsEvaluation() is false;
    /// throws PlatformError otherwise, and as toSqlite for unknown fields.
    std::string toOgrSql(const FieldResolver& resolve) const;
    /// True when OGR SQL cannot express the clause faithfully, so callers evaluate it row by
    /// row with matches(). OGR SQL rejects a number compared with a text field and text that
    /// is not a number compared with a numeric field, so only comparisons of a field with
    /// quoted plain decimal numbers (such as '06001'), Is Null, And, Or and Not go to OGR.
    bool needsEvaluation() const { return m_needsEvaluation; }
    /// Evaluates the clause on one row; true when the row is selected. The empty clause
    /// selects every row.
    bool matches(const ValueOf& valueOf) const;

private:
    std::string m_text;
    std::shared_ptr<const Node> m_root;
    bool m_needsEvaluation = false;
};

} // namespace brevant::platform::geodatabase
