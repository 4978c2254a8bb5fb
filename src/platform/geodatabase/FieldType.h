#pragma once

namespace brevant::platform::geodatabase {

/// Field types with the codes the host knows.
enum class FieldType : int {
    SmallInteger = 0,
    Integer = 1,
    Single = 2,
    Double = 3,
    String = 4,
    Date = 5,
    OID = 6,
    Geometry = 7,
};

} // namespace brevant::platform::geodatabase
