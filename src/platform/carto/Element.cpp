#include "platform/carto/Element.h"

namespace brevant::platform::carto {

geometry::Geometry rectangleShape(const geometry::Envelope& rectangle)
{
    if (rectangle.isEmpty()) {
        return {};
    }
    return geometry::Geometry::polygon({{{rectangle.xmin(), rectangle.ymin()},
                                         {rectangle.xmin(), rectangle.ymax()},
                                         {rectangle.xmax(), rectangle.ymax()},
                                         {rectangle.xmax(), rectangle.ymin()},
                                         {rectangle.xmin(), rectangle.ymin()}}});
}

} // namespace brevant::platform::carto
