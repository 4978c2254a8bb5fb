#include "platform/automation/VariantArray.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/Variant.h"

#include <utility>

namespace brevant::platform::automation {

namespace {
[[noreturn]] void outOfRange()
{
    throw AutomationError(ErrorNumber::SubscriptOutOfRange, "Brevant", "Subscript out of range");
}
} // namespace

VariantArray::VariantArray() : m_bounds{Bound{0, 0}}
{
}

VariantArray::VariantArray(int32_t count, int32_t lower)
    : m_bounds{Bound{lower, count < 0 ? 0 : count}}, m_items(m_bounds[0].count)
{
}

VariantArray::VariantArray(Bound rows, Bound columns)
    : m_bounds{rows, columns},
      m_items(static_cast<std::size_t>(rows.count < 0 ? 0 : rows.count) *
              static_cast<std::size_t>(columns.count < 0 ? 0 : columns.count))
{
}

VariantArray VariantArray::of(std::vector<Variant> values)
{
    VariantArray array;
    array.m_bounds[0].count = static_cast<int32_t>(values.size());
    array.m_items = std::move(values);
    return array;
}

int32_t VariantArray::lowerBound(int dimension) const
{
    if (dimension < 1 || dimension > dimensions()) {
        outOfRange();
    }
    return m_bounds[dimension - 1].lower;
}

int32_t VariantArray::upperBound(int dimension) const
{
    return lowerBound(dimension) + m_bounds[dimension - 1].count - 1;
}

std::size_t VariantArray::size() const
{
    return m_items.size();
}

Variant& VariantArray::at(int32_t i)
{
    return const_cast<Variant&>(std::as_const(*this).at(i));
}

const Variant& VariantArray::at(int32_t i) const
{
    if (dimensions() != 1) {
        outOfRange();
    }
    const int64_t offset = int64_t{i} - m_bounds[0].lower;
    if (offset < 0 || offset >= m_bounds[0].count) {
        outOfRange();
    }
    return m_items[static_cast<std::size_t>(offset)];
}

Variant& VariantArray::at(int32_t i, int32_t j)
{
    return const_cast<Variant&>(std::as_const(*this).at(i, j));
}

const Variant& VariantArray::at(int32_t i, int32_t j) const
{
    if (dimensions() != 2) {
        outOfRange();
    }
    const int64_t row = int64_t{i} - m_bounds[0].lower;
    const int64_t column = int64_t{j} - m_bounds[1].lower;
    if (row < 0 || row >= m_bounds[0].count || column < 0 || column >= m_bounds[1].count) {
        outOfRange();
    }
    return m_items[static_cast<std::size_t>(row * m_bounds[1].count + column)];
}

const std::vector<Variant>& VariantArray::elements() const
{
    return m_items;
}

std::vector<Variant>& VariantArray::elements()
{
    return m_items;
}

bool VariantArray::operator==(const VariantArray& other) const
{
    return m_bounds == other.m_bounds && m_items == other.m_items;
}

} // namespace brevant::platform::automation
