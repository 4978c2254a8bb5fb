#pragma once

#include "host/ProgressDialog.h"

#include <memory>

namespace brevant::platform::ui {
class ProgressDialog;
}

namespace brevant::host::local {

/// The host's progress window drawn by the process's user prompts: a bar on the console in the
/// command-line host, a window on the desktop, a recording in tests. The window is made when
/// the host object is, so every object is one window.
class LocalProgressDialog : public ProgressDialog {
public:
    LocalProgressDialog();
    ~LocalProgressDialog() override;

    void Show() override;
    void SetTitle(const std::string& title) override;
    void SetMessage(const std::string& message) override;
    void SetStepCount(int32_t steps) override;
    void Advance() override;
    void Close() override;
    void SetPosition(int32_t position) override;

private:
    std::unique_ptr<platform::ui::ProgressDialog> m_window;
};

} // namespace brevant::host::local
