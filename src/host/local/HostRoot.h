#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace brevant::host::local {

/// The reference host's root folder and its description `host.json`:
///
///     {"format": 1, "currentRegion": "Demo",
///      "folders": {"state": "State", "system": "System", "scenario": "Scenario",
///                  "regions": "Regions"},
///      "regions": [{"name": "Demo", "number": 1, "hazards": [true, false, false]}]}
///
/// Folders are handed out with a trailing separator. The three hazard flags of a region are
/// earthquake, flood and hurricane.
class HostRoot {
public:
    struct Region {
        std::string name;
        int32_t number = 0;
        std::array<bool, 3> hazards{};
    };

    /// A host root with default folder names and no regions (not yet saved).
    explicit HostRoot(std::filesystem::path root);

    /// Reads `<root>/host.json`. Throws a host error naming the folder or the file when the
    /// root is missing, the file is missing or unreadable, or its content is malformed.
    static HostRoot load(const std::filesystem::path& root);
    /// Writes `host.json` and creates the folders it names.
    void save() const;

    const std::filesystem::path& root() const { return m_root; }
    std::filesystem::path hostFile() const { return m_root / "host.json"; }

    std::string stateDataFolder() const;
    std::string systemDataFolder() const;
    std::string scenarioFolder() const;
    std::string regionsFolder() const;
    std::string regionFolder(const std::string& region) const;
    /// `region.sqlite` of a region.
    std::filesystem::path regionDatabasePath(const std::string& region) const;

    /// The current region's name; throws when host.json names none.
    const std::string& currentRegion() const;
    void setCurrentRegion(std::string name) { m_currentRegion = std::move(name); }

    const std::vector<Region>& regions() const { return m_regions; }
    /// Adds a region or replaces the one of the same name.
    void putRegion(Region region);
    /// The region of that name (without regard to case; empty: the current region); throws a
    /// host error when there is none.
    const Region& regionNamed(const std::string& name) const;
    /// The region with that number; throws a host error when there is none.
    const Region& regionByNumber(int32_t number) const;

private:
    std::string folder(const std::string& name) const;

    std::filesystem::path m_root;
    std::string m_currentRegion;
    std::string m_stateFolder = "State";
    std::string m_systemFolder = "System";
    std::string m_scenarioFolder = "Scenario";
    std::string m_regionsFolder = "Regions";
    std::vector<Region> m_regions;
};

} // namespace brevant::host::local
