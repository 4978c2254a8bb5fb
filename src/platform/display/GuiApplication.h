#pragma once

#include <QImage>
#include <QSize>

namespace brevant::platform::display {

/// Makes sure a QGuiApplication exists, which fonts and text need. Without one, one is created
/// for the rest of the process, on the offscreen platform when no display is at hand. Throws
/// PlatformError when the process runs a Qt application without a GUI (QCoreApplication),
/// where no text can be drawn.
void ensureGuiApplication();

/// A white picture of `size` pixels that knows its resolution, so that PNG files carry it.
QImage blankImage(QSize size, double dotsPerInch);

} // namespace brevant::platform::display
