#pragma once

#include "host/UserMapRegistry.h"

#include <filesystem>

namespace brevant::host::local {

/// The user maps of the current region, kept in its region.sqlite by `brevant map register`.
class LocalUserMapRegistry : public UserMapRegistry {
public:
    explicit LocalUserMapRegistry(std::filesystem::path root) : m_root(std::move(root)) {}

    /// A code without a map gives three empty strings, as the library expects.
    void GetUserMap(const std::string& mapType, std::string& fileName, std::string& className,
                    std::string& folder) override;
    void MarkMapProcessed(const std::string& mapType) override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
