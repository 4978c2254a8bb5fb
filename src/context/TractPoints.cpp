#include "context/TractPoints.h"

#include "context/ContextObjects.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

namespace brevant::context {

namespace geodatabase = platform::geodatabase;

void appendTractPoints(const geodatabase::Table& serverTracts, geodatabase::FeatureClass& eqTract)
{
    const int sourceTract = requireField(serverTracts, "Tract");
    const int sourceLatitude = requireField(serverTracts, "CenLat");
    const int sourceLongitude = requireField(serverTracts, "CenLongit");
    const int tract = requireField(eqTract, "Tract");
    const int latitude = requireField(eqTract, "Latitude");
    const int longitude = requireField(eqTract, "Longitude");
    {
        geodatabase::InsertCursor insert = eqTract.insert();
        geodatabase::Cursor cursor = serverTracts.search();
        geodatabase::Row source;
        while (cursor.next(source)) {
            const double y = source.value(sourceLatitude).toDouble();
            const double x = source.value(sourceLongitude).toDouble();
            geodatabase::Row row = eqTract.createRow();
            row.setShape(platform::geometry::Geometry::point({x, y}));
            row.setValue(tract, source.value(sourceTract));
            row.setValue(latitude, y);
            row.setValue(longitude, x);
            insert.insertRow(row);
        }
        insert.flush();
    }
    UpdateFieldValue(eqTract, "stype", "D", "");
    UpdateFieldValue(eqTract, "lqfsuscat", "0", "");
    UpdateFieldValue(eqTract, "lndsuscat", "0", "");
    UpdateFieldValue(eqTract, "w_depth", "5.0", "");
}

void RecreateTractHFT()
{
    runTrapped(" RecreateTractHFT", platform::automation::LibraryCode::Procedure, [] {
        const auto tracts = openServerTable("hztract");
        const auto tractTable =
            openFeatureClass("eqTract", studyRegionContext().RegionFolder + "RegionBndry.mdb");
        appendTractPoints(*tracts, *tractTable);
    });
}

} // namespace brevant::context
