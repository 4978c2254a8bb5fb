#pragma once

#include "platform/automation/AutomationObject.h"

namespace brevant::thematic {

/// A class with an empty interface, kept because hosts create it by name. Its creation does
/// not open the study-region context.
class EqThmMap : public platform::automation::AutomationObject {
public:
    std::string_view className() const override { return "EqThmMap"; }
};

} // namespace brevant::thematic
