#pragma once

namespace brevant::platform::geometry {

/// A coordinate pair (x is longitude, y latitude in geographic coordinates).
struct Point {
    double x = 0.0;
    double y = 0.0;

    bool operator==(const Point&) const = default;
};

} // namespace brevant::platform::geometry
