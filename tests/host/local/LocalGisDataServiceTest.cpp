#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::host::local {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::geometry::Geometry;

class GisData : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        auto boundary = geodatabase::Workspace::createGeoPackage(regionFolder() + "RegionBndry.mdb");
        auto tracts = boundary.createFeatureClass(
            "hztract", geodatabase::Fields({{"Tract", geodatabase::FieldType::String, 11, {}},
                                            {"pop", geodatabase::FieldType::Integer, 0, {}}}),
            platform::geometry::ShapeType::Polygon);
        geodatabase::InsertCursor insert = tracts->insert();
        int pop = 100;
        for (const char* code : {"06001400100", "06001400200", "06013300100"}) {
            auto row = tracts->createRow();
            row.setValue(2, code);
            row.setValue(3, int32_t{pop});
            pop *= 2;
            row.setShape(Geometry::fromWkt("POLYGON ((0 0, 1 0, 1 1, 0 1, 0 0))"));
            insert.insertRow(row);
        }
        insert.flush();
        m_service = hostServices().createGisDataService();
    }

    std::shared_ptr<GisDataService> m_service;
};

TEST_F(GisData, OpensClassesAndRegionMaps)
{
    const Variant byPath = m_service->OpenFeatureClass("HZTRACT", regionFolder() + "RegionBndry.mdb");
    EXPECT_EQ(byPath.objectAs<geodatabase::FeatureClass>()->rowCount(), 3);
    const Variant tracts = m_service->GetBoundaryClass(1, 0, "");
    EXPECT_EQ(tracts.typeName(), "FeatureClass");
    EXPECT_EQ(tracts.objectAs<geodatabase::FeatureClass>()->name(), "hztract");
}

TEST_F(GisData, FailuresNameDatabaseAndClass)
{
    try {
        m_service->OpenFeatureClass("hzboundary", regionFolder() + "RegionBndry.mdb");
        FAIL();
    } catch (const platform::automation::PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("hzboundary in "), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find("RegionBndry.mdb"), std::string::npos) << e.what();
    }
    EXPECT_THROW(m_service->OpenFeatureClass("hztract", regionFolder() + "trn.mdb"),
                 platform::automation::PlatformError);
    EXPECT_FALSE(std::filesystem::exists(regionFolder() + "trn.mdb"));
    EXPECT_THROW(m_service->GetBoundaryClass(5, 0, ""), platform::automation::PlatformError);
}

TEST_F(GisData, CopiesWithClauseAndReadsFieldRange)
{
    const Variant tracts = m_service->GetBoundaryClass(1, 0, "");
    auto temp = geodatabase::Workspace::createGeoPackage(root() / "System" / "temp.mdb");
    auto selection = temp.createFeatureClass(
        "RegionSelection", geodatabase::Fields({{"Tract", geodatabase::FieldType::String, 11, {}}}),
        platform::geometry::ShapeType::Polygon);
    m_service->CopyFeatures(tracts, Variant(selection), "Left([Tract], 5) = '06001'");
    EXPECT_EQ(selection->rowCount(), 2);

    double low = -1;
    double high = -1;
    m_service->GetFieldRange("RegionBndry.mdb", "hztract", "POP", low, high);
    EXPECT_EQ(low, 100.0);
    EXPECT_EQ(high, 400.0);
}

TEST_F(GisData, ServerTablesComeFromTheRegionDatabase)
{
    const auto& name = "sqlite:" + regionFolder() + "region.sqlite";
    const Variant settings = m_service->OpenServerTable(name, "Settings");
    EXPECT_EQ(settings.objectAs<geodatabase::Table>()->rowCount(
                  geodatabase::QueryFilter::where("[Key] = 'aggLevel'")),
              1);
    EXPECT_THROW(m_service->OpenServerTable("server:brevant", "hztract"),
                 platform::automation::PlatformError);
}

} // namespace
} // namespace brevant::host::local
