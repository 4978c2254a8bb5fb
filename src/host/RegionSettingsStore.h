#pragma once

#include "host/HostService.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's settings of each study region, by section and key ("General"/"AggLevel"). Reading a
/// key that does not exist fails with the host's error; every operation the host does not
/// provide raises automation error 438.
class RegionSettingsStore : public HostService {
public:
    /// Reads a 32-bit integer setting of the current region.
    virtual int32_t ReadInt32(const std::string& section, const std::string& key);
    /// Writes a 32-bit integer setting of the current region.
    virtual void WriteInt32(const std::string& section, const std::string& key, int32_t value);
    /// Reads a text setting of the current region.
    virtual std::string ReadString(const std::string& section, const std::string& key);
    /// Reads a 32-bit integer setting of the named region.
    virtual int32_t ReadRegionInt32(const std::string& region, const std::string& section,
                                    const std::string& key);
    /// Writes a 32-bit integer setting of the named region.
    virtual void WriteRegionInt32(const std::string& region, const std::string& section,
                                  const std::string& key, int32_t value);
    /// Reads a text setting of the named region.
    virtual std::string ReadRegionString(const std::string& region, const std::string& section,
                                         const std::string& key);
    /// Writes a text setting of the current region.
    virtual void WriteString(const std::string& section, const std::string& key,
                             const std::string& value);
};

inline int32_t RegionSettingsStore::ReadInt32(const std::string&, const std::string&)
{
    unsupported("RegionSettingsStore", "ReadInt32");
}

inline void RegionSettingsStore::WriteInt32(const std::string&, const std::string&, int32_t)
{
    unsupported("RegionSettingsStore", "WriteInt32");
}

inline std::string RegionSettingsStore::ReadString(const std::string&, const std::string&)
{
    unsupported("RegionSettingsStore", "ReadString");
}

inline int32_t RegionSettingsStore::ReadRegionInt32(const std::string&, const std::string&,
                                                    const std::string&)
{
    unsupported("RegionSettingsStore", "ReadRegionInt32");
}

inline void RegionSettingsStore::WriteRegionInt32(const std::string&, const std::string&,
                                                  const std::string&, int32_t)
{
    unsupported("RegionSettingsStore", "WriteRegionInt32");
}

inline std::string RegionSettingsStore::ReadRegionString(const std::string&, const std::string&,
                                                         const std::string&)
{
    unsupported("RegionSettingsStore", "ReadRegionString");
}

inline void RegionSettingsStore::WriteString(const std::string&, const std::string&,
                                             const std::string&)
{
    unsupported("RegionSettingsStore", "WriteString");
}

} // namespace brevant::host
