#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"

#include <memory>

namespace brevant::platform::carto {
class Map;
}

namespace brevant::datamaps {

/// Hazard and site-condition data maps: clipping, validation, site values of inventory, inundation
/// maps.
class EqDataMaps : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqDataMaps();

    std::string_view className() const override { return "EqDataMaps"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::datamaps
