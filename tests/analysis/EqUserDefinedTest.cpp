#include "analysis/EqUserDefined.h"

#include "analysis/AnalysisRegionFixture.h"
#include "context/EqUtilFunctions.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/VariantArray.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

#include <gtest/gtest.h>

namespace brevant::analysis {
namespace {

namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::VariantArray;
using test::Zone;

Variant codes(std::vector<Variant> list)
{
    return Variant(VariantArray::of(std::move(list)));
}

const std::vector<std::string> kAddedFields{
    "pgv",     "pga",    "sa03",    "sa10",          "LqfSettlPGD",    "LqfSprPGD",
    "LqfProb", "LndPGD", "LndProb", "SufFltRuptPGD", "SurfFltRuptProb"};

std::size_t slotOf(std::string_view code)
{
    const auto& types = userDefinedMapTypes();
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (types[i].code == code) {
            return i;
        }
    }
    ADD_FAILURE() << "no slot for " << code;
    return 0;
}

// Two maps zones side by side; the first bridge lies in the west one, the second in the east
// one, the third half a degree east of both.
class UserDefinedAnalysis : public test::AnalysisRegionFixture {
protected:
    void SetUp() override
    {
        AnalysisRegionFixture::SetUp();
        addBridges();
    }

    static std::vector<Zone> zones(double west, double east)
    {
        return {{-100, 40, 1, {{"paramvalue", west}}}, {-99, 40, 1, {{"paramvalue", east}}}};
    }

    void analyse(std::string table, const Variant& mapTypes, bool isPoint = true)
    {
        AnalyzeInvtUserDefinedScenario(table, mapTypes, Variant(), isPoint);
    }

    void setBridgeField(const std::string& field, double value)
    {
        auto bridges = openClass("trn.mdb", "hzHighwayBridge");
        if (bridges->findField(field) < 0) {
            bridges->addField({field, geodatabase::FieldType::Double, 0, {}});
        }
        context::UpdateFieldValue(*bridges, field, std::to_string(value), "");
    }

    static bool anyMapOpen()
    {
        for (const auto& map : userDefinedState().maps) {
            if (map) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(UserDefinedAnalysis, ShakingMapFillsItsFieldAndEveryOtherResultStartsFromZero)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    setBridgeField("LqfProb", 7.0);

    analyse("hzHighwayBridge", codes({"PGAM"}));

    const auto bridges = openClass("trn.mdb", "hzHighwayBridge");
    auto expected = std::vector<std::string>{"LqfProb"};
    for (const auto& field : kAddedFields) {
        if (field != "LqfProb") {
            expected.push_back(field);
        }
    }
    EXPECT_EQ(fieldNames(*bridges, 11), expected) << "added after the class's own, pgv first";
    const auto& pga = bridges->fields().field(bridges->findField("pga"));
    EXPECT_EQ(pga.type, geodatabase::FieldType::Double);
    EXPECT_EQ(pga.alias(), "pga");

    // The third bridge touches no zone: the point option leaves it at the reset value.
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.3, 0.5, 0.0}));
    EXPECT_EQ(bridgeValues("LqfProb"), (std::vector<double>{0.0, 0.0, 0.0}));
    EXPECT_EQ(sqlValue("SELECT pga FROM EqHighwayBridge WHERE HighwayBridgeId = 'HB000002'"),
              "0.5");
    EXPECT_FALSE(anyMapOpen()) << "the slots are emptied at the end";
    EXPECT_EQ(userDefinedState().mapTypeCount, 1);
    EXPECT_EQ(errorLog(), "");
}

TEST_F(UserDefinedAnalysis, SettlementAloneAddsNoFieldsAndWritesOnlyAnExistingField)
{
    registerUserMap("STGD", zones(1.5, 2.5));
    // A flag left set by an earlier list must not carry over into this analysis.
    EXPECT_FALSE(OpenUserDefinedMaps(codes({"PGVM"})));
    ASSERT_TRUE(userDefinedState().shakingFields);
    analyse("hzHighwayBridge", codes({"STGD"}));
    EXPECT_FALSE(userDefinedState().shakingFields);
    EXPECT_LT(openClass("trn.mdb", "hzHighwayBridge")->findField("LqfSettlPGD"), 0);
    EXPECT_EQ(errorLog(), "");

    setBridgeField("LqfSettlPGD", 9.0);
    analyse("hzHighwayBridge", codes({"STGD"}));
    EXPECT_EQ(bridgeValues("LqfSettlPGD"), (std::vector<double>{1.5, 2.5, 9.0}))
        << "not reset: the bridge outside keeps its value";
    EXPECT_EQ(openClass("trn.mdb", "hzHighwayBridge")->findField("pga"), -1);
}

