#include "host/local/LocalGisUtilityService.h"

#include "host/HazardCodes.h"
#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/Schemas.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Collection.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/SqlQuote.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"

#include <algorithm>
#include <array>
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

// Which server columns an operation writes; empty: every column the class has too.
using ColumnFilter = std::function<bool(std::string_view)>;

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
// Copies every record of `source` into the server table `table`, keyed by the identifier
// (field 2 of the source): the columns both sides have (names compared without regard to case)
// take the record's values, and a record without a server row gets one. With `wanted`, only
// the columns it accepts are written, and a table that shares no such column with the source
// is left alone. A table without the identifier column is left alone too.
// Whether the columns copied from `source` hold numbers or text only, which the database copies
// as the class stores them; dates and other values go through the loop's conversions.
bool copiesPlainValues(const geodatabase::Table& source,
                       const std::vector<std::pair<std::string, int>>& copied)
{
    using geodatabase::FieldType;
    return std::all_of(copied.begin(), copied.end(), [&](const auto& column) {
        const FieldType type = source.fields().field(column.second).type;
        return type == FieldType::Double || type == FieldType::Single ||
               type == FieldType::Integer || type == FieldType::SmallInteger ||
               type == FieldType::String;
    });
}

// Whether a unique index covers exactly `column` of `table`, so an insert can name it as the
// conflict to update on.
bool isUniqueKey(SqliteDatabase& db, const std::string& table, const std::string& column)
{
    SqliteDatabase::Statement indexes(db, "SELECT il.name FROM pragma_index_list(?1) AS il WHERE "
                                          "il.\"unique\" AND (SELECT count(*) FROM "
                                          "pragma_index_info(il.name)) = 1 AND (SELECT name FROM "
                                          "pragma_index_info(il.name)) = ?2 COLLATE NOCASE");
    indexes.bind(1, table);
    indexes.bind(2, column);
    return indexes.step();
}

