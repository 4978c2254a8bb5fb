#include "analysis/AnalysisRegionFixture.h"
#include "context/EqUtilFunctions.h"
#include "host/GisUtilityService.h"
#include "host/HostServices.h"
#include "host/local/HostErrors.h"
#include "platform/automation/PlatformError.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/FeatureClass.h"

#include <gtest/gtest.h>

namespace brevant::host::local {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::PlatformError;
using platform::automation::Variant;
using platform::automation::VariantArray;

Variant codes(std::vector<Variant> list)
{
    return Variant(VariantArray::of(std::move(list)));
}

// The host error `body` throws; a failed expectation when it throws none.
template <class Body> PlatformError hostErrorOf(Body&& body)
{
    try {
        body();
    } catch (const PlatformError& e) {
        return e;
    }
    ADD_FAILURE() << "no host error";
    return PlatformError(0, "", "");
}

class GisUtilityAnalysis : public test::AnalysisRegionFixture {
protected:
    void SetUp() override
    {
        AnalysisRegionFixture::SetUp();
        m_service = hostServices().createGisUtilityService();
    }

    // Gives a class the result field `field` with `value` in every record.
    void setResult(const std::string& database, const std::string& table,
                   const std::string& field, const std::string& value,
                   const std::string& where = "")
    {
        auto featureClass = openClass(database, table);
        if (featureClass->findField(field) < 0) {
            featureClass->addField({field, geodatabase::FieldType::Double, 0, {}});
        }
        context::UpdateFieldValue(*featureClass, field, value, where);
    }

    void addRailway()
    {
        addLineInventory("hzRailwaySegment",
                         {{"RS000001", "LINESTRING (0 0, 1 1)"}, {"RS000002", "LINESTRING (2 2, 3 3)"}});
        setResult("trn.mdb", "EqRailwaySegmenthft", "pga", "0.25");
        context::UpdateFieldValue(*openClass("trn.mdb", "EqRailwaySegmenthft"), "lqfsuscat", "2",
                                  "");
    }

