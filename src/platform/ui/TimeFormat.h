#pragma once

#include <ctime>
#include <string>

namespace brevant::platform::ui {

/// The local time of day in the system's long time format (the environment's LC_TIME locale;
/// "HH:MM:SS" in the C locale). No date.
std::string longTimeOfDay(std::time_t when);
/// The same for the current time.
std::string longTimeOfDayNow();

} // namespace brevant::platform::ui
