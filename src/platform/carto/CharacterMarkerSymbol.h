#pragma once

#include "platform/carto/RgbColor.h"

#include <string>

namespace brevant::platform::carto {

/// A marker drawn as one character of a font (a symbol font, as a rule). Where the font is not
/// installed the display draws a shape chosen by the character index instead, so the marker is
/// never blank. Size in points; angle in degrees counter-clockwise.
struct CharacterMarkerSymbol {
    std::string fontName;
    int characterIndex = 33;
    double size = 8.0;
    double angle = 0.0;
    RgbColor color;

    bool operator==(const CharacterMarkerSymbol&) const = default;
};

} // namespace brevant::platform::carto
