#pragma once

#include "platform/automation/AutomationError.h"

#include <functional>
#include <gtest/gtest.h>

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

} // namespace brevant::test
