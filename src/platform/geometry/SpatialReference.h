#pragma once

#include <string>

namespace brevant::platform::geometry {

/// A coordinate system, known by its EPSG code and its name. Geographic NAD83 (EPSG:4269) is
/// named "GCS_North_American_1983"; other geographic systems take "GCS_" + their datum name
/// with underscores, projected ones their own name.
class SpatialReference {
public:
    SpatialReference() = default;
    static SpatialReference nad83() { return fromEpsg(4269); }
    /// Throws PlatformError for a code that is not known.
    static SpatialReference fromEpsg(int code);
    /// From WKT or PROJ text as data sources carry it; throws PlatformError when unreadable.
    static SpatialReference fromWkt(const std::string& wkt);

    bool isUnknown() const { return m_wkt.empty(); }
    int epsg() const { return m_epsg; }
    const std::string& name() const { return m_name; }
    const std::string& wkt() const { return m_wkt; }
    bool isGeographic() const { return m_geographic; }
    /// Same coordinate system (same EPSG code, or same definition when codes are unknown).
    bool sameAs(const SpatialReference& other) const;

private:
    int m_epsg = 0;
    bool m_geographic = false;
    std::string m_name;
    std::string m_wkt;
};

} // namespace brevant::platform::geometry
