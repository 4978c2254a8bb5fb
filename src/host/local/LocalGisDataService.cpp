#include "host/local/LocalGisDataService.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RowCopy.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Envelope.h"
#include "platform/geometry/FeatureIndex.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <vector>

namespace brevant::host::local {

namespace geodatabase = platform::geodatabase;
using geodatabase::Workspace;
using platform::automation::Variant;

namespace {
constexpr std::string_view kSqliteScheme = "sqlite:";

std::shared_ptr<geodatabase::Table> tableOf(const Variant& value, const char* role)
{
    auto table = value.objectAs<geodatabase::Table>();
    if (!table) {
        hostError(HostError::UnknownKey, std::string("the ") + role + " class is Nothing");
    }
    return table;
}
} // namespace

std::string LocalGisDataService::regionFolder() const
{
    const auto host = HostRoot::load(m_root);
    return host.regionFolder(host.currentRegion());
}

Variant LocalGisDataService::OpenFeatureClass(const std::string& className,
                                              const std::string& databasePath)
{
    try {
        return Variant(Workspace::open(databasePath).openFeatureClass(className));
    } catch (const platform::automation::PlatformError& error) {
        // The workspace names only the file when the file itself is the problem.
        const std::string message = error.what();
        if (message.find(className) != std::string::npos) {
            throw;
        }
        throw platform::automation::PlatformError(
            error.number(), error.source(),
            "cannot open feature class " + className + " of " + databasePath + ": " + message);
    }
}

Variant LocalGisDataService::OpenServerTable(const std::string& databaseName,
                                             const std::string& tableName)
{
    if (databaseName.rfind(kSqliteScheme, 0) != 0) {
        hostError(HostError::UnknownKey, "cannot open server table " + tableName +
                                             ": the reference host reads only sqlite: "
                                             "databases, not \"" +
                                             databaseName + "\"");
    }
    const std::string path = databaseName.substr(kSqliteScheme.size());
    return Variant(Workspace::open(path).openTable(tableName));
}

Variant LocalGisDataService::GetBoundaryClass(int16_t kind, int16_t /*option*/,
                                              const std::string& /*name*/)
{
    const char* className = nullptr;
    switch (kind) {
    case 0:
        className = "hzboundary";
        break;
    case 1:
        className = "hztract";
        break;
    case 8:
        className = "hzCounty";
        break;
    case 2:
    case 3: {
        // The scenario faults of the east and the west half of the country.
        const auto host = HostRoot::load(m_root);
        return OpenFeatureClass(kind == 2 ? "eqSrEastFault" : "eqSrWestFault",
                                host.scenarioFolder() + "SrScenario.mdb");
    }
    default:
        hostError(HostError::UnknownKey,
                  "region map " + std::to_string(kind) + " is not one the reference host keeps");
    }
    return OpenFeatureClass(className, regionFolder() + "RegionBndry.mdb");
}

Variant LocalGisDataService::OpenPipelineClass(int16_t index)
{
    if (index < 0 || index > 2) {
        hostError(HostError::UnknownKey,
                  "pipeline class " + std::to_string(index) + " is not one of 0, 1 and 2");
    }
    return OpenFeatureClass("hzPipeline" + std::to_string(index), regionFolder() + "Pipeline.mdb");
}

void LocalGisDataService::CopyFeatures(const Variant& source, const Variant& target,
                                       const std::string& whereClause)
{
    auto from = tableOf(source, "source");
    auto to = tableOf(target, "target");
    geodatabase::appendRows(*from, *to, geodatabase::QueryFilter::where(whereClause));
}

void LocalGisDataService::DeleteFeatureClass(const std::string& className,
                                             const std::string& location)
{
    Workspace::open(location).deleteDataset(className);
}

void LocalGisDataService::GetFieldRange(const std::string& database, const std::string& className,
                                        const std::string& fieldName, double& minValue,
                                        double& maxValue)
{
    const bool relative = database.find('/') == std::string::npos;
    auto table = Workspace::open(relative ? regionFolder() + database : database)
                     .openTable(className);
    const int index = table->findField(fieldName);
    if (index < 0) {
        hostError(HostError::UnknownKey, "field " + fieldName + " is not in " + className +
                                             " of " + database);
    }
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    geodatabase::Cursor cursor = table->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        const Variant& value = row.value(index);
        if (value.isNull() || value.isEmpty() || !value.isNumeric()) {
            continue;
        }
        const double number = value.toDouble();
        low = std::min(low, number);
        high = std::max(high, number);
    }
    // An empty class has no range; both ends read 0.
    minValue = low <= high ? low : 0.0;
    maxValue = low <= high ? high : 0.0;
}

