#pragma once

#include "platform/automation/ClassRegistry.h"

namespace brevant {

/// Registers every public class of the library under its ProgID ("Brevant.EqPoint", …).
void registerClasses(platform::automation::ClassRegistry& registry);

/// The library's classes, registered once.
const platform::automation::ClassRegistry& classes();

} // namespace brevant
