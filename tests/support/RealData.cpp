#include "support/RealData.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

namespace brevant::test {

namespace fs = std::filesystem;
using namespace platform::geodatabase;

fs::path sharedData()
{
    return BREVANT_SHARED_DATA;
}

host::local::RegionReport createSanFranciscoRegion(const fs::path& root, const fs::path& scratch)
{
    const fs::path data = sharedData();
    const fs::path boundaryFile = scratch / "sf.gpkg";
    {
        // The county file holds the whole country; the boundary is San Francisco alone.
        Workspace counties =
            Workspace::open(data / "us-boundaries/us_counties_2010_20m_fips.geojson", true);
        auto all = counties.openFeatureClass(counties.datasetNames().front());
        Workspace boundary = Workspace::createGeoPackage(boundaryFile);
        auto sf = boundary.createFeatureClass("county",
                                              Fields({{"NAME", FieldType::String, 40, {}}}),
                                              platform::geometry::ShapeType::Polygon,
                                              all->spatialReference());
        InsertCursor insert = sf->insert();
        Cursor cursor = all->search(QueryFilter::where("STATE = '06' AND COUNTY = '075'"));
        Row row;
        while (cursor.next(row)) {
            Row out = sf->createRow();
            out.setValue(2, row.value(all->findField("NAME")));
            out.setShape(row.shape());
            insert.insertRow(out);
        }
        insert.flush();
    }
    host::local::RegionRequest request;
    request.name = "San Francisco";
    request.boundary = {boundaryFile, "county"};
    request.tracts = {data / "tracts/sf_tracts_2010_clipped.geojson", ""};
    return host::local::createRegion(root, request);
}

} // namespace brevant::test
