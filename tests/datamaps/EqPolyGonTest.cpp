#include "datamaps/EqPolyGon.h"

#include "context/EqShape.h"
#include "context/InventoryRegionFixture.h"
#include "host/local/DefaultCatalogues.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <tuple>

namespace brevant::datamaps {
namespace {

namespace geodatabase = platform::geodatabase;
namespace local = host::local;
namespace carto = platform::carto;
using geodatabase::Field;
using geodatabase::FieldType;
using platform::automation::ArgList;
using platform::automation::Variant;
using platform::geometry::ShapeType;
using platform::geometry::SpatialReference;

using Features = std::vector<std::pair<std::string, local::NamedValues>>;

// Two tracts side by side; the boundary is their outline.
constexpr const char* kWestTract =
    "POLYGON ((-122.30 37.80, -122.25 37.80, -122.25 37.85, -122.30 37.85, -122.30 37.80))";
constexpr const char* kEastTract =
    "POLYGON ((-122.25 37.80, -122.20 37.80, -122.20 37.85, -122.25 37.85, -122.25 37.80))";
constexpr const char* kBoundary =
    "POLYGON ((-122.30 37.80, -122.20 37.80, -122.20 37.85, -122.30 37.85, -122.30 37.80))";

void insert(geodatabase::FeatureClass& featureClass, const Features& features)
{
    geodatabase::InsertCursor cursor = featureClass.insert();
    for (const auto& [wkt, values] : features) {
        auto row = featureClass.createRow();
        row.setShape(platform::geometry::Geometry::fromWkt(wkt));
        local::setNamedValues(row, values);
        cursor.insertRow(row);
    }
}

/// A region whose RegionBndry.mdb holds a boundary and two tracts, with the tract server tables
/// and the default class settings; members are called by name, as the host calls them.
class PolygonMaps : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        local::writeDefaultClassSettings(root() / "System");
        auto bounds = local::createDatabase(
            *local::findDatabase(local::HostFolder::Region, "RegionBndry.mdb"), boundaryPath());
        insert(*bounds.openFeatureClass("hzboundary"),
               {{kBoundary, {{"RegionName", "Testville"}}}});
        insert(*bounds.openFeatureClass("hztract"), {{kWestTract, {{"Tract", "06001400100"}}},
                                                     {kEastTract, {{"Tract", "06001400200"}}}});
        for (const char* table : {"hztract", "eqTract"}) {
            executeSql(local::createTableStatement(*local::findServerTable(table)));
        }
        m_polygon = std::make_shared<EqPolyGon>();
    }

    std::string boundaryPath() const { return regionFolder() + "RegionBndry.mdb"; }

    void call(const std::string& member, ArgList args = {})
    {
        platform::automation::call(*m_polygon, member, args);
        m_args = std::move(args);
    }

    std::vector<std::string> layerNames() const
    {
        std::vector<std::string> names;
        for (const auto& layer : m_map->layers()) {
            names.push_back(layer->name());
        }
        return names;
    }
    std::shared_ptr<carto::FeatureLayer> layer(int index) const
    {
        return std::dynamic_pointer_cast<carto::FeatureLayer>(m_map->layer(index));
    }

    /// The first line of each record of the error log.
    std::vector<std::string> recordHeadings() const
    {
        std::vector<std::string> headings;
        std::istringstream log(errorLog());
        bool atRecord = true;
        for (std::string line; std::getline(log, line);) {
            if (atRecord) {
                headings.push_back(line);
            }
            atRecord = line.empty();
        }
        return headings;
    }

    std::shared_ptr<EqPolyGon> m_polygon;
    /// The arguments of the last call, by-reference results written back.
    ArgList m_args;
};

// Tracts, boundary and the default maps --------------------------------------------------------

TEST_F(PolygonMaps, TractLayerIsAddedOnceHiddenUnselectableAndRelated)
{
    call("MapCensusTractBoundary");
    call("MapCensusTractBoundary");
    ASSERT_EQ(layerNames(), (std::vector<std::string>{"Study Region Tract"}));
    EXPECT_EQ(layer(0)->featureClass()->name(), "hztract");
    EXPECT_FALSE(layer(0)->visible());
    EXPECT_FALSE(layer(0)->selectable());
    EXPECT_EQ(layer(0)->relationshipClasses().size(), 2u);
}

