#pragma once

#include "platform/ui/DialogScript.h"

#include <QWidget>
#include <string>

namespace brevant::platform::ui::qt {

/// Makes sure a QApplication runs (offscreen when there is no display), and that any Qt
/// application made later for drawing is one too. Throws std::runtime_error when the process
/// already runs a Qt application that cannot hold widgets.
void ensureWidgetApplication();

/// Makes any Qt application created later for drawing a QApplication, so windows can be shown
/// after maps have been drawn. Creates nothing.
void useWidgetApplication();

/// True when windows can be shown to a user: the Qt platform is a real display.
bool displayAvailable();

/// Shows `window` modally under the form name `form` and returns once it is hidden.
///
/// With a dialog script installed (scripts, tests), the window is shown (offscreen when there
/// is no display) and runs the queued actions in order until it hides; when the queue runs
/// out while it is still open, it is closed as by its close box. The window's report (form,
/// caption, actions, values read, how it closed) goes to the script. An action that cannot
/// run (unknown control, wrong kind of control, disabled control, point outside the map) is
/// reported as failed and changes nothing. Reading a control gives its text, check mark and
/// enabled state; a control with a "value" property (a colour box) gives that as its text. Without
/// a script, a user works in the window when a display is available; otherwise nobody can answer
/// and it is closed as by its close box.
void runModalWindow(QWidget& window, const std::string& form);

} // namespace brevant::platform::ui::qt
