#pragma once

#include "host/HostService.h"

#include <string>

namespace brevant::host {

/// The host's register of the hazard and site-condition maps the user supplied, by four-letter
/// hazard code ("SOIL", "PGAM", ...). Every operation the host does not provide raises
/// automation error 438.
class UserMapRegistry : public HostService {
public:
    /// The user's map of a code: database file name (empty when none), class name and folder.
    virtual void GetUserMap(const std::string& mapType, std::string& fileName,
                            std::string& className, std::string& folder);
    /// Tells the host that the map of a code was processed into the study region.
    virtual void MarkMapProcessed(const std::string& mapType);
};

inline void UserMapRegistry::GetUserMap(const std::string&, std::string&, std::string&,
                                        std::string&)
{
    unsupported("UserMapRegistry", "GetUserMap");
}

inline void UserMapRegistry::MarkMapProcessed(const std::string&)
{
    unsupported("UserMapRegistry", "MarkMapProcessed");
}

} // namespace brevant::host
