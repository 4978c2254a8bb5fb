#pragma once

namespace brevant::platform::display {

/// Makes sure a QGuiApplication exists, which fonts and text need. Without one, one is created
/// for the rest of the process, on the offscreen platform when no display is at hand. Throws
/// PlatformError when the process runs a Qt application without a GUI (QCoreApplication),
/// where no text can be drawn.
void ensureGuiApplication();

} // namespace brevant::platform::display
