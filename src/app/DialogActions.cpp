#include "app/DialogActions.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <string>

namespace brevant::app {

using json = nlohmann::ordered_json;
using platform::ui::DialogAction;

namespace {

[[noreturn]] void badAction(const json& action, const std::string& why)
{
    throw platform::automation::AutomationError(platform::automation::ErrorNumber::InvalidArgument,
                                                "brevant script",
                                                "bad dialog action " + action.dump() + ": " + why);
}

std::vector<double> coordinates(const json& action, const json& value, std::size_t count)
{
    if (!value.is_array() || value.size() != count) {
        badAction(action, "needs " + std::to_string(count) + " map coordinates");
    }
    std::vector<double> numbers;
    for (const auto& number : value) {
        if (!number.is_number()) {
            badAction(action, "map coordinates are numbers");
        }
        numbers.push_back(number.get<double>());
    }
    return numbers;
}

std::string text(const json& action, const json& value, const char* what)
{
    if (!value.is_string() || value.get<std::string>().empty()) {
        badAction(action, std::string("needs ") + what);
    }
    return value.get<std::string>();
}

/// [CONTROL, VALUE]: the control's name; the value is checked by the caller.
const json& pairedValue(const json& action, const json& value)
{
    if (!value.is_array() || value.size() != 2 || !value[0].is_string()) {
        badAction(action, "needs [CONTROL, VALUE]");
    }
    return value[1];
}

platform::ui::RgbValue colourOf(const json& action, const json& value)
{
    if (value.is_number_integer() && value.get<long long>() >= 0 &&
        value.get<long long>() <= 0xFFFFFF) {
        return static_cast<platform::ui::RgbValue>(value.get<long long>());
    }
    if (value.is_array() && value.size() == 3) {
        int channels[3] = {};
        for (int i = 0; i < 3; ++i) {
            if (!value[i].is_number_integer() || value[i].get<int>() < 0 ||
                value[i].get<int>() > 255) {
                badAction(action, "colour channels are whole numbers 0 to 255");
            }
            channels[i] = value[i].get<int>();
        }
        // Red in the low byte, as the platform keeps colours.
        return channels[0] | (channels[1] << 8) | (channels[2] << 16);
    }
    badAction(action, "a colour is [R, G, B], a platform RGB value, or null for Cancel");
}

DialogAction parse(const json& action)
{
    if (!action.is_object() || action.empty()) {
        badAction(action, "an action is a JSON object");
    }
    DialogAction parsed;
    parsed.source = action.dump();
    // The first member names the action; an iterator of the object itself outlives the lines
    // below, where one of a temporary item range would not.
    const auto first = action.begin();
    const std::string kind = first.key();
    const json& value = first.value();
    if (action.contains("click")) {
        parsed.kind = DialogAction::Kind::Click;
        parsed.coordinates = coordinates(action, action.at("click"), 2);
        parsed.flag = action.value("shift", false);
    } else if (action.contains("drag")) {
        parsed.kind = DialogAction::Kind::Drag;
        parsed.coordinates = coordinates(action, action.at("drag"), 4);
        parsed.flag = action.value("shift", false);
    } else if (action.contains("move")) {
        parsed.kind = DialogAction::Kind::Move;
        parsed.coordinates = coordinates(action, action.at("move"), 2);
    } else if (kind == "tool") {
        parsed.kind = DialogAction::Kind::Tool;
        parsed.name = text(action, value, "a tool key");
    } else if (kind == "press") {
        parsed.kind = DialogAction::Kind::Press;
        parsed.name = text(action, value, "a control name");
    } else if (kind == "select") {
        parsed.kind = DialogAction::Kind::Select;
        const auto& index = pairedValue(action, value);
        if (!index.is_number_integer()) {
            badAction(action, "needs [CONTROL, INDEX]");
        }
        parsed.name = value[0].get<std::string>();
        parsed.index = index.get<int>();
    } else if (kind == "check") {
        parsed.kind = DialogAction::Kind::Check;
        const auto& checked = pairedValue(action, value);
        if (!checked.is_boolean()) {
            badAction(action, "needs [CONTROL, true or false]");
        }
        parsed.name = value[0].get<std::string>();
        parsed.flag = checked.get<bool>();
    } else if (kind == "text") {
        parsed.kind = DialogAction::Kind::Text;
        const auto& typed = pairedValue(action, value);
        if (!typed.is_string()) {
            badAction(action, "needs [CONTROL, TEXT]");
        }
        parsed.name = value[0].get<std::string>();
        parsed.text = typed.get<std::string>();
    } else if (kind == "choose") {
        parsed.kind = DialogAction::Kind::Choose;
        const auto& entry = pairedValue(action, value);
        parsed.name = value[0].get<std::string>();
        if (entry.is_number_integer()) {
            parsed.index = entry.get<int>();
        } else if (entry.is_string()) {
            parsed.text = entry.get<std::string>();
        } else {
            badAction(action, "needs [CONTROL, INDEX or TEXT]");
        }
    } else if (kind == "menu") {
        parsed.kind = DialogAction::Kind::Menu;
        parsed.name = text(action, value, "a menu item");
    } else if (kind == "read") {
        parsed.kind = DialogAction::Kind::Read;
        parsed.name = text(action, value, "a control name");
    } else if (kind == "colour") {
        parsed.kind = DialogAction::Kind::Colour;
        if (!value.is_null()) {
            parsed.colour = colourOf(action, value);
        }
    } else if (kind == "screenshot") {
        parsed.kind = DialogAction::Kind::Screenshot;
        parsed.name = text(action, value, "a file path");
    } else if (kind == "close") {
        if (value != true) {
            badAction(action, "needs true");
        }
        parsed.kind = DialogAction::Kind::Close;
    } else {
        badAction(action, "unknown action \"" + kind +
                              "\"; actions are tool, click, drag, move, press, select, check, "
                              "text, choose, menu, read, colour, screenshot and close");
    }
    return parsed;
}

} // namespace

std::vector<DialogAction> dialogActionsFromJson(const json& list)
{
    if (!list.is_array()) {
        badAction(list, "\"dialog\" needs an array of actions");
    }
    std::vector<DialogAction> actions;
    for (const auto& action : list) {
        actions.push_back(parse(action));
    }
    return actions;
}

json dialogReportToJson(const platform::ui::DialogReport& report)
{
    json actions = json::array();
    for (const auto& outcome : report.actions) {
        json entry{{"action", json::parse(outcome.action, nullptr, false)}, {"ok", outcome.ok}};
        if (!outcome.ok) {
            entry["error"] = outcome.error;
        }
        actions.push_back(std::move(entry));
    }
    json values = json::array();
    for (const auto& reading : report.values) {
        values.push_back({{"control", reading.control},
                          {"text", reading.text},
                          {"checked", reading.checked},
                          {"enabled", reading.enabled},
                          {"visible", reading.visible}});
    }
    return json{{"form", report.form}, {"caption", report.caption}, {"actions", actions},
                {"values", values},    {"closed", report.closed},   {"platform", report.platform}};
}

} // namespace brevant::app
