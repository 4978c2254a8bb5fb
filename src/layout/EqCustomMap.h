#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"

#include <memory>

namespace brevant::platform::carto {
class Map;
}

namespace brevant::layout {

/// The printable layout view, the scenario layer, attribute selections and the query tool.
class EqCustomMap : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqCustomMap();

    std::string_view className() const override { return "EqCustomMap"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::layout