void mirrorRecords(SqliteDatabase& db, const geodatabase::Table& source, const std::string& table,
                   const ColumnFilter& wanted, const std::optional<std::string>& attached = {})
{
    using geodatabase::sqlQuoted;
    const auto columns = columnsOf(db, table);
    const Column* key = findColumn(columns, source.fields().field(2).name);
    if (!key) {
        return;
    }
    // Server column -> class field, the key first.
    std::vector<std::pair<std::string, int>> copied{{key->name, 2}};
    for (const auto& column : columns) {
        const int field = source.findField(column.name);
        if (&column != key && field > 1 && (!wanted || wanted(column.name))) {
            copied.emplace_back(column.name, field);
        }
    }
    if (wanted && copied.size() == 1) {
        return;
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
    const std::string quotedKey = sqlQuoted(key->name, '"');
    if (attached && copiesPlainValues(source, copied) && isUniqueKey(db, table, key->name)) {
        // The class's file is attached: the database copies the values itself, record by
        // record in the class's order, the same upsert as the loop below (a key met twice ends
        // with its last record's values) without a round trip per record.
        std::string selected;
        for (std::size_t i = 0; i < copied.size(); ++i) {
            selected +=
                (i ? ", " : "") + sqlQuoted(source.fields().field(copied[i].second).name, '"');
        }
        std::string onConflict = "NOTHING";
        if (!assignments.empty()) {
            onConflict = "UPDATE SET ";
            for (std::size_t i = 1; i < copied.size(); ++i) {
                const std::string column = sqlQuoted(copied[i].first, '"');
                onConflict += (i > 1 ? ", " : "") + column + " = excluded." + column;
            }
        }
        db.execute("INSERT INTO " + quotedTable + " (" + names + ") SELECT " + selected + " FROM " +
                   *attached + "." + sqlQuoted(source.name(), '"') + " WHERE " +
                   sqlQuoted(source.fields().field(2).name, '"') +
                   " IS NOT NULL ORDER BY rowid ON CONFLICT (" + quotedKey + ") DO " + onConflict);
        return;
    }
    SqliteDatabase::Statement exists(db, "SELECT 1 FROM " + quotedTable + " WHERE " + quotedKey +
                                             " = ?1");
    SqliteDatabase::Statement insert(db, "INSERT INTO " + quotedTable + " (" + names +
                                             ") VALUES (" + values + ")");
    std::optional<SqliteDatabase::Statement> update;
    if (!assignments.empty()) {
        update.emplace(db, "UPDATE " + quotedTable + " SET " + assignments + " WHERE " + quotedKey +
                               " = ?1");
    }
    std::vector<std::string> read;
    for (const auto& column : copied) {
        read.push_back(source.fields().field(column.second).name);
    }
    geodatabase::Cursor cursor = source.search(geodatabase::QueryFilter::fields(std::move(read)));
    geodatabase::Row row;
    const auto bindRow = [&](SqliteDatabase::Statement& statement) {
        for (std::size_t i = 0; i < copied.size(); ++i) {
            bindValue(statement, static_cast<int>(i) + 1, row.value(copied[i].second));
        }
    };
    while (cursor.next(row)) {
        const Variant& id = row.value(2);
        if (id.isNull() || id.isEmpty()) {
            continue;
        }
        // Most records have their server row already: the update finds it, or changes nothing
        // and the record gets one.
        if (update) {
            const int64_t before = db.totalChanges();
            bindRow(*update);
            update->step();
            update->reset();
            if (db.totalChanges() != before) {
                continue;
            }
        } else {
            bindValue(exists, 1, id);
            const bool present = exists.step();
            exists.reset();
            if (present) {
                continue;
            }
        }
        bindRow(insert);
        insert.step();
        insert.reset();
    }
}

// The name a table or view of the database is stored under; nullopt when there is none.
std::optional<std::string> storedTableName(SqliteDatabase& db, const std::string& name)
{
    SqliteDatabase::Statement query(db, "SELECT name FROM sqlite_master WHERE type IN "
                                        "('table', 'view') AND name = ?1 COLLATE NOCASE");
    query.bind(1, name);
    if (!query.step()) {
        return std::nullopt;
    }
    return query.text(0);
}

/// The file of a GeoPackage class attached to the region's database as "inventory" for as long
/// as this lives; nothing for classes stored otherwise.
class AttachedClassFile {
public:
    AttachedClassFile(SqliteDatabase& db, const geodatabase::Table& source) : m_db(db)
    {
        const auto workspace = source.workspace();
        if (workspace.kind() != geodatabase::Workspace::Kind::GeoPackage) {
            return;
        }
        SqliteDatabase::Statement attach(db, "ATTACH DATABASE ?1 AS inventory");
        attach.bind(1, workspace.path().string());
        attach.step();
        m_name = "inventory";
    }
    ~AttachedClassFile()
    {
        if (m_name) {
            try {
                m_db.execute("DETACH DATABASE inventory");
            } catch (const std::exception&) {
                // The connection closes right after; the attachment goes with it.
            }
        }
    }
    AttachedClassFile(const AttachedClassFile&) = delete;
    AttachedClassFile& operator=(const AttachedClassFile&) = delete;

    const std::optional<std::string>& name() const { return m_name; }

private:
    SqliteDatabase& m_db;
    std::optional<std::string> m_name;
};

// "EqRailwaySegmenthft" -> "RailwaySegment".
std::string lineSuffixOfHazardTable(const std::string& hazardTable)
{
    constexpr std::string_view kPrefix = "Eq";
    constexpr std::string_view kSuffix = "hft";
    const auto lower = platform::automation::toLower(hazardTable);
    if (hazardTable.size() <= kPrefix.size() + kSuffix.size() || !lower.starts_with("eq") ||
        !lower.ends_with(kSuffix)) {
        hostError(HostError::UnknownKey,
                  "\"" + hazardTable + "\" is no line hazard table name (Eq + class + hft)");
    }
    return hazardTable.substr(kPrefix.size(), hazardTable.size() - kPrefix.size() - kSuffix.size());
}

// The server columns an analysis writes: the site conditions always, and the result field of
// each listed map type (every result field when no list is given).
class AnalysisColumns {
public:
    explicit AnalysisColumns(const Variant& mapTypes)
    {
        for (const auto& field : siteConditionFields()) {
            m_columns.push_back(field.name);
        }
        const auto codes = codesOf(mapTypes);
        for (const auto& [code, field] : hazardResultFields()) {
            const bool listed =
                !codes || std::any_of(codes->begin(), codes->end(), [&](const std::string& c) {
                    return platform::automation::equalsIgnoreCase(c, code);
                });
            if (listed) {
                m_columns.emplace_back(field);
            }
        }
    }

    ColumnFilter filter() const
    {
        return [this](std::string_view column) {
            return std::any_of(m_columns.begin(), m_columns.end(), [&](const std::string& name) {
                return platform::automation::equalsIgnoreCase(name, column);
            });
        };
    }

private:
    // The codes of a list (an array, a collection or one text); nullopt when none is given.
    static std::optional<std::vector<std::string>> codesOf(const Variant& mapTypes)
    {
        std::vector<std::string> codes;
        switch (mapTypes.type()) {
        case VariantType::Empty:
        case VariantType::Null:
            return std::nullopt;
        case VariantType::Array:
            for (const auto& item : mapTypes.array().elements()) {
                codes.push_back(item.toString());
            }
            break;
        case VariantType::Collection:
            for (const auto& item : *mapTypes.collection()) {
                codes.push_back(item.toString());
            }
            break;
        default:
            codes.push_back(mapTypes.toString());
            break;
        }
        return codes;
    }

    std::vector<std::string> m_columns;
};

/// The highest number N of the identifiers prefix + N (digits only) in a column; 0 when none.
int64_t highestIdentifier(SqliteDatabase& db, const std::string& table, const std::string& column,
                          const std::string& prefix)
{
    using geodatabase::sqlQuoted;
    const std::string name = sqlQuoted(column, '"');
    SqliteDatabase::Statement query(
        db, "SELECT MAX(CAST(substr(" + name + ", ?2) AS INTEGER)) FROM " + sqlQuoted(table, '"') +
                " WHERE substr(" + name + ", 1, ?2 - 1) = ?1 AND length(" + name +
                ") >= ?2 AND substr(" + name + ", ?2) NOT GLOB '*[^0-9]*'");
    query.bind(1, prefix).bind(2, static_cast<int64_t>(prefix.size() + 1));
    return query.step() && !query.isNull(0) ? query.int64(0) : 0;
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

        db.inTransaction([&] {
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
    const MirroredClass mirrored = mirroredClass(m_root, tableName, databaseName);
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);
    const AttachedClassFile attached(db, *mirrored.featureClass);
    db.inTransaction([&] {
        for (const auto& table : mirrored.serverTables) {
            mirrorRecords(db, *mirrored.featureClass, table, {}, attached.name());
        }
    });
}

void LocalGisUtilityService::UpdateAnalysisTable(const std::string& tableName,
                                                 const std::string& databaseName,
                                                 const Variant& mapTypes, bool isPoint)
{
    if (!isPoint) {
        // A line class's values live in its hazard table, not in the class itself.
        UpdateLineHazardTable(hazardTableName(tableName), databaseName, mapTypes);
        return;
    }
    const MirroredClass mirrored = mirroredClass(m_root, tableName, databaseName);
    const AnalysisColumns columns(mapTypes);
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);
    const AttachedClassFile attached(db, *mirrored.featureClass);
    db.inTransaction([&] {
        for (const auto& table : mirrored.serverTables) {
            mirrorRecords(db, *mirrored.featureClass, table, columns.filter(), attached.name());
        }
    });
}

void LocalGisUtilityService::UpdateLineHazardTable(const std::string& hazardTableName,
                                                   const std::string& databaseName,
                                                   const Variant& mapTypes)
{
    const std::string suffix = lineSuffixOfHazardTable(hazardTableName);
    MirroredClass mirrored = mirroredClass(m_root, hazardTableName, databaseName);
    mirrored.serverTables = {hazardTableName, "Eq" + suffix};
    const AnalysisColumns columns(mapTypes);
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);
    const AttachedClassFile attached(db, *mirrored.featureClass);
    db.inTransaction([&] {
        for (const auto& table : mirrored.serverTables) {
            mirrorRecords(db, *mirrored.featureClass, table, columns.filter(), attached.name());
        }
    });
}

