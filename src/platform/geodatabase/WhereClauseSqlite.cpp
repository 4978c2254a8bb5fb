#include "platform/geodatabase/WhereClauseSqlite.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/WhereClauseSqlText.h"

#include <algorithm>

namespace brevant::platform::geodatabase::whereclause {

namespace {

// Well beyond any clause written by hand, and within SQLite's own limit on statement length.
constexpr std::size_t kMaxSqlSize = 1 << 20;

class SqliteTranslator {
public:
    SqliteTranslator(const WhereClause::FieldResolver& resolve, const std::string& clause)
        : m_resolve(resolve), m_clause(clause)
    {
    }

    /// Fails when the SQL grows past kMaxSqlSize: some forms repeat an operand, so nesting
    /// them doubles the text at each level.
    std::string sql(const Node& node) const
    {
        std::string text = std::visit(*this, node.expression);
        if (text.size() > kMaxSqlSize) {
            throw automation::PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                                            "where clause \"" + m_clause +
                                                "\" is too complex to translate");
        }
        return text;
    }

    std::string operator()(const Literal& literal) const
    {
        if (isNull(literal.value)) {
            return "NULL";
        }
        if (const auto* text = std::get_if<std::string>(&literal.value)) {
            return quoteText(*text);
        }
        return literal.sqlText;
    }

    std::string operator()(const Field& field) const
    {
        return quotedField(m_resolve, m_clause, field.name);
    }

    std::string operator()(const Negate& negate) const { return "(-" + sql(*negate.operand) + ")"; }

    std::string operator()(const Arithmetic& arithmetic) const
    {
        const std::string a = sql(*arithmetic.left);
        const std::string b = sql(*arithmetic.right);
        if (arithmetic.op == '/') {
            // SQLite divides integers as integers.
            return "(" + a + " * 1.0 / " + b + ")";
        }
        return "(" + a + " " + arithmetic.op + " " + b + ")";
    }

    std::string operator()(const Concat& concat) const
    {
        const std::string a = sql(*concat.left);
        const std::string b = sql(*concat.right);
        return "(CASE WHEN " + a + " IS NULL AND " + b + " IS NULL THEN NULL ELSE ifnull(" + a +
               ", '') || ifnull(" + b + ", '') END)";
    }

    std::string operator()(const Call& call) const
    {
        const auto arg = [&](std::size_t i) { return sql(*call.args[i]); };
        switch (call.function) {
        case Function::Left:
            return "substr(" + arg(0) + ", 1, " + arg(1) + ")";
        case Function::Right: {
            const std::string s = arg(0);
            return "substr(" + s + ", max(length(" + s + ") - CAST(" + arg(1) +
                   " AS INTEGER) + 1, 1))";
        }
        case Function::Mid:
            return "substr(" + arg(0) + ", " + arg(1) +
                   (call.args.size() > 2 ? ", " + arg(2) : std::string()) + ")";
        case Function::Len:
            return "length(" + arg(0) + ")";
        case Function::UCase:
            return "upper(" + arg(0) + ")";
        case Function::LCase:
            return "lower(" + arg(0) + ")";
        case Function::Trim:
            return "trim(" + arg(0) + ")";
        }
        return "NULL";
    }

    std::string operator()(const Compare& compare) const
    {
        return comparison(*compare.left, compare.op, *compare.right);
    }

    std::string operator()(const Like& like) const
    {
        const Node& pattern = *like.pattern;
        const std::string patternSql =
            isTextLiteral(pattern)
                ? quoteText(folded(sqlPattern(
                      std::get<std::string>(std::get<Literal>(pattern.expression).value))))
                : "lower(replace(replace(" + sql(pattern) + ", '*', '%'), '?', '_'))";
        // Lower-casing both sides keeps the match independent of PRAGMA case_sensitive_like.
        const std::string text = "(lower(" + sql(*like.text) + ") LIKE " + patternSql + ")";
        return like.negated ? "(NOT " + text + ")" : text;
    }

    std::string operator()(const In& in) const
    {
        const std::string text = inList(in);
        return in.negated ? "(NOT " + text + ")" : text;
    }

