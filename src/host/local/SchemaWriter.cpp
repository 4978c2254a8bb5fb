#include "host/local/SchemaWriter.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Row.h"
#include "platform/tabular/SqliteDatabase.h"

namespace brevant::host::local {

using platform::geodatabase::Fields;
using platform::geodatabase::Workspace;

platform::geodatabase::Workspace createDatabase(const DatabaseSchema& schema,
                                                const std::filesystem::path& path)
{
    Workspace db = schema.storage == DatabaseSchema::Storage::ShapefileFolder
                       ? Workspace::openShapefileFolder(path)
                       : Workspace::createGeoPackage(path);
    for (const auto& table : schema.classes) {
        createClass(db, table);
    }
    return db;
}

std::shared_ptr<platform::geodatabase::Table> createClass(Workspace& db, const ClassSchema& schema)
{
    if (schema.hasShape()) {
        return db.createFeatureClass(schema.name, Fields(schema.fields), schema.shape);
    }
    return db.createTable(schema.name, Fields(schema.fields));
}

void createServerTables(platform::tabular::SqliteDatabase& db,
                        const std::vector<ServerTableSchema>& tables)
{
    for (const auto& table : tables) {
        db.execute(createTableStatement(table));
    }
}

void setNamedValues(platform::geodatabase::Row& row, const NamedValues& values)
{
    const Fields& fields = row.fields();
    for (const auto& [name, value] : values) {
        const int index = fields.findField(name);
        if (index >= 0) {
            row.setValue(index, value);
        }
    }
}

} // namespace brevant::host::local
