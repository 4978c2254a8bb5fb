#include "platform/geodatabase/RelationshipClass.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"

#include <optional>

namespace brevant::platform::geodatabase {

namespace {
[[noreturn]] void fail(const std::string& message)
{
    throw automation::PlatformError(automation::ErrorNumber::InvalidArgument, "Brevant.Geodatabase",
                                    message);
}

int requireField(const Table& table, const std::string& field, const std::string& relationship)
{
    const int index = table.findField(field);
    if (index < 0) {
        fail("relationship " + relationship + ": field " + field + " is not in " + table.name());
    }
    return index;
}

// Keys match by text; a Null or Empty key relates to nothing.
std::optional<std::string> keyOf(const automation::Variant& value)
{
    if (value.isNull() || value.isEmpty()) {
        return std::nullopt;
    }
    return value.toString();
}
} // namespace

RelationshipClass::RelationshipClass(Definition definition) : m_definition(std::move(definition))
{
    if (!m_definition.origin || !m_definition.destination) {
        fail("relationship " + m_definition.name + " needs an origin and a destination table");
    }
    m_originKey =
        requireField(*m_definition.origin, m_definition.originPrimaryKey, m_definition.name);
    m_destinationKey =
        requireField(*m_definition.destination, m_definition.originForeignKey, m_definition.name);
}

void RelationshipClass::loadOrigin() const
{
    if (m_loaded) {
        return;
    }
    Cursor cursor = m_definition.origin->search();
    Row row;
    while (cursor.next(row)) {
        if (auto key = keyOf(row.value(m_originKey))) {
            m_origins[*key].push_back(row);
        }
    }
    m_loaded = true;
}

std::vector<Row> RelationshipClass::relatedOrigins(const Row& destination) const
{
    loadOrigin();
    const auto key = keyOf(destination.value(m_destinationKey));
    if (!key) {
        return {};
    }
    const auto found = m_origins.find(*key);
    return found == m_origins.end() ? std::vector<Row>{} : found->second;
}

JoinedTable::JoinedTable(std::shared_ptr<const RelationshipClass> relationship, Kind kind)
    : m_relationship(std::move(relationship)), m_kind(kind), m_fields(std::make_shared<Fields>())
{
    const auto& definition = m_relationship->definition();
    for (const Table* table : {definition.destination.get(), definition.origin.get()}) {
        for (Field field : table->fields().all()) {
            field.aliasName = field.alias();
            field.name = table->name() + "." + field.name;
            m_fields->append(std::move(field));
        }
    }
    m_destinationCount = definition.destination->fields().count();
}

int JoinedTable::findField(std::string_view name) const
{
    const int qualified = m_fields->findField(name);
    if (qualified >= 0 || name.find('.') != std::string_view::npos) {
        return qualified;
    }
    for (int i = 0; i < m_fields->count(); ++i) {
        const std::string& full = m_fields->field(i).name;
        const auto dot = full.find('.');
        if (automation::equalsIgnoreCase(std::string_view(full).substr(dot + 1), name)) {
            return i;
        }
    }
    return -1;
}

std::vector<Row> JoinedTable::rows(const QueryFilter& filter) const
{
    const auto& definition = m_relationship->definition();
    const int originCount = definition.origin->fields().count();
    std::vector<Row> joined;
    Cursor cursor = definition.destination->search(filter);
    Row row;
    while (cursor.next(row)) {
        const std::vector<Row> related = m_relationship->relatedOrigins(row);
        if (related.empty() && m_kind == Kind::Inner) {
            continue;
        }
        Row out(m_fields, row.oid());
        for (int i = 0; i < m_destinationCount; ++i) {
            out.load(i, row.value(i));
        }
        out.loadShape(row.shape());
        for (int i = 0; i < originCount; ++i) {
            out.load(m_destinationCount + i,
                     related.empty() ? automation::Variant::null() : related.front().value(i));
        }
        joined.push_back(std::move(out));
    }
    return joined;
}

} // namespace brevant::platform::geodatabase
