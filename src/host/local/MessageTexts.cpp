#include "host/local/MessageTexts.h"

#include "host/local/HostErrors.h"
#include "host/local/JsonFiles.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace brevant::host::local {

using platform::automation::hexNumber;
namespace LibraryCode = platform::automation::LibraryCode;

std::map<int32_t, std::string> MessageTexts::defaults()
{
    return {
        {LibraryCode::ClassInit, "Could not open the study region for the map engine:"},
        {LibraryCode::MapLayer, "Could not put the layer on the map:"},
        {LibraryCode::LineClassInit, "Could not open the study region for the line inventory:"},
        {LibraryCode::Procedure, "The map engine failed in"},
    };
}

void MessageTexts::save(const std::filesystem::path& file,
                        const std::map<int32_t, std::string>& texts)
{
    nlohmann::ordered_json doc = nlohmann::ordered_json::object();
    for (const auto& [code, text] : texts) {
        doc[hexNumber(code)] = text;
    }
    std::ofstream out(file, std::ios::trunc);
    out << doc.dump(2) << '\n';
    if (!out) {
        hostError(HostError::MissingFile, "cannot write " + file.string());
    }
}

std::string MessageTexts::lookup(const std::filesystem::path& file, int32_t code)
{
    std::ifstream in(file);
    if (!in) {
        hostError(HostError::MissingFile, "cannot read the message texts " + file.string());
    }
    nlohmann::ordered_json doc;
    try {
        doc = parseJson<nlohmann::ordered_json>(in);
    } catch (const std::exception& e) {
        hostError(HostError::MalformedFile, file.string() + " is not valid JSON: " + e.what());
    }
    const std::string wanted = hexNumber(code);
    if (doc.is_object()) {
        for (const auto& [key, value] : doc.items()) {
            if (platform::automation::equalsIgnoreCase(key, wanted) && value.is_string()) {
                return value.get<std::string>();
            }
        }
    }
    hostError(HostError::UnknownKey, file.string() + " has no text for " + wanted);
}

} // namespace brevant::host::local
