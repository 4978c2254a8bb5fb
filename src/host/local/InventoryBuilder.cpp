#include "host/local/InventoryBuilder.h"

#include "host/local/DefaultCatalogues.h"
#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/SqlQuote.h"
#include "platform/geometry/FeatureIndex.h"
#include "platform/geometry/PreparedGeometry.h"
#include "platform/tabular/SqliteDatabase.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <set>

namespace brevant::host::local {

namespace fs = std::filesystem;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::FeatureClass;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Workspace;
using platform::geometry::FeatureIndex;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;
using platform::tabular::SqliteDatabase;

namespace {

constexpr std::array<std::string_view, 5> kInventoryDatabases{"trn.mdb", "util.mdb", "ef.mdb",
                                                              "hplf.mdb", "uds.mdb"};

struct Feature {
    std::string id;
    Variant name;
    Geometry shape;
};

/// The polygons of a region class with a code field, indexed for point lookups.
struct CodedAreas {
    std::vector<std::string> codes;
    std::unique_ptr<FeatureIndex> index;

    CodedAreas(const Workspace& db, const std::string& className, const std::string& codeField)
    {
        auto table = db.openFeatureClass(className);
        const int field = table->findField(codeField);
        std::vector<Geometry> shapes;
        Cursor cursor = table->search();
        Row row;
        while (cursor.next(row)) {
            codes.push_back(row.value(field).isNull() ? "" : row.value(field).toString());
            shapes.push_back(row.shape());
        }
        index = std::make_unique<FeatureIndex>(std::move(shapes));
    }

