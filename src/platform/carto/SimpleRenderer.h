#pragma once

#include "platform/carto/Symbol.h"

#include <optional>
#include <string>

namespace brevant::platform::carto {

/// Draws every feature with one symbol; without a symbol nothing is drawn.
struct SimpleRenderer {
    std::optional<Symbol> symbol;
    std::string label;
    std::string description;

    bool operator==(const SimpleRenderer&) const = default;
};

} // namespace brevant::platform::carto
