#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace brevant::host::local {

/// The host's texts for the library's error codes, kept in `messages.json` of the system data
/// folder as {"0x8004060C": "text", …}.
class MessageTexts {
public:
    /// The texts the reference host ships for the four library codes.
    static std::map<int32_t, std::string> defaults();
    /// Writes a messages file.
    static void save(const std::filesystem::path& file,
                     const std::map<int32_t, std::string>& texts);
    /// The text of one code. Throws a host error naming the file when it is missing or
    /// malformed, or has no text for the code.
    static std::string lookup(const std::filesystem::path& file, int32_t code);
};

} // namespace brevant::host::local