    /// The code of the area the point lies in, on its edge included.
    std::optional<std::string> at(const Point& p) const
    {
        if (const auto found = index->containing(p)) {
            return codes[*found];
        }
        if (const auto near = index->nearest(p); near && near->distance == 0.0) {
            return codes[near->index];
        }
        return std::nullopt;
    }
    /// The code of the nearest area at any distance.
    std::string nearest(const Point& p) const
    {
        const auto near = index->nearest(p);
        return near ? codes[near->index] : std::string();
    }
};

void checkClassName(const std::string& name)
{
    const bool allowed = name.size() > 2 && std::isalpha(static_cast<unsigned char>(name[0])) &&
                         std::all_of(name.begin(), name.end(),
                                     [](unsigned char c) { return std::isalnum(c) || c == '_'; });
    if (!allowed) {
        hostError(HostError::InvalidInput,
                  "\"" + name +
                      "\" cannot name an inventory class: use a letter, then letters, "
                      "digits or '_', three characters at least");
    }
}

std::string defaultDatabase(const std::string& name)
{
    for (const auto& entry : inventoryClasses()) {
        if (platform::automation::equalsIgnoreCase(entry.name, name)) {
            return entry.database;
        }
    }
    return "uds.mdb";
}

/// Reads the whole source first, so that bad identifiers fail before anything is written.
std::vector<Feature> readFeatures(const InventoryRequest& request, char kind, int64_t& repaired,
                                  int64_t& dropped)
{
    auto source = openVectorSource(*request.from);
    const ShapeType type = source->shapeType();
    if (kind == 'L' && type != ShapeType::Polyline && type != ShapeType::Null) {
        hostError(HostError::InvalidInput,
                  "the line inventory " + request.from->describe() + " must hold polylines");
    }
    const int idIndex = request.idField.empty() ? -1
                                                : requireField(*source, *request.from,
                                                               request.idField, {}, "identifier");
    const int nameIndex = request.nameField.empty()
                              ? source->findField("Name")
                              : requireField(*source, *request.from, request.nameField, {}, "name");
    ShapeImporter import(source->spatialReference(),
                         kind == 'P' ? ShapeType::Point : ShapeType::Polyline);
    std::vector<Feature> features;
    std::set<std::string> seen;
    Cursor cursor = source->search();
    Row row;
    while (cursor.next(row)) {
        Feature feature;
        if (idIndex >= 0) {
            const Variant& id = row.value(idIndex);
            feature.id = id.isNull() || id.isEmpty() ? "" : id.toString();
            if (feature.id.empty()) {
                hostError(HostError::InvalidInput, "feature " + std::to_string(row.oid()) + " of " +
                                                       request.from->describe() +
                                                       " has no identifier in " + request.idField);
            }
            if (!seen.insert(platform::automation::toLower(feature.id)).second) {
                hostError(HostError::InvalidInput, "identifier " + feature.id + " of " +
                                                       request.from->describe() +
                                                       " is given twice");
            }
        }
        feature.name = nameIndex >= 0 ? row.value(nameIndex) : Variant::null();
        feature.shape = import(row.shape());
        if (!feature.shape.isNull()) {
            features.push_back(std::move(feature));
        }
    }
    repaired = import.repaired();
    dropped = import.dropped();
    return features;
}

/// "HB000001": the class's first two suffix letters and a running number.
void generateIdentifiers(std::vector<Feature>& features, const std::string& className)
{
    const std::string prefix = identifierPrefix(className);
    const std::size_t digits = std::max<std::size_t>(6, std::to_string(features.size()).size());
    for (std::size_t i = 0; i < features.size(); ++i) {
        std::string number = std::to_string(i + 1);
        features[i].id = prefix + std::string(digits - number.size(), '0') + number;
    }
}

/// Inserts rows into a server table, filling the columns named like the given values.
void insertServerRows(SqliteDatabase& db, const ServerTableSchema& table,
                      const std::vector<NamedValues>& rows)
{
    if (rows.empty()) {
        return;
    }
    // Value names as the rows hold them, for the columns that have one.
    std::vector<std::string> columns;
    for (const auto& [column, type] : table.columns) {
        for (const auto& [name, value] : rows.front()) {
            if (platform::automation::equalsIgnoreCase(name, column)) {
                columns.push_back(name);
            }
        }
    }
    if (columns.empty()) {
        return;
    }
    std::string names;
    std::string marks;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        names += (i ? ", " : "") + platform::geodatabase::sqlQuoted(columns[i], '"');
        marks += (i ? ", ?" : "?") + std::to_string(i + 1);
    }
    SqliteDatabase::Statement insert(db, "INSERT INTO " +
                                             platform::geodatabase::sqlQuoted(table.name, '"') +
                                             " (" + names + ") VALUES (" + marks + ")");
    for (const auto& row : rows) {
        insert.reset();
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Variant& value = row.find(columns[i])->second;
            const int index = static_cast<int>(i + 1);
            if (value.isNull() || value.isEmpty()) {
                insert.bindNull(index);
            } else if (value.isNumeric() &&
                       value.type() != platform::automation::VariantType::String) {
                insert.bind(index, value.toDouble());
            } else {
                insert.bind(index, value.toString());
            }
        }
        insert.step();
    }
}

/// What a request comes to once checked against the region: nothing is written before.
struct Plan {
    fs::path folder;
    fs::path regionDatabase;
    fs::path systemDataFolder;
    char kind = 'P';
    std::vector<ClassSchema> schemas;
    std::vector<ServerTableSchema> serverTables;
};

/// The rows the server tables take, as the classes were given them.
struct StoredRows {
    std::vector<NamedValues> rows;
    std::vector<NamedValues> hazardRows;
};

