#pragma once

#include "host/HostService.h"

namespace brevant::host {

/// The host's settings of the study region's contour grid. Every operation the host does not
/// provide raises automation error 438.
class GridSettingsService : public HostService {
public:
    /// The six grid parameters, handed unchanged to GisDataService::BuildGridPoints.
    virtual void GetGridParameters(double& parameter1, double& parameter2, double& parameter3,
                                   double& parameter4, double& parameter5, double& parameter6);
};

inline void GridSettingsService::GetGridParameters(double&, double&, double&, double&, double&,
                                                   double&)
{
    unsupported("GridSettingsService", "GetGridParameters");
}

} // namespace brevant::host
