#include "platform/carto/UniqueValueRenderer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <charconv>
#include <utility>

namespace brevant::platform::carto {

using automation::PlatformError;

namespace {
std::optional<double> numberIn(std::string_view text)
{
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

// Numbers held as numbers; numeric text stays text unless the field is declared numeric.
bool holdsNumber(const automation::Variant& value)
{
    using automation::VariantType;
    const VariantType type = value.type();
    return type == VariantType::Int16 || type == VariantType::Int32 ||
           type == VariantType::Double || type == VariantType::Boolean;
}

[[noreturn]] void failMissing(const std::string& what)
{
    throw PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Carto",
                        "the unique-value renderer has no " + what);
}
} // namespace

void UniqueValueRenderer::setFieldCount(int count)
{
    if (count < 0 || count > 3) {
        throw PlatformError(automation::ErrorNumber::InvalidProcedureCall, "Carto",
                            "a unique-value renderer takes 0 to 3 fields, not " +
                                std::to_string(count));
    }
    m_fields.resize(static_cast<std::size_t>(count));
}

const std::string& UniqueValueRenderer::field(int index) const
{
    if (index < 0 || index >= fieldCount()) {
        failMissing("field " + std::to_string(index));
    }
    return m_fields[static_cast<std::size_t>(index)];
}

void UniqueValueRenderer::setField(int index, std::string name)
{
    if (index < 0 || index >= fieldCount()) {
        failMissing("field " + std::to_string(index));
    }
    m_fields[static_cast<std::size_t>(index)] = std::move(name);
}

int UniqueValueRenderer::find(const std::string& value) const
{
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (m_values[i].value == value) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

const UniqueValueRenderer::Entry& UniqueValueRenderer::entry(const std::string& value) const
{
    const int index = find(value);
    if (index < 0) {
        failMissing("value \"" + value + "\"");
    }
    return m_values[static_cast<std::size_t>(index)];
}

UniqueValueRenderer::Entry& UniqueValueRenderer::entry(const std::string& value)
{
    return const_cast<Entry&>(std::as_const(*this).entry(value));
}

void UniqueValueRenderer::addValue(std::string value, std::string heading, Symbol symbol)
{
    if (find(value) >= 0) {
        throw PlatformError(automation::ErrorNumber::DuplicateKey, "Carto",
                            "the unique-value renderer lists the value \"" + value + "\" already");
    }
    const auto number = numberIn(value);
    m_values.push_back(
        {std::move(value), std::move(heading), std::nullopt, std::move(symbol), number});
}

void UniqueValueRenderer::removeValue(const std::string& value)
{
    const int index = find(value);
    if (index >= 0) {
        m_values.erase(m_values.begin() + index);
    }
}

const std::string& UniqueValueRenderer::value(int index) const
{
    if (index < 0 || index >= valueCount()) {
        failMissing("value at position " + std::to_string(index));
    }
    return m_values[static_cast<std::size_t>(index)].value;
}

const std::string& UniqueValueRenderer::heading(const std::string& value) const
{
    return entry(value).heading;
}

void UniqueValueRenderer::setHeading(const std::string& value, std::string heading)
{
    entry(value).heading = std::move(heading);
}

const std::string& UniqueValueRenderer::label(const std::string& value) const
{
    const Entry& found = entry(value);
    return found.label ? *found.label : found.value;
}

void UniqueValueRenderer::setLabel(const std::string& value, std::string label)
{
    entry(value).label = std::move(label);
}

const std::optional<Symbol>& UniqueValueRenderer::symbol(const std::string& value) const
{
    return entry(value).symbol;
}

std::optional<Symbol>& UniqueValueRenderer::symbol(const std::string& value)
{
    return entry(value).symbol;
}

void UniqueValueRenderer::setSymbol(const std::string& value, Symbol symbol)
{
    entry(value).symbol = std::move(symbol);
}

int UniqueValueRenderer::match(const automation::Variant& fieldValue) const
{
    if (fieldValue.isNull() || fieldValue.isEmpty()) {
        return -1;
    }
    std::optional<double> number;
    if (m_fieldType != ValueFieldType::Text) {
        number = holdsNumber(fieldValue) ? std::optional<double>(fieldValue.toDouble())
                                         : numberIn(fieldValue.toString());
    }
    if (m_fieldType == ValueFieldType::Numeric) {
        if (!number) {
            return -1;
        }
        for (std::size_t i = 0; i < m_values.size(); ++i) {
            if (m_values[i].number && *m_values[i].number == *number) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }
    const std::string text = fieldValue.toString();
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const Entry& candidate = m_values[i];
        const bool numeric =
            m_fieldType == ValueFieldType::Unset && holdsNumber(fieldValue) && candidate.number;
        if (numeric ? *candidate.number == *number : candidate.value == text) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

const Symbol* UniqueValueRenderer::symbolFor(const automation::Variant& fieldValue) const
{
    const int index = match(fieldValue);
    if (index >= 0) {
        const auto& symbol = m_values[static_cast<std::size_t>(index)].symbol;
        return symbol ? &*symbol : nullptr;
    }
    return m_useDefault && m_defaultSymbol ? &*m_defaultSymbol : nullptr;
}

} // namespace brevant::platform::carto
