#include "platform/geodatabase/Row.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Fields.h"

#include <cstdint>

namespace brevant::platform::geodatabase {

using automation::PlatformError;

Row::Row(std::shared_ptr<const Fields> fields, int64_t oid)
    : m_fields(std::move(fields)),
      m_oid(oid),
      m_values(static_cast<std::size_t>(m_fields->count())),
      m_changed(static_cast<std::size_t>(m_fields->count()), false)
{
    if (!m_values.empty()) {
        // Object identifiers are Long values unless they outgrow 32 bits.
        m_values[0] = oid >= INT32_MIN && oid <= INT32_MAX
                          ? automation::Variant(static_cast<int32_t>(oid))
                          : automation::Variant(static_cast<double>(oid));
    }
}

void Row::checkIndex(int index) const
{
    if (!m_fields || index < 0 || index >= m_fields->count()) {
        throw PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Row",
                            "field index " + std::to_string(index) + " is outside the row");
    }
}

const automation::Variant& Row::value(int index) const
{
    checkIndex(index);
    return m_values[static_cast<std::size_t>(index)];
}

void Row::setValue(int index, automation::Variant value)
{
    checkIndex(index);
    const auto type = m_fields->field(index).type;
    if (type == FieldType::OID || type == FieldType::Geometry) {
        throw PlatformError(automation::ErrorNumber::InvalidProcedureCall, "Row",
                            "field " + m_fields->field(index).name + " cannot be set as a value");
    }
    m_values[static_cast<std::size_t>(index)] = std::move(value);
    m_changed[static_cast<std::size_t>(index)] = true;
}

void Row::setShape(geometry::Geometry shape)
{
    m_shape = std::move(shape);
    const int shapeIndex = 1;
    if (m_fields && m_fields->count() > shapeIndex &&
        m_fields->field(shapeIndex).type == FieldType::Geometry) {
        m_changed[shapeIndex] = true;
    }
}

void Row::load(int index, automation::Variant value)
{
    m_values[static_cast<std::size_t>(index)] = std::move(value);
}

} // namespace brevant::platform::geodatabase
