#pragma once

#include "context/ObjectWithMap.h"
#include "platform/automation/MemberTable.h"

namespace brevant::inventory {

/// Line inventory of the study region: import, clipping, mapping and analysis of line classes.
class EqPolyLine : public context::ObjectWithMap {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPolyLine();

    std::string_view className() const override { return "EqPolyLine"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::inventory