TEST_F(PolygonMaps, ExactlyNamedTractLayerStopsTheTractsWhateverItHolds)
{
    auto impostor = std::make_shared<carto::FeatureLayer>(
        geodatabase::Workspace::open(boundaryPath()).openFeatureClass("hzboundary"));
    impostor->setName("Study Region Tract");
    m_map->addLayer(impostor);
    call("MapCensusTractBoundary");
    ASSERT_EQ(m_map->layerCount(), 1);
    EXPECT_EQ(m_map->layer(0), impostor);

    impostor->setName("study region tract");
    call("MapCensusTractBoundary");
    EXPECT_EQ(layerNames(), (std::vector<std::string>{"Study Region Tract", "study region tract"}));
}

TEST_F(PolygonMaps, BoundaryLayerIsAddedOnceVisibleUnselectableAndFilled)
{
    call("MapStudyregionBoundary");
    call("MapStudyregionBoundary");
    ASSERT_EQ(layerNames(), (std::vector<std::string>{"Study Region Boundary"}));
    EXPECT_TRUE(layer(0)->visible());
    EXPECT_FALSE(layer(0)->selectable());
    const auto& renderer = std::get<carto::SimpleRenderer>(layer(0)->renderer());
    ASSERT_TRUE(renderer.symbol.has_value());
    EXPECT_EQ(std::get<carto::SimpleFillSymbol>(*renderer.symbol).color,
              (carto::RgbColor{255, 255, 190}));
}

TEST_F(PolygonMaps, DefaultMapsOrderFollowsTheAggregationLevelThenRefresh)
{
    // Each layer goes on top: the one mapped last is at index 0.
    call("AddDefaultMaps");
    EXPECT_EQ(layerNames(),
              (std::vector<std::string>{"Study Region Tract", "Study Region Boundary"}));
    EXPECT_TRUE(m_map->refreshes().back().full);

    m_map->clearLayers();
    setSetting("General", "AggLevel", "3");
    m_polygon = std::make_shared<EqPolyGon>();
    call("AddDefaultMaps");
    EXPECT_EQ(layerNames(),
              (std::vector<std::string>{"Study Region Boundary", "Study Region Tract"}));
}

TEST_F(PolygonMaps, PointLayersAreAddedUnselectableAndRefreshRedrawsAll)
{
    m_polygon->AddPointLayer(
        geodatabase::Workspace::open(boundaryPath()).openFeatureClass("hztract"));
    ASSERT_EQ(m_map->layerCount(), 1);
    EXPECT_EQ(layer(0)->featureClass()->name(), "hztract");
    EXPECT_TRUE(layer(0)->visible());
    EXPECT_FALSE(layer(0)->selectable());

    m_map->clearRefreshes();
    call("RefreshMap");
    ASSERT_EQ(m_map->refreshes().size(), 1u);
    EXPECT_TRUE(m_map->refreshes().back().full);
}

TEST_F(PolygonMaps, DataMapsAreDrawnFromTheClippedClasses)
{
    insert(*geodatabase::Workspace::open(boundaryPath()).openFeatureClass("eqsrwdepth"),
           {{kWestTract, {{"Type", 3.0}}}, {kEastTract, {{"Type", 12.0}}}});
    // Drawn twice: the second round replaces the layers of the first.
    for (int round = 0; round < 2; ++round) {
        for (const char* member :
             {"MapWAterDepthDataMap", "MapSoilDataMap", "MapLqfDataMap", "MapLndDataMap"}) {
            call(member);
        }
    }
    std::vector<std::string> classes;
    for (const auto& each : m_map->featureLayers()) {
        classes.push_back(each->featureClass()->name());
    }
    EXPECT_EQ(classes, (std::vector<std::string>{"eqsrlnd", "eqsrlqf", "eqsrsoil", "eqsrwdepth"}));
    // Category maps take the titles of their unique-value settings.
    EXPECT_EQ(layerNames(),
              (std::vector<std::string>{"Landslide Susceptibility", "Liquefaction Susceptibility",
                                        "Soil Type", "Ground Water Depth"}));
    EXPECT_EQ(std::get<carto::UniqueValueRenderer>(layer(2)->renderer()).field(0), "type");
    // Water depth is classified over the range of its values, which the builder widens.
    EXPECT_EQ(layer(3)->name(), "Ground Water Depth");
    const auto& depths = std::get<carto::ClassBreaksRenderer>(layer(3)->renderer());
    EXPECT_LT(depths.minimumBreak(), 3.0);
    EXPECT_GT(depths.breakValue(depths.breakCount() - 1), 12.0);
}

