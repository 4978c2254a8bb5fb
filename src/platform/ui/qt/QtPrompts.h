#pragma once

#include "platform/ui/UserPrompts.h"

#include <QPointer>
#include <QWidget>

namespace brevant::platform::ui::qt {

/// The prompts of the desktop: modal Qt dialogs over the host's window. Every call needs a
/// running QApplication and the GUI thread; without a QApplication it throws
/// std::runtime_error.
class QtPrompts : public UserPrompts {
public:
    /// Dialogs open over `parent` (the host's main window; may be null). It is not owned.
    explicit QtPrompts(QWidget* parent = nullptr);

    MessageResult messageBox(const std::string& text, const std::string& title,
                             MessageButtons buttons) override;
    std::optional<std::string> inputBox(const std::string& prompt, const std::string& title,
                                        const std::string& defaultValue) override;
    std::optional<RgbValue> colourDialog(RgbValue preset, ColourDialogFlags flags,
                                         const std::string& title) override;
    std::optional<std::string> fileDialog(const FileDialogRequest& request) override;
    std::unique_ptr<ProgressDialog> progressDialog() override;

private:
    QPointer<QWidget> m_parent;
};

} // namespace brevant::platform::ui::qt
