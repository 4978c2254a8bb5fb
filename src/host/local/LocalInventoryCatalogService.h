#pragma once

#include "host/InventoryCatalogService.h"

#include <filesystem>

namespace brevant::host::local {

/// The current region's inventory classes, kept in its region.sqlite by
/// `brevant inventory add`.
class LocalInventoryCatalogService : public InventoryCatalogService {
public:
    explicit LocalInventoryCatalogService(std::filesystem::path root) : m_root(std::move(root)) {}

    /// Three one-dimensional arrays of texts, zero-based, in the order the classes were added:
    /// the classes that hold site conditions. A line class without a hazard table (the
    /// levees) has nowhere to keep them and is left out.
    void GetInventoryClasses(Variant& tableNames, Variant& databaseNames, Variant& kinds) override;
    /// Throw a host error naming the class when it is not catalogued.
    std::string GetDatabaseName(const std::string& tableName) override;
    std::string GetHazardTableName(const std::string& tableName) override;

private:
    std::filesystem::path m_root;
};

} // namespace brevant::host::local
