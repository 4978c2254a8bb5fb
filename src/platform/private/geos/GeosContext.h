#pragma once

// Private to the geometry layer: the per-thread GEOS context, its error capture and owning
// handles for GEOS objects.

#include <geos_c.h>

#include <memory>
#include <string>
#include <string_view>

namespace brevant::platform::geometry::geos {

/// This thread's GEOS context, created on first use and finished when the thread ends.
GEOSContextHandle_t context();

/// Throws PlatformError(GeosBase + 1, "GEOS", what + ": " + GEOS's last error message).
[[noreturn]] void fail(std::string_view what);

/// The result of a GEOS call that returns null on error; throws through fail() when null.
template <class T> T* check(T* result, std::string_view what)
{
    if (!result) {
        fail(what);
    }
    return result;
}

/// The result of a GEOS predicate (0, 1, or 2 on error).
bool checkPredicate(char result, std::string_view what);

struct GeometryDeleter {
    void operator()(GEOSGeometry* geometry) const;
};
using GeometryPtr = std::unique_ptr<GEOSGeometry, GeometryDeleter>;

struct CoordSeqDeleter {
    void operator()(GEOSCoordSequence* sequence) const;
};
using CoordSeqPtr = std::unique_ptr<GEOSCoordSequence, CoordSeqDeleter>;

struct PreparedDeleter {
    void operator()(const GEOSPreparedGeometry* prepared) const;
};
using PreparedPtr = std::unique_ptr<const GEOSPreparedGeometry, PreparedDeleter>;

/// Frees memory GEOS allocated for the caller (WKT text, WKB bytes).
struct BufferDeleter {
    void operator()(void* buffer) const;
};

/// This thread's reusable readers and writers (creating them per call costs more than the
/// conversion of a small shape).
GEOSWKBReader* wkbReader();
GEOSWKBWriter* wkbWriter();
GEOSWKTReader* wktReader();

} // namespace brevant::platform::geometry::geos
