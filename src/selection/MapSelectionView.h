#pragma once

#include "platform/geometry/Envelope.h"

#include <optional>
#include <string>

namespace brevant::selection {

// The view arithmetic of the map selection form, apart from its window so it holds on its own.

/// The coordinates under the pointer as the form shows them: latitude, ", ", longitude, each
/// rounded to 6 decimals (half to even) and written in its shortest form ("37.75, -122.5").
std::string LatLongText(double x, double y);

/// A zoom-in click: the extent halved in both directions and centred on the click.
platform::geometry::Envelope zoomInByClick(const platform::geometry::Envelope& extent,
                                           const platform::geometry::Point& at);
/// A zoom-out click: the extent doubled in both directions and centred on the click.
platform::geometry::Envelope zoomOutByClick(const platform::geometry::Envelope& extent,
                                            const platform::geometry::Point& at);
/// A zoom-in band: the band becomes the extent; nothing for a band of no width or no height.
std::optional<platform::geometry::Envelope> zoomInByBand(const platform::geometry::Envelope& band);
/// A zoom-out band: the extent grows so that the present one comes to lie where the band was
/// drawn; nothing for a band of no width or no height.
std::optional<platform::geometry::Envelope>
zoomOutByBand(const platform::geometry::Envelope& extent, const platform::geometry::Envelope& band);

} // namespace brevant::selection
