#pragma once

#include "platform/carto/MapSurround.h"

namespace brevant::platform::carto {

/// Distance units of a scale bar.
enum class ScaleUnits : int { Miles = 0, Kilometers = 1 };

/// A scale bar: a line of a round length in the map's ground units, divided by ticks into
/// equal divisions, with the distances written under its ends and middle. Its length is the
/// largest round distance that fits its frame at the map frame's scale.
class ScaleLine : public MapSurround {
public:
    std::string_view className() const override { return "ScaleLine"; }
    SurroundKind kind() const override { return SurroundKind::ScaleLine; }

    int divisions() const { return m_divisions; }
    /// At least one division.
    void setDivisions(int divisions) { m_divisions = divisions < 1 ? 1 : divisions; }
    ScaleUnits units() const { return m_units; }
    void setUnits(ScaleUnits units) { m_units = units; }

private:
    int m_divisions = 4;
    ScaleUnits m_units = ScaleUnits::Miles;
};

} // namespace brevant::platform::carto
