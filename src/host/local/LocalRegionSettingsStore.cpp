#include "host/local/LocalRegionSettingsStore.h"

#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"

namespace brevant::host::local {

std::filesystem::path LocalRegionSettingsStore::databaseOf(const std::string& region) const
{
    return HostRoot::load(m_root).regionDatabasePath(region);
}

std::filesystem::path LocalRegionSettingsStore::currentDatabase() const
{
    const auto host = HostRoot::load(m_root);
    return host.regionDatabasePath(host.currentRegion());
}

int32_t LocalRegionSettingsStore::ReadInt32(const std::string& section, const std::string& key)
{
    return RegionDatabase(currentDatabase()).readInt32(section, key);
}

void LocalRegionSettingsStore::WriteInt32(const std::string& section, const std::string& key,
                                          int32_t value)
{
    RegionDatabase(currentDatabase()).write(section, key, std::to_string(value));
}

void LocalRegionSettingsStore::WriteString(const std::string& section, const std::string& key,
                                           const std::string& value)
{
    RegionDatabase(currentDatabase()).write(section, key, value);
}

std::string LocalRegionSettingsStore::ReadString(const std::string& section, const std::string& key)
{
    return RegionDatabase(currentDatabase()).readString(section, key);
}

int32_t LocalRegionSettingsStore::ReadRegionInt32(const std::string& region,
                                                  const std::string& section,
                                                  const std::string& key)
{
    return RegionDatabase(databaseOf(region)).readInt32(section, key);
}

void LocalRegionSettingsStore::WriteRegionInt32(const std::string& region,
                                                const std::string& section, const std::string& key,
                                                int32_t value)
{
    RegionDatabase(databaseOf(region)).write(section, key, std::to_string(value));
}

std::string LocalRegionSettingsStore::ReadRegionString(const std::string& region,
                                                       const std::string& section,
                                                       const std::string& key)
{
    return RegionDatabase(databaseOf(region)).readString(section, key);
}

} // namespace brevant::host::local