void LocalGisDataService::BuildGridPoints(const Variant& gridClass, const Variant& boundaryShape,
                                          double parameter1, double parameter2,
                                          double parameter3, double parameter4,
                                          double parameter5, double parameter6)
{
    auto grid = tableOf(gridClass, "grid");
    const auto shape = platform::geometry::Geometry::fromWkt(boundaryShape.toString());
    if (!(parameter1 > 0.0) || !(parameter2 > 0.0)) {
        hostError(HostError::InvalidInput, "the grid spacing must be above 0, not " +
                                               std::to_string(parameter1) + " by " +
                                               std::to_string(parameter2));
    }
    const auto box = shape.envelope().expandedBy(parameter5);
    const double west = box.xmin() + parameter3;
    const double south = box.ymin() + parameter4;
    const auto columns = static_cast<int64_t>(std::floor((box.xmax() - west) / parameter1)) + 1;
    const auto rows = static_cast<int64_t>(std::floor((box.ymax() - south) / parameter2)) + 1;
    if (shape.isEmpty() || columns <= 0 || rows <= 0) {
        return;
    }
    if (static_cast<double>(columns) * static_cast<double>(rows) > parameter6) {
        hostError(HostError::InvalidInput,
                  "a grid of " + std::to_string(columns) + " by " + std::to_string(rows) +
                      " points is more than the " + std::to_string(parameter6) +
                      " the settings allow; widen the spacing");
    }
    const platform::geometry::FeatureIndex inside(std::vector<platform::geometry::Geometry>{shape});
    geodatabase::InsertCursor insert = grid->insert();
    for (int64_t row = 0; row < rows; ++row) {
        for (int64_t column = 0; column < columns; ++column) {
            // From the origin each time, so rounding does not drift along a row.
            const platform::geometry::Point point{west + static_cast<double>(column) * parameter1,
                                                  south + static_cast<double>(row) * parameter2};
            if (inside.containing(point)) {
                geodatabase::Row feature = grid->createRow();
                feature.setShape(platform::geometry::Geometry::point(point));
                insert.insertRow(feature);
            }
        }
    }
    insert.flush();
}

void LocalGisDataService::TransferGrid(const Variant& gridClass, const std::string& databasePath,
                                       const std::string& className, const Variant& boundaryClass)
{
    auto grid = tableOf(gridClass, "grid");
    auto boundary = boundaryClass.objectAs<geodatabase::FeatureClass>();
    if (!boundary) {
        hostError(HostError::UnknownKey, "the boundary class is Nothing");
    }
    std::vector<platform::geometry::Geometry> shapes;
    {
        geodatabase::Cursor cursor = boundary->search();
        geodatabase::Row row;
        while (cursor.next(row)) {
            shapes.push_back(row.shape());
        }
    }
    const platform::geometry::FeatureIndex inside(std::move(shapes));
    auto target = Workspace::open(databasePath).openFeatureClass(className);
    // The grid is rebuilt from the settings at any time; the old one goes first.
    target->deleteSearchedRows();
    std::vector<std::pair<int, int>> pairs;
    for (int i = 2; i < grid->fields().count(); ++i) {
        const int j = target->findField(grid->fields().field(i).name);
        if (j >= 2) {
            pairs.emplace_back(i, j);
        }
    }
    geodatabase::InsertCursor insert = target->insert();
    geodatabase::Cursor cursor = grid->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        if (row.shape().isEmpty() || !inside.containing(row.shape().firstPoint())) {
            continue;
        }
        geodatabase::Row copy = target->createRow();
        for (const auto& [i, j] : pairs) {
            copy.setValue(j, row.value(i));
        }
        copy.setShape(row.shape());
        insert.insertRow(copy);
    }
    insert.flush();
}

Variant LocalGisDataService::OpenShapefile(const std::string& name, const std::string& folder)
{
    // Callers join folders with "\" as the host's own paths are written; here a folder is a
    // folder whichever separator ends it, and a file name may keep its extension.
    std::string path = folder;
    while (path.size() > 1 && (path.back() == '\\' || path.back() == '/')) {
        path.pop_back();
    }
    std::string layer = name;
    const std::filesystem::path file(name);
    if (platform::automation::equalsIgnoreCase(file.extension().string(), ".shp")) {
        layer = file.stem().string();
    }
    return Variant(Workspace::open(path).openFeatureClass(layer));
}

} // namespace brevant::host::local
