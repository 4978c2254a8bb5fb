#include "platform/geodatabase/Workspace.h"

#include "gdal/StorageData.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/FeatureClass.h"

#include <array>
#include <cstring>
#include <fstream>
#include <sqlite3.h>
#include <utility>

namespace brevant::platform::geodatabase {

namespace fs = std::filesystem;
using automation::PlatformError;
using automation::ErrorNumber::GdalBase;

namespace {
constexpr int kBatchSize = 50000;

[[noreturn]] void fail(int code, const std::string& message)
{
    throw PlatformError(GdalBase + code, "GDAL", message);
}

Workspace::Kind kindOfFile(const fs::path& path)
{
    std::array<char, 32> header{};
    std::ifstream in(path, std::ios::binary);
    in.read(header.data(), header.size());
    if (std::memcmp(header.data(), "SQLite format 3", 15) == 0) {
        // A GeoPackage says so in the database header's application id.
        std::array<char, 4> application{};
        in.seekg(68);
        in.read(application.data(), application.size());
        const bool geoPackage = std::memcmp(application.data(), "GPKG", 4) == 0 ||
                                std::memcmp(application.data(), "GP1", 3) == 0;
        return geoPackage ? Workspace::Kind::GeoPackage : Workspace::Kind::SQLite;
    }
    if (std::memcmp(header.data() + 4, "Standard Jet DB", 15) == 0 ||
        std::memcmp(header.data() + 4, "Standard ACE DB", 15) == 0) {
        return Workspace::Kind::Access;
    }
    return Workspace::Kind::Other;
}

OGRwkbGeometryType storageType(geometry::ShapeType type)
{
    switch (type) {
    case geometry::ShapeType::Point:
        return wkbPoint;
    case geometry::ShapeType::Multipoint:
        return wkbMultiPoint;
    case geometry::ShapeType::Polyline:
        return wkbMultiLineString;
    case geometry::ShapeType::Polygon:
        return wkbMultiPolygon;
    case geometry::ShapeType::Null:
        break;
    }
    return wkbNone;
}

std::shared_ptr<WorkspaceData> openDataset(const fs::path& path, Workspace::Kind kind,
                                           bool readOnly)
{
    gdal::ensureRegistered();
    gdal::ErrorScope errors;
    const char* geoPackage[] = {"GPKG", nullptr};
    const char* shapefile[] = {"ESRI Shapefile", nullptr};
    const char* access[] = {"PGeo", nullptr};
    const char* sqlite[] = {"SQLite", nullptr};
    const char* const* drivers = nullptr;
    switch (kind) {
    case Workspace::Kind::GeoPackage:
        drivers = geoPackage;
        break;
    case Workspace::Kind::ShapefileFolder:
        drivers = shapefile;
        break;
    case Workspace::Kind::SQLite:
        drivers = sqlite;
        break;
    case Workspace::Kind::Access:
        drivers = access;
        readOnly = true;
        if (!GDALGetDriverByName("PGeo")) {
            fail(CPLE_OpenFailed, "cannot open Access personal geodatabase " + path.string() +
                                      ": the Access (ODBC) driver is not installed");
        }
        break;
    case Workspace::Kind::Other:
        break;
    }
    const unsigned flags = GDAL_OF_VECTOR | (readOnly ? GDAL_OF_READONLY : GDAL_OF_UPDATE);
    auto data = std::make_shared<WorkspaceData>();
    data->dataset.reset(GDALDataset::FromHandle(
        GDALOpenEx(path.string().c_str(), flags, drivers, nullptr, nullptr)));
    if (!data->dataset && readOnly && kind == Workspace::Kind::GeoPackage) {
        // GDAL opens a GeoPackage without tables only for update; the workspace still refuses
        // to write.
        data->dataset.reset(GDALDataset::FromHandle(GDALOpenEx(
            path.string().c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE, drivers, nullptr, nullptr)));
    }
    if (!data->dataset) {
        errors.fail("cannot open workspace " + path.string());
    }
    data->path = path;
    data->kind = kind;
    data->readOnly = readOnly;
    return data;
}
// A savepoint taken back after a trigger was dropped in it brought the trigger back.
bool hasTrigger(sqlite3* handle, const std::string& name) noexcept
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle,
                           "SELECT 1 FROM sqlite_master WHERE type = 'trigger' AND name = ?1", -1,
                           &statement, nullptr) != SQLITE_OK) {
        return false;
    }
    sqlite3_bind_text(statement, 1, name.c_str(), -1, SQLITE_TRANSIENT);
    const bool found = sqlite3_step(statement) == SQLITE_ROW;
    sqlite3_finalize(statement);
    return found;
}
} // namespace

