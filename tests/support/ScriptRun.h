#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace brevant::test {

/// Runs `script` (statements, one per line) with `brevant script` in this process against the
/// host root `root`; one parsed output line per statement.
std::vector<nlohmann::ordered_json> runScript(const std::filesystem::path& root,
                                              const std::string& script);

} // namespace brevant::test