TEST_F(UserDefinedAnalysis, UnregisteredShakingCodeStillAddsAllFieldsWhenAnotherMapOpens)
{
    // Alone, it opens nothing and the analysis stops before touching the class.
    EXPECT_FALSE(OpenUserDefinedMaps(codes({"PGAM"})));
    analyse("hzHighwayBridge", codes({"PGAM", "XXXX"}));
    EXPECT_EQ(userDefinedState().mapTypeCount, 2);
    EXPECT_EQ(openClass("trn.mdb", "hzHighwayBridge")->findField("pga"), -1);

    registerUserMap("STGD", zones(1.5, 2.5));
    analyse("hzHighwayBridge", codes({"PGAM", "STGD"}));
    const auto bridges = openClass("trn.mdb", "hzHighwayBridge");
    EXPECT_EQ(fieldNames(*bridges, 11), kAddedFields);
    EXPECT_EQ(bridgeValues("LqfSettlPGD"), (std::vector<double>{1.5, 2.5, 0.0}));
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.0, 0.0, 0.0}));
}

TEST_F(UserDefinedAnalysis, EmptyInventoryIsLeftUnchanged)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    addPointInventory("hzSchool", {}, "ef.mdb");
    const auto before = fieldNames(*openClass("ef.mdb", "hzSchool"));

    analyse("hzSchool", codes({"PGAM"}));

    EXPECT_EQ(fieldNames(*openClass("ef.mdb", "hzSchool")), before);
    EXPECT_EQ(sqlValue("SELECT COUNT(*) FROM EqSchool"), "0");
    EXPECT_FALSE(anyMapOpen()) << "emptied although no record was updated";
    EXPECT_EQ(errorLog(), "");
}

TEST_F(UserDefinedAnalysis, SurfaceRuptureMapsAreReadFromTheSusceptibilityClassesOfTheirFile)
{
    // One file holds the registered class and the two classes the rupture codes read.
    {
        auto workspace = geodatabase::Workspace::createGeoPackage(regionFolder() + "Rupture.mdb");
        const geodatabase::Fields fields(
            {{"paramvalue", geodatabase::FieldType::Double, 0, {}, {}}});
        const auto addClass = [&](const std::string& name, double x, double value) {
            auto map =
                workspace.createFeatureClass(name, fields, platform::geometry::ShapeType::Polygon);
            geodatabase::InsertCursor insert = map->insert();
            auto row = map->createRow();
            row.setValue(map->findField("paramvalue"), value);
            row.setShape(platform::geometry::Geometry::fromWkt(
                "POLYGON ((" + std::to_string(x) + " 40, " + std::to_string(x + 1) + " 40, " +
                std::to_string(x + 1) + " 41, " + std::to_string(x) + " 41, " + std::to_string(x) +
                " 40))"));
            insert.insertRow(row);
            insert.flush();
        };
        addClass("eqsrlqf", -100, 0.7);
        addClass("eqsrlnd", -99, 0.9);
        addClass("eqSrRupture", -100, 5.0);
    }
    host::local::RegionDatabase database(
        host::local::HostRoot::load(root()).regionDatabasePath("Testville"));
    database.putUserMap({"SRGD", "Rupture.mdb", "eqSrRupture", "", ""});
    database.putUserMap({"SRPR", "Rupture.mdb", "eqSrRupture", "", ""});

    // PGVM has no map: it only asks for the result fields.
    analyse("hzHighwayBridge", codes({"PGVM", "SRGD", "SRPR"}));

    EXPECT_EQ(bridgeValues("SufFltRuptPGD"), (std::vector<double>{0.7, 0.0, 0.0}));
    EXPECT_EQ(bridgeValues("SurfFltRuptProb"), (std::vector<double>{0.0, 0.9, 0.0}));
    EXPECT_EQ(sqlValue("SELECT SurfFltRuptProb FROM EqHighwayBridge WHERE HighwayBridgeId = "
                       "'HB000002'"),
              "0.9");
    EXPECT_EQ(errorLog(), "");
}

TEST_F(UserDefinedAnalysis, EmptyTractTableIsRebuiltAndAnalysed)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    executeSql("INSERT INTO hztract (Tract, CenLat, CenLongit) VALUES "
               "('06001400100', 40.5, -99.5), ('06001400200', 40.25, -98.75)");
    host::local::RegionDatabase(host::local::HostRoot::load(root()).regionDatabasePath("Testville"))
        .putInventoryClass({"eqTract", "RegionBndry.mdb", "P", ""});

    analyse("eqTract", codes({"PGAM"}));

    const auto tracts = openClass("RegionBndry.mdb", "eqTract");
    EXPECT_EQ(tracts->rowCount(), 2);
    EXPECT_DOUBLE_EQ(valueOf(*tracts, "06001400200", "pga").toDouble(), 0.5);
    EXPECT_EQ(valueOf(*tracts, "06001400200", "stype").toString(), "D");
    EXPECT_EQ(sqlValue("SELECT pga FROM eqTract WHERE Tract = '06001400100'"), "0.3");
}

