#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/MemberTable.h"

#include <memory>

namespace brevant::platform::carto {
class Map;
}

namespace brevant::exchange {

/// Exports and imports earthquake and hurricane scenarios between study regions.
class RegionExpImp : public platform::automation::AutomationObject {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    RegionExpImp();

    std::string_view className() const override { return "RegionExpImp"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::exchange
