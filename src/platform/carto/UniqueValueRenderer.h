#pragma once

#include "platform/automation/Variant.h"
#include "platform/carto/Symbol.h"

#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::carto {

/// How a unique-value renderer compares a feature's value with its values.
enum class ValueFieldType : int {
    /// Numbers as numbers when both sides read as numbers, text otherwise.
    Unset = 0,
    /// Text: the feature's value as text equals the value exactly.
    Text = 1,
    /// Numbers: equal as numbers ("8" matches 8.0).
    Numeric = 2,
};

/// Draws each feature with the symbol of its field value. Values are kept as text in the order
/// they were added, each with a heading, a label (the value until one is set) and a symbol.
/// Features whose value is not listed get the default symbol when one is in use, and are not
/// drawn otherwise. Unknown values and indexes throw PlatformError (9).
class UniqueValueRenderer {
public:
    int fieldCount() const { return static_cast<int>(m_fields.size()); }
    void setFieldCount(int count);
    const std::string& field(int index) const;
    void setField(int index, std::string name);
    ValueFieldType fieldType() const { return m_fieldType; }
    void setFieldType(ValueFieldType type) { m_fieldType = type; }

    /// Adds a value; throws PlatformError (457, duplicate key) when it is listed already.
    void addValue(std::string value, std::string heading, Symbol symbol);
    void removeValue(const std::string& value);
    void removeAllValues() { m_values.clear(); }
    int valueCount() const { return static_cast<int>(m_values.size()); }
    /// The value at a position, in the order of adding.
    const std::string& value(int index) const;
    bool hasValue(const std::string& value) const { return find(value) >= 0; }

    const std::string& heading(const std::string& value) const;
    void setHeading(const std::string& value, std::string heading);
    const std::string& label(const std::string& value) const;
    void setLabel(const std::string& value, std::string label);
    const std::optional<Symbol>& symbol(const std::string& value) const;
    std::optional<Symbol>& symbol(const std::string& value);
    void setSymbol(const std::string& value, Symbol symbol);

    bool useDefaultSymbol() const { return m_useDefault; }
    void setUseDefaultSymbol(bool use) { m_useDefault = use; }
    const std::optional<Symbol>& defaultSymbol() const { return m_defaultSymbol; }
    void setDefaultSymbol(Symbol symbol) { m_defaultSymbol = std::move(symbol); }
    const std::string& defaultLabel() const { return m_defaultLabel; }
    void setDefaultLabel(std::string label) { m_defaultLabel = std::move(label); }

    /// Position of the value a feature's field value matches, or -1.
    int match(const automation::Variant& fieldValue) const;
    /// The symbol for a feature's field value, or null when it is not drawn.
    const Symbol* symbolFor(const automation::Variant& fieldValue) const;

    bool operator==(const UniqueValueRenderer&) const = default;

private:
    struct Entry {
        std::string value;
        std::string heading;
        std::optional<std::string> label;
        std::optional<Symbol> symbol;
        // The value read as a number, when it is one.
        std::optional<double> number;

        bool operator==(const Entry&) const = default;
    };
    int find(const std::string& value) const;
    const Entry& entry(const std::string& value) const;
    Entry& entry(const std::string& value);

    std::vector<std::string> m_fields;
    ValueFieldType m_fieldType = ValueFieldType::Unset;
    std::vector<Entry> m_values;
    bool m_useDefault = false;
    std::optional<Symbol> m_defaultSymbol;
    std::string m_defaultLabel;
};

} // namespace brevant::platform::carto
