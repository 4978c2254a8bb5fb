#include "platform/carto/MapFrame.h"

#include "platform/carto/Legend.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/MarkerNorthArrow.h"
#include "platform/carto/ScaleLine.h"

namespace brevant::platform::carto {

std::shared_ptr<MapSurroundFrame> MapFrame::createSurroundFrame(SurroundKind kind)
{
    std::shared_ptr<MapSurround> surround;
    switch (kind) {
    case SurroundKind::Legend:
        surround = std::make_shared<Legend>();
        surround->setName("Legend");
        break;
    case SurroundKind::MarkerNorthArrow:
        surround = std::make_shared<MarkerNorthArrow>();
        surround->setName("North Arrow");
        break;
    case SurroundKind::ScaleLine:
        surround = std::make_shared<ScaleLine>();
        surround->setName("Scale Bar");
        break;
    }
    surround->setMap(m_map);
    auto self = std::static_pointer_cast<MapFrame>(shared_from_this());
    return std::make_shared<MapSurroundFrame>(std::move(surround), self);
}

} // namespace brevant::platform::carto