Plan validate(const HostRoot& host, const InventoryRequest& request, InventoryReport& result)
{
    Plan plan;
    result.region = host.regionNamed(request.region).name;
    result.className = request.className;
    checkClassName(request.className);
    plan.kind = static_cast<char>(std::toupper(static_cast<unsigned char>(request.kind)));
    if (plan.kind != 'P' && plan.kind != 'L') {
        hostError(HostError::InvalidInput,
                  std::string("the kind of an inventory class is P or L, not ") + request.kind);
    }
    result.database =
        request.database.empty() ? defaultDatabase(request.className) : request.database;
    const bool knownDatabase = std::any_of(
        kInventoryDatabases.begin(), kInventoryDatabases.end(), [&](std::string_view db) {
            return platform::automation::equalsIgnoreCase(db, result.database);
        });
    if (!knownDatabase) {
        hostError(HostError::InvalidInput, result.database +
                                               " is not an inventory database (trn.mdb, util.mdb, "
                                               "ef.mdb, hplf.mdb or uds.mdb)");
    }
    plan.folder = host.regionFolder(result.region);
    plan.regionDatabase = host.regionDatabasePath(result.region);
    plan.systemDataFolder = host.systemDataFolder();
    if (RegionDatabase(plan.regionDatabase).inventoryClass(request.className)) {
        hostError(HostError::InvalidInput, "the region " + result.region +
                                               " already has an inventory class " +
                                               request.className);
    }
    plan.schemas = inventoryClassSchemas(request.className, plan.kind);
    const Workspace existing = Workspace::open(plan.folder / result.database, true);
    for (const auto& schema : plan.schemas) {
        if (existing.exists(schema.name)) {
            hostError(HostError::InvalidInput, result.database + " of region " + result.region +
                                                   " already holds " + schema.name);
        }
    }
    plan.serverTables = inventoryServerTables(request.className, plan.kind);
    result.hazardTable = hasHazardTable(request.className, plan.kind)
                             ? hazardTableName(request.className)
                             : std::string();
    return plan;
}

std::vector<Feature> readSource(const InventoryRequest& request, const Plan& plan,
                                InventoryReport& result)
{
    if (!request.from) {
        return {};
    }
    std::vector<Feature> features =
        readFeatures(request, plan.kind, result.repaired, result.dropped);
    if (request.idField.empty()) {
        generateIdentifiers(features, request.className);
    }
    return features;
}

/// The classes created in the inventory database, deleted again unless kept: the database is
/// not the region database, so no transaction spans both.
class CreatedClasses {
public:
    CreatedClasses(Workspace& db, const std::vector<ClassSchema>& schemas)
        : m_db(db), m_schemas(schemas)
    {
    }
    ~CreatedClasses()
    {
        if (m_kept) {
            return;
        }
        // The failure that brought us here is the one to report.
        try {
            for (const auto& schema : m_schemas) {
                m_db.deleteDataset(schema.name);
            }
        } catch (...) {
        }
    }
    CreatedClasses(const CreatedClasses&) = delete;
    CreatedClasses& operator=(const CreatedClasses&) = delete;

    void keep() { m_kept = true; }

private:
    Workspace& m_db;
    const std::vector<ClassSchema>& m_schemas;
    bool m_kept = false;
};

