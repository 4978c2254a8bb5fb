#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Point.h"

namespace brevant::platform::carto {

/// The rubber band of a drag: started at the point where the button went down, moved with the
/// mouse; stopping it gives the envelope of the two corners (zero wide or high when the mouse
/// did not move in that direction).
class EnvelopeFeedback {
public:
    void start(const geometry::Point& point);
    void moveTo(const geometry::Point& point);
    /// The band's envelope; the feedback is inactive afterwards.
    geometry::Envelope stop();

    bool isActive() const { return m_active; }
    /// The band as it is now (empty before start).
    geometry::Envelope current() const;

private:
    geometry::Point m_start;
    geometry::Point m_end;
    bool m_active = false;
    bool m_started = false;
};

} // namespace brevant::platform::carto
