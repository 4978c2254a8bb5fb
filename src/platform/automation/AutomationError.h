#pragma once

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

namespace brevant::platform::automation {

/// The one error the public classes raise to the host: a 32-bit error number (library codes
/// are HRESULT-style, so negative as signed integers), the source that raised it and a
/// description.
class AutomationError : public std::runtime_error {
public:
    AutomationError(int32_t number, std::string source, std::string description);

    int32_t number() const { return m_number; }
    const std::string& source() const { return m_source; }
    const std::string& description() const { return m_description; }
    /// The number as eight upper-case hex digits with a 0x prefix ("0x8004060C").
    std::string hex() const;

private:
    int32_t m_number;
    std::string m_source;
    std::string m_description;
};

/// Converts whatever was thrown into an AutomationError with a meaningful number, source and
/// description: automation errors pass unchanged; platform errors keep their number and
/// source; standard-library errors take the host's run-time numbers (6 overflow, 7 out of
/// memory, 9 subscript out of range, 5 invalid argument, 53/70/76 for file errors, 0x80004005
/// for anything else).
AutomationError toAutomationError(std::exception_ptr error);

/// Formats a number as "0x" + eight upper-case hex digits.
std::string hexNumber(int32_t number);

} // namespace brevant::platform::automation
