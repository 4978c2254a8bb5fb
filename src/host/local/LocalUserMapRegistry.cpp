#include "host/local/LocalUserMapRegistry.h"

#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"

namespace brevant::host::local {

void LocalUserMapRegistry::GetUserMap(const std::string& mapType, std::string& fileName,
                                      std::string& className, std::string& folder)
{
    const auto host = HostRoot::load(m_root);
    const std::string region = host.currentRegion();
    const auto map = RegionDatabase(host.regionDatabasePath(region)).userMap(mapType);
    fileName = map ? map->fileName : "";
    className = map ? map->className : "";
    folder = map ? host.regionFolder(region) + map->folder : "";
}

void LocalUserMapRegistry::MarkMapProcessed(const std::string& mapType)
{
    const auto host = HostRoot::load(m_root);
    RegionDatabase(host.regionDatabasePath(host.currentRegion())).markMapProcessed(mapType);
}

} // namespace brevant::host::local
