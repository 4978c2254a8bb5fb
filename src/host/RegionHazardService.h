#pragma once

#include "host/HostService.h"

#include <cstdint>

namespace brevant::host {

/// The host's record of which hazards each study region covers. Every operation the host does
/// not provide raises automation error 438.
class RegionHazardService : public HostService {
public:
    /// Sets the three hazard flags of the region with the given number, in the host's order.
    virtual void GetHazardFlags(int16_t regionNumber, bool& flag1, bool& flag2, bool& flag3);
};

inline void RegionHazardService::GetHazardFlags(int16_t, bool&, bool&, bool&)
{
    unsupported("RegionHazardService", "GetHazardFlags");
}

} // namespace brevant::host
