#pragma once

#include "host/HostService.h"
#include "platform/automation/Variant.h"

#include <cstdint>

namespace brevant::host {

/// The host's store of the geographic units chosen for a new study region, by unit level
/// (0 state, 1 county, 2 census tract, 3 census block). Units travel as recordsets in variants:
/// column 0 and 1 hold the unit's codes, column 2 a flag of the host. Every operation the host
/// does not provide raises automation error 438.
class RegionSelectionStore : public HostService {
public:
    using Variant = platform::automation::Variant;

    /// The units chosen so far at a level, as a recordset whose record count is known.
    virtual Variant GetRegionUnits(int16_t level);
    /// An editable recordset of a level to which new units are added.
    virtual Variant OpenRegionUnits(int16_t level, bool editable);
    /// Stores the records added to a recordset from OpenRegionUnits.
    virtual void SaveRegionUnits(const Variant& units);
};

inline platform::automation::Variant RegionSelectionStore::GetRegionUnits(int16_t)
{
    unsupported("RegionSelectionStore", "GetRegionUnits");
}

inline platform::automation::Variant RegionSelectionStore::OpenRegionUnits(int16_t, bool)
{
    unsupported("RegionSelectionStore", "OpenRegionUnits");
}

inline void RegionSelectionStore::SaveRegionUnits(const Variant&)
{
    unsupported("RegionSelectionStore", "SaveRegionUnits");
}

} // namespace brevant::host