void WorkspaceData::beginWrite()
{
    if (readOnly) {
        fail(CPLE_NotSupported, "workspace " + path.string() + " is read-only");
    }
    dirty = true;
    if (!inTransaction && dataset->TestCapability(ODsCTransactions)) {
        inTransaction = dataset->StartTransaction() == OGRERR_NONE;
    }
    if (++pendingWrites >= kBatchSize && holdBatches == 0) {
        commit();
    }
}

void WorkspaceData::suspendIdentifierTriggers(const TableData& table)
{
    sqlite3* handle = sqliteHandle();
    if (!handle || !inTransaction || !table.hasShape || kind != Workspace::Kind::GeoPackage) {
        return;
    }
    const std::string index = "rtree_" + table.name + "_" + table.shapeFieldName;
    const std::string names[] = {index + "_update3", index + "_update4"};
    for (const auto& [name, sql] : suspendedTriggers) {
        if (automation::equalsIgnoreCase(name, names[0])) {
            return;
        }
    }
    auto db = sqlite(table.name);
    std::vector<std::pair<std::string, std::string>> found;
    {
        tabular::SqliteDatabase::Statement query(
            *db, "SELECT name, sql FROM sqlite_master WHERE type = 'trigger' AND name IN (?1, ?2) "
                 "AND sql IS NOT NULL");
        query.bind(1, names[0]).bind(2, names[1]);
        while (query.step()) {
            found.emplace_back(query.text(0), query.text(1));
        }
    }
    // Both or neither: GDAL may have taken all of them away for its own deferred index. The
    // table is noted either way, so that it is looked up once a transaction.
    if (found.size() != 2) {
        suspendedTriggers.emplace_back(names[0], std::string());
        return;
    }
    for (const auto& trigger : found) {
        db->execute("DROP TRIGGER " + gdal::sqlName(trigger.first));
        suspendedTriggers.push_back(trigger);
    }
}

bool WorkspaceData::commit() noexcept
{
    if (writeBatches > 0) {
        return true;
    }
    ++transactionsEnded;
    pendingWrites = 0;
    const bool wasDirty = std::exchange(dirty, false);
    gdal::ErrorScope errors;
    if (!suspendedTriggers.empty()) {
        sqlite3* handle = sqliteHandle();
        bool restored = true;
        for (const auto& trigger : suspendedTriggers) {
            if (restored && !trigger.second.empty() && !hasTrigger(handle, trigger.first)) {
                restored = sqlite3_exec(handle, trigger.second.c_str(), nullptr, nullptr,
                                        nullptr) == SQLITE_OK;
            }
        }
        suspendedTriggers.clear();
        if (!restored) {
            // Committing now would leave the index unkept; take the transaction back instead.
            rollback();
            return false;
        }
    }
    if (!inTransaction) {
        if (wasDirty) {
            dataset->FlushCache();
            return errors.lastNumber() == 0 && errors.lastMessage().empty();
        }
        return true;
    }
    inTransaction = false;
    return dataset->CommitTransaction() == OGRERR_NONE;
}

void WorkspaceData::rollback() noexcept
{
    ++transactionsEnded;
    pendingWrites = 0;
    dirty = false;
    suspendedTriggers.clear();
    if (std::exchange(inTransaction, false)) {
        gdal::ErrorScope errors;
        dataset->RollbackTransaction();
    }
}

void WorkspaceData::reopen()
{
    dataset = std::move(openDataset(path, kind, readOnly)->dataset);
    for (auto& weak : tables) {
        if (auto table = weak.lock()) {
            table->layer = layer(table->name);
        }
    }
}

sqlite3* WorkspaceData::sqliteHandle() const
{
    if (kind != Workspace::Kind::GeoPackage && kind != Workspace::Kind::SQLite) {
        return nullptr;
    }
    return static_cast<sqlite3*>(GDALGetInternalHandle(dataset.get(), "SQLITE_HANDLE"));
}

