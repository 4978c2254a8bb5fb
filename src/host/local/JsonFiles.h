#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <utility>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace brevant::host::local {

/// How deep JSON may nest wherever the host or the command line reads it: far beyond any real
/// document, and far below what the reader's stack takes.
inline constexpr int kMaxJsonDepth = 512;

/// Parses JSON text, failing with std::length_error for nesting deeper than kMaxJsonDepth and
/// with nlohmann's exceptions for anything else it cannot read.
template <class Json, class Input> Json parseJson(Input&& input)
{
    return Json::parse(std::forward<Input>(input),
                       [](int depth, typename Json::parse_event_t, Json&) {
                           if (depth > kMaxJsonDepth) {
                               throw std::length_error("JSON nested deeper than " +
                                                       std::to_string(kMaxJsonDepth) + " levels");
                           }
                           return true;
                       });
}

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
