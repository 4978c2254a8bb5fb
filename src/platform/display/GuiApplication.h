#pragma once

#include <QGuiApplication>
#include <QImage>
#include <QSize>

namespace brevant::platform::display {

/// Makes sure a QGuiApplication exists, which fonts and text need. Without one, one is created
/// for the rest of the process, on the offscreen platform when no display is at hand. Throws
/// PlatformError when the process runs a Qt application without a GUI (QCoreApplication),
/// where no text can be drawn.
void ensureGuiApplication();

/// Makes the application ensureGuiApplication creates; a process that shows windows installs
/// one that makes a QApplication, since widgets cannot live in a plain QGuiApplication.
using ApplicationFactory = QGuiApplication* (*)(int& argc, char** argv);
void setApplicationFactory(ApplicationFactory factory);

/// A white picture of `size` pixels that knows its resolution, so that PNG files carry it.
QImage blankImage(QSize size, double dotsPerInch);

} // namespace brevant::platform::display
