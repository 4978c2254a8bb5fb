// EqPolyGon: the tract hazard table, the tract outlines for contouring, and the contour grid.

#include "analysis/EqProbabilistic.h"
#include "analysis/EqUserDefined.h"
#include "context/ContextObjects.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "context/TractPoints.h"
#include "datamaps/EqDataMaps.h"
#include "datamaps/EqPolyGon.h"
#include "host/GisDataService.h"
#include "host/GridSettingsService.h"
#include "host/HostServices.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

#include <fstream>

namespace brevant::datamaps {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::Procedure;

namespace {

std::shared_ptr<geodatabase::FeatureClass> openRegionClass(const std::string& className)
{
    return context::openFeatureClass(className, context::studyRegionContext().RegionBoundaryPath);
}

/// A number as the general format writes it: up to 15 significant digits.
std::string generalNumber(double value)
{
    return Variant(value).toString();
}

} // namespace

void EqPolyGon::CreateTractHFT()
{
    context::runTrapped(" CreateTractHFT", Procedure, [this] {
        const auto tracts = context::openServerTable("hztract");
        WriteTractBna();
        context::appendTractPoints(*tracts, *openRegionClass("eqTract"));
    });
}

void EqPolyGon::WriteTractBna()
{
    const auto tracts = openRegionClass("hztract");
    const std::string path = context::studyRegionContext().RegionFolder + "FFE.BNA";
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        throw platform::automation::PlatformError(platform::automation::ErrorNumber::FileNotFound,
                                                  "Brevant", "cannot write " + path);
    }
    const int tractField = tracts->findField("Tract");
    geodatabase::Cursor cursor = tracts->search();
    geodatabase::Row row;
    while (cursor.next(row)) {
        const Variant& tract = row.value(tractField);
        out << '"' << (tract.isNull() ? std::string() : tract.toString()) << "\", "
            << row.shape().pointCount() << "\n";
        for (const auto& part : row.shape().parts()) {
            for (const auto& vertex : part) {
                out << generalNumber(vertex.x) << ", " << generalNumber(vertex.y) << "\n";
            }
        }
    }
    out << "\n";
    out.close();
    if (!out) {
        throw platform::automation::PlatformError(platform::automation::ErrorNumber::FileNotFound,
                                                  "Brevant", "cannot write " + path);
    }
}

void EqPolyGon::AnalyzeInvtForUserDefinedScenario(Variant& vMapType, Variant& vProgressBar)
{
    context::runTrapped(" AnalyzeInvtForUserDefinedScenario", Procedure, [&] {
        std::string table = "eqTract";
        analysis::AnalyzeInvtUserDefinedScenario(table, vMapType, vProgressBar, true);
    });
}

void EqPolyGon::AnalyzeProbScenarioforTract(int16_t RetrunPeriod, Variant& vProgressBar)
{
    context::runTrapped(" AnalyzeProbScenariobyforTract", Procedure, [&] {
        std::string table = "eqTract";
        analysis::AnalyzeProbDefinedScenario(table, RetrunPeriod, vProgressBar, true);
    });
}

void EqPolyGon::CreatContourGrid()
{
    context::runTrapped(" CreatContourGrid", Procedure, [this] {
        const auto& ctx = context::studyRegionContext();
        const auto workCopy = context::openFeatureClass("eqGrid", ctx.SystemDataFolder + "temp.mdb");
        const auto boundary = openRegionClass("hzboundary");
        Variant boundaryShape;
        {
            geodatabase::Cursor cursor = boundary->search();
            geodatabase::Row row;
            if (!cursor.next(row)) {
                context::throwObjectNotSet("boundary feature");
            }
            // The host takes the shape as well-known text.
            boundaryShape = Variant(row.shape().toWkt());
        }
        double parameters[6] = {};
        host::hostServices().createGridSettingsService()->GetGridParameters(
            parameters[0], parameters[1], parameters[2], parameters[3], parameters[4],
            parameters[5]);
        auto& data = context::contextGisDataService();
        data.BuildGridPoints(Variant(workCopy), boundaryShape, parameters[0], parameters[1],
                             parameters[2], parameters[3], parameters[4], parameters[5]);
        data.TransferGrid(Variant(workCopy), ctx.RegionBoundaryPath, "eqGrid", Variant(boundary));
        workCopy->deleteSearchedRows();
        UpdateGridId();
        std::string grid = "eqGrid";
        EqDataMaps().SyncInvtHft(grid);
    });
}

void EqPolyGon::UpdateGridId()
{
    context::runTrapped(" UpdateGridId", Procedure, [] {
        const auto grid = openRegionClass("eqGrid");
        const int field = grid->findField("EqGridId");
        if (field < 1) {
            return;
        }
        int32_t next = 1;
        geodatabase::Cursor cursor = grid->update();
        geodatabase::Row row;
        while (cursor.next(row)) {
            row.setValue(field, next++);
            cursor.updateRow(row);
        }
        cursor.flush();
    });
}

} // namespace brevant::datamaps
