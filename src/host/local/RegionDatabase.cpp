#include "host/local/RegionDatabase.h"

#include "host/local/HostErrors.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/Variant.h"
#include "platform/tabular/SqliteDatabase.h"

#include <cerrno>
#include <cstdlib>

namespace brevant::host::local {

using platform::tabular::SqliteDatabase;

namespace {
constexpr const char* kSchema = R"(
CREATE TABLE IF NOT EXISTS Settings (
    Section TEXT NOT NULL COLLATE NOCASE,
    Key TEXT NOT NULL COLLATE NOCASE,
    Value TEXT,
    PRIMARY KEY (Section, Key)
);
CREATE TABLE IF NOT EXISTS UserMaps (
    Code TEXT PRIMARY KEY COLLATE NOCASE,
    FileName TEXT NOT NULL,
    ClassName TEXT NOT NULL,
    Folder TEXT NOT NULL,
    Source TEXT NOT NULL DEFAULT '',
    Processed INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE IF NOT EXISTS InventoryClasses (
    TableName TEXT PRIMARY KEY COLLATE NOCASE,
    DatabaseName TEXT NOT NULL,
    Kind TEXT NOT NULL,
    HazardTable TEXT NOT NULL DEFAULT ''
);
)";

RegionDatabase::UserMap userMapOf(const SqliteDatabase::Statement& row)
{
    return {row.text(0), row.text(1), row.text(2), row.text(3), row.text(4), row.int64(5) != 0};
}

RegionDatabase::InventoryClass inventoryClassOf(const SqliteDatabase::Statement& row)
{
    return {row.text(0), row.text(1), row.text(2), row.text(3)};
}

constexpr const char* kUserMapColumns =
    "SELECT Code, FileName, ClassName, Folder, Source, Processed FROM UserMaps";
constexpr const char* kInventoryColumns =
    "SELECT TableName, DatabaseName, Kind, HazardTable FROM InventoryClasses";
} // namespace

void RegionDatabase::create(const std::filesystem::path& path)
{
    std::filesystem::create_directories(path.parent_path());
    SqliteDatabase db(path.string(), SqliteDatabase::Mode::Create);
    db.execute(kSchema);
}

RegionDatabase::RegionDatabase(std::filesystem::path path) : m_path(std::move(path))
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(m_path, ec)) {
        hostError(HostError::MissingFile,
                  "the region database " + m_path.string() + " does not exist");
    }
}

std::optional<std::string> RegionDatabase::readOptional(const std::string& section,
                                                        const std::string& key) const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db,
                                    "SELECT Value FROM Settings WHERE Section = ?1 AND Key = ?2");
    query.bind(1, section).bind(2, key);
    if (!query.step() || query.isNull(0)) {
        return std::nullopt;
    }
    return query.text(0);
}

std::string RegionDatabase::readString(const std::string& section, const std::string& key) const
{
    if (auto value = readOptional(section, key)) {
        return *value;
    }
    hostError(HostError::UnknownKey,
              "setting " + section + "/" + key + " is not set in " + m_path.string());
}

int32_t RegionDatabase::readInt32(const std::string& section, const std::string& key) const
{
    const std::string text = readString(section, key);
    const platform::automation::Variant value(text);
    if (!value.isNumeric()) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::TypeMismatch, kHostSource,
            "Type mismatch: setting " + section + "/" + key + " in " + m_path.string() + " is \"" +
                text + "\", not a whole number");
    }
    return value.toInt32();
}

void RegionDatabase::write(const std::string& section, const std::string& key,
                           const std::string& value)
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Statement upsert(
        db, "INSERT INTO Settings (Section, Key, Value) VALUES (?1, ?2, ?3) "
            "ON CONFLICT (Section, Key) DO UPDATE SET Value = excluded.Value");
    upsert.bind(1, section).bind(2, key).bind(3, value);
    upsert.step();
}

void RegionDatabase::putUserMap(const UserMap& map)
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Statement upsert(
        db, "INSERT OR REPLACE INTO UserMaps (Code, FileName, ClassName, Folder, Source, "
            "Processed) VALUES (?1, ?2, ?3, ?4, ?5, 0)");
    upsert.bind(1, map.code).bind(2, map.fileName).bind(3, map.className).bind(4, map.folder);
    upsert.bind(5, map.source).step();
}

std::optional<RegionDatabase::UserMap> RegionDatabase::userMap(const std::string& code) const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db, std::string(kUserMapColumns) + " WHERE Code = ?1");
    query.bind(1, code);
    if (!query.step()) {
        return std::nullopt;
    }
    return userMapOf(query);
}

std::vector<RegionDatabase::UserMap> RegionDatabase::userMaps() const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db, std::string(kUserMapColumns) + " ORDER BY Code");
    std::vector<UserMap> maps;
    while (query.step()) {
        maps.push_back(userMapOf(query));
    }
    return maps;
}

void RegionDatabase::markMapProcessed(const std::string& code)
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Statement update(db, "UPDATE UserMaps SET Processed = 1 WHERE Code = ?1");
    update.bind(1, code).step();
}

void RegionDatabase::putInventoryClass(const InventoryClass& entry)
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadWrite);
    putInventoryClass(db, entry);
}

void RegionDatabase::putInventoryClass(SqliteDatabase& db, const InventoryClass& entry)
{
    SqliteDatabase::Statement upsert(
        db, "INSERT OR REPLACE INTO InventoryClasses (TableName, DatabaseName, Kind, "
            "HazardTable) VALUES (?1, ?2, ?3, ?4)");
    upsert.bind(1, entry.tableName).bind(2, entry.databaseName).bind(3, entry.kind);
    upsert.bind(4, entry.hazardTable).step();
}

std::optional<RegionDatabase::InventoryClass>
RegionDatabase::inventoryClass(const std::string& tableName) const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db, std::string(kInventoryColumns) + " WHERE TableName = ?1");
    query.bind(1, tableName);
    if (!query.step()) {
        return std::nullopt;
    }
    return inventoryClassOf(query);
}

std::vector<RegionDatabase::InventoryClass> RegionDatabase::inventoryClasses() const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db, std::string(kInventoryColumns) + " ORDER BY rowid");
    std::vector<InventoryClass> classes;
    while (query.step()) {
        classes.push_back(inventoryClassOf(query));
    }
    return classes;
}

} // namespace brevant::host::local
