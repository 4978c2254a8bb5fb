#pragma once

#include "host/local/SourceData.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace brevant::host::local {

/// What `brevant inventory add` is given.
struct InventoryRequest {
    /// Empty: the host's current region.
    std::string region;
    std::string className;
    /// 'P' point or 'L' line.
    char kind = 'P';
    /// File in the region folder; empty: the database the system keeps the class in, else
    /// uds.mdb.
    std::string database;
    /// The region's existing inventory, loaded into the new class.
    std::optional<VectorSource> from;
    /// Field of the user's identifiers; empty: identifiers are generated.
    std::string idField;
    /// Field of the features' names; empty: the source's Name field, if it has one.
    std::string nameField;
};

struct InventoryReport {
    std::string region;
    std::string className;
    std::string database;
    /// Empty for a class without one.
    std::string hazardTable;
    int64_t loaded = 0;
    /// Features in no tract of the region (points), or wholly outside its boundary (lines).
    int64_t outside = 0;
    int64_t repaired = 0;
    int64_t dropped = 0;
};

/// Adds an inventory class to a region: the class with the fields the library relies on
/// (identifier at field index 2, then name, tract and coordinates for points, county for lines)
/// and, for a line class, its hazard table; its server tables; and its catalogue entry. With a
/// source, its features become the region's inventory: points (a point inside polygons and
/// multi-part shapes) take the tract they lie in and their coordinates; lines are cut at the
/// region boundary and take the county and tract they lie in; features outside the region are
/// left out and counted.
///
/// Bad input (an unknown region or database, a class that exists, a kind other than P or L, a
/// source that does not open or has the wrong shapes, a missing or duplicate identifier) is an
/// InvalidInput host error that changes nothing; a failure while the class is written or
/// catalogued leaves the region's inventory as it was.
InventoryReport addInventory(const std::filesystem::path& root, const InventoryRequest& request,
                             const std::function<void(int64_t done, int64_t total)>& progress = {});

} // namespace brevant::host::local
