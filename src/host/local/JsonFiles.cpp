#include "host/local/JsonFiles.h"

#include "host/local/HostErrors.h"

#include <algorithm>
#include <cctype>
#include <fstream>

namespace brevant::host::local {

nlohmann::json readJsonFile(const std::filesystem::path& file, const std::string& missing)
{
    std::ifstream in(file);
    if (!in) {
        hostError(HostError::MissingFile, "cannot read " + file.string() + ": " + missing);
    }
    try {
        return nlohmann::json::parse(in);
    } catch (const nlohmann::json::exception& e) {
        hostError(HostError::MalformedFile, file.string() + " is not valid JSON: " + e.what());
    }
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