void LocalGisUtilityService::PrepareIdentifiers(const std::string& tableName)
{
    const std::string prefix = identifierPrefix(tableName);
    int64_t highest = 0;
    const auto host = HostRoot::load(m_root);
    const auto regionDatabase = host.regionDatabasePath(host.currentRegion());
    if (const auto entry = RegionDatabase(regionDatabase).inventoryClass(tableName)) {
        const std::string path = host.regionFolder(host.currentRegion()) + entry->databaseName;
        const auto featureClass =
            geodatabase::Workspace::open(path, true).openFeatureClass(entry->tableName);
        const std::string identifier = featureClass->fields().field(2).name;
        {
            SqliteDatabase classes(path, SqliteDatabase::Mode::ReadOnly);
            highest = highestIdentifier(classes, featureClass->name(), identifier, prefix);
        }
        // Rows of records deleted from the class stay in the server tables; their
        // identifiers are taken too.
        SqliteDatabase db(regionDatabase.string(), SqliteDatabase::Mode::ReadOnly);
        const std::string suffix = inventorySuffix(entry->tableName);
        for (const std::string& table : {"hz" + suffix, "Eq" + suffix}) {
            const auto stored = storedTableName(db, table);
            if (stored && findColumn(columnsOf(db, *stored), identifier)) {
                highest = std::max(highest, highestIdentifier(db, *stored, identifier, prefix));
            }
        }
    }
    m_identifierPrefix = prefix;
    m_nextIdentifier = highest + 1;
}

