#pragma once

#include "context/InventoryRegionFixture.h"
#include "host/local/SchemaWriter.h"

#include <memory>
#include <string>
#include <vector>

namespace brevant::datamaps {
class EqDataMaps;
}

namespace brevant::test {

/// An axis-aligned rectangle of a data map with its value (null allowed).
struct MapPatch {
    double west = 0.0;
    double south = 0.0;
    double east = 0.0;
    double north = 0.0;
    platform::automation::Variant value;

    std::string wkt() const;
};

// The region: boundary (-122.30 37.80, -122.20 37.85), split at -122.25 into a west and an east
// tract. Map patches are written against these numbers.
inline constexpr double kWest = -122.30;
inline constexpr double kMiddle = -122.25;
inline constexpr double kEast = -122.20;
inline constexpr double kSouth = 37.80;
inline constexpr double kNorth = 37.85;

/// InventoryRegionFixture with what the data maps read: RegionBndry.mdb (boundary, two tracts,
/// the empty clipped maps) and Inundation.mdb in the region folder, their templates in the
/// system folder, the tract server tables with both tracts, the default class settings, and an
/// EqDataMaps object.
class DataMapsFixture : public InventoryRegionFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    /// Registers the user's map of `code` through the host's map registration; its value field
    /// is the code's ("Type", "type" or "paramvalue").
    void registerMap(const std::string& code, const std::vector<MapPatch>& patches);
    /// The file the registry points at for `code`.
    std::filesystem::path userMapFile(const std::string& code) const;
    /// Adds features to a class of a region database, `field` taking each patch's value.
    void fill(const std::string& database, const std::string& name, const std::string& field,
              const std::vector<MapPatch>& patches);

    /// A class of a region database, opened afresh.
    std::shared_ptr<platform::geodatabase::FeatureClass>
    regionClass(const std::string& database, const std::string& name) const;
    /// The values of `field` in a class, as text ("<null>" for null), sorted.
    std::vector<std::string> valuesOf(const std::string& database, const std::string& name,
                                      const std::string& field) const;

    void clip(const std::vector<std::string>& codes);
    void clipInundation(const std::vector<std::string>& codes);
    /// Lines of a progress log in the region folder (empty when there is none).
    std::vector<std::string> logLines(const std::string& file = "DataMapsLog.txt") const;
    /// Whether a log line starts with `text`.
    bool logged(const std::string& text, const std::string& file = "DataMapsLog.txt") const;
    /// Texts of the message boxes shown since the last call.
    std::vector<std::string> takeMessageTexts();

    std::shared_ptr<datamaps::EqDataMaps> m_dataMaps;
};

} // namespace brevant::test
