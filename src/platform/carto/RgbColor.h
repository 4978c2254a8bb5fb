#pragma once

#include <cstdint>

namespace brevant::platform::carto {

/// A colour as red, green and blue components of 0 to 255.
struct RgbColor {
    int red = 0;
    int green = 0;
    int blue = 0;

    /// From a Windows RGB value (red in the low byte).
    static RgbColor fromRgb(int32_t value)
    {
        return {value & 0xFF, (value >> 8) & 0xFF, (value >> 16) & 0xFF};
    }
    /// As a Windows RGB value (red in the low byte), as colour dialogs and picture boxes take it.
    int32_t rgb() const { return (red & 0xFF) | (green & 0xFF) << 8 | (blue & 0xFF) << 16; }

    bool operator==(const RgbColor&) const = default;
};

} // namespace brevant::platform::carto
