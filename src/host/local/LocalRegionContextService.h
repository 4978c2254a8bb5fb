#pragma once

#include "host/RegionContextService.h"

#include <filesystem>

namespace brevant::host::local {

/// The study-region object of the reference host. Every call re-reads host.json, so a switch
/// of the current region is seen at once.
class LocalRegionContextService : public RegionContextService {
public:
    explicit LocalRegionContextService(std::filesystem::path root) : m_root(std::move(root)) {}

    std::string GetStateDataFolder() override;
    std::string GetRegionFolder() override;
    std::string GetSystemDataFolder() override;
    std::string GetScenarioFolder() override;
    std::string GetRegionsFolder() override;
    std::string GetRegionName() override;
    /// The text in the system data folder's messages.json.
    std::string GetMessageText(int32_t code) override;
    /// "sqlite:" followed by the current region's region.sqlite.
    std::string GetRegionDatabaseName() override;
    /// The name of the state of a 2-character code, from the statewide boundaries; "" for a
    /// code no state has.
    std::string LookupState(const std::string& stateCode) override;
    /// The user prompts' file dialog (scripted answers in the command line and the tests):
    /// result 1 with the path chosen, 0 when cancelled, -1 for a file of another extension.
    void ShowFileDialog(const std::string& startFolder, const std::string& title,
                        const std::string& extension, int32_t& result, std::string& path) override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
