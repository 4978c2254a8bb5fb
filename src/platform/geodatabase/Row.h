#pragma once

#include "platform/automation/Variant.h"
#include "platform/geometry/Geometry.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace brevant::platform::geodatabase {

class Fields;

/// One row (a feature when its table has a shape): values by field index, in the table's
/// field order. The object identifier is at index 0 and the shape, for feature classes, at
/// index 1 (read it with shape()).
class Row {
public:
    Row() = default;
    Row(std::shared_ptr<const Fields> fields, int64_t oid);

    int64_t oid() const { return m_oid; }
    const Fields& fields() const { return *m_fields; }
    /// Value by field index (index 1 of a feature class holds Empty; use shape()). Throws
    /// PlatformError for an index outside the fields.
    const automation::Variant& value(int index) const;
    /// Sets a value; the object identifier and the shape cannot be set this way.
    void setValue(int index, automation::Variant value);
    const geometry::Geometry& shape() const { return m_shape; }
    void setShape(geometry::Geometry shape);

    /// For the storage code: sets any value, marks nothing.
    void load(int index, automation::Variant value);
    void loadShape(geometry::Geometry shape) { m_shape = std::move(shape); }
    void setOid(int64_t oid) { m_oid = oid; }
    /// Which values were set since the row was read (index 1 stands for the shape).
    const std::vector<bool>& changed() const { return m_changed; }

private:
    void checkIndex(int index) const;

    std::shared_ptr<const Fields> m_fields;
    int64_t m_oid = -1;
    std::vector<automation::Variant> m_values;
    std::vector<bool> m_changed;
    geometry::Geometry m_shape;
};

} // namespace brevant::platform::geodatabase
