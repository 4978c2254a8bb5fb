#include "host/local/LocalGisUtilityService.h"

#include "host/local/HostRoot.h"
#include "host/local/Schemas.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/SqlQuote.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"

#include <functional>
#include <optional>
#include <vector>

namespace brevant::host::local {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::VariantType;
using platform::tabular::SqliteDatabase;

namespace {

constexpr int16_t kRealPrecision = 2;

struct Column {
    std::string name;
    std::string type;
};

std::filesystem::path currentDatabasePath(const std::filesystem::path& root)
{
    const auto host = HostRoot::load(root);
    return host.regionDatabasePath(host.currentRegion());
}

// Columns of a table in declaration order; empty when there is no such table.
std::vector<Column> columnsOf(SqliteDatabase& db, const std::string& table)
{
    SqliteDatabase::Statement query(db, "SELECT name, type FROM pragma_table_info(?1)");
    query.bind(1, table);
    std::vector<Column> columns;
    while (query.step()) {
        columns.push_back({query.text(0), query.text(1)});
    }
    return columns;
}

const Column* findColumn(const std::vector<Column>& columns, std::string_view name)
{
    for (const auto& column : columns) {
        if (platform::automation::equalsIgnoreCase(column.name, name)) {
            return &column;
        }
    }
    return nullptr;
}

std::optional<std::string> optionalSetting(SqliteDatabase& db, const std::string& section,
                                           const std::string& key)
{
    SqliteDatabase::Statement query(db,
                                    "SELECT Value FROM Settings WHERE Section = ?1 AND Key = ?2");
    query.bind(1, section).bind(2, key);
    if (!query.step() || query.isNull(0)) {
        return std::nullopt;
    }
    return query.text(0);
}

void bindValue(SqliteDatabase::Statement& statement, int index, const Variant& value)
{
    switch (value.type()) {
    case VariantType::Empty:
    case VariantType::Null:
        statement.bindNull(index);
        break;
    case VariantType::Boolean:
        statement.bind(index, int64_t{value.toBool() ? 1 : 0});
        break;
    case VariantType::Int16:
    case VariantType::Int32:
        statement.bind(index, int64_t{value.toInt32()});
        break;
    case VariantType::Double:
        statement.bind(index, value.toDouble());
        break;
    default:
        statement.bind(index, value.toString());
        break;
    }
}

// Everything both operations need: the class, its identifier field and the region's database.
struct MirroredClass {
    std::shared_ptr<geodatabase::FeatureClass> featureClass;
    std::string identifier;
    std::vector<std::string> serverTables;
};

MirroredClass mirroredClass(const std::filesystem::path& root, const std::string& tableName,
                            const std::string& databaseName)
{
    const auto host = HostRoot::load(root);
    const bool relative = databaseName.find('/') == std::string::npos;
    const std::string path =
        relative ? host.regionFolder(host.currentRegion()) + databaseName : databaseName;
    MirroredClass mirrored;
    mirrored.featureClass = geodatabase::Workspace::open(path, true).openFeatureClass(tableName);
    mirrored.identifier = mirrored.featureClass->fields().field(2).name;
    const std::string suffix = inventorySuffix(tableName);
    mirrored.serverTables = {"hz" + suffix, "Eq" + suffix};
    return mirrored;
}

// Runs `body` in one transaction of the region database: all or nothing.
void inTransaction(SqliteDatabase& db, const std::function<void()>& body)
{
    db.execute("BEGIN");
    try {
        body();
        db.execute("COMMIT");
    } catch (...) {
        db.execute("ROLLBACK");
        throw;
    }
}

} // namespace

int16_t LocalGisUtilityService::GetDisplayPrecision(const std::string& tableName,
                                                    const std::string& fieldName)
{
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadOnly);
    if (!columnsOf(db, "DisplayPrecision").empty()) {
        SqliteDatabase::Statement query(
            db, "SELECT Precision FROM DisplayPrecision WHERE TableName = ?1 COLLATE NOCASE AND "
                "FieldName = ?2 COLLATE NOCASE");
        query.bind(1, tableName).bind(2, fieldName);
        if (query.step() && !query.isNull(0)) {
            return Variant(query.text(0)).toInt16();
        }
    }
    const auto columns = columnsOf(db, tableName);
    const Column* column = findColumn(columns, fieldName);
    if (!column) {
        return kRealPrecision;
    }
    const std::string type = platform::automation::toLower(column->type);
    const bool real = type.find("real") != std::string::npos ||
                      type.find("floa") != std::string::npos ||
                      type.find("doub") != std::string::npos;
    return real ? kRealPrecision : int16_t{0};
}

void LocalGisUtilityService::GetDefaultSiteValues(std::string& soilType,
                                                  int16_t& liquefactionCategory,
                                                  int16_t& landslideCategory, float& waterDepth)
{
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadOnly);
    const auto setting = [&db](const char* key, const char* fallback) {
        return optionalSetting(db, "SiteDefaults", key).value_or(fallback);
    };
    // Read all four before handing any back: a bad value leaves the caller's untouched.
    std::string soil = setting("stype", "D");
    const int16_t liquefaction = Variant(setting("lqfsuscat", "0")).toInt16();
    const int16_t landslide = Variant(setting("lndsuscat", "0")).toInt16();
    const auto depth = static_cast<float>(Variant(setting("w_depth", "0")).toDouble());
    soilType = std::move(soil);
    liquefactionCategory = liquefaction;
    landslideCategory = landslide;
    waterDepth = depth;
}

