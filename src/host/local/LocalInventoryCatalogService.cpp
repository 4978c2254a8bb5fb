#include "host/local/LocalInventoryCatalogService.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/VariantArray.h"

namespace brevant::host::local {

using platform::automation::VariantArray;

namespace {
RegionDatabase currentDatabase(const std::filesystem::path& root)
{
    const auto host = HostRoot::load(root);
    return RegionDatabase(host.regionDatabasePath(host.currentRegion()));
}

RegionDatabase::InventoryClass entryOf(const std::filesystem::path& root,
                                       const std::string& tableName)
{
    const RegionDatabase db = currentDatabase(root);
    auto entry = db.inventoryClass(tableName);
    if (!entry) {
        hostError(HostError::UnknownKey, "inventory class " + tableName +
                                             " is not catalogued in " + db.path().string());
    }
    return *entry;
}
} // namespace

void LocalInventoryCatalogService::GetInventoryClasses(Variant& tableNames, Variant& databaseNames,
                                                       Variant& kinds)
{
    auto classes = currentDatabase(m_root).inventoryClasses();
    std::erase_if(classes, [](const auto& entry) {
        return (entry.kind == "L" || entry.kind == "l") && entry.hazardTable.empty();
    });
    const auto count = static_cast<int32_t>(classes.size());
    VariantArray names(count);
    VariantArray databases(count);
    VariantArray types(count);
    for (int32_t i = 0; i < count; ++i) {
        const auto& entry = classes[static_cast<std::size_t>(i)];
        names.at(i) = Variant(entry.tableName);
        databases.at(i) = Variant(entry.databaseName);
        types.at(i) = Variant(entry.kind);
    }
    tableNames = Variant(std::move(names));
    databaseNames = Variant(std::move(databases));
    kinds = Variant(std::move(types));
}

std::string LocalInventoryCatalogService::GetDatabaseName(const std::string& tableName)
{
    return entryOf(m_root, tableName).databaseName;
}

std::string LocalInventoryCatalogService::GetHazardTableName(const std::string& tableName)
{
    return entryOf(m_root, tableName).hazardTable;
}

} // namespace brevant::host::local
