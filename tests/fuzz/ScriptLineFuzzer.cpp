// A script line is read with the depth limit, then its call arguments and set value go through
// the argument conversion and back to JSON as the runner does; bad input is an error, never a
// crash.
#include "app/JsonVariant.h"
#include "host/local/JsonFiles.h"

#include <cstdint>
#include <string>
#include <vector>

namespace {

using Json = nlohmann::ordered_json;

void convert(const Json& argument)
{
    try {
        const auto value =
            brevant::app::variantFromJson(argument, [](const std::string&) { return nullptr; });
        brevant::app::variantToJson(value, [](const auto&) {
            return std::string("x");
        }).dump(-1, ' ', false, Json::error_handler_t::replace);
    } catch (const std::runtime_error&) {
        // AutomationError naming what could not be read.
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Json statement;
    try {
        statement = brevant::host::local::parseJson<Json>(
            std::string(reinterpret_cast<const char*>(data), size));
    } catch (const std::exception&) {
        return 0;
    }
    if (!statement.is_object()) {
        convert(statement);
        return 0;
    }
    if (const auto args = statement.find("args"); args != statement.end() && args->is_array()) {
        for (const auto& argument : *args) {
            convert(argument);
        }
    }
    if (const auto value = statement.find("value"); value != statement.end()) {
        convert(*value);
    }
    return 0;
}
