#pragma once

#include "host/RegionSettingsStore.h"

#include <filesystem>

namespace brevant::host::local {

/// Settings of the reference host's regions, kept in each region's region.sqlite.
class LocalRegionSettingsStore : public RegionSettingsStore {
public:
    explicit LocalRegionSettingsStore(std::filesystem::path root) : m_root(std::move(root)) {}

    int32_t ReadInt32(const std::string& section, const std::string& key) override;
    void WriteInt32(const std::string& section, const std::string& key, int32_t value) override;
    std::string ReadString(const std::string& section, const std::string& key) override;
    void WriteString(const std::string& section, const std::string& key,
                     const std::string& value) override;
    int32_t ReadRegionInt32(const std::string& region, const std::string& section,
                            const std::string& key) override;
    void WriteRegionInt32(const std::string& region, const std::string& section,
                          const std::string& key, int32_t value) override;
    std::string ReadRegionString(const std::string& region, const std::string& section,
                                 const std::string& key) override;

private:
    std::filesystem::path databaseOf(const std::string& region) const;
    std::filesystem::path currentDatabase() const;

    std::filesystem::path m_root;
};

} // namespace brevant::host::local
