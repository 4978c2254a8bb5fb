#include "host/local/JsonFiles.h"

#include "host/local/HostErrors.h"

#include <algorithm>
#include <cctype>
#include <fstream>

namespace brevant::host::local {

nlohmann::ordered_json readJsonFile(const std::filesystem::path& file, const std::string& missing)
{
    std::ifstream in(file);
    if (!in) {
        hostError(HostError::MissingFile, "cannot read " + file.string() + ": " + missing);
    }
    try {
        return parseJson<nlohmann::ordered_json>(in);
    } catch (const std::exception& e) {
        hostError(HostError::MalformedFile, file.string() + " is not valid JSON: " + e.what());
    }
}

std::optional<std::string> keyProblem(const nlohmann::ordered_json& item,
                                      std::initializer_list<std::string_view> allowed)
{
    if (!item.is_object()) {
        return "must be a JSON object";
    }
    for (const auto& [key, value] : item.items()) {
        if (std::find(allowed.begin(), allowed.end(), key) == allowed.end()) {
            return "has the unknown key \"" + key + "\"";
        }
    }
    return std::nullopt;
}

const std::string* textAt(const nlohmann::ordered_json& item, const char* key)
{
    const auto found = item.find(key);
    return found == item.end() || !found->is_string() ? nullptr
                                                      : found->get_ptr<const std::string*>();
}

bool isColourText(std::string_view text)
{
    int components = 0;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        std::string_view part = text.substr(start, comma - start);
        while (!part.empty() && part.front() == ' ') {
            part.remove_prefix(1);
        }
        while (!part.empty() && part.back() == ' ') {
            part.remove_suffix(1);
        }
        const bool digits = !part.empty() && part.size() <= 3 &&
                            std::all_of(part.begin(), part.end(),
                                        [](unsigned char c) { return std::isdigit(c); });
        if (!digits || std::stoi(std::string(part)) > 255) {
            return false;
        }
        ++components;
        start = comma + 1;
    }
    return components == 3;
}

} // namespace brevant::host::local
