#pragma once

#include "platform/automation/AutomationError.h"
#include "platform/automation/PlatformError.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace brevant::test {

/// The automation error `body` raises; a test failure (and an empty error) when it raises none.
inline platform::automation::AutomationError raisedBy(const std::function<void()>& body)
{
    try {
        body();
    } catch (const platform::automation::AutomationError& e) {
        return e;
    }
    ADD_FAILURE() << "nothing was raised";
    return platform::automation::AutomationError(0, "", "");
}

/// The PlatformError a body throws; a test failure (and an empty error) when it throws none.
inline platform::automation::PlatformError errorOf(const std::function<void()>& body)
{
    try {
        body();
    } catch (const platform::automation::PlatformError& e) {
        return e;
    }
    ADD_FAILURE() << "no PlatformError was thrown";
    return platform::automation::PlatformError(0, "", "");
}

/// Whether an error's message holds `text`.
inline bool mentions(const std::exception& e, const std::string& text)
{
    return std::string(e.what()).find(text) != std::string::npos;
}

} // namespace brevant::test