std::unique_ptr<tabular::SqliteDatabase> WorkspaceData::sqlite(const std::string& table)
{
    sqlite3* handle = sqliteHandle();
    if (!handle) {
        return nullptr;
    }
    tabular::SqliteDatabase::Lender lender;
    lender.fail = [](int, const std::string& message) { fail(CPLE_AppDefined, message); };
    lender.begin = [this] { beginWrite(); };
    lender.commit = [this, table] {
        if (!commit()) {
            fail(CPLE_FileIO, "cannot commit changes to " + describe(table));
        }
    };
    lender.rollback = [this] { rollback(); };
    return std::make_unique<tabular::SqliteDatabase>(handle, describe(table), std::move(lender));
}

std::string WorkspaceData::describe(const std::string& table) const
{
    return table + " in " + path.string();
}

OGRLayer* WorkspaceData::layer(const std::string& name) const
{
    for (int i = 0; i < dataset->GetLayerCount(); ++i) {
        OGRLayer* candidate = dataset->GetLayer(i);
        if (automation::equalsIgnoreCase(candidate->GetName(), name)) {
            return candidate;
        }
    }
    return nullptr;
}

Workspace Workspace::open(const fs::path& path, bool readOnly)
{
    std::error_code ec;
    if (fs::is_directory(path, ec)) {
        return openShapefileFolder(path);
    }
    if (!fs::is_regular_file(path, ec)) {
        fail(CPLE_OpenFailed, "cannot open workspace " + path.string() + ": no such file");
    }
    return Workspace(openDataset(path, kindOfFile(path), readOnly));
}

