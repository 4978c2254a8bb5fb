#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::tabular {
class SqliteDatabase;
}

namespace brevant::host::local {

/// A region's tabular database `region.sqlite`. This class owns its settings store (values by
/// section and key, both matched without regard to case, kept as text), the register of the
/// user's maps by hazard code, and the catalogue of inventory classes. The server tables the
/// library opens live in the same file.
class RegionDatabase {
public:
    /// A user map: where its converted copy lies. `folder` is relative to the region folder
    /// ("UserMaps/"), so a host root can move.
    struct UserMap {
        std::string code;
        std::string fileName;
        std::string className;
        std::string folder;
        /// What the user registered, for listings.
        std::string source;
        bool processed = false;
    };
    struct InventoryClass {
        std::string tableName;
        /// File name in the region folder ("trn.mdb").
        std::string databaseName;
        /// "P" point or "L" line.
        std::string kind;
        /// Empty for a point class.
        std::string hazardTable;
    };

    /// Creates the database with its schema when missing; an existing one keeps its data.
    static void create(const std::filesystem::path& path);

    /// Opens an existing database; throws a host error naming the file when it is missing.
    explicit RegionDatabase(std::filesystem::path path);

    /// Reads a 32-bit integer setting. Throws a host error naming section, key and file when it
    /// is not set, 13 (type mismatch) when the value is not a whole number and 6 (overflow)
    /// when it does not fit in 32 bits.
    int32_t readInt32(const std::string& section, const std::string& key) const;
    /// Reads a text setting; throws a host error when it is not set.
    std::string readString(const std::string& section, const std::string& key) const;
    /// Reads a text setting; nullopt when it is not set.
    std::optional<std::string> readOptional(const std::string& section,
                                            const std::string& key) const;
    /// Writes a setting, replacing an earlier value.
    void write(const std::string& section, const std::string& key, const std::string& value);

    /// Adds or replaces the map of a code (processed again false).
    void putUserMap(const UserMap& map);
    std::optional<UserMap> userMap(const std::string& code) const;
    std::vector<UserMap> userMaps() const;
    /// Records that the map of a code was processed. A code without a map has nothing to
    /// record: its clipped map was emptied, which is processing too.
    void markMapProcessed(const std::string& code);

    /// Adds or replaces an inventory class.
    void putInventoryClass(const InventoryClass& entry);
    /// The same through a connection to the region database the caller holds, so that the
    /// entry joins the caller's transaction.
    static void putInventoryClass(platform::tabular::SqliteDatabase& db,
                                  const InventoryClass& entry);
    std::optional<InventoryClass> inventoryClass(const std::string& tableName) const;
    std::vector<InventoryClass> inventoryClasses() const;

    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace brevant::host::local
