#pragma once

#include <filesystem>

namespace brevant::host::local {

/// Writes an empty host root into `root` (which must be missing or empty): host.json without
/// regions, the state, system, scenario and regions folders, the databases of the state,
/// system and scenario folders with their classes (the scratch database and the templates the
/// clipping falls back on), the message texts of the library's codes, the default symbol
/// catalogue and class settings, and the layout logo. Built beside `root` and moved into
/// place, so a failure leaves nothing behind; a folder that is not empty is an InvalidInput
/// host error.
void initHost(const std::filesystem::path& root);

} // namespace brevant::host::local