Workspace Workspace::createGeoPackage(const fs::path& path)
{
    gdal::ensureRegistered();
    std::error_code ec;
    if (fs::exists(path, ec)) {
        fail(CPLE_FileIO, "cannot create " + path.string() + ": the file exists");
    }
    gdal::ErrorScope errors;
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GPKG");
    auto data = std::make_shared<WorkspaceData>();
    data->dataset.reset(driver->Create(path.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!data->dataset) {
        errors.fail("cannot create personal geodatabase " + path.string());
    }
    data->path = path;
    data->kind = Kind::GeoPackage;
    return Workspace(data);
}

Workspace Workspace::openShapefileFolder(const fs::path& folder)
{
    gdal::ensureRegistered();
    fs::create_directories(folder);
    gdal::ErrorScope errors;
    auto data = std::make_shared<WorkspaceData>();
    const char* drivers[] = {"ESRI Shapefile", nullptr};
    data->dataset.reset(GDALDataset::FromHandle(GDALOpenEx(
        folder.string().c_str(), GDAL_OF_VECTOR | GDAL_OF_UPDATE, drivers, nullptr, nullptr)));
    if (!data->dataset) {
        // An empty folder is no data source yet; the driver makes it one.
        GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("ESRI Shapefile");
        data->dataset.reset(driver->Create(folder.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    }
    if (!data->dataset) {
        errors.fail("cannot open shapefile folder " + folder.string());
    }
    data->path = folder;
    data->kind = Kind::ShapefileFolder;
    return Workspace(data);
}

const fs::path& Workspace::path() const
{
    return m_data->path;
}

Workspace::Kind Workspace::kind() const
{
    return m_data->kind;
}

bool Workspace::isReadOnly() const
{
    return m_data->readOnly;
}

std::vector<std::string> Workspace::datasetNames() const
{
    std::vector<std::string> names;
    for (int i = 0; i < m_data->dataset->GetLayerCount(); ++i) {
        names.emplace_back(m_data->dataset->GetLayer(i)->GetName());
    }
    return names;
}

bool Workspace::exists(const std::string& name) const
{
    return m_data->layer(name) != nullptr;
}

namespace {
/// A shapefile whose .dbf is missing opens without any attribute: read so, every value would
/// be lost without a word.
void requireAttributeFile(const WorkspaceData& workspace, const std::string& layer)
{
    GDALDriver* driver = workspace.dataset->GetDriver();
    if (!driver || std::strcmp(driver->GetDescription(), "ESRI Shapefile") != 0) {
        return;
    }
    std::error_code ec;
    const fs::path base = fs::is_directory(workspace.path, ec)
                              ? workspace.path / layer
                              : workspace.path.parent_path() / workspace.path.stem();
    const auto exists = [&](const char* lower, const char* upper) {
        return fs::exists(fs::path(base).concat(lower), ec) ||
               fs::exists(fs::path(base).concat(upper), ec);
    };
    // Only a shapefile on disk can be checked; one in an archive is left to GDAL.
    if (exists(".shp", ".SHP") && !exists(".dbf", ".DBF")) {
        fail(CPLE_OpenFailed, "cannot open " + workspace.describe(layer) + ": its attribute file " +
                                  base.filename().string() + ".dbf is missing");
    }
}

std::shared_ptr<TableData> tableData(WorkspaceData& workspace, const std::string& name)
{
    OGRLayer* layer = workspace.layer(name);
    if (!layer) {
        fail(CPLE_OpenFailed, "cannot open " + workspace.describe(name) + ": no such table");
    }
    requireAttributeFile(workspace, layer->GetName());
    auto data = std::make_shared<TableData>();
    data->name = layer->GetName();
    data->layer = layer;
    data->blankTextIsEmpty = workspace.kind == Workspace::Kind::ShapefileFolder;
    data->loadFields();
    workspace.tables.push_back(data);
    return data;
}
} // namespace

std::shared_ptr<FeatureClass> Workspace::openFeatureClass(const std::string& name) const
{
    auto data = tableData(*m_data, name);
    if (!data->hasShape) {
        fail(CPLE_AppDefined,
             "cannot open " + m_data->describe(name) + " as a feature class: it has no shapes");
    }
    return std::make_shared<FeatureClass>(m_data, data);
}

std::shared_ptr<Table> Workspace::openTable(const std::string& name) const
{
    auto data = tableData(*m_data, name);
    if (data->hasShape) {
        return std::make_shared<FeatureClass>(m_data, data);
    }
    return std::make_shared<Table>(m_data, data);
}

namespace {
OGRLayer* createLayer(WorkspaceData& workspace, const std::string& name, const Fields& fields,
                      OGRwkbGeometryType type, const geometry::SpatialReference& reference,
                      const std::string& shapeFieldName, bool spatialIndex = true)
{
    if (workspace.readOnly) {
        fail(CPLE_NotSupported,
             "cannot create " + workspace.describe(name) + ": the workspace is read-only");
    }
    if (workspace.layer(name)) {
        fail(CPLE_AppDefined, "cannot create " + workspace.describe(name) + ": it exists");
    }
    workspace.commit();
    gdal::ErrorScope errors;
    OGRSpatialReference srs;
    const bool withReference = type != wkbNone && !reference.isUnknown();
    if (withReference) {
        srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
        srs.importFromWkt(reference.wkt().c_str());
    }
    const std::string geometryOption = "GEOMETRY_NAME=" + shapeFieldName;
    const char* options[] = {"FID=OBJECTID", geometryOption.c_str(),
                             spatialIndex ? "SPATIAL_INDEX=YES" : "SPATIAL_INDEX=NO", nullptr};
    const bool geoPackage = workspace.kind == Workspace::Kind::GeoPackage;
    OGRLayer* layer =
        workspace.dataset->CreateLayer(name.c_str(), withReference ? &srs : nullptr, type,
                                       geoPackage ? const_cast<char**>(options) : nullptr);
    if (!layer) {
        errors.fail("cannot create " + workspace.describe(name));
    }
    for (const auto& field : fields.all()) {
        if (field.type == FieldType::OID || field.type == FieldType::Geometry) {
            continue;
        }
        const auto definition = gdal::fieldDefinition(field);
        if (layer->CreateField(definition.get()) != OGRERR_NONE) {
            errors.fail("cannot add field " + field.name + " to " + workspace.describe(name));
        }
    }
    return layer;
}
} // namespace

std::shared_ptr<FeatureClass>
Workspace::createFeatureClass(const std::string& name, const Fields& fields,
                              geometry::ShapeType shapeType,
                              const geometry::SpatialReference& spatialReference,
                              const std::string& shapeFieldName, bool spatialIndex)
{
    OGRwkbGeometryType type = storageType(shapeType);
    if (type == wkbNone) {
        fail(CPLE_AppDefined, "cannot create " + m_data->describe(name) + " without a shape type");
    }
    // A shapefile has no multi-part flag: its polyline and polygon types hold several parts.
    if (m_data->kind == Kind::ShapefileFolder && type != wkbMultiPoint) {
        type = wkbFlatten(type) == wkbMultiPolygon      ? wkbPolygon
               : wkbFlatten(type) == wkbMultiLineString ? wkbLineString
                                                        : type;
    }
    createLayer(*m_data, name, fields, type, spatialReference, shapeFieldName, spatialIndex);
    return openFeatureClass(name);
}

std::shared_ptr<Table> Workspace::createTable(const std::string& name, const Fields& fields)
{
    createLayer(*m_data, name, fields, wkbNone, {}, "Shape");
    return openTable(name);
}

bool Workspace::deleteDataset(const std::string& name)
{
    for (int i = 0; i < m_data->dataset->GetLayerCount(); ++i) {
        if (!automation::equalsIgnoreCase(m_data->dataset->GetLayer(i)->GetName(), name)) {
            continue;
        }
        OGRLayer* doomed = m_data->dataset->GetLayer(i);
        m_data->commit();
        gdal::ErrorScope errors;
        if (m_data->dataset->DeleteLayer(i) != OGRERR_NONE) {
            errors.fail("cannot delete " + m_data->describe(name));
        }
        for (auto& weak : m_data->tables) {
            if (auto table = weak.lock(); table && table->layer == doomed) {
                table->layer = nullptr;
            }
        }
        return true;
    }
    return false;
}

void Workspace::renameDataset(const std::string& from, const std::string& to)
{
    OGRLayer* layer = m_data->layer(from);
    if (!layer) {
        fail(CPLE_OpenFailed, "cannot rename " + m_data->describe(from) + ": no such table");
    }
    if (m_data->layer(to)) {
        fail(CPLE_AppDefined,
             "cannot rename " + m_data->describe(from) + " to " + to + ": that name is taken");
    }
    m_data->commit();
    gdal::ErrorScope errors;
    if (layer->Rename(to.c_str()) != OGRERR_NONE) {
        errors.fail("cannot rename " + m_data->describe(from) + " to " + to);
    }
    for (auto& weak : m_data->tables) {
        if (auto table = weak.lock(); table && table->layer == layer) {
            table->name = to;
        }
    }
}

void Workspace::replaceDataset(const std::string& replacement, const std::string& target)
{
    OGRLayer* incoming = m_data->layer(replacement);
    if (!incoming) {
        fail(CPLE_OpenFailed, "cannot replace " + target + " by " + m_data->describe(replacement) +
                                  ": no such table");
    }
    if (automation::equalsIgnoreCase(replacement, target)) {
        return;
    }
    if (m_data->readOnly) {
        fail(CPLE_NotSupported,
             "cannot replace " + m_data->describe(target) + ": the workspace is read-only");
    }
    if (!m_data->dataset->TestCapability(ODsCTransactions)) {
        deleteDataset(target);
        renameDataset(replacement, target);
        return;
    }
    if (!m_data->commit()) {
        fail(CPLE_FileIO, "cannot commit changes to " + m_data->describe(target));
    }
    gdal::ErrorScope errors;
    const auto refuse = [&](const std::string& step) {
        fail(CPLE_FileIO, "cannot replace " + m_data->describe(target) + " by " + replacement +
                              ": " + step +
                              (errors.lastMessage().empty() ? "" : ": " + errors.lastMessage()));
    };
    if (m_data->dataset->StartTransaction() != OGRERR_NONE) {
        refuse("no transaction");
    }
    OGRLayer* outgoing = m_data->layer(target);
    std::string failedStep;
    for (int i = 0; outgoing && i < m_data->dataset->GetLayerCount(); ++i) {
        if (m_data->dataset->GetLayer(i) == outgoing) {
            if (m_data->dataset->DeleteLayer(i) != OGRERR_NONE) {
                failedStep = "the old table cannot be deleted";
            }
            break;
        }
    }
    if (failedStep.empty() && incoming->Rename(target.c_str()) != OGRERR_NONE) {
        failedStep = "the rename failed";
    }
    if (failedStep.empty() && m_data->dataset->CommitTransaction() != OGRERR_NONE) {
        failedStep = "the commit failed";
    }
    if (!failedStep.empty()) {
        m_data->dataset->RollbackTransaction();
        m_data->reopen();
        refuse(failedStep);
    }
    for (auto& weak : m_data->tables) {
        if (auto table = weak.lock()) {
            if (outgoing && table->layer == outgoing) {
                table->layer = nullptr;
            } else if (table->layer == incoming) {
                table->name = target;
            }
        }
    }
}

} // namespace brevant::platform::geodatabase
