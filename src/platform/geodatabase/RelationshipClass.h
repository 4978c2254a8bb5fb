#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/geodatabase/Row.h"
#include "platform/geodatabase/Table.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace brevant::platform::geodatabase {

enum class Cardinality : int { OneToOne = 1, OneToMany = 2, ManyToMany = 3 };

/// A relationship built in memory between an origin table (often a server table of the
/// region's tabular database) and a destination class: a destination row is related to the
/// origin rows whose primary key equals the destination's foreign key. Keys compare by their
/// text form, so a numeric key matches the same number stored as text.
class RelationshipClass : public automation::AutomationObject {
public:
    struct Definition {
        std::string name;
        std::shared_ptr<Table> origin;
        std::string originPrimaryKey;
        std::shared_ptr<Table> destination;
        std::string originForeignKey;
        std::string forwardLabel;
        std::string backwardLabel;
        Cardinality cardinality = Cardinality::OneToMany;
    };

    /// Throws PlatformError when a table is missing or a key field is not in its table.
    explicit RelationshipClass(Definition definition);

    std::string_view className() const override { return "RelationshipClass"; }

    const Definition& definition() const { return m_definition; }
    const std::string& name() const { return m_definition.name; }
    int originKeyIndex() const { return m_originKey; }
    int destinationKeyIndex() const { return m_destinationKey; }

    /// The origin rows related to a destination row, in identifier order. The origin is read
    /// once, on first use.
    std::vector<Row> relatedOrigins(const Row& destination) const;

private:
    void loadOrigin() const;

    Definition m_definition;
    int m_originKey = -1;
    int m_destinationKey = -1;
    mutable bool m_loaded = false;
    mutable std::unordered_map<std::string, std::vector<Row>> m_origins;
};

/// The destination class seen through a relationship as one table: its own fields followed by
/// the origin's, named "destination.field" and "origin.field" (a plain name finds the first
/// field of that name). A left outer join keeps every destination row, with null origin values
/// where nothing is related; an inner join drops those rows. With several related rows the
/// first (lowest identifier) is shown.
class JoinedTable {
public:
    enum class Kind : int { LeftOuter = 0, Inner = 1 };

    JoinedTable(std::shared_ptr<const RelationshipClass> relationship, Kind kind);

    const RelationshipClass& relationship() const { return *m_relationship; }
    Kind kind() const { return m_kind; }
    const Fields& fields() const { return *m_fields; }
    /// By qualified or plain name without regard to case; -1 when missing.
    int findField(std::string_view name) const;

    /// Joined rows for the destination rows `filter` selects, in identifier order; each row's
    /// identifier and shape are the destination's.
    std::vector<Row> rows(const QueryFilter& filter = {}) const;

private:
    std::shared_ptr<const RelationshipClass> m_relationship;
    Kind m_kind;
    std::shared_ptr<Fields> m_fields;
    int m_destinationCount = 0;
};

} // namespace brevant::platform::geodatabase
