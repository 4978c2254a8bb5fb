#pragma once

#include "platform/geometry/Envelope.h"
#include "platform/geometry/Point.h"

namespace brevant::platform::carto {

/// A position on a device, in pixels from its top-left corner (y grows downwards).
struct DevicePoint {
    double x = 0.0;
    double y = 0.0;

    bool operator==(const DevicePoint&) const = default;
};

/// Maps map units to the pixels of a device and back. The visible bounds are grown about their
/// centre to the device's shape (the fitted bounds), so a map is never stretched. Without
/// visible bounds, one map unit is one pixel.
class DisplayTransformation {
public:
    /// Meters in a degree along the equator: the map units of geographic coordinates.
    static constexpr double MetersPerDegree = 111319.49079327357;

    /// Throws PlatformError for a width or height below 1.
    void setDeviceFrame(int width, int height);
    int deviceWidth() const { return m_width; }
    int deviceHeight() const { return m_height; }
    /// Device pixels per inch (96 unless set).
    double resolution() const { return m_dpi; }
    void setResolution(double dpi);

    const geometry::Envelope& visibleBounds() const { return m_bounds; }
    void setVisibleBounds(const geometry::Envelope& bounds) { m_bounds = bounds; }
    /// The visible bounds grown to the device's shape: what the device actually shows.
    geometry::Envelope fittedBounds() const;

    /// Meters per map unit, for the scale (geographic coordinates unless set).
    double metersPerUnit() const { return m_metersPerUnit; }
    void setMetersPerUnit(double meters) { m_metersPerUnit = meters; }
    /// The scale denominator: ground distance over the distance on the device.
    double scale() const;
    /// Zooms about the centre to a scale denominator; needs visible bounds.
    void setScale(double scale);

    double unitsPerPixel() const;
    geometry::Point toMapPoint(double x, double y) const;
    DevicePoint fromMapPoint(const geometry::Point& point) const;
    double toMapDistance(double pixels) const { return pixels * unitsPerPixel(); }
    double fromMapDistance(double distance) const { return distance / unitsPerPixel(); }

private:
    int m_width = 800;
    int m_height = 600;
    double m_dpi = 96.0;
    double m_metersPerUnit = MetersPerDegree;
    geometry::Envelope m_bounds;
};

} // namespace brevant::platform::carto
