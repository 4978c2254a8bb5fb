#pragma once

#include "platform/carto/Map.h"
#include "platform/carto/PageLayout.h"
#include "platform/carto/Symbol.h"

#include <nlohmann/json.hpp>

namespace brevant::app {

/// The carto model as JSON, so that a script can check what a call built: every value a
/// renderer, symbol, layer or page element holds, by name, colours as [red, green, blue].

/// Layers top first: name, kind, class and database, visible, selectable, scale range,
/// selection count, relates, join, and the renderer with all its symbols.
nlohmann::ordered_json describeMap(const platform::carto::Map& map);
/// Page size and orientation, then each element in drawing order with its kind, rectangle
/// (page inches), name and what it shows.
nlohmann::ordered_json describeLayout(const platform::carto::PageLayout& layout);
nlohmann::ordered_json describeSymbol(const platform::carto::Symbol& symbol);

} // namespace brevant::app
