#include "platform/geodatabase/WhereClause.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/WhereClauseEvaluator.h"
#include "platform/geodatabase/WhereClauseNode.h"
#include "platform/geodatabase/WhereClauseOgrSql.h"
#include "platform/geodatabase/WhereClauseParser.h"
#include "platform/geodatabase/WhereClauseSqlite.h"

#include <algorithm>

namespace brevant::platform::geodatabase {

namespace {

using namespace whereclause;

void collectFields(const Node& node, std::vector<std::string>& names)
{
    if (const auto* field = std::get_if<Field>(&node.expression)) {
        const bool known = std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return automation::equalsIgnoreCase(name, field->name);
        });
        if (!known) {
            names.push_back(field->name);
        }
        return;
    }
    forEachOperand(node, [&](const Node& operand) { collectFields(operand, names); });
}

} // namespace

WhereClause WhereClause::parse(std::string_view text)
{
    WhereClause clause;
    clause.m_text = std::string(text);
    const bool blank = std::all_of(text.begin(), text.end(), isSpace);
    if (blank) {
        return clause;
    }
    std::shared_ptr<const Node> root = parseClause(text);
    clause.m_needsEvaluation = !ogrCanExpress(*root);
    clause.m_root = std::move(root);
    return clause;
}

std::vector<std::string> WhereClause::fieldNames() const
{
    std::vector<std::string> names;
    if (m_root) {
        collectFields(*m_root, names);
    }
    return names;
}

std::string WhereClause::toSqlite(const FieldResolver& resolve) const
{
    if (!m_root) {
        return "1 = 1";
    }
    return toSqliteSql(*m_root, resolve, m_text);
}

std::string WhereClause::toOgrSql(const FieldResolver& resolve) const
{
    if (!m_root) {
        return "1 = 1";
    }
    return toOgrSqlText(*m_root, resolve, m_text);
}

bool WhereClause::matches(const ValueOf& valueOf) const
{
    if (!m_root) {
        return true;
    }
    return evaluate(*m_root, valueOf) == Truth::True;
}

} // namespace brevant::platform::geodatabase
