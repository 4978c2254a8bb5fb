#include "platform/ui/qt/QtPrompts.h"

#include "platform/ui/qt/QtProgressDialog.h"

#include <QApplication>
#include <QColorDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <gtest/gtest.h>

namespace brevant::platform::ui::qt {
namespace {

QApplication& application()
{
    if (auto* running = qobject_cast<QApplication*>(QCoreApplication::instance())) {
        return *running;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    static int argc = 1;
    static char name[] = "brevant_tests";
    static char* argv[] = {name, nullptr};
    static QApplication app(argc, argv);
    return app;
}

/// Runs `act` on the next modal dialog once it is up; the prompt under test waits in exec().
template <class Dialog> void whenShown(std::function<void(Dialog&)> act, int triesLeft = 500)
{
    QTimer::singleShot(10, [act = std::move(act), triesLeft]() mutable {
        if (auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
            act(*dialog);
        } else if (triesLeft > 0) {
            whenShown<Dialog>(std::move(act), triesLeft - 1);
        }
    });
}

/// Types `path` into the name box and presses Open. (selectFile leaves a focused name box as
/// it is, so it cannot stand in for the user.)
void acceptFile(QFileDialog& dialog, const QString& path)
{
    if (auto* name = dialog.findChild<QLineEdit*>("fileNameEdit")) {
        name->setText(path);
        static_cast<QDialog&>(dialog).accept();
    }
    if (dialog.isVisible()) {
        ADD_FAILURE() << "the file dialog did not take " << path.toStdString();
        dialog.reject();
    }
}

class QtPromptsTest : public ::testing::Test {
protected:
    void SetUp() override { application(); }

    QtPrompts m_prompts;
};

TEST_F(QtPromptsTest, MessageBoxReturnsTheButtonClicked)
{
    QString title;
    QString text;
    whenShown<QMessageBox>([&](QMessageBox& box) {
        title = box.windowTitle();
        text = box.text();
        box.button(QMessageBox::No)->click();
    });
    EXPECT_EQ(m_prompts.messageBox("Replace <the> layer?", "Korval", MessageButtons::YesNoCancel),
              MessageResult::No);
    EXPECT_EQ(title, "Korval");
    EXPECT_EQ(text, "Replace <the> layer?");
}

TEST_F(QtPromptsTest, ClosingAMessageBoxCancelsOrSaysNo)
{
    whenShown<QMessageBox>([](QMessageBox& box) { box.close(); });
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::OkCancel),
              MessageResult::Cancel);
    whenShown<QMessageBox>([](QMessageBox& box) { box.close(); });
    EXPECT_EQ(m_prompts.messageBox("Go on?", "KORVAL", MessageButtons::YesNo), MessageResult::No);
    whenShown<QMessageBox>([](QMessageBox& box) { box.close(); });
    EXPECT_EQ(m_prompts.messageBox("Obsolete Method", "KORVAL", MessageButtons::Ok),
              MessageResult::Ok);
}

TEST_F(QtPromptsTest, InputBoxOffersTheDefaultAndCancels)
{
    QString offered;
    whenShown<QInputDialog>([&](QInputDialog& dialog) {
        offered = dialog.textValue();
        dialog.setTextValue("80");
        dialog.accept();
    });
    EXPECT_EQ(m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50"), "80");
    EXPECT_EQ(offered, "50");

    whenShown<QInputDialog>([](QInputDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(m_prompts.inputBox("Enter confidence value between 0 and 100", "KORVAL", "50"),
              std::nullopt);
}

TEST_F(QtPromptsTest, ColourDialogOpensOnThePresetAndReturnsTheChoice)
{
    const auto flags = ColourDialogFlags::PresetColour | ColourDialogFlags::FullOpen;
    QColor opened;
    QString title;
    whenShown<QColorDialog>([&](QColorDialog& dialog) {
        opened = dialog.currentColor();
        title = dialog.windowTitle();
        dialog.setCurrentColor(QColor(255, 128, 0));
        dialog.accept();
    });
    EXPECT_EQ(m_prompts.colourDialog(0xFF0000, flags, "Select Point Color"), 0x0080FF);
    EXPECT_EQ(opened, QColor(0, 0, 255));
    EXPECT_EQ(title, "Select Point Color");

    whenShown<QColorDialog>([](QColorDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(m_prompts.colourDialog(0xFF0000, flags, "Select Point Color"), std::nullopt);
}

TEST_F(QtPromptsTest, FileDialogReturnsTheChosenFile)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QString shapefile = folder.filePath("flood.shp");
    QFile file(shapefile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();

    QString directory;
    QString title;
    whenShown<QFileDialog>([&](QFileDialog& dialog) {
        directory = dialog.directory().absolutePath();
        title = dialog.windowTitle();
        acceptFile(dialog, shapefile);
    });
    const FileDialogRequest request{.startFolder = folder.path().toStdString(), .extension = "shp"};
    EXPECT_EQ(m_prompts.fileDialog(request), shapefile.toStdString());
    EXPECT_EQ(directory, QDir(folder.path()).absolutePath());
    EXPECT_EQ(title, "Open");

    whenShown<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(m_prompts.fileDialog(request), std::nullopt);
}

TEST_F(QtPromptsTest, ProgressDialogShowsTitleMessageAndSteps)
{
    auto progress = m_prompts.progressDialog();
    const QProgressDialog* window = dynamic_cast<QtProgressDialog&>(*progress).widget();
    ASSERT_NE(window, nullptr);
    progress->setTitle("Clipping data maps");
    progress->setStepCount(2);
    EXPECT_FALSE(window->isVisible()) << "shown only when asked";

    progress->show();
    progress->setMessage("Clipping Soil Map");
    progress->advance();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->windowTitle(), "Clipping data maps");
    EXPECT_EQ(window->labelText(), "Clipping Soil Map");
    EXPECT_EQ(window->maximum(), 2);
    EXPECT_EQ(window->value(), 1);
    progress->advance();
    progress->advance();
    EXPECT_EQ(window->value(), 2);

    progress->close();
    EXPECT_FALSE(window->isVisible());
}

TEST_F(QtPromptsTest, ProgressDialogOutlivedByItsWindow)
{
    auto mainWindow = std::make_unique<QWidget>();
    QtPrompts prompts(mainWindow.get());
    auto progress = prompts.progressDialog();
    progress->show();
    mainWindow.reset();
    // The window took the dialog with it; the object stays usable and frees nothing twice.
    progress->advance();
    progress->close();
    EXPECT_EQ(dynamic_cast<QtProgressDialog&>(*progress).widget(), nullptr);
}

} // namespace
} // namespace brevant::platform::ui::qt
