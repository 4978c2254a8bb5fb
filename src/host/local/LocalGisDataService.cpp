#include "host/local/LocalGisDataService.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RowCopy.h"
#include "platform/geodatabase/Workspace.h"

#include <limits>

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

Variant LocalGisDataService::OpenShapefile(const std::string& name, const std::string& folder)
{
    return Variant(Workspace::open(folder).openFeatureClass(name));
}

} // namespace brevant::host::local