// Candidate maps -------------------------------------------------------------------------------

/// One class of the candidate database: two features of the shape type.
struct Candidate {
    std::string name;
    ShapeType shape = ShapeType::Polygon;
    std::optional<Field> valueField;
    SpatialReference spatialReference = SpatialReference::nad83();
};

class PolygonMapsCandidates : public PolygonMaps {
protected:
    void add(const Candidate& candidate)
    {
        const auto path = m_folder.path() / "candidates.mdb";
        auto workspace = std::filesystem::exists(path)
                             ? geodatabase::Workspace::open(path)
                             : geodatabase::Workspace::createGeoPackage(path);
        std::vector<Field> fields;
        if (candidate.valueField) {
            fields.push_back(*candidate.valueField);
        }
        const bool points = candidate.shape == ShapeType::Point;
        insert(*workspace.createFeatureClass(candidate.name, geodatabase::Fields(fields),
                                             candidate.shape, candidate.spatialReference),
               {{points ? "POINT (0 0)" : "POLYGON ((0 0, 1 0, 1 1, 0 0))", {}},
                {points ? "POINT (2 0)" : "POLYGON ((2 0, 3 0, 3 1, 2 0))", {}}});
    }

    /// IsValidDatamap, or IsValid without a map type: IsGeoDB and NRecs as they came back.
    std::pair<int16_t, Variant> check(const std::string& className,
                                      const std::optional<std::string>& mapType,
                                      const std::string& database = "candidates.mdb")
    {
        ArgList args{database, className, m_folder.path().string() + "/", Variant(), int16_t{99}};
        if (mapType) {
            args.emplace_back(*mapType);
        }
        call(mapType ? "IsValidDatamap" : "IsValid", std::move(args));
        if (mapType) {
            EXPECT_EQ(m_args[5], Variant(*mapType)) << "MapType must come back unchanged";
        }
        return {m_args[4].toInt16(), m_args[3]};
    }

    test::TempDir m_folder;
};

const Field kTextType{"type", FieldType::String, 5};
const Field kNumericType{"Type", FieldType::SmallInteger};

TEST_F(PolygonMapsCandidates, WhatCannotBeOpenedGivesZeroWithoutRaisingOrRecording)
{
    add({"soil", ShapeType::Polygon, kTextType});
    const std::pair<int16_t, Variant> unopened{0, Variant()};
    EXPECT_EQ(check("soil", "SOIL", "nowhere.mdb"), unopened);
    EXPECT_EQ(check("nosuchclass", "SOIL"), unopened);
    EXPECT_EQ(check("soil", std::nullopt, "nowhere.mdb"), unopened);
    EXPECT_EQ(errorLog(), "");
}

TEST_F(PolygonMapsCandidates, ValidMapGivesOneAndItsFeatureCountAsLong)
{
    add({"soil", ShapeType::Polygon, kTextType});
    add({"pga", ShapeType::Polygon, Field{"ParamValue", FieldType::Double}});
    add({"sites", ShapeType::Point});
    const std::pair<int16_t, Variant> valid{1, Variant(int32_t{2})};
    EXPECT_EQ(check("soil", "SOIL"), valid);
    // A lower-case code finds its field; a numeric code keeps the numeric rule.
    EXPECT_EQ(check("pga", "pgam"), valid);
    EXPECT_EQ(check("soil", std::nullopt), valid);
    EXPECT_EQ(check("sites", std::nullopt), std::make_pair(int16_t{-1}, Variant()));
}

