#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"

#include <memory>

namespace brevant::platform::carto {
class Map;
}

namespace brevant::exchange {

/// The toolbar command object ("Region &Wizard") the host places on its toolbar.
class EqOpenDocument : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqOpenDocument();

    std::string_view className() const override { return "EqOpenDocument"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::exchange
