#include "analysis/EqProbabilistic.h"

#include "analysis/AnalysisSupport.h"
#include "context/ContextObjects.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "context/TractPoints.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/InventoryCatalogService.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/WriteBatch.h"
#include "platform/geometry/FeatureIndex.h"
#include "platform/geometry/ShapeType.h"

#include <array>
#include <exception>
#include <optional>
#include <vector>

namespace brevant::analysis {

namespace geodatabase = platform::geodatabase;
namespace geometry = platform::geometry;
using platform::automation::Variant;
using platform::automation::VariantArray;
using platform::automation::LibraryCode::Procedure;

namespace {

/// The four quantities; the map's fields are the quantity followed by the return period.
constexpr std::array<const char*, 4> kQuantities{"pga", "pgv", "sa03", "sa10"};
/// The order in which their result fields are added.
constexpr std::array<const char*, 4> kResultFields{"pgv", "pga", "sa03", "sa10"};
ProbabilisticState& state()
{
    static ProbabilisticState instance;
    return instance;
}

/// Why the "USGS" map of the running analysis did not open; null when it did.
std::exception_ptr& usgsOpenFailure()
{
    static std::exception_ptr failure;
    return failure;
}

using context::requireField;

/// Opens `tableName` of the region database; if it has no records only the tract table goes
/// on, rebuilt first. Null when there is nothing to analyse.
std::shared_ptr<geodatabase::FeatureClass> openAnalysedClass(const std::string& databaseName,
                                                             const std::string& tableName)
{
    auto featureClass = detail::openRegionClass(tableName, databaseName);
    if (featureClass->rowCount({}, 1) > 0) {
        return featureClass;
    }
    if (!detail::isTractTable(tableName)) {
        return nullptr;
    }
    context::RecreateTractHFT();
    // Opened afresh, so the class sees the rows the rebuild inserted.
    return detail::openRegionClass(tableName, databaseName);
}

void analyse(geodatabase::FeatureClass& featureClass)
{
    AddFields(featureClass);
    UpdateProbFieldValues(featureClass, state().usgs.get());
}

} // namespace

const ProbabilisticState& probabilisticState()
{
    return state();
}

void AnalyzeProbDefinedScenario(std::string& tableName, int16_t RetrunPeriod,
                                const Variant& /*vProgressBar*/, bool isPoint)
{
    context::runTrapped(" AnalyzeProbDefinedScenario", Procedure, [&] {
        state().returnPeriod = std::to_string(RetrunPeriod);
        // A map that does not open is reported where it is first read, after the result fields
        // were reset, so no site keeps the ground motion of an earlier run.
        usgsOpenFailure() = nullptr;
        try {
            state().usgs = detail::openRegionClass("USGS", "USGS.mdb");
        } catch (const std::exception&) {
            state().usgs.reset();
            usgsOpenFailure() = std::current_exception();
        }
        OpenProbabilisticMaps(RetrunPeriod);
        const std::string databaseName =
            host::hostServices().createInventoryCatalogService()->GetDatabaseName(tableName);
        if (isPoint) {
            UpdatePointInvtForProbabilistic(databaseName, tableName);
        } else {
            UpdateLineInvtForProbabilistic(databaseName, tableName);
        }
        state().usgs.reset();
    });
}

void OpenProbabilisticMaps(int16_t /*RetrunPeriod*/)
{
    context::runTrapped(" OpenProbabilisticMaps", Procedure, [] {
        state().mapTypes = Variant(VariantArray::of({"PGVM", "PGAM", "SA03", "SA10"}));
    });
}

void UpdatePointInvtForProbabilistic(const std::string& databaseName, const std::string& tableName)
{
    const std::string tag = " UpdatePointInvtForProbabilistic " + tableName + " in " + databaseName;
    context::runTrapped(tag, Procedure, [&] {
        const auto featureClass = openAnalysedClass(databaseName, tableName);
        if (!featureClass) {
            return;
        }
        analyse(*featureClass);
        detail::handOffAnalysisTable(tableName, databaseName, state().mapTypes, true);
    });
}

void UpdateLineInvtForProbabilistic(const std::string& databaseName, const std::string& tableName)
{
    const std::string tag = " UpdateLineInvtForProbabilistic" + tableName + " in " + databaseName;
    context::runTrapped(tag, Procedure, [&] {
        const auto hazardTable =
            openAnalysedClass(databaseName, detail::lineHazardTableName(tableName));
        if (!hazardTable) {
            return;
        }
        analyse(*hazardTable);
        detail::handOffAnalysisTable(tableName, databaseName, state().mapTypes, false);
    });
}

void AddFields(geodatabase::FeatureClass& featureClass)
{
    context::runTrapped(" AddFields", Procedure, [&] {
        // As in AddUDSFields: the resets share one transaction.
        const geodatabase::WriteBatch batch(featureClass);
        for (const char* field : kResultFields) {
            EqProbabilistic::AddField(featureClass, field);
        }
    });
}

void EqProbabilistic::AddField(geodatabase::FeatureClass& featureClass,
                               const std::string& fieldName)
{
    context::runTrapped(" AddField ", Procedure,
                        [&] { detail::addZeroedResultField(featureClass, fieldName); });
}

void UpdateProbFieldValues(geodatabase::FeatureClass& inventory,
                           const geodatabase::FeatureClass* usgsMap)
{
    context::runTrapped(" UpdateProbFieldValues", Procedure, [&] {
        if (!usgsMap) {
            if (const auto failure = usgsOpenFailure()) {
                std::rethrow_exception(failure);
            }
            context::throwObjectNotSet("USGS map");
        }
        const geodatabase::FeatureClass& usgs = *usgsMap;
        const std::string& period = state().returnPeriod;
        // Map field -> result field, per quantity.
        std::array<std::pair<int, int>, 4> copied{};
        for (std::size_t i = 0; i < kQuantities.size(); ++i) {
            const std::string quantity = kQuantities[i];
            copied[i] = {requireField(usgs, quantity + period), requireField(inventory, quantity)};
        }

        std::vector<geometry::Geometry> shapes;
        std::vector<std::array<Variant, 4>> values;
        {
            std::vector<std::string> sourceFields;
            for (const auto& [source, result] : copied) {
                sourceFields.push_back(usgs.fields().field(source).name);
            }
            geodatabase::Cursor cursor =
                usgs.search(geodatabase::QueryFilter::fields(std::move(sourceFields)));
            geodatabase::Row row;
            while (cursor.next(row)) {
                shapes.push_back(row.shape());
                std::array<Variant, 4> polygonValues;
                for (std::size_t i = 0; i < copied.size(); ++i) {
                    polygonValues[i] = row.value(copied[i].first);
                }
                values.push_back(std::move(polygonValues));
            }
        }
        const geometry::FeatureIndex index(std::move(shapes));
        // Points skip building a geometry per query, the bulk of an inventory.
        const bool points = inventory.shapeType() == geometry::ShapeType::Point;

        std::vector<std::string> resultFields;
        for (const auto& [source, result] : copied) {
            resultFields.push_back(inventory.fields().field(result).name);
        }
        geodatabase::Cursor cursor =
            inventory.update(geodatabase::QueryFilter::fields(std::move(resultFields)));
        geodatabase::Row row;
        detail::FlushSchedule flushes;
        while (cursor.next(row)) {
            const geometry::Geometry& shape = row.shape();
            std::optional<std::size_t> match;
            if (!shape.isNull() && !shape.isEmpty()) {
                match = points ? index.containing(shape.firstPoint()) : index.containing(shape);
                if (!match) {
                    const auto nearest =
                        points ? index.nearest(shape.firstPoint()) : index.nearest(shape);
                    if (nearest) {
                        match = nearest->index;
                    }
                }
            }
            if (match) {
                const auto& polygonValues = values[*match];
                for (std::size_t i = 0; i < copied.size(); ++i) {
                    row.setValue(copied[i].second, polygonValues[i]);
                }
                cursor.updateRow(row);
            }
            if (flushes.countFeature()) {
                cursor.flush();
            }
        }
        cursor.flush();
    });
}

} // namespace brevant::analysis
