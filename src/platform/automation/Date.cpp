#include "platform/automation/Date.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace brevant::platform::automation {

namespace {
constexpr std::chrono::sys_days kEpoch{std::chrono::year{1899} / 12 / 30};

[[noreturn]] void badDate(const std::string& text)
{
    throw AutomationError(ErrorNumber::TypeMismatch, "Brevant",
                          "Type mismatch: \"" + text + "\" is not a date");
}
} // namespace

Date Date::fromParts(int year, int month, int day, int hour, int minute, int second)
{
    using namespace std::chrono;
    const year_month_day ymd{std::chrono::year{year}, std::chrono::month{unsigned(month)},
                             std::chrono::day{unsigned(day)}};
    if (!ymd.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 ||
        second > 59) {
        char text[64];
        std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day, hour,
                      minute, second);
        badDate(text);
    }
    const double days = (sys_days{ymd} - kEpoch).count();
    return Date{days + (hour * 3600 + minute * 60 + second) / 86400.0};
}

Date Date::parse(const std::string& text)
{
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    char sep = 0;
    int consumed = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d%n", &y, &mo, &d, &consumed) == 3 &&
        consumed == static_cast<int>(text.size())) {
        return fromParts(y, mo, d);
    }
    if (std::sscanf(text.c_str(), "%4d-%2d-%2d%c%2d:%2d:%2d%n", &y, &mo, &d, &sep, &h, &mi, &s,
                    &consumed) == 7 &&
        consumed == static_cast<int>(text.size()) && (sep == ' ' || sep == 'T')) {
        return fromParts(y, mo, d, h, mi, s);
    }
    badDate(text);
}

std::string Date::toString() const
{
    using namespace std::chrono;
    const double whole = std::floor(serial);
    const auto day = kEpoch + days{static_cast<long>(whole)};
    const year_month_day ymd{day};
    long seconds = std::lround((serial - whole) * 86400.0);
    if (seconds >= 86400) {
        seconds = 86399;
    }
    char text[64];
    if (seconds == 0) {
        std::snprintf(text, sizeof text, "%04d-%02u-%02u", int(ymd.year()), unsigned(ymd.month()),
                      unsigned(ymd.day()));
    } else {
        std::snprintf(text, sizeof text, "%04d-%02u-%02u %02ld:%02ld:%02ld", int(ymd.year()),
                      unsigned(ymd.month()), unsigned(ymd.day()), seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    }
    return text;
}

} // namespace brevant::platform::automation
