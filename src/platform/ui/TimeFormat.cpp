#include "platform/ui/TimeFormat.h"

#include <iomanip>
#include <locale>
#include <sstream>

namespace brevant::platform::ui {

namespace {
std::locale systemLocale()
{
    try {
        return std::locale("");
    } catch (const std::runtime_error&) {
        // An unknown LANG is no reason to fail a log line.
        return std::locale::classic();
    }
}
} // namespace

std::string longTimeOfDay(std::time_t when)
{
    std::tm local{};
    localtime_r(&when, &local);
    std::ostringstream out;
    out.imbue(systemLocale());
    out << std::put_time(&local, "%X");
    return out.str();
}

std::string longTimeOfDayNow()
{
    return longTimeOfDay(std::time(nullptr));
}

} // namespace brevant::platform::ui
