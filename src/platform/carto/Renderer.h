#pragma once

#include "platform/carto/ClassBreaksRenderer.h"
#include "platform/carto/SimpleRenderer.h"
#include "platform/carto/UniqueValueRenderer.h"

#include <variant>

namespace brevant::platform::carto {

/// How a feature layer chooses each feature's symbol.
using Renderer = std::variant<SimpleRenderer, ClassBreaksRenderer, UniqueValueRenderer>;

} // namespace brevant::platform::carto
