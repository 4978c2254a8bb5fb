#pragma once

#include "context/ObjectWithMap.h"
#include "platform/automation/MemberTable.h"

namespace brevant::datamaps {

/// The region's polygon maps: boundary, tracts, data maps, tract hazard table and contour grid.
class EqPolyGon : public context::ObjectWithMap {
public:
    /// Opens the study-region context (see context::Init); throws when it fails, so a failing
    /// initialiser fails the creation of the object.
    EqPolyGon();

    std::string_view className() const override { return "EqPolyGon"; }
    const platform::automation::MemberTable* members() const override;
};

} // namespace brevant::datamaps