void LocalGisUtilityService::UpdateMovedLocations(const std::string& tableName,
                                                  const std::string& databaseName)
{
    using geodatabase::sqlQuoted;
    const MirroredClass mirrored = mirroredClass(m_root, tableName, databaseName);
    const int tractField = mirrored.featureClass->findField("Tract");
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);

    for (const auto& table : mirrored.serverTables) {
        const auto columns = columnsOf(db, table);
        const Column* key = findColumn(columns, mirrored.identifier);
        const Column* latitude = findColumn(columns, "Latitude");
        const Column* longitude = findColumn(columns, "Longitude");
        const Column* tract = tractField >= 0 ? findColumn(columns, "Tract") : nullptr;
        if (!key || !latitude || !longitude) {
            continue;
        }
        std::string sql = "UPDATE " + sqlQuoted(table, '"') + " SET " +
                          sqlQuoted(latitude->name, '"') + " = ?1, " +
                          sqlQuoted(longitude->name, '"') + " = ?2";
        if (tract) {
            sql += ", " + sqlQuoted(tract->name, '"') + " = ?4";
        }
        sql += " WHERE " + sqlQuoted(key->name, '"') + " = ?3";

        inTransaction(db, [&] {
            SqliteDatabase::Statement update(db, sql);
            geodatabase::Cursor cursor = mirrored.featureClass->search();
            geodatabase::Row row;
            while (cursor.next(row)) {
                const auto& shape = row.shape();
                const Variant& id = row.value(2);
                if (shape.isNull() || shape.isEmpty() || id.isNull() || id.isEmpty()) {
                    continue;
                }
                const auto location = shape.firstPoint();
                update.bind(1, location.y).bind(2, location.x);
                bindValue(update, 3, id);
                if (tract) {
                    bindValue(update, 4, row.value(tractField));
                }
                update.step();
                update.reset();
            }
        });
    }
}

void LocalGisUtilityService::UpdateEditedRecords(const std::string& databaseName,
                                                 const std::string& tableName, bool anyProcessed)
{
    if (!anyProcessed) {
        return;
    }
    using geodatabase::sqlQuoted;
    const MirroredClass mirrored = mirroredClass(m_root, tableName, databaseName);
    const auto& source = *mirrored.featureClass;
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);

    for (const auto& table : mirrored.serverTables) {
        const auto columns = columnsOf(db, table);
        const Column* key = findColumn(columns, mirrored.identifier);
        if (!key) {
            continue;
        }
        // Server column -> class field, the key first.
        std::vector<std::pair<std::string, int>> copied{{key->name, 2}};
        for (const auto& column : columns) {
            const int field = source.findField(column.name);
            if (&column != key && field > 1) {
                copied.emplace_back(column.name, field);
            }
        }
        std::string names;
        std::string values;
        std::string assignments;
        for (std::size_t i = 0; i < copied.size(); ++i) {
            const std::string name = sqlQuoted(copied[i].first, '"');
            std::string parameter = std::to_string(i + 1);
            parameter.insert(parameter.begin(), '?');
            names += (i ? ", " : "") + name;
            values += (i ? ", " : "") + parameter;
            if (i > 0) {
                assignments += (i > 1 ? ", " : "") + name + " = " + parameter;
            }
        }
        const std::string quotedTable = sqlQuoted(table, '"');
        const std::string insertSql =
            "INSERT INTO " + quotedTable + " (" + names + ") VALUES (" + values + ")";
        const std::string updateSql = assignments.empty()
                                          ? std::string()
                                          : "UPDATE " + quotedTable + " SET " + assignments +
                                                " WHERE " + sqlQuoted(key->name, '"') + " = ?1";
        const std::string existsSql =
            "SELECT 1 FROM " + quotedTable + " WHERE " + sqlQuoted(key->name, '"') + " = ?1";

        inTransaction(db, [&] {
            SqliteDatabase::Statement exists(db, existsSql);
            SqliteDatabase::Statement insert(db, insertSql);
            std::optional<SqliteDatabase::Statement> update;
            if (!updateSql.empty()) {
                update.emplace(db, updateSql);
            }
            geodatabase::Cursor cursor = source.search();
            geodatabase::Row row;
            while (cursor.next(row)) {
                const Variant& id = row.value(2);
                if (id.isNull() || id.isEmpty()) {
                    continue;
                }
                bindValue(exists, 1, id);
                const bool present = exists.step();
                exists.reset();
                SqliteDatabase::Statement* statement =
                    present ? (update ? &*update : nullptr) : &insert;
                if (!statement) {
                    continue;
                }
                for (std::size_t i = 0; i < copied.size(); ++i) {
                    bindValue(*statement, static_cast<int>(i) + 1, row.value(copied[i].second));
                }
                statement->step();
                statement->reset();
            }
        });
    }
}

} // namespace brevant::host::local
