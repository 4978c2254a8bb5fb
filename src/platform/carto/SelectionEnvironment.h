#pragma once

#include "platform/carto/RgbColor.h"
#include "platform/carto/SelectionSet.h"

namespace brevant::platform::carto {

/// How an interactive selection on a map works: how it combines with the current selection,
/// how near (in device pixels) a point must come to a feature to pick it, and the colour of
/// selected features on layers that have none of their own.
struct SelectionEnvironment {
    SelectionResult combinationMethod = SelectionResult::New;
    int searchTolerance = 3;
    RgbColor defaultColor{0, 255, 255};

    bool operator==(const SelectionEnvironment&) const = default;
};

} // namespace brevant::platform::carto
