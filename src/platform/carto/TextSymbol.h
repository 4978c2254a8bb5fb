#pragma once

#include "platform/carto/RgbColor.h"

#include <string>

namespace brevant::platform::carto {

enum class HorizontalAlignment : int { Left = 0, Center = 1, Right = 2 };
enum class VerticalAlignment : int { Top = 0, Center = 1, Baseline = 2, Bottom = 3 };

/// How a text is drawn. Size in points; an empty font name takes the display's sans-serif
/// font. By default a text starts at its point and stands on it (left, baseline).
struct TextSymbol {
    std::string fontName;
    double size = 10.0;
    RgbColor color;
    bool bold = false;
    bool italic = false;
    double angle = 0.0;
    HorizontalAlignment horizontalAlignment = HorizontalAlignment::Left;
    VerticalAlignment verticalAlignment = VerticalAlignment::Baseline;

    bool operator==(const TextSymbol&) const = default;
};

} // namespace brevant::platform::carto
