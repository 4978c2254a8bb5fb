#pragma once

#include "context/ObjectWithMap.h"
#include "platform/automation/MemberTable.h"

namespace brevant::inventory {

/// Point inventory of the study region: import, tract assignment, mapping and analysis of point
/// classes.
class EqPoint : public context::ObjectWithMap {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPoint();

    std::string_view className() const override { return "EqPoint"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::inventory
