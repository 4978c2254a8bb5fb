#include "platform/ui/qt/ModalWindow.h"

namespace {
// Whichever test first needs Qt, the application it makes must hold the windows of later tests.
const bool widgetApplication = (brevant::platform::ui::qt::useWidgetApplication(), true);
} // namespace