std::string LocalGisUtilityService::GetNextIdentifier()
{
    if (m_identifierPrefix.empty()) {
        hostError(HostError::UnknownKey,
                  "no inventory table was prepared for new identifiers (PrepareIdentifiers)");
    }
    std::string number = std::to_string(m_nextIdentifier++);
    if (number.size() < kIdentifierDigits) {
        number.insert(0, kIdentifierDigits - number.size(), '0');
    }
    return m_identifierPrefix + number;
}

std::string LocalGisUtilityService::GetRecordSetTableName(const std::string& recordSetId)
{
    const auto host = HostRoot::load(m_root);
    const auto path = host.regionDatabasePath(host.currentRegion());
    {
        SqliteDatabase db(path.string(), SqliteDatabase::Mode::ReadOnly);
        const auto columns = columnsOf(db, "AnalysisRecordSets");
        if (findColumn(columns, "RecordSetId") && findColumn(columns, "TableName")) {
            SqliteDatabase::Statement query(
                db, "SELECT TableName FROM AnalysisRecordSets WHERE RecordSetId = ?1");
            query.bind(1, recordSetId);
            if (query.step() && !query.isNull(0)) {
                return query.text(0);
            }
        }
    }
    if (const auto entry = RegionDatabase(path).inventoryClass(recordSetId)) {
        return entry->tableName;
    }
    hostError(HostError::UnknownKey, "analysis record set \"" + recordSetId +
                                         "\" is neither in AnalysisRecordSets nor a catalogued "
                                         "inventory class of " +
                                         path.string());
}

std::string LocalGisUtilityService::GetResultTableName(const std::string& tableName)
{
    const auto host = HostRoot::load(m_root);
    const auto path = host.regionDatabasePath(host.currentRegion());
    const auto entry = RegionDatabase(path).inventoryClass(tableName);
    SqliteDatabase db(path.string(), SqliteDatabase::Mode::ReadOnly);
    if (entry) {
        const std::string analysisTable = "Eq" + inventorySuffix(entry->tableName);
        return storedTableName(db, analysisTable).value_or(analysisTable);
    }
    if (auto stored = storedTableName(db, tableName)) {
        return *stored;
    }
    // A thematic map's table "T_field" shows the field of the table T.
    const auto split = tableName.rfind('_');
    if (split != std::string::npos && split > 0) {
        const auto table = storedTableName(db, tableName.substr(0, split));
        if (table && findColumn(columnsOf(db, *table), tableName.substr(split + 1))) {
            return *table;
        }
    }
    hostError(HostError::UnknownKey,
              "no table of " + path.string() + " holds the values of \"" + tableName + "\"");
}

} // namespace brevant::host::local

namespace brevant::host::local {

void LocalGisUtilityService::EmptyTable(const std::string& tableName)
{
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);
    if (columnsOf(db, tableName).empty()) {
        hostError(HostError::UnknownKey,
                  "the region database holds no table \"" + tableName + "\" to empty");
    }
    db.execute("DELETE FROM " + geodatabase::sqlQuoted(tableName, '"'));
}

void LocalGisUtilityService::WriteQueryToolRecord(int32_t layerIndex, const std::string& layerName,
                                                  int16_t kind, const std::string& tableName,
                                                  const std::string& databaseName,
                                                  const std::string& joinTableName,
                                                  const std::string& joinDatabaseName)
{
    SqliteDatabase db(currentDatabasePath(m_root).string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Statement insert(
        db, "INSERT OR REPLACE INTO hzQueryTool (LayerIndex, LayerName, LayerKind, TableName, "
            "DatabaseName, JoinTableName, JoinDatabaseName) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    insert.bind(1, static_cast<int64_t>(layerIndex))
        .bind(2, layerName)
        .bind(3, static_cast<int64_t>(kind))
        .bind(4, tableName)
        .bind(5, databaseName)
        .bind(6, joinTableName)
        .bind(7, joinDatabaseName);
    insert.step();
}

} // namespace brevant::host::local
