#pragma once

#include "host/HostService.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's study-region object: its folders (each returned with its trailing path separator),
/// the region's tabular database, its message texts and two user-facing helpers. Every operation
/// the host does not provide raises automation error 438.
class RegionContextService : public HostService {
public:
    /// Folder of the statewide selection data (syboundary.mdb and the states' bndrygbs.mdb).
    virtual std::string GetStateDataFolder();
    /// Folder of the current study region.
    virtual std::string GetRegionFolder();
    /// Folder of the system data: temp.mdb, the map templates, the layout logo under Eq\.
    virtual std::string GetSystemDataFolder();
    /// Folder of the scenario databases SCENARIO.mdb and SrScenario.mdb.
    virtual std::string GetScenarioFolder();
    /// Folder that holds the folders of all study regions.
    virtual std::string GetRegionsFolder();
    /// The host's message text for a 32-bit error code.
    virtual std::string GetMessageText(int32_t code);
    /// Name of the region's tabular database; it doubles as its connection string.
    virtual std::string GetRegionDatabaseName();
    /// The host's text for a state code (stored with the region units chosen by the user).
    virtual std::string LookupState(const std::string& stateCode);
    /// File dialog at startFolder for one extension; result 1 chosen, 0 cancelled, -1 invalid.
    virtual void ShowFileDialog(const std::string& startFolder, const std::string& title,
                                const std::string& extension, int32_t& result, std::string& path);
    /// Name of the current study region.
    virtual std::string GetRegionName();
};

inline std::string RegionContextService::GetStateDataFolder()
{
    unsupported("RegionContextService", "GetStateDataFolder");
}

inline std::string RegionContextService::GetRegionFolder()
{
    unsupported("RegionContextService", "GetRegionFolder");
}

inline std::string RegionContextService::GetSystemDataFolder()
{
    unsupported("RegionContextService", "GetSystemDataFolder");
}

inline std::string RegionContextService::GetScenarioFolder()
{
    unsupported("RegionContextService", "GetScenarioFolder");
}

inline std::string RegionContextService::GetRegionsFolder()
{
    unsupported("RegionContextService", "GetRegionsFolder");
}

inline std::string RegionContextService::GetMessageText(int32_t)
{
    unsupported("RegionContextService", "GetMessageText");
}

inline std::string RegionContextService::GetRegionDatabaseName()
{
    unsupported("RegionContextService", "GetRegionDatabaseName");
}

inline std::string RegionContextService::LookupState(const std::string&)
{
    unsupported("RegionContextService", "LookupState");
}

inline void RegionContextService::ShowFileDialog(const std::string&, const std::string&,
                                                 const std::string&, int32_t&, std::string&)
{
    unsupported("RegionContextService", "ShowFileDialog");
}

inline std::string RegionContextService::GetRegionName()
{
    unsupported("RegionContextService", "GetRegionName");
}

} // namespace brevant::host
