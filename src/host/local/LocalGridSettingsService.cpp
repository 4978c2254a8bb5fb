#include "host/local/LocalGridSettingsService.h"

#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/Variant.h"

namespace brevant::host::local {

void LocalGridSettingsService::GetGridParameters(double& parameter1, double& parameter2,
                                                 double& parameter3, double& parameter4,
                                                 double& parameter5, double& parameter6)
{
    const auto host = HostRoot::load(m_root);
    const RegionDatabase region(host.regionDatabasePath(host.currentRegion()));
    std::array<double, 6> values = kDefaults;
    // Read all six before handing any back: a bad value leaves the caller's untouched.
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (const auto text = region.readOptional("ContourGrid", std::string(kKeys[i]))) {
            values[i] = platform::automation::Variant(*text).toDouble();
        }
    }
    parameter1 = values[0];
    parameter2 = values[1];
    parameter3 = values[2];
    parameter4 = values[3];
    parameter5 = values[4];
    parameter6 = values[5];
}

} // namespace brevant::host::local
