#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace brevant::platform::automation {

/// An error of a library under the platform layer (GDAL, GEOS, SQLite) or of a host service,
/// carrying its error number and source; the message says what was being done
/// ("cannot open feature class hztract in RegionBndry.mdb: ..."). It becomes an
/// AutomationError with the same number, source and message when it reaches a trap.
class PlatformError : public std::runtime_error {
public:
    PlatformError(int32_t number, std::string source, const std::string& message)
        : std::runtime_error(message), m_number(number), m_source(std::move(source))
    {
    }

    int32_t number() const { return m_number; }
    const std::string& source() const { return m_source; }

private:
    int32_t m_number;
    std::string m_source;
};

} // namespace brevant::platform::automation
