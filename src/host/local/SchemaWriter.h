#pragma once

#include "host/local/Schemas.h"
#include "platform/automation/Variant.h"
#include "platform/geodatabase/Table.h"
#include "platform/geodatabase/Workspace.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace brevant::platform::tabular {
class SqliteDatabase;
}

namespace brevant::host::local {

/// Creates a database of the catalogue at `path` with all its classes, empty. Throws when the
/// file exists.
platform::geodatabase::Workspace createDatabase(const DatabaseSchema& schema,
                                                const std::filesystem::path& path);
/// Creates one class of the catalogue in a workspace.
std::shared_ptr<platform::geodatabase::Table> createClass(platform::geodatabase::Workspace& db,
                                                          const ClassSchema& schema);
/// Creates server tables in the region's tabular database.
void createServerTables(platform::tabular::SqliteDatabase& db,
                        const std::vector<ServerTableSchema>& tables);

/// Values by field name (compared without regard to case) for a row of a class whose exact
/// field list the caller need not know: fields without a value stay null.
using NamedValues = std::map<std::string, platform::automation::Variant, std::less<>>;
void setNamedValues(platform::geodatabase::Row& row, const NamedValues& values);

} // namespace brevant::host::local
