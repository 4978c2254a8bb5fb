#pragma once

namespace brevant::platform::geometry {

/// Shape type codes as the host knows them.
enum class ShapeType : int {
    Null = 0,
    Point = 1,
    Multipoint = 2,
    Polyline = 3,
    Polygon = 4,
};

} // namespace brevant::platform::geometry
