#include "platform/geodatabase/Cursor.h"

#include "gdal/CursorState.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Table.h"

namespace brevant::platform::geodatabase {

using automation::PlatformError;

namespace {
// A flush in the middle of a walk commits only once this many rows wait: a walk that flushes
// every hundred rows would otherwise wait on the disk a hundred times a second.
constexpr int kMidWalkCommitRows = 20000;

[[noreturn]] void fail(int code, const std::string& message)
{
    throw PlatformError(automation::ErrorNumber::GdalBase + code, "GDAL", message);
}

WhereClause checkedClause(const WorkspaceData& workspace, const TableData& table,
                          const std::string& text)
{
    WhereClause clause = WhereClause::parse(text);
    for (const auto& name : clause.fieldNames()) {
        if (table.fields->findField(name) < 0) {
            fail(CPLE_IllegalArg, "where clause \"" + text + "\" names field " + name + ", which " +
                                      workspace.describe(table.name) + " does not have");
        }
    }
    return clause;
}

WhereClause::FieldResolver resolverOf(const TableData& table)
{
    return [&table](std::string_view name) -> std::optional<std::string> {
        const int index = table.fields->findField(name);
        if (index < 0) {
            return std::nullopt;
        }
        return table.fields->field(index).name;
    };
}

// Binds a value as the storage keeps a field of `type`; conversion errors are the value's own.
void bindValue(tabular::SqliteDatabase::Statement& statement, int parameter, FieldType type,
               const automation::Variant& value)
{
    if (value.isNull() || value.isEmpty()) {
        statement.bindNull(parameter);
        return;
    }
    switch (type) {
    // SQLite keeps any integer; a 16-bit field must refuse what an insert would refuse, or the
    // value reads back wrapped.
    case FieldType::SmallInteger:
        statement.bind(parameter, static_cast<int64_t>(value.toInt16()));
        break;
    case FieldType::Integer:
    case FieldType::OID:
        statement.bind(parameter, static_cast<int64_t>(value.toInt32()));
        break;
    case FieldType::Single:
    case FieldType::Double:
        statement.bind(parameter, value.toDouble());
        break;
    case FieldType::Date: {
        std::string text = value.toDate().toString();
        if (text.size() == 10) {
            text += " 00:00:00";
        }
        text[10] = 'T';
        text += ".000Z";
        statement.bind(parameter, std::string_view(text));
        break;
    }
    default:
        statement.bind(parameter, std::string_view(value.toString()));
        break;
    }
}
const char* shapeTypeName(geometry::ShapeType type)
{
    switch (type) {
    case geometry::ShapeType::Point:
        return "point";
    case geometry::ShapeType::Multipoint:
        return "multipoint";
    case geometry::ShapeType::Polyline:
        return "polyline";
    case geometry::ShapeType::Polygon:
        return "polygon";
    default:
        return "shape of another kind";
    }
}

// GeoPackage stores any geometry in any layer; a class keeps the shape type it was made with,
// or a point could end up in a line inventory.
void requireShapeType(const WorkspaceData& workspace, const TableData& table,
                      const geometry::Geometry& shape)
{
    using geometry::ShapeType;
    if (shape.isEmpty() || table.shapeType == ShapeType::Null) {
        return;
    }
    const ShapeType type = shape.type();
    if (type == table.shapeType ||
        (type == ShapeType::Point && table.shapeType == ShapeType::Multipoint)) {
        return;
    }
    fail(CPLE_AppDefined, std::string("a ") + shapeTypeName(type) + " cannot be stored in " +
                              workspace.describe(table.name) + ", a " +
                              shapeTypeName(table.shapeType) + " class");
}
} // namespace

Row readRow(const TableData& table, const OGRFeature& feature, const std::vector<int>* resultIndex)
{
    Row row(table.fields, feature.GetFID());
    const Fields& fields = *table.fields;
    for (int i = 0; i < fields.count(); ++i) {
        const int source = resultIndex ? (*resultIndex)[static_cast<std::size_t>(i)]
                                       : table.ogrIndex[static_cast<std::size_t>(i)];
        if (source >= 0) {
            const FieldType type = fields.field(i).type;
            automation::Variant value = gdal::readValue(feature, source, type);
            if (table.blankTextIsEmpty && type == FieldType::String && value.isNull()) {
                value = automation::Variant(std::string());
            }
            row.load(i, std::move(value));
        }
    }
    if (table.hasShape) {
        row.loadShape(gdal::toGeometry(feature.GetGeometryRef()));
    }
    return row;
}

namespace {
/// The columns a cursor reads: all of them, or in a GeoPackage the identifier, the shape and
/// the sub-fields, which spares reading and converting the columns nobody asked for.
std::string selectList(const WorkspaceData& workspace, const TableData& table,
                       const QueryFilter& filter)
{
    if (filter.subFields.empty() || workspace.kind != Workspace::Kind::GeoPackage) {
        return "*";
    }
    const Fields& fields = *table.fields;
    std::string list = gdal::sqlName(fields.field(0).name);
    if (table.hasShape) {
        list += ", " + gdal::sqlName(table.shapeFieldName);
    }
    for (const auto& name : filter.subFields) {
        const int index = fields.findField(name);
        if (index < 0) {
            fail(CPLE_IllegalArg,
                 "field " + name + " to read is not in " + workspace.describe(table.name));
        }
        if (table.ogrIndex[static_cast<std::size_t>(index)] >= 0) {
            list += ", " + gdal::sqlName(fields.field(index).name);
        }
    }
    return list;
}
} // namespace

std::unique_ptr<CursorState> openCursor(const std::shared_ptr<WorkspaceData>& workspace,
                                        const std::shared_ptr<TableData>& table,
                                        const QueryFilter& filter, bool updatable)
{
    table->requireLayer(*workspace);
    if (updatable && workspace->readOnly) {
        fail(CPLE_NotSupported,
             "cannot update " + workspace->describe(table->name) + ": the workspace is read-only");
    }
    auto state = std::make_unique<CursorState>();
    state->workspace = workspace;
    state->table = table;
    state->updatable = updatable;
    state->spatial = table->hasShape ? filter.intersects : geometry::Geometry();

    const WhereClause clause = checkedClause(*workspace, *table, filter.whereClause);
    const bool native = workspace->kind == Workspace::Kind::GeoPackage ||
                        workspace->kind == Workspace::Kind::SQLite;
    std::string sql =
        "SELECT " + selectList(*workspace, *table, filter) + " FROM " + gdal::sqlName(table->name);
    state->partial = sql.compare(0, 9, "SELECT * ") != 0;
    if (!clause.isEmpty()) {
        if (native) {
            sql += " WHERE " + clause.toSqlite(resolverOf(*table));
        } else if (clause.needsEvaluation() || table->blankTextIsEmpty) {
            // OGR SQL would see blank text as null.
            state->evaluate = clause;
        } else {
            sql += " WHERE " + clause.toOgrSql(resolverOf(*table));
        }
    }
    gdal::ErrorScope errors;
    std::unique_ptr<OGRGeometry> spatial = gdal::toOgr(state->spatial);
    state->result = gdal::ResultSet(
        *workspace->dataset,
        workspace->dataset->ExecuteSQL(sql.c_str(), spatial.get(), native ? nullptr : "OGRSQL"));
    if (!state->result) {
        errors.fail("cannot read " + workspace->describe(table->name) + " with \"" + sql + "\"");
    }
    OGRFeatureDefn* definition = state->result->GetLayerDefn();
    for (int i = 0; i < table->fields->count(); ++i) {
        const bool attribute = table->ogrIndex[static_cast<std::size_t>(i)] >= 0;
        state->resultIndex.push_back(
            attribute ? definition->GetFieldIndex(table->fields->field(i).name.c_str()) : -1);
    }
    return state;
}

std::optional<int64_t> countBySql(WorkspaceData& workspace, const TableData& table,
                                  const QueryFilter& filter, int64_t upTo)
{
    const bool native =
        workspace.kind == Workspace::Kind::GeoPackage || workspace.kind == Workspace::Kind::SQLite;
    if (!native || !filter.intersects.isNull()) {
        return std::nullopt;
    }
    table.requireLayer(workspace);
    const WhereClause clause = checkedClause(workspace, table, filter.whereClause);
    std::string rows = " FROM " + gdal::sqlName(table.name);
    if (!clause.isEmpty()) {
        rows += " WHERE " + clause.toSqlite(resolverOf(table));
    }
    const std::string sql =
        upTo < 0 ? "SELECT COUNT(*)" + rows
                 : "SELECT COUNT(*) FROM (SELECT 1" + rows + " LIMIT " + std::to_string(upTo) + ")";
    gdal::ErrorScope errors;
    const gdal::ResultSet result(*workspace.dataset,
                                 workspace.dataset->ExecuteSQL(sql.c_str(), nullptr, nullptr));
    if (!result) {
        errors.fail("cannot count " + workspace.describe(table.name) + " with \"" + sql + "\"");
    }
    gdal::FeaturePtr feature(result->GetNextFeature());
    return feature ? feature->GetFieldAsInteger64(0) : 0;
}

namespace {
/// Runs one statement (its first parameter bound by `bind`) in a transaction of its own: it
/// changes every row it selects or, on any failure, none. Returns the rows changed.
template <class Bind>
int64_t runStatement(WorkspaceData& workspace, const TableData& table, const std::string& sql,
                     const std::string& what, bool attributesOnly, Bind&& bind)
{
    const auto db = workspace.sqlite(table.name);
    // Rows other cursors stored are theirs to keep, whatever happens to this statement.
    if (!workspace.commit()) {
        fail(CPLE_FileIO, "cannot commit changes to " + workspace.describe(table.name));
    }
    tabular::SqliteDatabase::Transaction transaction(*db);
    if (attributesOnly) {
        workspace.suspendIdentifierTriggers(table);
    }
    tabular::SqliteDatabase::Statement statement(*db, sql);
    bind(statement);
    statement.step("cannot " + what);
    const int64_t changed = db->changes();
    transaction.commit();
    return changed;
}

/// The WHERE part of a statement on `table`, or "" for an empty clause.
std::string sqlWhere(WorkspaceData& workspace, const TableData& table, const QueryFilter& filter)
{
    const WhereClause clause = checkedClause(workspace, table, filter.whereClause);
    return clause.isEmpty() ? std::string() : " WHERE " + clause.toSqlite(resolverOf(table));
}

bool statementsServe(const WorkspaceData& workspace, const QueryFilter& filter)
{
    // A read-only workspace takes the cursor's way, which says why it cannot.
    return workspace.sqliteHandle() && !workspace.readOnly && filter.intersects.isNull();
}
} // namespace

std::optional<int64_t> calculateBySql(WorkspaceData& workspace, const TableData& table, int index,
                                      const automation::Variant& value, const QueryFilter& filter)
{
    if (!statementsServe(workspace, filter)) {
        return std::nullopt;
    }
    table.requireLayer(workspace);
    const Field& field = table.fields->field(index);
    const std::string sql = "UPDATE " + gdal::sqlName(table.name) + " SET " +
                            gdal::sqlName(field.name) + " = ?" + sqlWhere(workspace, table, filter);
    return runStatement(workspace, table, sql, "set " + field.name + " of",
                        field.type != FieldType::Geometry && field.type != FieldType::OID,
                        [&](tabular::SqliteDatabase::Statement& statement) {
                            bindValue(statement, 1, field.type, value);
                        });
}

std::optional<int64_t> deleteBySql(WorkspaceData& workspace, const TableData& table,
                                   const QueryFilter& filter)
{
    if (!statementsServe(workspace, filter)) {
        return std::nullopt;
    }
    table.requireLayer(workspace);
    const std::string sql =
        "DELETE FROM " + gdal::sqlName(table.name) + sqlWhere(workspace, table, filter);
    return runStatement(workspace, table, sql, "delete rows of", false,
                        [](tabular::SqliteDatabase::Statement&) {});
}

CursorState::~CursorState()
{
    // The result set goes before the commit, which it would otherwise hold open.
    result.reset();
    if (spatialIndex && !spatialIndex->finished()) {
        // Rows stored before a failure are kept, as without the deferral, once the index
        // holds them; when it cannot be written the whole append is taken back instead, and
        // GDAL's view of the dataset with it.
        try {
            spatialIndex->finish();
        } catch (...) {
            spatialIndex.reset();
            workspace->rollback();
            try {
                workspace->reopen();
            } catch (...) {
            }
            return;
        }
    }
    spatialIndex.reset();
    if (wrote) {
        workspace->commit();
    }
}

bool CursorState::writeAttributes(const Row& row)
{
    const Fields& fields = *table->fields;
    std::vector<bool> changed = row.changed();
    changed.resize(static_cast<std::size_t>(fields.count()), false);
    if (table->hasShape && changed[1]) {
        return false;
    }
    if (!workspace->sqliteHandle()) {
        return false;
    }
    table->requireLayer(*workspace);
    if (!attributeUpdate || changed != attributeUpdateFields) {
        std::string sql = "UPDATE " + gdal::sqlName(table->name) + " SET ";
        bool any = false;
        for (int i = 0; i < fields.count(); ++i) {
            if (changed[static_cast<std::size_t>(i)]) {
                sql += (any ? ", " : "") + gdal::sqlName(fields.field(i).name) + " = ?";
                any = true;
            }
        }
        if (!any) {
            return true;
        }
        sql += " WHERE " + gdal::sqlName(fields.field(0).name) + " = ?";
        attributeUpdate.reset();
        connection = workspace->sqlite(table->name);
        attributeUpdate.emplace(*connection, sql);
        attributeUpdateFields = changed;
    }
    tabular::SqliteDatabase::Statement& statement = *attributeUpdate;
    statement.reset();
    int parameter = 1;
    for (int i = 0; i < fields.count(); ++i) {
        if (!changed[static_cast<std::size_t>(i)]) {
            continue;
        }
        bindValue(statement, parameter++, fields.field(i).type, row.value(i));
    }
    statement.bind(parameter, static_cast<int64_t>(row.oid()));
    workspace->beginWrite();
    if (workspace->inTransaction && triggersLeftOutIn != workspace->transactionsEnded) {
        workspace->suspendIdentifierTriggers(*table);
        triggersLeftOutIn = workspace->transactionsEnded;
    }
    wrote = true;
    statement.step("cannot store row " + std::to_string(row.oid()) + " of");
    return true;
}

void CursorState::write(const Row& row, bool insert, int64_t* newOid)
{
    if (!insert && writeAttributes(row)) {
        return;
    }
    if (!insert && partial) {
        // A whole-row write would empty the fields this cursor did not read.
        fail(CPLE_NotSupported, "row " + std::to_string(row.oid()) + " of " +
                                    workspace->describe(table->name) +
                                    " was read with some fields only; its shape cannot be stored");
    }
    OGRLayer& layer = table->requireLayer(*workspace);
    OGRFeature feature(layer.GetLayerDefn());
    const Fields& fields = *table->fields;
    for (int i = 0; i < fields.count(); ++i) {
        const int target = table->ogrIndex[static_cast<std::size_t>(i)];
        if (target >= 0 && i < row.fields().count()) {
            gdal::writeValue(feature, target, fields.field(i).type, row.value(i));
        }
    }
    if (table->hasShape && !row.shape().isNull()) {
        requireShapeType(*workspace, *table, row.shape());
        std::unique_ptr<OGRGeometry> shape = gdal::toOgr(row.shape());
        const OGRwkbGeometryType wanted = layer.GetGeomType();
        if (OGR_GT_IsSubClassOf(wanted, wkbGeometryCollection) &&
            wkbFlatten(shape->getGeometryType()) != wkbFlatten(wanted)) {
            shape.reset(OGRGeometryFactory::forceTo(shape.release(), wanted));
        }
        feature.SetGeometryDirectly(shape.release());
    }
    workspace->beginWrite();
    wrote = true;
    gdal::ErrorScope errors;
    if (insert) {
        if (layer.CreateFeature(&feature) != OGRERR_NONE) {
            errors.fail("cannot add a row to " + workspace->describe(table->name));
        }
        *newOid = feature.GetFID();
        const OGRGeometry* shape = feature.GetGeometryRef();
        if (spatialIndex && shape && !shape->IsEmpty()) {
            OGREnvelope box;
            shape->getEnvelope(&box);
            spatialIndex->add(*newOid, box.MinX, box.MaxX, box.MinY, box.MaxY);
        }
    } else {
        feature.SetFID(row.oid());
        if (layer.SetFeature(&feature) != OGRERR_NONE) {
            errors.fail("cannot store row " + std::to_string(row.oid()) + " of " +
                        workspace->describe(table->name));
        }
    }
}

void CursorState::remove(int64_t oid)
{
    OGRLayer& layer = table->requireLayer(*workspace);
    workspace->beginWrite();
    wrote = true;
    gdal::ErrorScope errors;
    if (layer.DeleteFeature(oid) != OGRERR_NONE) {
        errors.fail("cannot delete row " + std::to_string(oid) + " of " +
                    workspace->describe(table->name));
    }
}

Cursor::Cursor(const Table&, std::unique_ptr<CursorState> state) : m_state(std::move(state))
{
}
Cursor::~Cursor() = default;
Cursor::Cursor(Cursor&&) noexcept = default;
Cursor& Cursor::operator=(Cursor&&) noexcept = default;

bool Cursor::next(Row& row)
{
    auto& state = *m_state;
    while (true) {
        gdal::FeaturePtr feature(state.result->GetNextFeature());
        if (!feature) {
            state.exhausted = true;
            return false;
        }
        row = readRow(*state.table, *feature, &state.resultIndex);
        if (!state.spatial.isNull() && !state.spatial.intersects(row.shape())) {
            continue;
        }
        if (state.evaluate && !state.evaluate->matches([&row](std::string_view name) {
                return row.value(row.fields().findField(name));
            })) {
            continue;
        }
        return true;
    }
}

std::optional<Row> Cursor::next()
{
    Row row;
    if (next(row)) {
        return row;
    }
    return std::nullopt;
}

void Cursor::updateRow(const Row& row)
{
    if (!m_state->updatable) {
        fail(CPLE_NotSupported, "a search cursor on " +
                                    m_state->workspace->describe(m_state->table->name) +
                                    " cannot update rows");
    }
    m_state->write(row, false, nullptr);
}

void Cursor::deleteRow(const Row& row)
{
    if (!m_state->updatable) {
        fail(CPLE_NotSupported, "a search cursor on " +
                                    m_state->workspace->describe(m_state->table->name) +
                                    " cannot delete rows");
    }
    m_state->remove(row.oid());
}

void Cursor::flush()
{
    if (!m_state->wrote) {
        return;
    }
    if (!m_state->exhausted && m_state->workspace->pendingWrites < kMidWalkCommitRows) {
        return;
    }
    if (!m_state->workspace->commit()) {
        fail(CPLE_FileIO,
             "cannot commit changes to " + m_state->workspace->describe(m_state->table->name));
    }
}

InsertCursor::InsertCursor(const Table&, std::unique_ptr<CursorState> state)
    : m_state(std::move(state))
{
}
InsertCursor::~InsertCursor() = default;
InsertCursor::InsertCursor(InsertCursor&&) noexcept = default;
InsertCursor& InsertCursor::operator=(InsertCursor&&) noexcept = default;

int64_t InsertCursor::insertRow(const Row& row)
{
    int64_t oid = -1;
    m_state->write(row, true, &oid);
    return oid;
}

void InsertCursor::flush()
{
    if (m_state->spatialIndex && !m_state->spatialIndex->finished()) {
        m_state->spatialIndex->finish();
    }
    if (m_state->wrote && !m_state->workspace->commit()) {
        fail(CPLE_FileIO,
             "cannot commit changes to " + m_state->workspace->describe(m_state->table->name));
    }
}

} // namespace brevant::platform::geodatabase
