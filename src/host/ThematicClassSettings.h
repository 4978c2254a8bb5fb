#pragma once

#include "host/HostService.h"
#include "platform/automation/Variant.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's classification settings of thematic maps, per thematic map type: class counts and
/// colours of class-break maps, and values, labels, colours and titles of unique-value maps.
/// Lists come as two-dimensional arrays in variants, one row per class or value, colours as
/// texts "red,green,blue". Operations without a type answer for the type last given to
/// GetClassCount or GetValueCount. Every operation the host does not provide raises automation
/// error 438.
class ThematicClassSettings : public HostService {
public:
    using Variant = platform::automation::Variant;

    /// Number of classes of a class-break map of a type.
    virtual int32_t GetClassCount(int16_t mapType);
    /// Called before the colour lists and the unique-value title are read.
    virtual void Prepare();
    /// Title of a class-break map.
    virtual std::string GetClassTitle();
    /// Colour of the one class of a map whose value range is empty.
    virtual std::string GetSingleColour();
    /// Break fractions of a class-break map (read, but no break rule uses them).
    virtual Variant GetBreakFractions();
    /// Number of values of a unique-value map of a type.
    virtual int32_t GetValueCount(int16_t mapType);
    /// Title of a unique-value map, used as its layer name.
    virtual std::string GetValueTitle();
    /// Kind of the mapped field of a unique-value map: "C" text, "N" numeric.
    virtual std::string GetValueFieldKind();
    /// Legend label of each value.
    virtual Variant GetValueLabels();
    /// Colour of each value.
    virtual Variant GetValueColours();
    /// The values of a unique-value map.
    virtual Variant GetValues();
    /// Colour of each class of a class-break map.
    virtual Variant GetClassColours();
};

inline int32_t ThematicClassSettings::GetClassCount(int16_t)
{
    unsupported("ThematicClassSettings", "GetClassCount");
}

inline void ThematicClassSettings::Prepare()
{
    unsupported("ThematicClassSettings", "Prepare");
}

inline std::string ThematicClassSettings::GetClassTitle()
{
    unsupported("ThematicClassSettings", "GetClassTitle");
}

inline std::string ThematicClassSettings::GetSingleColour()
{
    unsupported("ThematicClassSettings", "GetSingleColour");
}

inline platform::automation::Variant ThematicClassSettings::GetBreakFractions()
{
    unsupported("ThematicClassSettings", "GetBreakFractions");
}

inline int32_t ThematicClassSettings::GetValueCount(int16_t)
{
    unsupported("ThematicClassSettings", "GetValueCount");
}

inline std::string ThematicClassSettings::GetValueTitle()
{
    unsupported("ThematicClassSettings", "GetValueTitle");
}

inline std::string ThematicClassSettings::GetValueFieldKind()
{
    unsupported("ThematicClassSettings", "GetValueFieldKind");
}

inline platform::automation::Variant ThematicClassSettings::GetValueLabels()
{
    unsupported("ThematicClassSettings", "GetValueLabels");
}

inline platform::automation::Variant ThematicClassSettings::GetValueColours()
{
    unsupported("ThematicClassSettings", "GetValueColours");
}

inline platform::automation::Variant ThematicClassSettings::GetValues()
{
    unsupported("ThematicClassSettings", "GetValues");
}

inline platform::automation::Variant ThematicClassSettings::GetClassColours()
{
    unsupported("ThematicClassSettings", "GetClassColours");
}

} // namespace brevant::host
