#pragma once

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <cstdint>
#include <string>

namespace brevant::host::local {

/// Error numbers of the reference host, all under ErrorNumber::HostBase.
namespace HostError {
inline constexpr int32_t MissingFile = platform::automation::ErrorNumber::HostBase + 1;
inline constexpr int32_t MalformedFile = platform::automation::ErrorNumber::HostBase + 2;
inline constexpr int32_t UnknownKey = platform::automation::ErrorNumber::HostBase + 3;
inline constexpr int32_t NoCurrentRegion = platform::automation::ErrorNumber::HostBase + 4;
/// A user's file, layer, field or value that an administration command cannot use.
inline constexpr int32_t InvalidInput = platform::automation::ErrorNumber::HostBase + 5;
/// Another process works on the region and did not let go in time.
inline constexpr int32_t RegionInUse = platform::automation::ErrorNumber::HostBase + 6;
} // namespace HostError

inline constexpr const char* kHostSource = "Brevant.LocalHost";

/// Throws a PlatformError of the reference host.
[[noreturn]] inline void hostError(int32_t number, const std::string& message)
{
    throw platform::automation::PlatformError(number, kHostSource, message);
}

} // namespace brevant::host::local
