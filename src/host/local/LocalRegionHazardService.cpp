#include "host/local/LocalRegionHazardService.h"

#include "host/local/HostRoot.h"

namespace brevant::host::local {

void LocalRegionHazardService::GetHazardFlags(int16_t regionNumber, bool& flag1, bool& flag2,
                                              bool& flag3)
{
    const auto host = HostRoot::load(m_root);
    const auto& flags = host.regionByNumber(regionNumber).hazards;
    flag1 = flags[0];
    flag2 = flags[1];
    flag3 = flags[2];
}

} // namespace brevant::host::local
