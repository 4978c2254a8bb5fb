#pragma once

#include <string>

namespace brevant::platform::automation {

/// An automation date: days since 1899-12-30, the fraction being the time of day.
struct Date {
    double serial = 0.0;

    /// Builds a date from calendar fields (local time, no zone).
    static Date fromParts(int year, int month, int day, int hour = 0, int minute = 0,
                          int second = 0);
    /// Parses "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS" (a 'T' may separate the two);
    /// throws AutomationError 13 (type mismatch) otherwise.
    static Date parse(const std::string& text);
    /// "YYYY-MM-DD HH:MM:SS", or just the date when the time is midnight.
    std::string toString() const;

    bool operator==(const Date&) const = default;
};

} // namespace brevant::platform::automation
