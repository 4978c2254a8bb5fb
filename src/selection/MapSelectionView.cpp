#include "selection/MapSelectionView.h"

#include <charconv>
#include <cmath>

namespace brevant::selection {

namespace geometry = platform::geometry;

namespace {

std::string sixDecimals(double value)
{
    // Half to even on the scaled value, as the form's rounding always did.
    double rounded = std::nearbyint(value * 1e6) / 1e6;
    if (rounded == 0.0) {
        rounded = 0.0; // no "-0"
    }
    char buffer[32];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, rounded, std::chars_format::fixed).ptr;
    return std::string(buffer, end);
}

geometry::Envelope scaledAbout(const geometry::Envelope& extent, double factor,
                               const geometry::Point& centre)
{
    const double halfWidth = extent.width() * factor / 2.0;
    const double halfHeight = extent.height() * factor / 2.0;
    return {centre.x - halfWidth, centre.y - halfHeight, centre.x + halfWidth,
            centre.y + halfHeight};
}

} // namespace

std::string LatLongText(double x, double y)
{
    return sixDecimals(y) + ", " + sixDecimals(x);
}

geometry::Envelope zoomInByClick(const geometry::Envelope& extent, const geometry::Point& at)
{
    return scaledAbout(extent, 0.5, at);
}

geometry::Envelope zoomOutByClick(const geometry::Envelope& extent, const geometry::Point& at)
{
    return scaledAbout(extent, 2.0, at);
}

std::optional<geometry::Envelope> zoomInByBand(const geometry::Envelope& band)
{
    if (band.isEmpty() || band.width() == 0.0 || band.height() == 0.0) {
        return std::nullopt;
    }
    return band;
}

std::optional<geometry::Envelope> zoomOutByBand(const geometry::Envelope& extent,
                                                const geometry::Envelope& band)
{
    if (band.isEmpty() || band.width() == 0.0 || band.height() == 0.0) {
        return std::nullopt;
    }
    const double width = extent.width() * extent.width() / band.width();
    const double height = extent.height() * extent.height() / band.height();
    const double xmin =
        extent.xmin() - (band.xmin() - extent.xmin()) * extent.width() / band.width();
    const double ymin =
        extent.ymin() - (band.ymin() - extent.ymin()) * extent.height() / band.height();
    return geometry::Envelope(xmin, ymin, xmin + width, ymin + height);
}

} // namespace brevant::selection
