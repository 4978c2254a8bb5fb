#pragma once

#include "platform/automation/AutomationError.h"

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

namespace brevant::context {

/// Records what was thrown under a procedure's tag and library code (see WriteErrorRecord) and
/// returns the error to raise: the recorded library code with the host text and tag as its
/// description, or the caught error unchanged when an inner trap already recorded it.
platform::automation::AutomationError recordError(std::string_view tag, int32_t code,
                                                  std::exception_ptr error);

/// Runs a procedure body under its error trap: any error is recorded once and raised again as
/// an AutomationError, so nested procedures give one record with the innermost code.
template <class Body> decltype(auto) runTrapped(std::string_view tag, int32_t code, Body&& body)
{
    try {
        return body();
    } catch (...) {
        throw recordError(tag, code, std::current_exception());
    }
}

/// The trap of the symbol factory and the thematic builder: records what was thrown under the
/// tag (code 0x8004060C, unless it was recorded already) and returns it to raise again with
/// its number and source kept and the tag as its description. Every builder the error climbs
/// through adds its record; the calling procedure's ordinary trap then converts it.
platform::automation::AutomationError chainError(std::string_view tag, std::exception_ptr error);

/// Runs a builder's body under the chaining trap (see chainError).
template <class Body> decltype(auto) runChained(std::string_view tag, Body&& body)
{
    try {
        return body();
    } catch (...) {
        throw chainError(tag, std::current_exception());
    }
}

/// Runs an event handler's body under its trap: the error is recorded and the handler carries
/// on. Returns false when the body failed.
template <class Body> bool runLogged(std::string_view tag, int32_t code, Body&& body)
{
    try {
        body();
        return true;
    } catch (...) {
        recordError(tag, code, std::current_exception());
        return false;
    }
}

} // namespace brevant::context
