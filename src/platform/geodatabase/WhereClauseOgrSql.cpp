#include "platform/geodatabase/WhereClauseOgrSql.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/WhereClauseSqlText.h"

#include <algorithm>

namespace brevant::platform::geodatabase::whereclause {

namespace {

// Field types are unknown here, and OGR SQL rejects a number compared with a text field or a
// non-numeric text with a numeric field, so the only safe operands are a field and quoted plain
// decimals. OGR SQL compares such a text with a text field as text and with a numeric field as
// a number, as we do.
bool isPlainDecimal(std::string_view text)
{
    std::size_t i = text.starts_with('-') ? 1 : 0;
    const std::size_t digitsStart = i;
    while (i < text.size() && isDigit(text[i])) {
        ++i;
    }
    if (i == digitsStart) {
        return false;
    }
    if (i < text.size() && text[i] == '.') {
        const std::size_t fraction = ++i;
        while (i < text.size() && isDigit(text[i])) {
            ++i;
        }
        if (i == fraction) {
            return false;
        }
    }
    return i == text.size();
}

bool isOgrOperand(const Node& node)
{
    return isTextLiteral(node) &&
           isPlainDecimal(std::get<std::string>(std::get<Literal>(node.expression).value));
}

bool isField(const Node& node)
{
    return std::holds_alternative<Field>(node.expression);
}

const std::string& textOfLiteral(const Node& node)
{
    return std::get<std::string>(std::get<Literal>(node.expression).value);
}

// Indexed by CompareOp: the negation and the operator with operands swapped.
constexpr CompareOp kNegated[] = {CompareOp::Ne, CompareOp::Eq, CompareOp::Ge,
                                  CompareOp::Gt, CompareOp::Le, CompareOp::Lt};
constexpr CompareOp kMirrored[] = {CompareOp::Eq, CompareOp::Ne, CompareOp::Gt,
                                   CompareOp::Ge, CompareOp::Lt, CompareOp::Le};

[[noreturn]] void throwNotOgr(const std::string& clause)
{
    throw automation::PlatformError(automation::ErrorNumber::InvalidProcedureCall, kSource,
                                    "where clause \"" + clause +
                                        "\" cannot be run as OGR SQL; evaluate it row by row");
}

// Writes the condition under which a node is true (positive) or false (not positive): OGR SQL
// treats a comparison with Null as false, so Not cannot simply be passed on.
class OgrTranslator {
public:
    OgrTranslator(const WhereClause::FieldResolver& resolve, const std::string& clause)
        : m_resolve(resolve), m_clause(clause)
    {
    }

    std::string sql(const Node& node, bool positive) const
    {
        return std::visit(Overloaded{
                              [&](const And& n) { return junction(n.operands, true, positive); },
                              [&](const Or& n) { return junction(n.operands, false, positive); },
                              [&](const Not& n) { return sql(*n.operand, !positive); },
                              [&](const IsNull& n) {
                                  return field(*n.operand) +
                                         (n.negated == positive ? " IS NOT NULL" : " IS NULL");
                              },
                              [&](const Compare& n) { return compare(n, positive); },
                              [&](const In& n) { return in(n, positive); },
                              [&](const Between& n) { return between(n, positive); },
                              [&](const auto&) -> std::string { throwNotOgr(m_clause); },
                          },
                          node.expression);
    }

private:
    std::string field(const Node& node) const
    {
        return quotedField(m_resolve, m_clause, std::get<Field>(node.expression).name);
    }

    std::string junction(const std::vector<NodePtr>& operands, bool isAnd, bool positive) const
    {
        const bool conjunction = isAnd == positive;
        std::string text = "(";
        for (const NodePtr& operand : operands) {
            if (text.size() > 1) {
                text += conjunction ? " AND " : " OR ";
            }
            text += sql(*operand, positive);
        }
        return text + ")";
    }

    std::string compare(const Compare& n, bool positive) const
    {
        const bool fieldFirst = isField(*n.left);
        const Node& f = fieldFirst ? *n.left : *n.right;
        const Node& v = fieldFirst ? *n.right : *n.left;
        CompareOp op = fieldFirst ? n.op : kMirrored[static_cast<int>(n.op)];
        if (!positive) {
            op = kNegated[static_cast<int>(op)];
        }
        return field(f) + " " + operatorText(op) + " " + quoteText(textOfLiteral(v));
    }

    std::string in(const In& n, bool positive) const
    {
        const std::string f = field(*n.operand);
        std::string items;
        for (const NodePtr& item : n.items) {
            items += (items.empty() ? "" : ", ") + quoteText(textOfLiteral(*item));
        }
        if (n.negated != positive) {
            return f + " IN (" + items + ")";
        }
        return "(" + f + " IS NOT NULL AND " + f + " NOT IN (" + items + "))";
    }

    std::string between(const Between& n, bool positive) const
    {
        const std::string f = field(*n.operand);
        const std::string low = quoteText(textOfLiteral(*n.low));
        const std::string high = quoteText(textOfLiteral(*n.high));
        if (n.negated != positive) {
            return "(" + f + " >= " + low + " AND " + f + " <= " + high + ")";
        }
        return "(" + f + " < " + low + " OR " + f + " > " + high + ")";
    }

    const WhereClause::FieldResolver& m_resolve;
    const std::string& m_clause;
};

bool allOgr(const std::vector<NodePtr>& operands)
{
    return std::all_of(operands.begin(), operands.end(),
                       [](const NodePtr& operand) { return ogrCanExpress(*operand); });
}

} // namespace

bool ogrCanExpress(const Node& root)
{
    return std::visit(
        Overloaded{
            [](const And& n) { return allOgr(n.operands); },
            [](const Or& n) { return allOgr(n.operands); },
            [](const Not& n) { return ogrCanExpress(*n.operand); },
            [](const IsNull& n) { return isField(*n.operand); },
            [](const Compare& n) {
                return (isField(*n.left) && isOgrOperand(*n.right)) ||
                       (isField(*n.right) && isOgrOperand(*n.left));
            },
            [](const In& n) {
                return isField(*n.operand) &&
                       std::all_of(n.items.begin(), n.items.end(),
                                   [](const NodePtr& item) { return isOgrOperand(*item); });
            },
            [](const Between& n) {
                return isField(*n.operand) && isOgrOperand(*n.low) && isOgrOperand(*n.high);
            },
            [](const auto&) { return false; },
        },
        root.expression);
}

std::string toOgrSqlText(const Node& root, const WhereClause::FieldResolver& resolve,
                         const std::string& clause)
{
    if (!ogrCanExpress(root)) {
        throwNotOgr(clause);
    }
    return OgrTranslator(resolve, clause).sql(root, true);
}

} // namespace brevant::platform::geodatabase::whereclause
