#pragma once

#include "host/HostService.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's hazard-scenario records: their types and names, and their exchange between study
/// regions. Every operation the host does not provide raises automation error 438.
class ScenarioService : public HostService {
public:
    /// The one-letter type of an earthquake scenario ("H", "A", "S", ...).
    virtual std::string GetScenarioType(int16_t scenarioId);
    /// Exports the record of an earthquake scenario for the named region.
    virtual void ExportScenarioRecord(const std::string& regionName, int16_t scenarioId);
    /// Imports the scenario record carried by the named region; returns its new number.
    virtual int16_t ImportScenarioRecord(const std::string& regionName);
    /// Name of the named region's hurricane scenario; empty when it has none.
    virtual std::string GetHurricaneScenarioName(const std::string& regionName);
    /// Name of an earthquake scenario, taken from its description.
    virtual std::string GetScenarioName(int16_t scenarioId);
};

inline std::string ScenarioService::GetScenarioType(int16_t)
{
    unsupported("ScenarioService", "GetScenarioType");
}

inline void ScenarioService::ExportScenarioRecord(const std::string&, int16_t)
{
    unsupported("ScenarioService", "ExportScenarioRecord");
}

inline int16_t ScenarioService::ImportScenarioRecord(const std::string&)
{
    unsupported("ScenarioService", "ImportScenarioRecord");
}

inline std::string ScenarioService::GetHurricaneScenarioName(const std::string&)
{
    unsupported("ScenarioService", "GetHurricaneScenarioName");
}

inline std::string ScenarioService::GetScenarioName(int16_t)
{
    unsupported("ScenarioService", "GetScenarioName");
}

} // namespace brevant::host
