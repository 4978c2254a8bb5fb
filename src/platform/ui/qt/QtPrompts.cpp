#include "platform/ui/qt/QtPrompts.h"

#include "platform/ui/qt/QtProgressDialog.h"

#include <QApplication>
#include <QColorDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <stdexcept>

namespace brevant::platform::ui::qt {

namespace {

QString toQt(const std::string& text)
{
    return QString::fromStdString(text);
}

void requireApplication(const std::string& title)
{
    if (qobject_cast<QApplication*>(QCoreApplication::instance()) == nullptr) {
        throw std::runtime_error("cannot show the dialog \"" + title +
                                 "\": no QApplication runs in this process");
    }
}

QMessageBox::StandardButton toQt(MessageResult result)
{
    switch (result) {
    case MessageResult::Ok:
        return QMessageBox::Ok;
    case MessageResult::Cancel:
        return QMessageBox::Cancel;
    case MessageResult::Yes:
        return QMessageBox::Yes;
    case MessageResult::No:
        return QMessageBox::No;
    }
    return QMessageBox::Ok;
}

struct ButtonSet {
    QMessageBox::StandardButtons buttons;
    MessageResult defaultButton;
    // What closing the box without a button (Escape, the close box) means.
    MessageResult escape;
};

ButtonSet buttonSet(MessageButtons buttons)
{
    switch (buttons) {
    case MessageButtons::Ok:
        return {QMessageBox::Ok, MessageResult::Ok, MessageResult::Ok};
    case MessageButtons::OkCancel:
        return {QMessageBox::Ok | QMessageBox::Cancel, MessageResult::Ok, MessageResult::Cancel};
    case MessageButtons::YesNo:
        return {QMessageBox::Yes | QMessageBox::No, MessageResult::Yes, MessageResult::No};
    case MessageButtons::YesNoCancel:
        return {QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, MessageResult::Yes,
                MessageResult::Cancel};
    }
    return {QMessageBox::Ok, MessageResult::Ok, MessageResult::Ok};
}

} // namespace

QtPrompts::QtPrompts(QWidget* parent) : m_parent(parent)
{
}

MessageResult QtPrompts::messageBox(const std::string& text, const std::string& title,
                                    MessageButtons buttons)
{
    requireApplication(title);
    const ButtonSet set = buttonSet(buttons);
    QMessageBox box(m_parent.data());
    box.setWindowTitle(toQt(title));
    // Library texts name tables and paths; none of them is markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(toQt(text));
    box.setStandardButtons(set.buttons);
    box.setDefaultButton(toQt(set.defaultButton));
    box.setEscapeButton(toQt(set.escape));
    box.exec();
    switch (box.standardButton(box.clickedButton())) {
    case QMessageBox::Ok:
        return MessageResult::Ok;
    case QMessageBox::Cancel:
        return MessageResult::Cancel;
    case QMessageBox::Yes:
        return MessageResult::Yes;
    case QMessageBox::No:
        return MessageResult::No;
    default:
        return set.escape;
    }
}

std::optional<std::string> QtPrompts::inputBox(const std::string& prompt, const std::string& title,
                                               const std::string& defaultValue)
{
    requireApplication(title);
    QInputDialog dialog(m_parent.data());
    dialog.setInputMode(QInputDialog::TextInput);
    dialog.setWindowTitle(toQt(title));
    dialog.setLabelText(toQt(prompt));
    dialog.setTextValue(toQt(defaultValue));
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.textValue().toStdString();
}

std::optional<RgbValue> QtPrompts::colourDialog(RgbValue preset, ColourDialogFlags flags,
                                                const std::string& title)
{
    requireApplication(title);
    QColorDialog dialog(m_parent.data());
    dialog.setWindowTitle(toQt(title));
    // Qt's colour dialog always shows its custom-colour part, so FullOpen needs nothing.
    if (hasFlag(flags, ColourDialogFlags::PresetColour)) {
        dialog.setCurrentColor(QColor(preset & 0xFF, (preset >> 8) & 0xFF, (preset >> 16) & 0xFF));
    } else {
        dialog.setCurrentColor(Qt::black);
    }
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    const QColor chosen = dialog.selectedColor().toRgb();
    return chosen.red() | chosen.green() << 8 | chosen.blue() << 16;
}

std::optional<std::string> QtPrompts::fileDialog(const FileDialogRequest& request)
{
    const bool open = request.mode == FileDialogMode::Open;
    const std::string title = request.title.empty() ? (open ? "Open" : "Save As") : request.title;
    requireApplication(title);
    QFileDialog dialog(m_parent.data(), toQt(title), toQt(request.startFolder));
    dialog.setAcceptMode(open ? QFileDialog::AcceptOpen : QFileDialog::AcceptSave);
    dialog.setFileMode(open ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    if (!request.filter.empty()) {
        dialog.setNameFilter(toQt(request.filter));
    } else if (!request.extension.empty()) {
        dialog.setNameFilter(QStringLiteral("%1 files (*.%1)").arg(toQt(request.extension)));
    }
    if (!request.extension.empty()) {
        dialog.setDefaultSuffix(toQt(request.extension));
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return dialog.selectedFiles().front().toStdString();
}

std::unique_ptr<ProgressDialog> QtPrompts::progressDialog()
{
    requireApplication("progress");
    return std::make_unique<QtProgressDialog>(m_parent.data());
}

} // namespace brevant::platform::ui::qt