TEST_F(PolygonMapsCandidates, FirstFailedRuleGivesItsCode)
{
    const auto projected = SpatialReference::fromEpsg(26910);
    add({"numericsoil", ShapeType::Polygon, kNumericType});
    add({"textsoil", ShapeType::Polygon, kTextType});
    add({"pgvalue", ShapeType::Polygon, Field{"value", FieldType::Double}});
    add({"projected", ShapeType::Polygon, kTextType, projected});
    add({"projectedpoints", ShapeType::Point, std::nullopt, projected});
    add({"points", ShapeType::Point, kTextType});

    // "soil" or "Tsun" finds the field type but holds it to the numeric rule.
    const std::vector<std::tuple<std::string, std::string, int16_t>> cases{
        {"numericsoil", "SOIL", 2}, {"textsoil", "LIQF", 2},    {"pgvalue", "PGAM", 2},
        {"textsoil", "soil", 2},    {"textsoil", "XXXX", 2},    {"numericsoil", "LAND", 1},
        {"textsoil", "TSUN", 1},    {"projected", "SOIL", 3},   {"projectedpoints", "SOIL", 3},
        {"points", "SOIL", -1},     {"numericsoil", "soil", 1}, {"textsoil", "Tsun", 2},
    };
    for (const auto& [className, mapType, expected] : cases) {
        const auto [result, count] = check(className, mapType);
        EXPECT_EQ(result, expected) << className << " as " << mapType;
        EXPECT_EQ(count.isEmpty(), expected != 1) << className << " as " << mapType;
    }
}

// Thematic maps --------------------------------------------------------------------------------

class ThematicMaps : public PolygonMaps {
protected:
    void SetUp() override
    {
        PolygonMaps::SetUp();
        // A contour map of ground motion whose values live in the server table of its name.
        auto contours =
            geodatabase::Workspace::open(boundaryPath())
                .createFeatureClass("eqShakeContour",
                                    geodatabase::Fields({{"ContourId", FieldType::Integer}}),
                                    ShapeType::Polygon);
        insert(*contours, {{kWestTract, {{"ContourId", 1}}}, {kEastTract, {{"ContourId", 2}}}});
        executeSql("CREATE TABLE eqShakeContour (ContourId INTEGER, Pga REAL, LqfProb REAL)");
        executeSql("INSERT INTO eqShakeContour VALUES (1, 0.1, 0.2), (2, 0.3, 0.4)");
    }

    void addTractValues(const std::string& table, const std::string& column)
    {
        executeSql("CREATE TABLE " + table + " (Tract TEXT, " + column + " INTEGER)");
        executeSql("INSERT INTO " + table + " VALUES ('06001400100', 1), ('06001400200', 2)");
    }

    void generate(const std::string& table, int type, const std::string& field, double minimum,
                  double maximum)
    {
        call("GenerateThematicMap",
             {table, int16_t{0}, static_cast<int16_t>(type), field, minimum, maximum});
    }
};

TEST_F(ThematicMaps, GenerateThmMapOnlySaysItIsObsolete)
{
    call("GenerateThmMap", {"eqShakeContour", int16_t{0}, int16_t{5}, "Pga"});
    ASSERT_EQ(m_prompts->messages().size(), 1u);
    EXPECT_EQ(m_prompts->messages()[0].text, "This Method is obsolete , Call GenerateThematicMap");
    EXPECT_EQ(m_prompts->messages()[0].title, "");
    EXPECT_EQ(m_map->layerCount(), 0);
}

TEST_F(ThematicMaps, EmptyGroundMotionContoursAskForARerunAndDrawNothing)
{
    for (const char* field : {"PGA", "PGV", "SA03", "SA10"}) {
        generate("eqShakeContour", 5, field, 0.0, 0.0);
        const auto messages = m_prompts->takeMessages();
        ASSERT_EQ(messages.size(), 1u) << field;
        EXPECT_EQ(messages[0].text, "Contour Analysis for ground motion needs to be Re-Run.");
        EXPECT_EQ(messages[0].title, "KORVAL");
    }
    EXPECT_EQ(m_map->layerCount(), 0);
    EXPECT_EQ(errorLog(), "");
}

