#pragma once

#include "context/ErrorTrap.h"
#include "platform/automation/ErrorNumbers.h"

#include <utility>

namespace brevant::selection {

/// Runs an event or procedure of a selection window under its phrase: a failure is recorded in
/// the error log and the window stays open.
template <class Body> void handler(const char* phrase, Body&& body)
{
    context::runLogged(phrase, platform::automation::LibraryCode::Procedure,
                       std::forward<Body>(body));
}

} // namespace brevant::selection
