#pragma once

#include "host/RegionSelectionStore.h"

#include <filesystem>
#include <string>

namespace brevant::host::local {

/// The units chosen for a region, kept per level in the current region's database, one table a
/// level ("RegionStates", "RegionCounties", "RegionTracts", "RegionBlocks") of three columns:
/// the unit and its parent as the selection form writes them (state: name, code; county: code,
/// state name; tract: code, county code; block: code, tract code), then a flag of this host,
/// 0 unless set otherwise, that asks the next level's dialog to show the current selection.
class LocalRegionSelectionStore : public RegionSelectionStore {
public:
    explicit LocalRegionSelectionStore(std::filesystem::path root) : m_root(std::move(root)) {}

    /// A read-only recordset of the level's units, in the order they were stored.
    Variant GetRegionUnits(int16_t level) override;
    /// The level's recordset; an editable one keeps added records until SaveRegionUnits.
    Variant OpenRegionUnits(int16_t level, bool editable) override;
    /// Replaces the level's units by the records added to a recordset from OpenRegionUnits, in
    /// one transaction: a failure keeps the units stored before.
    void SaveRegionUnits(const Variant& units) override;

    /// The table of a level; throws a host error for a level outside 0 to 3.
    static const char* tableOf(int16_t level);

private:
    /// The level whose table is `table`; throws a host error for any other table.
    static int16_t levelOf(const std::string& table);
    Variant open(int16_t level, bool editable);

    std::filesystem::path m_root;
};

} // namespace brevant::host::local
