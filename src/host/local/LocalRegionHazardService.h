#pragma once

#include "host/RegionHazardService.h"

#include <filesystem>

namespace brevant::host::local {

/// Hazard flags of the reference host's regions, as host.json lists them by region number.
class LocalRegionHazardService : public RegionHazardService {
public:
    explicit LocalRegionHazardService(std::filesystem::path root) : m_root(std::move(root)) {}

    void GetHazardFlags(int16_t regionNumber, bool& flag1, bool& flag2, bool& flag3) override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
