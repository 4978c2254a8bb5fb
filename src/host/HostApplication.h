#pragma once

#include "platform/automation/AutomationObject.h"

#include <memory>

namespace brevant::platform::carto {
class ActiveView;
class Map;
class PageLayout;
} // namespace brevant::platform::carto

namespace brevant::host {

/// The host application as the library reaches it through a `vApplication` argument: the map
/// document it has open, with the document's focus map and page layout.
class HostApplication : public platform::automation::AutomationObject {
public:
    /// The map the document shows and works on; null when the document has none.
    virtual std::shared_ptr<platform::carto::Map> focusMap() const = 0;
    /// The document's printable page; null when it has none.
    virtual std::shared_ptr<platform::carto::PageLayout> pageLayout() const = 0;
    /// The view the page is drawn in: the page layout itself. Throws automation error 91 when
    /// the document has no page layout.
    virtual platform::carto::ActiveView& activeView() const = 0;
};

} // namespace brevant::host
