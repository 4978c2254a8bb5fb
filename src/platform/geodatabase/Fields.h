#pragma once

#include "platform/geodatabase/Field.h"

#include <string_view>
#include <vector>

namespace brevant::platform::geodatabase {

/// The fields of a table in the order the library relies on: index 0 the object identifier
/// (OBJECTID), index 1 the shape (feature classes only), then the attributes in storage order.
class Fields {
public:
    Fields() = default;
    explicit Fields(std::vector<Field> fields) : m_fields(std::move(fields)) {}

    int count() const { return static_cast<int>(m_fields.size()); }
    /// Throws PlatformError for an index outside 0..count-1.
    const Field& field(int index) const;
    /// Index of a field by name without regard to case; -1 when missing.
    int findField(std::string_view name) const;
    const std::vector<Field>& all() const { return m_fields; }
    void append(Field field) { m_fields.push_back(std::move(field)); }

private:
    std::vector<Field> m_fields;
};

} // namespace brevant::platform::geodatabase