/// Creates the classes and loads the features inside the region into them.
StoredRows writeClasses(Workspace& db, const InventoryRequest& request, const Plan& plan,
                        const std::vector<Feature>& features, InventoryReport& result,
                        const std::function<void(int64_t, int64_t)>& progress)
{
    std::size_t idLength = 8;
    for (const auto& feature : features) {
        idLength = std::max(idLength, feature.id.size());
    }
    for (ClassSchema schema : plan.schemas) {
        // Users' identifiers may be longer than the system's own.
        schema.fields.front().length = static_cast<int>(idLength);
        createClass(db, schema);
    }
    StoredRows stored;
    if (features.empty()) {
        return stored;
    }
    const Workspace bounds = Workspace::open(plan.folder / "RegionBndry.mdb", true);
    const CodedAreas tracts(bounds, "hztract", "Tract");
    const std::string idName = identifierFieldName(request.className);
    auto table = db.openFeatureClass(request.className);
    InsertCursor insert = table->insert();
    std::unique_ptr<CodedAreas> counties;
    std::unique_ptr<platform::geometry::PreparedGeometry> area;
    std::shared_ptr<FeatureClass> hazard;
    std::optional<InsertCursor> hazardInsert;
    if (plan.kind == 'L') {
        counties = std::make_unique<CodedAreas>(bounds, "hzCounty", "CountyFips");
        std::vector<Geometry> parts;
        Cursor cursor = bounds.openFeatureClass("hzboundary")->search();
        Row row;
        while (cursor.next(row)) {
            parts.push_back(row.shape());
        }
        area = std::make_unique<platform::geometry::PreparedGeometry>(Geometry::unionAll(parts));
        if (!result.hazardTable.empty()) {
            hazard = db.openFeatureClass(result.hazardTable);
            hazardInsert.emplace(hazard->insert());
        }
    }
    int64_t done = 0;
    for (const auto& feature : features) {
        NamedValues values{{idName, Variant(feature.id)}, {"Name", feature.name}};
        Geometry shape = feature.shape;
        if (plan.kind == 'P') {
            const Point p = shape.firstPoint();
            const auto tract = tracts.at(p);
            if (!tract) {
                ++result.outside;
                continue;
            }
            values["Tract"] = Variant(*tract);
            values["Latitude"] = Variant(p.y);
            values["Longitude"] = Variant(p.x);
        } else {
            if (!area->containsProperly(shape)) {
                shape = area->intersects(shape)
                            ? area->geometry().intersection(shape).asShapeOf(ShapeType::Polyline)
                            : Geometry();
            }
            if (shape.isNull() || shape.isEmpty()) {
                ++result.outside;
                continue;
            }
            const Point middle = shape.interiorPoint();
            values["CountyFips"] = Variant(counties->nearest(middle));
            if (hazardInsert) {
                NamedValues hazardValues{{idName, Variant(feature.id)},
                                         {"Tract", Variant(tracts.nearest(middle))}};
                Row hazardRow = hazard->createRow();
                setNamedValues(hazardRow, hazardValues);
                hazardRow.setShape(shape);
                hazardInsert->insertRow(hazardRow);
                stored.hazardRows.push_back(std::move(hazardValues));
            }
        }
        Row row = table->createRow();
        setNamedValues(row, values);
        row.setShape(shape);
        insert.insertRow(row);
        stored.rows.push_back(std::move(values));
        ++result.loaded;
        if (progress && ++done % 10000 == 0) {
            progress(done, static_cast<int64_t>(features.size()));
        }
    }
    insert.flush();
    if (hazardInsert) {
        hazardInsert->flush();
    }
    return stored;
}

/// Server tables, catalogue entry and symbol: all of them or, through the transaction, none
/// of the region database's part.
void commitToRegion(const InventoryRequest& request, const Plan& plan, const StoredRows& stored,
                    const InventoryReport& result)
{
    SqliteDatabase tabular(plan.regionDatabase.string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Transaction transaction(tabular);
    createServerTables(tabular, plan.serverTables);
    for (const auto& table : plan.serverTables) {
        const bool hazardTable =
            platform::automation::equalsIgnoreCase(table.name, result.hazardTable);
        insertServerRows(tabular, table, hazardTable ? stored.hazardRows : stored.rows);
    }
    RegionDatabase::putInventoryClass(tabular, {request.className, result.database,
                                                std::string(1, plan.kind), result.hazardTable});
    // A new class draws with a symbol of its own name; known ones keep theirs.
    addSymbol(plan.systemDataFolder, request.className, plan.kind);
    transaction.commit();
}

} // namespace

InventoryReport addInventory(const fs::path& root, const InventoryRequest& request,
                             const std::function<void(int64_t, int64_t)>& progress)
{
    const HostRoot host = HostRoot::load(root);
    InventoryReport result;
    const Plan plan = validate(host, request, result);
    const std::vector<Feature> features = readSource(request, plan, result);

    Workspace db = Workspace::open(plan.folder / result.database);
    CreatedClasses created(db, plan.schemas);
    const StoredRows stored = writeClasses(db, request, plan, features, result, progress);
    commitToRegion(request, plan, stored, result);
    created.keep();
    if (progress) {
        progress(static_cast<int64_t>(features.size()), static_cast<int64_t>(features.size()));
    }
    return result;
}

} // namespace brevant::host::local
