#include "inventory/InventorySupport.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Envelope.h"
#include "platform/ui/UserPrompts.h"

#include <filesystem>

namespace brevant::inventory {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;

namespace {

std::shared_ptr<geodatabase::FeatureClass> featureClassOf(const Variant& opened)
{
    auto featureClass = opened.objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        context::throwObjectNotSet("feature class");
    }
    return featureClass;
}

/// The tract class read in identifier order: "Tract" values and shapes side by side.
struct TractShapes {
    std::vector<std::string> tracts;
    std::vector<platform::geometry::Geometry> shapes;
};

TractShapes readTracts(const geodatabase::FeatureClass& tracts)
{
    const int field = tracts.findField("Tract");
    if (field < 0) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::InvalidArgument, "Brevant",
            "the tract class " + tracts.name() + " has no field Tract");
    }
    TractShapes read;
    geodatabase::Cursor cursor = tracts.search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        const Variant& value = row.value(field);
        read.tracts.push_back(value.isNull() || value.isEmpty() ? std::string() : value.toString());
        read.shapes.push_back(row.shape());
    }
    return read;
}

} // namespace

std::shared_ptr<geodatabase::FeatureClass> openClass(const std::string& className,
                                                     const std::string& databasePath)
{
    return context::openFeatureClass(className, databasePath);
}

std::shared_ptr<geodatabase::FeatureClass> regionMap(int16_t kind)
{
    return featureClassOf(context::contextGisDataService().GetBoundaryClass(kind, 0, ""));
}

std::string tempDatabasePath()
{
    return context::studyRegionContext().SystemDataFolder + "temp.mdb";
}

std::shared_ptr<geodatabase::FeatureClass> openCataloguedClass(const std::string& tableName)
{
    const std::string database =
        host::hostServices().createInventoryCatalogService()->GetDatabaseName(tableName);
    return openClass(tableName, context::studyRegionContext().RegionFolder + database);
}

void deleteTempTable(const std::string& HzTableName)
{
    context::runTrapped(" DeleteTempTable", Procedure, [&] {
        const std::string path = tempDatabasePath();
        // Nothing to delete is no failure: an import starts by clearing what may be there.
        if (!std::filesystem::exists(path) ||
            !geodatabase::Workspace::open(path, true).exists(HzTableName)) {
            return;
        }
        openClass(HzTableName, path);
        context::contextGisDataService().DeleteFeatureClass(HzTableName, path);
    });
}

void showObsolete(const std::string& text)
{
    platform::ui::userPrompts().messageBox(text, "", platform::ui::MessageButtons::Ok);
}

TractLookup::TractLookup(const geodatabase::FeatureClass& tracts)
    : m_index(std::vector<platform::geometry::Geometry>{})
{
    TractShapes read = readTracts(tracts);
    m_tracts = std::move(read.tracts);
    m_index = platform::geometry::FeatureIndex(std::move(read.shapes));
}

std::string TractLookup::tractOf(const platform::geometry::Point& point) const
{
    // A point no tract's box holds is in no tract; the nearest search would only confirm it.
    const auto boxes =
        m_index.candidates(platform::geometry::Envelope(point.x, point.y, point.x, point.y));
    if (boxes.empty()) {
        return {};
    }
    // Inside the lowest-placed tract whose box holds it: no tract before it can meet the point,
    // so it is the first, found without the distance search.
    if (const auto inside = m_index.containing(point); inside && *inside == boxes.front()) {
        return m_tracts[*inside];
    }
    // Inside or on the edge is distance 0; among tracts at 0 the index answers the first.
    const auto nearest = m_index.nearest(point);
    if (!nearest || nearest->distance != 0.0) {
        return {};
    }
    return m_tracts[nearest->index];
}

} // namespace brevant::inventory
