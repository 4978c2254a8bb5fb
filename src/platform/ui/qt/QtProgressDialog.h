#pragma once

#include "platform/ui/ProgressDialog.h"
#include "platform/ui/ProgressState.h"

#include <QPointer>
#include <QProgressDialog>
#include <memory>

namespace brevant::platform::ui::qt {

/// A QProgressDialog without a cancel button, modal to its window, repainted on every change
/// although the operation keeps the GUI thread busy.
class QtProgressDialog : public ProgressDialog {
public:
    /// The window opens over `parent` (may be null).
    explicit QtProgressDialog(QWidget* parent);
    ~QtProgressDialog() override;
    QtProgressDialog(const QtProgressDialog&) = delete;
    QtProgressDialog& operator=(const QtProgressDialog&) = delete;

    void show() override;
    void setTitle(const std::string& title) override;
    void setMessage(const std::string& message) override;
    void setStepCount(std::int32_t steps) override;
    void setPosition(std::int32_t position) override;
    void advance() override;
    void close() override;

    /// The window, or null once its parent has deleted it.
    QProgressDialog* widget() const { return m_alive.data(); }

private:
    void showBar();

    std::unique_ptr<QProgressDialog> m_dialog;
    // Turns null when the parent window deletes the dialog first; m_dialog must then let go.
    QPointer<QProgressDialog> m_alive;
    ProgressState m_state;
};

} // namespace brevant::platform::ui::qt
