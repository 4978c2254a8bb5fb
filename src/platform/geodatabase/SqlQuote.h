#pragma once

#include <string>
#include <string_view>

namespace brevant::platform::geodatabase {

/// `text` between `quote` characters, each quote inside doubled, as SQLite and OGR SQL read
/// both names ('"') and strings ('\'').
inline std::string sqlQuoted(std::string_view text, char quote)
{
    std::string out(1, quote);
    for (char c : text) {
        out += c;
        if (c == quote) {
            out += quote;
        }
    }
    out += quote;
    return out;
}

} // namespace brevant::platform::geodatabase
