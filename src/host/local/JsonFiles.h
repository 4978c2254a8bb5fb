#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace brevant::host::local {

/// Reads a JSON file of the host root. A file that cannot be read is a MissingFile host error
/// "cannot read FILE: <missing>"; one that does not parse a MalformedFile error naming it.
nlohmann::ordered_json readJsonFile(const std::filesystem::path& file, const std::string& missing);

/// What is wrong with a JSON object of a host file whose keys must be among `allowed`: "must be a
/// JSON object" / "has the unknown key \"k\"" (completed by the caller with where it is);
/// nullopt when nothing is.
std::optional<std::string> keyProblem(const nlohmann::ordered_json& item,
                                      std::initializer_list<std::string_view> allowed);
/// The text under `key`; nullptr when it is missing or not a text.
const std::string* textAt(const nlohmann::ordered_json& item, const char* key);

/// True for a colour text "red,green,blue" with three whole components from 0 to 255 (spaces
/// around a component allowed).
bool isColourText(std::string_view text);

} // namespace brevant::host::local
