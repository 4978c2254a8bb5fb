#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace brevant::host::local {

/// Reads a JSON file of the host root. A file that cannot be read is a MissingFile host error
/// "cannot read FILE: <missing>"; one that does not parse a MalformedFile error naming it.
nlohmann::json readJsonFile(const std::filesystem::path& file, const std::string& missing);

/// True for a colour text "red,green,blue" with three whole components from 0 to 255 (spaces
/// around a component allowed).
bool isColourText(std::string_view text);

} // namespace brevant::host::local
