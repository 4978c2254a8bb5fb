#include "platform/automation/CaseInsensitive.h"

#include <algorithm>
#include <cctype>

namespace brevant::platform::automation {

namespace {
char lowerChar(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}
} // namespace

bool equalsIgnoreCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return lowerChar(x) == lowerChar(y);
           });
}

std::string toLower(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), lowerChar);
    return out;
}

} // namespace brevant::platform::automation
