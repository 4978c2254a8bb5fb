#pragma once

#include "host/HostService.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's progress window for long operations; it offers no cancellation. Every operation
/// the host does not provide raises automation error 438.
class ProgressDialog : public HostService {
public:
    /// Shows the window.
    virtual void Show();
    /// Sets the window's title.
    virtual void SetTitle(const std::string& title);
    /// Sets the message shown above the progress bar.
    virtual void SetMessage(const std::string& message);
    /// Sets the number of steps of the progress bar.
    virtual void SetStepCount(int32_t steps);
    /// Advances the progress bar by one step.
    virtual void Advance();
    /// Closes the window.
    virtual void Close();
    /// Moves the progress bar to a step.
    virtual void SetPosition(int32_t position);
};

inline void ProgressDialog::Show()
{
    unsupported("ProgressDialog", "Show");
}

inline void ProgressDialog::SetTitle(const std::string&)
{
    unsupported("ProgressDialog", "SetTitle");
}

inline void ProgressDialog::SetMessage(const std::string&)
{
    unsupported("ProgressDialog", "SetMessage");
}

inline void ProgressDialog::SetStepCount(int32_t)
{
    unsupported("ProgressDialog", "SetStepCount");
}

inline void ProgressDialog::Advance()
{
    unsupported("ProgressDialog", "Advance");
}

inline void ProgressDialog::Close()
{
    unsupported("ProgressDialog", "Close");
}

inline void ProgressDialog::SetPosition(int32_t)
{
    unsupported("ProgressDialog", "SetPosition");
}

} // namespace brevant::host
