#pragma once

#include "platform/carto/DisplayTransformation.h"

namespace brevant::platform::carto {

/// The device side of a view: its display transformation and the panning of its picture.
/// While a pan is under way the transformation stays as it was (the picture is only shifted
/// by panOffset); stopping the pan moves the visible bounds.
class ScreenDisplay {
public:
    DisplayTransformation& displayTransformation() { return m_transformation; }
    const DisplayTransformation& displayTransformation() const { return m_transformation; }

    void panStart(const geometry::Point& point);
    void panMoveTo(const geometry::Point& point);
    /// Ends the pan, moves the visible bounds by it and returns them.
    geometry::Envelope panStop();
    bool isPanning() const { return m_panning; }
    /// How far the picture is shifted, in pixels, while a pan is under way.
    DevicePoint panOffset() const;

private:
    DisplayTransformation m_transformation;
    bool m_panning = false;
    geometry::Point m_panFrom;
    geometry::Point m_panTo;
};

} // namespace brevant::platform::carto
