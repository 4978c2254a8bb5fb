#pragma once

#include <vector>

namespace brevant::platform::carto {

/// A dash pattern along a line: pattern elements of a mark (drawn) and a gap (left empty),
/// both in multiples of the interval, which is in points. A template without elements is solid.
struct LineTemplate {
    struct PatternElement {
        double mark = 0.0;
        double gap = 0.0;

        bool operator==(const PatternElement&) const = default;
    };

    double interval = 1.0;
    std::vector<PatternElement> elements;

    void addPatternElement(double mark, double gap) { elements.push_back({mark, gap}); }
    int patternElementCount() const { return static_cast<int>(elements.size()); }

    bool operator==(const LineTemplate&) const = default;
};

} // namespace brevant::platform::carto