    std::string operator()(const IsNull& isNull) const
    {
        return joined({"(", sql(*isNull.operand), isNull.negated ? " IS NOT NULL)" : " IS NULL)"});
    }

    std::string operator()(const Between& between) const
    {
        const Node& x = *between.operand;
        const std::string text = joined({"(", comparison(x, CompareOp::Ge, *between.low), " AND ",
                                         comparison(x, CompareOp::Le, *between.high), ")"});
        return between.negated ? "(NOT " + text + ")" : text;
    }

    std::string operator()(const And& conjunction) const
    {
        return chain(conjunction.operands, " AND ");
    }

    std::string operator()(const Or& disjunction) const
    {
        return chain(disjunction.operands, " OR ");
    }

    std::string operator()(const Not& negation) const
    {
        return "(NOT " + sql(*negation.operand) + ")";
    }

private:
    std::string chain(const std::vector<NodePtr>& operands, std::string_view junction) const
    {
        std::string text = "(";
        for (const NodePtr& operand : operands) {
            if (text.size() > 1) {
                text += junction;
            }
            text += sql(*operand);
        }
        return text + ")";
    }

    // A side that must compare as a number: a text that reads as a number becomes one, other
    // texts stay texts (and sort after numbers).
    std::string numeric(const Node& node) const
    {
        if (staticType(node) == StaticType::Number) {
            return sql(node);
        }
        if (const auto* literal = std::get_if<Literal>(&node.expression)) {
            const auto* text = std::get_if<std::string>(&literal->value);
            if (!text) {
                return "NULL";
            }
            if (const auto number = numericText(*text)) {
                return std::holds_alternative<int64_t>(*number) ? textOf(*number)
                                                                : realText(asDouble(*number));
            }
            return quoteText(*text);
        }
        const std::string x = sql(node);
        return "(CASE WHEN CAST(" + x + " AS REAL) = " + x + " THEN CAST(" + x + " AS REAL) ELSE " +
               x + " END)";
    }

    std::string comparison(const Node& a, CompareOp op, const Node& b) const
    {
        const StaticType ta = staticType(a);
        const StaticType tb = staticType(b);
        const std::string symbol = std::string(" ") + operatorText(op) + " ";
        if (ta == StaticType::Number || tb == StaticType::Number) {
            return joined({"(", numeric(a), symbol, numeric(b), ")"});
        }
        // Texts and fields: column affinity turns numeric text into numbers where a side is
        // numeric, and NOCASE applies where both are texts.
        return joined({"(", sql(a), symbol, sql(b), " COLLATE NOCASE)"});
    }

    std::string inList(const In& in) const
    {
        const Node& x = *in.operand;
        const auto all = [&](auto predicate) {
            return std::all_of(in.items.begin(), in.items.end(),
                               [&](const NodePtr& n) { return predicate(*n); });
        };
        const bool texts = all([](const Node& n) { return isTextLiteral(n); });
        const bool numbers = all([](const Node& n) {
            const auto* literal = std::get_if<Literal>(&n.expression);
            return literal && isNumber(literal->value);
        });
        std::string list;
        for (const auto& item : in.items) {
            list += (list.empty() ? "" : ", ") + sql(*item);
        }
        if (numbers) {
            return joined({"(", numeric(x), " IN (", list, "))"});
        }
        if (texts && staticType(x) != StaticType::Number) {
            return joined({"(", sql(x), " COLLATE NOCASE IN (", list, "))"});
        }
        std::string any;
        for (const auto& item : in.items) {
            any += (any.empty() ? "" : " OR ") + comparison(x, CompareOp::Eq, *item);
        }
        return "(" + any + ")";
    }

    const WhereClause::FieldResolver& m_resolve;
    const std::string& m_clause;
};

} // namespace

std::string toSqliteSql(const Node& root, const WhereClause::FieldResolver& resolve,
                        const std::string& clause)
{
    return SqliteTranslator(resolve, clause).sql(root);
}

} // namespace brevant::platform::geodatabase::whereclause
