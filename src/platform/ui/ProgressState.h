#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

namespace brevant::platform::ui {

/// What a progress window shows, with the step rules every implementation shares.
struct ProgressState {
    std::string title;
    std::string message;
    std::int32_t steps = 0;
    std::int32_t position = 0;
    bool visible = false;

    void setStepCount(std::int32_t count)
    {
        steps = std::max(count, 0);
        position = 0;
    }
    void setPosition(std::int32_t step) { position = std::clamp(step, 0, steps); }
    void advance() { setPosition(position + 1); }
    /// True while the number of steps is unknown.
    bool busy() const { return steps == 0; }
};

} // namespace brevant::platform::ui
