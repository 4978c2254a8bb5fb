#pragma once

#include "host/ScenarioService.h"

#include <filesystem>

namespace brevant::host::local {

/// The reference host's scenario records. The host's earthquake scenarios are the table
/// `eqScenario` (ScenarioId, Type, Name) of `scenarios.sqlite` in the scenario folder. A region
/// carries a scenario to another host root in its own `region.sqlite`: exporting writes the
/// record there (table `CarriedScenario`, one row), importing adds that record to the host's
/// scenarios under the next free number. A region's hurricane scenario is its setting
/// "HURRICANE"/"ScenarioName".
class LocalScenarioService : public ScenarioService {
public:
    explicit LocalScenarioService(std::filesystem::path root) : m_root(std::move(root)) {}

    std::string GetScenarioType(int16_t scenarioId) override;
    void ExportScenarioRecord(const std::string& regionName, int16_t scenarioId) override;
    int16_t ImportScenarioRecord(const std::string& regionName) override;
    std::string GetHurricaneScenarioName(const std::string& regionName) override;
    std::string GetScenarioName(int16_t scenarioId) override;

    /// Adds or replaces a scenario record of the host rooted at `root`.
    static void putScenario(const std::filesystem::path& root, int16_t scenarioId,
                            const std::string& type, const std::string& name);

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
