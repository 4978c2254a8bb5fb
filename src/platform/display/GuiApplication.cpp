#include "platform/display/GuiApplication.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <QDir>
#include <cmath>
#include <QFile>
#include <QGuiApplication>

#include <unistd.h>

namespace brevant::platform::display {

namespace {
ApplicationFactory& factory()
{
    static ApplicationFactory made = nullptr;
    return made;
}
} // namespace

void setApplicationFactory(ApplicationFactory make)
{
    factory() = make;
}

void ensureGuiApplication()
{
    if (auto* existing = QCoreApplication::instance()) {
        if (!qobject_cast<QGuiApplication*>(existing)) {
            throw automation::PlatformError(
                automation::ErrorNumber::CannotCreateObject, "Display",
                "cannot draw maps: the process runs a Qt application without a GUI");
        }
        return;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        // Without it Qt warns on every start; headless runs (the CLI, tests) have none.
        const QByteArray folder = QDir::tempPath().toUtf8() + "/brevant-runtime-" +
                                  QByteArray::number(static_cast<qlonglong>(getuid()));
        QDir().mkpath(QString::fromUtf8(folder));
        QFile::setPermissions(QString::fromUtf8(folder),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                  QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", folder);
    }
    static int argc = 1;
    static char name[] = "brevant";
    static char* argv[] = {name, nullptr};
    // Kept for the life of the process: tearing it down among static destructors would race
    // Qt's own.
    static QGuiApplication* application =
        factory() ? factory()(argc, argv) : new QGuiApplication(argc, argv);
    (void)application;
}

QImage blankImage(QSize size, double dotsPerInch)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    const int dotsPerMeter = static_cast<int>(std::lround(dotsPerInch / 0.0254));
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    image.fill(Qt::white);
    return image;
}

} // namespace brevant::platform::display
