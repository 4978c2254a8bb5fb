#pragma once

#include <cstdint>
#include <string>

namespace brevant::platform::ui {

/// The progress window of a long operation that runs on the caller's thread. It offers no
/// cancellation. The position stays between 0 and the number of steps: advancing past the last
/// step keeps the bar full, because callers may advance more often than they counted.
class ProgressDialog {
public:
    virtual ~ProgressDialog() = default;

    /// Shows the window.
    virtual void show() = 0;
    /// Sets the window's title.
    virtual void setTitle(const std::string& title) = 0;
    /// Sets the text shown above the bar.
    virtual void setMessage(const std::string& message) = 0;
    /// Sets the number of steps and starts counting again from 0; 0 or less shows a busy bar.
    virtual void setStepCount(std::int32_t steps) = 0;
    /// Moves the bar to a step.
    virtual void setPosition(std::int32_t position) = 0;
    /// Moves the bar one step on.
    virtual void advance() = 0;
    /// Hides the window; `show` opens it again.
    virtual void close() = 0;
};

} // namespace brevant::platform::ui
