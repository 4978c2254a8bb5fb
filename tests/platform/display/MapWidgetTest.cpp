#include "platform/display/widgets/MapWidget.h"

#include "platform/carto/Map.h"
#include "platform/carto/RasterLayer.h"
#include "platform/ui/qt/ModalWindow.h"

#include <gtest/gtest.h>

namespace brevant::platform::display {
namespace {

// The picture is drawn again only when the view asks for it, so an edit that forgets to
// refresh the view shows on no window.
TEST(MapWidget, RedrawsWhenTheActiveViewAsks)
{
    ui::qt::ensureWidgetApplication();
    auto map = std::make_shared<carto::Map>();
    map->setFullExtent(geometry::Envelope(0, 0, 10, 10));
    MapWidget widget;
    widget.resize(160, 120);
    widget.setMap(map);
    widget.show();
    widget.grab();
    const int drawn = widget.drawCount();
    EXPECT_GE(drawn, 1);
    EXPECT_EQ(map->displayTransformation().deviceWidth(), 160) << "the view follows the widget";

    widget.grab();
    EXPECT_EQ(widget.drawCount(), drawn) << "nothing asked for a new picture";
    map->refresh();
    widget.grab();
    EXPECT_EQ(widget.drawCount(), drawn + 1);

    widget.setMap(nullptr);
    map->refresh();
    widget.grab();
    EXPECT_EQ(widget.drawCount(), drawn + 2) << "only the detach itself redraws";
    map->refresh();
    widget.grab();
    EXPECT_EQ(widget.drawCount(), drawn + 2) << "a detached map no longer reaches the widget";
}

} // namespace
} // namespace brevant::platform::display
