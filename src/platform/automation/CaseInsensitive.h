#pragma once

#include <string>
#include <string_view>

namespace brevant::platform::automation {

/// ASCII case-insensitive equality, as names are compared across the automation boundary.
bool equalsIgnoreCase(std::string_view a, std::string_view b);
/// ASCII lower-case copy.
std::string toLower(std::string_view text);

} // namespace brevant::platform::automation
