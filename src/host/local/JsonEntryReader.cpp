#include "host/local/JsonEntryReader.h"

#include "host/local/JsonFiles.h"

namespace brevant::host::local {

void JsonEntryReader::checkKeys(const nlohmann::ordered_json& item,
                                std::initializer_list<std::string_view> allowed,
                                std::string_view notAnObject) const
{
    if (!item.is_object()) {
        fail(std::string(notAnObject));
    }
    if (const auto problem = keyProblem(item, allowed)) {
        fail(*problem);
    }
}

std::string JsonEntryReader::text(const nlohmann::ordered_json& item, const char* key) const
{
    const std::string* value = textAt(item, key);
    if (!value) {
        fail(std::string("needs \"") + key + "\" as a text");
    }
    return *value;
}

} // namespace brevant::host::local
