#pragma once

#include "platform/ui/DialogScript.h"

#include <nlohmann/json.hpp>
#include <vector>

namespace brevant::app {

/// The actions of a {"dialog": [ACTION, ...]} statement. Throws AutomationError (invalid
/// argument) naming the first malformed action; then nothing is queued.
std::vector<platform::ui::DialogAction> dialogActionsFromJson(const nlohmann::ordered_json& list);

/// A window's report as the "dialogs" entry of an output line.
nlohmann::ordered_json dialogReportToJson(const platform::ui::DialogReport& report);

} // namespace brevant::app
