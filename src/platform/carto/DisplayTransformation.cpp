#include "platform/carto/DisplayTransformation.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <algorithm>

namespace brevant::platform::carto {

namespace {
constexpr double MetersPerInch = 0.0254;
}

void DisplayTransformation::setDeviceFrame(int width, int height)
{
    if (width < 1 || height < 1) {
        throw automation::PlatformError(automation::ErrorNumber::InvalidProcedureCall, "Carto",
                                        "a device of " + std::to_string(width) + " by " +
                                            std::to_string(height) + " pixels shows nothing");
    }
    m_width = width;
    m_height = height;
}

void DisplayTransformation::setResolution(double dpi)
{
    if (dpi > 0.0) {
        m_dpi = dpi;
    }
}

geometry::Envelope DisplayTransformation::fittedBounds() const
{
    if (m_bounds.isEmpty()) {
        return {0.0, 0.0, static_cast<double>(m_width), static_cast<double>(m_height)};
    }
    const geometry::Point centre = m_bounds.center();
    double width = m_bounds.width();
    double height = m_bounds.height();
    if (width <= 0.0 && height <= 0.0) {
        // A single point: show a unit around it rather than divide by zero.
        width = height = 1.0;
    }
    const double deviceAspect = static_cast<double>(m_width) / m_height;
    if (height <= 0.0 || width / height > deviceAspect) {
        height = width / deviceAspect;
    } else {
        width = height * deviceAspect;
    }
    return {centre.x - width / 2, centre.y - height / 2, centre.x + width / 2,
            centre.y + height / 2};
}

double DisplayTransformation::unitsPerPixel() const
{
    return fittedBounds().width() / m_width;
}

double DisplayTransformation::scale() const
{
    return unitsPerPixel() * m_metersPerUnit / (MetersPerInch / m_dpi);
}

void DisplayTransformation::setScale(double scale)
{
    if (m_bounds.isEmpty() || scale <= 0.0) {
        return;
    }
    const double units = scale * (MetersPerInch / m_dpi) / m_metersPerUnit;
    const geometry::Point centre = m_bounds.center();
    const double halfWidth = units * m_width / 2;
    const double halfHeight = units * m_height / 2;
    m_bounds = {centre.x - halfWidth, centre.y - halfHeight, centre.x + halfWidth,
                centre.y + halfHeight};
}

geometry::Point DisplayTransformation::toMapPoint(double x, double y) const
{
    const geometry::Envelope fitted = fittedBounds();
    const double units = fitted.width() / m_width;
    return {fitted.xmin() + x * units, fitted.ymax() - y * units};
}

DevicePoint DisplayTransformation::fromMapPoint(const geometry::Point& point) const
{
    const geometry::Envelope fitted = fittedBounds();
    const double units = fitted.width() / m_width;
    return {(point.x - fitted.xmin()) / units, (fitted.ymax() - point.y) / units};
}

} // namespace brevant::platform::carto
