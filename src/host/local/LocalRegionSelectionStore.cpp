#include "host/local/LocalRegionSelectionStore.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "platform/tabular/Connection.h"

#include <array>

namespace brevant::host::local {

namespace {

struct LevelTable {
    const char* name;
    const char* unit;
    const char* parent;
};

constexpr std::array<LevelTable, 4> kLevels{{{"RegionStates", "StateName", "StateFips"},
                                             {"RegionCounties", "CountyFips", "StateName"},
                                             {"RegionTracts", "Tract", "CountyFips"},
                                             {"RegionBlocks", "CensusBlock", "Tract"}}};

std::shared_ptr<platform::tabular::Connection> regionDatabase(const std::filesystem::path& root)
{
    const auto host = HostRoot::load(root);
    auto connection = platform::tabular::Connection::connect(
        "sqlite:" + host.regionDatabasePath(host.currentRegion()).string());
    // Regions made before units were stored get the tables on first use.
    for (const auto& level : kLevels) {
        connection->execute(std::string("CREATE TABLE IF NOT EXISTS ") + level.name + " (" +
                            level.unit + " TEXT, " + level.parent +
                            " TEXT, Flag INTEGER NOT NULL DEFAULT 0)");
    }
    return connection;
}

} // namespace

const char* LocalRegionSelectionStore::tableOf(int16_t level)
{
    if (level < 0 || level >= static_cast<int16_t>(kLevels.size())) {
        hostError(HostError::InvalidInput,
                  "unit level " + std::to_string(level) + " is none of 0 to 3");
    }
    return kLevels[static_cast<std::size_t>(level)].name;
}

platform::automation::Variant LocalRegionSelectionStore::open(int16_t level, bool editable)
{
    const char* table = tableOf(level);
    auto connection = regionDatabase(m_root);
    auto units =
        connection->open(table, editable ? platform::tabular::Recordset::LockType::BatchOptimistic
                                         : platform::tabular::Recordset::LockType::ReadOnly);
    return Variant(units);
}

platform::automation::Variant LocalRegionSelectionStore::GetRegionUnits(int16_t level)
{
    return open(level, false);
}

platform::automation::Variant LocalRegionSelectionStore::OpenRegionUnits(int16_t level,
                                                                         bool editable)
{
    return open(level, editable);
}

void LocalRegionSelectionStore::SaveRegionUnits(const Variant& units)
{
    auto recordset = units.isObject() ? units.objectAs<platform::tabular::Recordset>() : nullptr;
    if (!recordset) {
        hostError(HostError::InvalidInput, "SaveRegionUnits needs a recordset of units");
    }
    // The window adds every unit the user left selected, earlier choices among them: the
    // level becomes what was added, so a unit the user deselected does not stay behind. All or
    // nothing, so a failed save keeps the earlier choice.
    const std::string table = recordset->tableName();
    levelOf(table);
    auto connection = regionDatabase(m_root);
    connection->execute("BEGIN IMMEDIATE");
    try {
        connection->execute("DELETE FROM " + connection->quoteIdentifier(table));
        recordset->updateBatch(*connection);
        connection->execute("COMMIT");
    } catch (...) {
        connection->execute("ROLLBACK");
        throw;
    }
}

int16_t LocalRegionSelectionStore::levelOf(const std::string& table)
{
    for (std::size_t i = 0; i < kLevels.size(); ++i) {
        if (table == kLevels[i].name) {
            return static_cast<int16_t>(i);
        }
    }
    hostError(HostError::InvalidInput,
              "SaveRegionUnits stores units of the Region* tables, not " + table);
}

} // namespace brevant::host::local