TEST_F(ThematicMaps, ContoursAreDrawnForOtherSpellingsOtherFieldsAndRealRanges)
{
    generate("eqShakeContour", 5, "Pga", 0.0, 0.0);
    generate("eqShakeContour", 5, "LqfProb", 0.0, 0.0);
    // Only both ends at 0 mean the contours were never computed.
    generate("eqShakeContour", 5, "PGA", 0.0, 0.3);
    EXPECT_TRUE(m_prompts->messages().empty());
    ASSERT_EQ(m_map->layerCount(), 3);
    for (int index = 0; index < 3; ++index) {
        EXPECT_EQ(layer(index)->featureClass()->name(), "eqShakeContour");
        EXPECT_NE(layer(index)->displayJoin(), nullptr) << layer(index)->name();
    }
    // The range comes back as the builder widened it.
    EXPECT_EQ(m_args[4], Variant(0.0));
    EXPECT_GT(m_args[5].toDouble(), 0.3);
}

TEST_F(ThematicMaps, TractResultTypesComeBackAsClassBreakTypes)
{
    addTractValues("eqTractGM", "pga");
    addTractValues("eqTractGM_pga", "eqTractGM_pga");
    for (const auto& [type, classBreaks] : {std::pair{18, 2}, std::pair{19, 4}}) {
        generate("eqTractGM", type, "pga", 1.0, 2.0);
        EXPECT_EQ(m_args[2], Variant(static_cast<int16_t>(classBreaks)));
    }
    ASSERT_EQ(layerNames(), (std::vector<std::string>{"EqTractThMap_eqTractGM_pga"}));
    EXPECT_EQ(layer(0)->featureClass()->name(), "hztract");
}

TEST_F(ThematicMaps, QarvTablesAreShownWithOneDecimalOthersWithTheirFieldsPrecision)
{
    addTractValues("qarvTract", "Loss");
    addTractValues("eqTractLoss", "Loss");
    generate("qarvTract", 2, "Loss", 1.0, 2.0);
    generate("eqTractLoss", 2, "Loss", 1.0, 2.0);
    ASSERT_EQ(layerNames(), (std::vector<std::string>{"eqTractLoss_Loss", "qarvTract_Loss"}));
    // One decimal widens the range by 0.01; the integer field's none by 1, floored at 0.
    EXPECT_DOUBLE_EQ(std::get<carto::ClassBreaksRenderer>(layer(1)->renderer()).minimumBreak(),
                     0.99);
    EXPECT_DOUBLE_EQ(std::get<carto::ClassBreaksRenderer>(layer(0)->renderer()).minimumBreak(),
                     0.0);
}

// Error records --------------------------------------------------------------------------------

TEST_F(PolygonMaps, MapMethodsRecordOnceUnderTheirTagWithTheMapCode)
{
    std::filesystem::remove(boundaryPath());
    // AddDefaultMaps passes on the record of the boundary, which it maps first at level 2.
    const std::vector<std::pair<std::string, std::string>> cases{
        {"MapCensusTractBoundary", " for census tract "},
        {"MapStudyregionBoundary", " for study region boundary "},
        {"MapWAterDepthDataMap", " for water map"},
        {"AddDefaultMaps", " for study region boundary "},
    };
    for (const auto& [member, tag] : cases) {
        std::filesystem::remove(regionFolder() + "EqErrorLog.txt");
        const auto error = test::errorOf([&] { call(member); });
        const std::string heading = "Could not put the layer on the map:" + tag;
        EXPECT_EQ(error.number(), platform::automation::LibraryCode::MapLayer) << member;
        EXPECT_EQ(error.description(), heading);
        EXPECT_EQ(recordHeadings(), std::vector<std::string>{heading}) << member;
    }
}

TEST_F(ThematicMaps, ThematicMapFailureNamesTableAndColumn)
{
    const auto error = test::errorOf([&] { generate("eqMissing", 18, "pga", 0.0, 1.0); });
    const std::string heading =
        "The map engine failed in GenerateThematicMap for eqMissing column pga";
    EXPECT_EQ(error.number(), platform::automation::LibraryCode::Procedure);
    EXPECT_EQ(error.description(), heading);
    EXPECT_EQ(recordHeadings(), std::vector<std::string>{heading});
}

} // namespace
} // namespace brevant::datamaps