    std::shared_ptr<GisUtilityService> m_service;
};

TEST_F(GisUtilityAnalysis, PointClassWritesSiteAndListedResultColumnsKeyedByIdentifier)
{
    addPointInventory("hzHighwayBridge", {{"HB000001", 0, 0}, {"HB000002", 1, 1}});
    setResult("trn.mdb", "hzHighwayBridge", "pga", "0.4");
    setResult("trn.mdb", "hzHighwayBridge", "pgv", "31");
    context::UpdateFieldValue(*openClass("trn.mdb", "hzHighwayBridge"), "stype", "C",
                              "[HighwayBridgeId] = 'HB000002'");
    // The class has no sa10: the server keeps its value.
    executeSql("INSERT INTO EqHighwayBridge (HighwayBridgeId, pga, sa10) VALUES "
               "('HB000001', 0, 9)");

    m_service->UpdateAnalysisTable("hzHighwayBridge", "trn.mdb", codes({"pgam", "SA10"}), true);

    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqHighwayBridge"), "2") << "a row per record";
    EXPECT_EQ(sqlValue("SELECT pga || ' ' || sa10 FROM EqHighwayBridge WHERE HighwayBridgeId = "
                       "'HB000001'"),
              "0.4 9.0");
    EXPECT_EQ(sqlValue("SELECT pgv FROM EqHighwayBridge WHERE HighwayBridgeId = 'HB000002'"),
              "<null>")
        << "PGVM was not listed";
    EXPECT_EQ(sqlValue("SELECT stype FROM EqHighwayBridge WHERE HighwayBridgeId = 'HB000002'"),
              "C");
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM hzHighwayBridge"), "0")
        << "the attribute table shares no analysis column";
}

// Two records under one identifier leave one server row with the later record's values.
TEST_F(GisUtilityAnalysis, AnIdentifierMetTwiceKeepsItsLastRecordsValues)
{
    addPointInventory("hzHighwayBridge", {{"HB000001", 0, 0}, {"HB000001", 1, 1}});
    setResult("trn.mdb", "hzHighwayBridge", "pga", "0.1");
    setResult("trn.mdb", "hzHighwayBridge", "pga", "0.7", "[OBJECTID] = 2");

    m_service->UpdateAnalysisTable("hzHighwayBridge", "trn.mdb", codes({"pgam"}), true);
    EXPECT_EQ(sqlValue("SELECT COUNT(*) || ' ' || pga FROM EqHighwayBridge"), "1 0.7");

    // Once more, now that the row exists: the update takes the last record's values too.
    setResult("trn.mdb", "hzHighwayBridge", "pga", "0.3", "[OBJECTID] = 2");
    m_service->UpdateAnalysisTable("hzHighwayBridge", "trn.mdb", codes({"pgam"}), true);
    EXPECT_EQ(sqlValue("SELECT COUNT(*) || ' ' || pga FROM EqHighwayBridge"), "1 0.3");
}

TEST_F(GisUtilityAnalysis, LineClassIsCopiedFromItsHazardTable)
{
    addRailway();

    // No list: every result column the hazard table has.
    m_service->UpdateAnalysisTable("hzRailwaySegment", "trn.mdb", Variant(), false);

    EXPECT_EQ(sqlValue("SELECT pga FROM EqRailwaySegment WHERE RailwaySegmentId = 'RS000002'"),
              "0.25");
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqRailwaySegmenthft WHERE lqfsuscat = 2"), "2");
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM hzRailwaySegment"), "0");
}

TEST_F(GisUtilityAnalysis, LineHazardTableIsWrittenInOneTransaction)
{
    addRailway();
    // The second table written refuses the second record.
    executeSql("CREATE TRIGGER refuse BEFORE INSERT ON EqRailwaySegment WHEN "
               "NEW.RailwaySegmentId = 'RS000002' BEGIN SELECT RAISE(ABORT, 'refused'); END");

    EXPECT_ANY_THROW(
        m_service->UpdateLineHazardTable("EqRailwaySegmenthft", "trn.mdb", codes({"PGAM"})));
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqRailwaySegmenthft"), "0");
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqRailwaySegment"), "0");

    const auto error = hostErrorOf(
        [&] { m_service->UpdateLineHazardTable("hzRailwaySegment", "trn.mdb", Variant()); });
    EXPECT_EQ(error.number(), HostError::UnknownKey);
}

TEST_F(GisUtilityAnalysis, RecordSetsComeFromTheirTableOrNameACataloguedClass)
{
    addPointInventory("hzHighwayBridge", {{"HB000001", 0, 0}});
    EXPECT_EQ(m_service->GetRecordSetTableName("hzHighwayBridge"), "hzHighwayBridge");

    executeSql("CREATE TABLE AnalysisRecordSets (RecordSetId TEXT, TableName TEXT)");
    executeSql("INSERT INTO AnalysisRecordSets VALUES ('7', 'hzHighwayBridge')");
    EXPECT_EQ(m_service->GetRecordSetTableName("7"), "hzHighwayBridge");

    const auto error = hostErrorOf([&] { m_service->GetRecordSetTableName("8"); });
    EXPECT_EQ(error.number(), HostError::UnknownKey);
    EXPECT_NE(std::string(error.what()).find("\"8\""), std::string::npos);
}

TEST_F(GisUtilityAnalysis, ResultTablesAreTheAnalysisTableOrTheTableOfAThematicName)
{
    addPointInventory("hzHighwayBridge", {{"HB000001", 0, 0}});
    EXPECT_EQ(m_service->GetResultTableName("hzHighwayBridge"), "EqHighwayBridge");
    EXPECT_EQ(m_service->GetResultTableName("eqhighwaybridge"), "EqHighwayBridge");
    EXPECT_EQ(m_service->GetResultTableName("eqTract_pga"), "eqTract");
    EXPECT_EQ(hostErrorOf([&] { m_service->GetResultTableName("eqTract_nofield"); }).number(),
              HostError::UnknownKey);
    EXPECT_EQ(hostErrorOf([&] { m_service->GetResultTableName("nothing"); }).number(),
              HostError::UnknownKey);
}

} // namespace
} // namespace brevant::host::local
