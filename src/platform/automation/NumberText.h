#pragma once

#include <string>
#include <string_view>

namespace brevant::platform::automation {

/// The number a text starts with, read as the host's Val reads it: blanks before it are
/// skipped, reading stops at the first character that cannot continue the number (an exponent
/// may start with E or D), and a text without a number reads 0. Parsed without the locale, so a
/// decimal comma setting changes nothing. A number beyond a double raises Overflow (error 6)
/// with `source`.
double leadingNumber(std::string_view text, const std::string& source);

} // namespace brevant::platform::automation