TEST_F(UserDefinedAnalysis, LineClassIsAnalysedInItsHazardTable)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    addLineInventory("hzRailwaySegment", {{"RS000001", "LINESTRING (-99.8 40.2, -99.2 40.8)"},
                                          {"RS000002", "LINESTRING (-98.8 40.2, -98.2 40.2)"}});

    analyse("hzRailwaySegment", codes({"PGAM"}), false);

    const auto hazard = openClass("trn.mdb", "EqRailwaySegmenthft");
    EXPECT_DOUBLE_EQ(valueOf(*hazard, "RS000001", "pga").toDouble(), 0.3);
    EXPECT_DOUBLE_EQ(valueOf(*hazard, "RS000002", "pga").toDouble(), 0.5);
    EXPECT_EQ(openClass("trn.mdb", "hzRailwaySegment")->findField("pga"), -1);
    EXPECT_EQ(sqlValue("SELECT pga FROM EqRailwaySegment WHERE RailwaySegmentId = 'RS000002'"),
              "0.5");
}

TEST_F(UserDefinedAnalysis, FailureIsRecordedOnceByTheInnermostProcedureAndMapsStay)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    // The registered rupture map does not hold the class the module reads for it.
    registerUserMap("SRGD", zones(0.1, 0.2));

    const auto error = test::errorOf([&] { analyse("hzHighwayBridge", codes({"PGAM", "SRGD"})); });
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(error.description(), "The map engine failed in OpenUserDefinedMaps");
    EXPECT_EQ(errorRecordCount(), 1);
    EXPECT_NE(errorLog().find("eqsrlqf"), std::string::npos) << errorLog();
    EXPECT_TRUE(userDefinedState().maps[slotOf("PGAM")]) << "kept after a failure";

    // A class the catalogue names but the database lacks fails one level deeper.
    host::local::RegionDatabase(host::local::HostRoot::load(root()).regionDatabasePath("Testville"))
        .putInventoryClass({"hzGhost", "trn.mdb", "P", ""});
    const auto deeper = test::errorOf([&] { analyse("hzGhost", codes({"PGAM"})); });
    EXPECT_EQ(deeper.description(),
              "The map engine failed in UpdatePointInvtForUserDefined for hzGhost in trn.mdb");
    EXPECT_EQ(errorRecordCount(), 2);
    EXPECT_TRUE(userDefinedState().maps[slotOf("PGAM")]);

    // The next analysis replaces only the slots of its own codes: the map a failed analysis
    // left behind is still applied, then every slot is emptied.
    registerUserMap("STGD", zones(1.5, 2.5));
    setBridgeField("pga", 9.0);
    analyse("hzHighwayBridge", codes({"STGD"}));
    EXPECT_EQ(bridgeValues("pga"), (std::vector<double>{0.3, 0.5, 9.0}));
    EXPECT_FALSE(anyMapOpen());
}

TEST_F(UserDefinedAnalysis, EachProcedureRecordsItsFailureUnderItsOwnTag)
{
    registerUserMap("PGAM", zones(0.3, 0.5));
    const auto description = [](auto&& body) { return test::errorOf(body).description(); };

    EXPECT_EQ(description([&] { analyse("hzUncatalogued", codes({"PGAM"})); }),
              "The map engine failed in AnalyzeInvtUserDefinedScenario");
    EXPECT_EQ(description([] { UpdateLineInvtForUserDefined("trn.mdb", "hzNone"); }),
              "The map engine failed in UpdateLineInvtForUserDefined for hzNone in trn.mdb");

    // A class that cannot take new fields fails in AddField, also under AddUDSFields.
    const auto readOnly = geodatabase::Workspace::open(regionFolder() + "trn.mdb", true)
                              .openFeatureClass("hzHighwayBridge");
    EXPECT_EQ(description([&] { EqUserDefined::AddField(*readOnly, "pga"); }),
              "The map engine failed in AddField ");
    ASSERT_TRUE(OpenUserDefinedMaps(codes({"PGAM"})));
    EXPECT_EQ(description([&] { AddUDSFields(*readOnly); }), "The map engine failed in AddField ");
    EXPECT_EQ(errorRecordCount(), 4);
    EXPECT_EQ(openClass("trn.mdb", "hzHighwayBridge")->findField("pgv"), -1);
}

} // namespace
} // namespace brevant::analysis
