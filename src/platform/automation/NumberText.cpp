#include "platform/automation/NumberText.h"

#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"

#include <charconv>

namespace brevant::platform::automation {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

double leadingNumber(std::string_view text, const std::string& source)
{
    std::size_t i = text.find_first_not_of(" \t\r\n");
    if (i == std::string_view::npos) {
        return 0.0;
    }
    const auto at = [&](std::size_t k) { return k < text.size() ? text[k] : '\0'; };
    bool negative = false;
    if (at(i) == '+' || at(i) == '-') {
        negative = at(i) == '-';
        ++i;
    }
    const std::size_t begin = i;
    bool anyDigit = false;
    while (isDigit(at(i))) {
        ++i;
        anyDigit = true;
    }
    if (at(i) == '.') {
        ++i;
        while (isDigit(at(i))) {
            ++i;
            anyDigit = true;
        }
    }
    if (!anyDigit) {
        return 0.0;
    }
    std::string number(text.substr(begin, i - begin));
    // The host's doubles also take D as the exponent letter.
    const char letter = at(i);
    if (letter == 'e' || letter == 'E' || letter == 'd' || letter == 'D') {
        std::size_t k = i + 1;
        std::string exponent = "e";
        if (at(k) == '+' || at(k) == '-') {
            exponent += at(k++);
        }
        if (isDigit(at(k))) {
            while (isDigit(at(k))) {
                exponent += at(k++);
            }
            number += exponent;
        }
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error == std::errc::result_out_of_range) {
        throw AutomationError(ErrorNumber::Overflow, source,
                              "Overflow: the number \"" + number + "\" is too large");
    }
    return negative ? -value : value;
}

} // namespace brevant::platform::automation
