#pragma once

#include "platform/carto/Symbol.h"

#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::carto {

/// Classifies a numeric field by upper breaks: class 0 takes values up to break 0, class i the
/// values above break i-1 up to break i; values above the last break, and null or non-numeric
/// values, are not drawn. The minimum break only opens the first class's legend label. Indexes
/// outside 0..breakCount-1 throw PlatformError (9, subscript out of range).
class ClassBreaksRenderer {
public:
    int breakCount() const { return static_cast<int>(m_classes.size()); }
    /// Adds empty classes or drops the last ones.
    void setBreakCount(int count);

    const std::string& field() const { return m_field; }
    void setField(std::string field) { m_field = std::move(field); }

    double minimumBreak() const { return m_minimumBreak; }
    void setMinimumBreak(double value) { m_minimumBreak = value; }

    double breakValue(int index) const;
    void setBreak(int index, double value);
    const std::string& label(int index) const;
    void setLabel(int index, std::string label);
    const std::optional<Symbol>& symbol(int index) const;
    void setSymbol(int index, Symbol symbol);
    /// The symbol of a class, to edit in place.
    std::optional<Symbol>& symbol(int index);

    /// Heading of the renderer's legend group; the field name until one is set (an empty
    /// heading shows none).
    std::string legendHeading() const { return m_heading.value_or(m_field); }
    void setLegendHeading(std::string heading) { m_heading = std::move(heading); }

    /// Name of the colour ramp a symbology editor shows; it does not affect drawing.
    const std::string& colorRampName() const { return m_colorRamp; }
    void setColorRampName(std::string name) { m_colorRamp = std::move(name); }

    /// The class a value falls in, or -1.
    int classIndex(double value) const;

    bool operator==(const ClassBreaksRenderer&) const = default;

private:
    struct Class {
        double upper = 0.0;
        std::string label;
        std::optional<Symbol> symbol;

        bool operator==(const Class&) const = default;
    };
    const Class& at(int index) const;
    Class& at(int index);

    std::string m_field;
    double m_minimumBreak = 0.0;
    std::vector<Class> m_classes;
    std::optional<std::string> m_heading;
    std::string m_colorRamp;
};

} // namespace brevant::platform::carto
