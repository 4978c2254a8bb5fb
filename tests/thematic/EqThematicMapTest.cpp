#include "thematic/EqThematicMap.h"

#include "context/EqShape.h"
#include "context/InventoryRegionFixture.h"
#include "host/local/HostRoot.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Geometry.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/Raised.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

namespace brevant::thematic {
namespace {

using namespace platform::carto;
using platform::geodatabase::Field;
using platform::geodatabase::FieldType;
using platform::geometry::ShapeType;
using test::raisedBy;
constexpr int32_t kProcedure = platform::automation::LibraryCode::Procedure;

// Counts chosen so that each type's classes can be told apart: type 4 has its own count, which
// must not be used; type 8 classifies with a single class.
constexpr const char* kClasses = R"({"format": 1, "mapTypes": [
  {"type": 2, "classBreaks": {"title": "Equal Interval", "singleColour": "200,200,200",
    "classes": [{"fraction": 0.2, "colour": "255,255,178"},
                {"fraction": 0.4, "colour": "254,204,92"},
                {"fraction": 0.6, "colour": "253,141,60"}, {"fraction": 0.8, "colour": "240,59,32"},
                {"fraction": 1, "colour": "189,0,38"}]}},
  {"type": 3, "classBreaks": {"title": "Confidence", "singleColour": "200,200,200",
    "classes": [{"fraction": 0.5, "colour": "204,204,204"}, {"fraction": 1, "colour": "230,0,0"}]}},
  {"type": 4, "classBreaks": {"title": "Other", "singleColour": "1,1,1",
    "classes": [{"fraction": 0.3, "colour": "1,2,3"}, {"fraction": 0.6, "colour": "4,5,6"},
                {"fraction": 1, "colour": "7,8,9"}]}},
  {"type": 5, "classBreaks": {"title": "Contours", "singleColour": "255,255,204",
    "classes": [{"fraction": 0.5, "colour": "255,237,160"},
                {"fraction": 1, "colour": "227,26,28"}]}},
  {"type": 8, "classBreaks": {"title": "Tract", "singleColour": "242,240,247",
    "classes": [{"fraction": 1, "colour": "84,39,143"}]},
   "uniqueValues": {"title": "Soil Type", "fieldKind": "C", "values": [
     {"value": "A", "label": "A - Hard rock", "colour": "56,168,0"},
     {"value": " B ", "label": "B - Rock", "colour": "152,230,0"}]}},
  {"type": 12, "uniqueValues": {"title": "Liquefaction Susceptibility", "fieldKind": "N",
    "values": [{"value": 0, "label": "0 - None", "colour": "225,225,225"},
               {"value": 5, "label": "5 - Very high", "colour": "168,0,0"}]}}]})";

const RgbColor kBlack{0, 0, 0};

class EqThematicMap : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        const auto system = host::local::HostRoot::load(root()).systemDataFolder();
        std::ofstream(std::filesystem::path(system) / "classes.json") << kClasses;
        addPointInventory("hzHighwayBridge", {{"HWB01", -122.2, 37.8}, {"HWB02", -122.1, 37.7}});
        executeSql("INSERT INTO EqHighwayBridge (HighwayBridgeId, pga) VALUES ('HWB01', 0.1), "
                   "('HWB02', 0.5)");
    }

    std::string trn() const { return regionFolder() + "trn.mdb"; }
    std::string boundary() const { return regionFolder() + "RegionBndry.mdb"; }

    /// A polygon class of two squares in RegionBndry.mdb, one text field after the shape.
    void addPolygons(const std::string& name, const std::string& field,
                     const std::vector<std::string>& values) const
    {
        auto workspace = std::filesystem::exists(boundary())
                             ? platform::geodatabase::Workspace::open(boundary())
                             : platform::geodatabase::Workspace::createGeoPackage(boundary());
        auto polygons = workspace.createFeatureClass(
            name, platform::geodatabase::Fields({Field{field, FieldType::String, 20}}),
            ShapeType::Polygon);
        platform::geodatabase::InsertCursor insert = polygons->insert();
        double x = -122.3;
        for (const auto& value : values) {
            auto row = polygons->createRow();
            row.setValue(2, value);
            row.setShape(platform::geometry::Geometry::fromWkt(
                "POLYGON((" + std::to_string(x) + " 37.6, " + std::to_string(x + 0.1) + " 37.6, " +
                std::to_string(x + 0.1) + " 37.7, " + std::to_string(x) + " 37.7, " +
                std::to_string(x) + " 37.6))"));
            insert.insertRow(row);
            x += 0.1;
        }
    }

    std::shared_ptr<FeatureLayer> layerNamed(const std::string& name) const
    {
        for (const auto& layer : m_map->layers()) {
            if (layer->name() == name) {
                return std::dynamic_pointer_cast<FeatureLayer>(layer);
            }
        }
        return nullptr;
    }

    int layersNamed(const std::string& name) const
    {
        return static_cast<int>(std::count_if(m_map->layers().begin(), m_map->layers().end(),
                                              [&](const auto& l) { return l->name() == name; }));
    }

    int records() const
    {
        const std::string log = errorLog();
        int count = 0;
        for (auto at = log.find("\nCode = "); at != std::string::npos;
             at = log.find("\nCode = ", at + 1)) {
            ++count;
        }
        return count;
    }

    static const ClassBreaksRenderer& breaksOf(const FeatureLayer& layer)
    {
        return std::get<ClassBreaksRenderer>(layer.renderer());
    }

    static const MultiLayerMarkerSymbol& markerOf(const ClassBreaksRenderer& renderer, int i)
    {
        return std::get<MultiLayerMarkerSymbol>(*renderer.symbol(i));
    }

    static RgbColor colourOf(const MarkerLayer& marker)
    {
        return std::visit([](const auto& m) { return m.color; }, marker);
    }
};

TEST_F(EqThematicMap, EqualIntervalsCarryTheirRoundingFromBreakToBreak)
{
    double minimum = 0.1;
    double maximum = 0.5;
    CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "");

    EXPECT_DOUBLE_EQ(minimum, 0.099);
    EXPECT_DOUBLE_EQ(maximum, 0.501);
    const auto layer = layerNamed("EqHighwayBridge_pga");
    ASSERT_TRUE(layer);
    EXPECT_EQ(layer->featureClass()->name(), "hzHighwayBridge");
    EXPECT_GE(layer->findField("pga"), 0) << "the result table is joined";
    EXPECT_TRUE(layer->visible());
    EXPECT_FALSE(layer->selectable());

    const auto& renderer = breaksOf(*layer);
    EXPECT_EQ(renderer.field(), "pga");
    ASSERT_EQ(renderer.breakCount(), 5);
    EXPECT_DOUBLE_EQ(renderer.minimumBreak(), 0.099);
    const double expected[] = {0.1794, 0.2598, 0.3402, 0.4206, 0.501};
    for (int i = 0; i < 5; ++i) {
        EXPECT_DOUBLE_EQ(renderer.breakValue(i), expected[i]) << i;
    }
    EXPECT_EQ(renderer.label(0), "0.099 - 0.1794");
    EXPECT_EQ(renderer.label(1), "0.1794 - 0.2598");
    EXPECT_EQ(renderer.label(4), "0.4206 - 0.501");
    EXPECT_EQ(renderer.legendHeading(), "pga");
    EXPECT_FALSE(renderer.colorRampName().empty());

    // Point classes colour only the inner marker.
    EXPECT_EQ(colourOf(markerOf(renderer, 0).layers[1]), (RgbColor{255, 255, 178}));
    EXPECT_EQ(colourOf(markerOf(renderer, 4).layers[1]), (RgbColor{189, 0, 38}));
    EXPECT_EQ(colourOf(markerOf(renderer, 4).layers[0]), kBlack);

    ASSERT_FALSE(m_map->refreshes().empty());
    EXPECT_FALSE(m_map->refreshes().back().full);
    EXPECT_EQ(m_map->refreshes().back().phase, ViewPhase::Geography);
    EXPECT_EQ(records(), 0);
}

TEST_F(EqThematicMap, TypeFourIsDrawnAsTypeTwoWithTypeTwosClassCount)
{
    double minimum = 0.1;
    double maximum = 0.5;
    CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "two");
    minimum = 0.1;
    maximum = 0.5;
    CreateThematicMap("EqHighwayBridge", trn(), 4, "pga", minimum, maximum, true, true, "four");
    EXPECT_EQ(breaksOf(*layerNamed("four")).breakCount(), 5);
    EXPECT_EQ(breaksOf(*layerNamed("four")), breaksOf(*layerNamed("two")));
}

TEST_F(EqThematicMap, RangeEdges)
{
    // One value: one class in the single colour, nothing widened.
    double minimum = 0.3;
    double maximum = 0.3;
    CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "flat");
    EXPECT_EQ(minimum, 0.3);
    EXPECT_EQ(maximum, 0.3);
    const auto& flat = breaksOf(*layerNamed("flat"));
    ASSERT_EQ(flat.breakCount(), 1);
    EXPECT_DOUBLE_EQ(flat.minimumBreak(), 0.3);
    EXPECT_DOUBLE_EQ(flat.breakValue(0), 0.3);
    EXPECT_EQ(flat.classIndex(0.3), 0);
    EXPECT_EQ(colourOf(markerOf(flat, 0).layers[1]), (RgbColor{200, 200, 200}));

    // A widened minimum below 0 is raised to 0; the maximum keeps its widening.
    minimum = 0.0;
    maximum = 1.0;
    CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "low");
    EXPECT_EQ(minimum, 0.0);
    EXPECT_DOUBLE_EQ(maximum, 1.001);
    EXPECT_EQ(breaksOf(*layerNamed("low")).minimumBreak(), 0.0);
    EXPECT_DOUBLE_EQ(breaksOf(*layerNamed("low")).breakValue(4), 1.001);
}

TEST_F(EqThematicMap, BreaksRoundHalvesAwayFromZeroAndTheLastStaysAboveThePrevious)
{
    EXPECT_EQ(SetFormat(0), "0");
    EXPECT_EQ(SetFormat(-3), "0");
    // Whole numbers: 0.5 rounds up to 1 and every sum that ends in .5 goes up. The formatted
    // maximum 3 lies below break 4, so the last break is one interval above it.
    auto renderer = GetCBRenderer("hzHighwayBridge", 2, 1, "pga", 0.5, 3.0);
    EXPECT_EQ(renderer.minimumBreak(), 1.0);
    const double expected[] = {2, 3, 4, 5, 6};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(renderer.breakValue(i), expected[i]) << i;
    }
    renderer = GetCBRenderer("hzHighwayBridge", 2, 1, "pga", -2.5, -1.0);
    EXPECT_EQ(renderer.minimumBreak(), -3.0);

    EXPECT_EQ(SetFormat(1, "eqsrwdepth"), "0.000");
    renderer = GetCBRenderer("hzHighwayBridge", 2, 1, "pga", 0.00049, 0.002);
    EXPECT_EQ(renderer.minimumBreak(), 0.0);
    EXPECT_EQ(SetFormat(2), "0.0000");
    renderer = GetCBRenderer("hzHighwayBridge", 2, 1, "pga", 0.00005, 0.0006);
    EXPECT_DOUBLE_EQ(renderer.minimumBreak(), 0.0001);
    renderer = GetCBRenderer("hzHighwayBridge", 2, 1, "pga", 0.12345, 0.5);
    EXPECT_DOUBLE_EQ(renderer.minimumBreak(), 0.1235) << "a decimal half, not its binary value";

    EXPECT_DOUBLE_EQ(SetDelta(2), 0.001);
    EXPECT_DOUBLE_EQ(SetDelta(1), 0.01);
    EXPECT_EQ(SetDelta(0), 1.0);
    EXPECT_EQ(SetDelta(-1), 1.0);
}

TEST_F(EqThematicMap, SingleClassSettingsLabelTheLowestBreakAlone)
{
    SetFormat(2);
    const auto renderer = GetCBRenderer("hztract", 8, 2, "Result", 1.0, 2.0);
    ASSERT_EQ(renderer.breakCount(), 1);
    EXPECT_EQ(renderer.breakValue(0), 1.0);
    EXPECT_EQ(renderer.label(0), "1");
    EXPECT_EQ(std::get<SimpleFillSymbol>(*renderer.symbol(0)).color, (RgbColor{84, 39, 143}));
}

TEST_F(EqThematicMap, ConfidenceMapAsksUntilTheValueFits)
{
    m_prompts->queueAnswer("150");
    m_prompts->queueAnswer("-5");
    m_prompts->queueAnswer("80");
    double minimum = 0.1;
    double maximum = 95.5;
    CreateThematicMap("EqHighwayBridge", trn(), 3, "pga", minimum, maximum, true, true, "");

    ASSERT_EQ(m_prompts->inputBoxes().size(), 3u);
    for (const auto& box : m_prompts->inputBoxes()) {
        EXPECT_EQ(box.prompt, "Enter confidence value between 0 and 100");
        EXPECT_EQ(box.title, "KORVAL");
        EXPECT_EQ(box.defaultValue, "50");
    }
    EXPECT_EQ(minimum, 80.0);
    EXPECT_EQ(maximum, 95.5) << "a confidence map is not widened";
    const auto& renderer = breaksOf(*layerNamed("EqHighwayBridge_pga"));
    ASSERT_EQ(renderer.breakCount(), 2);
    EXPECT_EQ(renderer.minimumBreak(), 0.0);
    EXPECT_EQ(renderer.breakValue(0), 80.0);
    EXPECT_EQ(renderer.breakValue(1), 95.5);
    EXPECT_EQ(renderer.label(0), "");
    EXPECT_EQ(renderer.label(1), "");
    EXPECT_EQ(colourOf(markerOf(renderer, 1).layers[1]), (RgbColor{230, 0, 0}));
}

TEST_F(EqThematicMap, CancelledConfidenceEndsQuietly)
{
    double minimum = 0.1;
    double maximum = 0.5;
    CreateThematicMap("EqHighwayBridge", trn(), 3, "pga", minimum, maximum, true, true, "");
    EXPECT_EQ(m_prompts->inputBoxes().size(), 1u);
    EXPECT_EQ(m_map->layerCount(), 0);
    EXPECT_EQ(minimum, 0.1);
    EXPECT_EQ(maximum, 0.5);
    EXPECT_EQ(records(), 0);
}

TEST_F(EqThematicMap, ResultTablesAreDrawnOnTheirInventoryClass)
{
    addPointInventory("eqAebm", {{"AEB01", -122.2, 37.8}}, "uds.mdb");
    auto layer = GetJoinThmMap("EQAEBMRES", regionFolder() + "uds.mdb", 2, "pga", 0.0, 1.0);
    EXPECT_EQ(layer->featureClass()->name(), "eqAebm");
    EXPECT_EQ(layer->name(), "EQAEBMRES");
    EXPECT_FALSE(layer->visible());
    EXPECT_EQ(m_map->layerCount(), 0) << "a built layer is not yet on the map";

    double minimum = 0.0;
    double maximum = 1.0;
    CreateThematicMap("eqAebmRes", regionFolder() + "uds.mdb", 2, "pga", minimum, maximum, true,
                      false, "");
    const auto added = layerNamed("eqAebmRes_pga");
    ASSERT_TRUE(added);
    EXPECT_EQ(added->featureClass()->name(), "eqAebm");
    EXPECT_FALSE(added->visible());

    // Types below 2 keep the platform's renderer and the table's name.
    layer = GetJoinThmMap("EqHighwayBridge", trn(), 1, "pga", 0.0, 1.0);
    EXPECT_EQ(layer->featureClass()->name(), "hzHighwayBridge");
    EXPECT_TRUE(std::holds_alternative<SimpleRenderer>(layer->renderer()));
    EXPECT_EQ(layer->name(), "EqHighwayBridge");
}

TEST_F(EqThematicMap, UniqueValueMapsAreNamedByTheirTitle)
{
    addPolygons("eqsrsoil", "SoilType", {"A", "B"});
    double minimum = 0.0;
    double maximum = 0.0;
    CreateThematicMap("eqsrsoil", boundary(), 8, "SoilType", minimum, maximum, false, true, "");
    const auto layer = layerNamed("Soil Type");
    ASSERT_TRUE(layer);
    const auto& renderer = std::get<UniqueValueRenderer>(layer->renderer());
    EXPECT_EQ(renderer.field(0), "SoilType");
    EXPECT_EQ(renderer.fieldType(), ValueFieldType::Text);
    EXPECT_FALSE(renderer.useDefaultSymbol());
    ASSERT_EQ(renderer.valueCount(), 2);
    EXPECT_EQ(renderer.value(1), "B") << "values are trimmed";
    EXPECT_EQ(renderer.label("B"), "B - Rock");
    EXPECT_EQ(renderer.heading("B"), "");
    EXPECT_EQ(std::get<SimpleFillSymbol>(*renderer.symbol("A")).color, (RgbColor{56, 168, 0}));

    const auto numeric = GetUniquevalueRenderer("eqsrlqf", 12, 2, "LqfSusCat");
    EXPECT_EQ(numeric.fieldType(), ValueFieldType::Numeric);
    EXPECT_EQ(numeric.value(1), "5");
    EXPECT_EQ(numeric.label("5"), "5 - Very high");
}

TEST_F(EqThematicMap, PlainMapsUseTheirOwnClassAndFourDecimals)
{
    addPolygons("eqsrwdepth", "Depth", {"1", "2"});
    double minimum = 0.123456;
    double maximum = 0.5;
    CreateThematicMap("eqsrwdepth", boundary(), 2, "Depth", minimum, maximum, false, true, "");
    const auto layer = layerNamed("Ground Water Depth");
    ASSERT_TRUE(layer);
    EXPECT_EQ(layer->featureClass()->name(), "eqsrwdepth");
    // Widened at the field's precision (2), broken at six decimals.
    EXPECT_DOUBLE_EQ(minimum, 0.122456);
    const auto& renderer = breaksOf(*layer);
    EXPECT_DOUBLE_EQ(renderer.minimumBreak(), 0.122456);
    EXPECT_DOUBLE_EQ(renderer.breakValue(0), 0.198165);
    EXPECT_EQ(std::get<SimpleFillSymbol>(*renderer.symbol(0)).color, (RgbColor{255, 255, 178}));

    // An explicit name wins over every naming rule.
    minimum = 0.1;
    maximum = 0.5;
    CreateThematicMap("eqsrwdepth", boundary(), 2, "Depth", minimum, maximum, false, true, "Mine");
    EXPECT_TRUE(layerNamed("Mine"));
}

TEST_F(EqThematicMap, ContourMapsFillWithoutOutlineAndShakeMapsHaveNoHeading)
{
    addPolygons("eqShakeMap", "Name", {"a", "b"});
    double minimum = 0.1;
    double maximum = 0.3;
    CreateThematicMap("eqShakeMap", boundary(), 5, "paramvalue", minimum, maximum, false, true, "");
    // Precision 4 for contours: widened by 0.00001.
    EXPECT_DOUBLE_EQ(minimum, 0.09999);
    const auto& renderer = breaksOf(*layerNamed("eqShakeMap_paramvalue"));
    EXPECT_EQ(renderer.legendHeading(), "");
    const auto& fill = std::get<SimpleFillSymbol>(*renderer.symbol(1));
    EXPECT_EQ(fill.style, SimpleFillStyle::Solid);
    EXPECT_EQ(fill.color, (RgbColor{227, 26, 28}));
    EXPECT_EQ(std::get<SimpleLineSymbol>(fill.outline).width, 0.0);
}

TEST_F(EqThematicMap, TractMapsJoinTheirTableAndReplaceTheirLayer)
{
    addPolygons("hztract", "Tract", {"06001400100", "06001400200"});
    executeSql("CREATE TABLE EqTractPga (Tract TEXT, pga REAL)");
    executeSql("INSERT INTO EqTractPga VALUES ('06001400100', 0.2), ('06001400200', 0.4)");

    CreateThmMapForTract("EqTractPga", boundary(), 4, "pga", 0.2, 0.4, 2, false);
    CreateThmMapForTract("EqTractPga", boundary(), 4, "pga", 0.2, 0.4, 2, false);
    EXPECT_EQ(layersNamed("EqTractPga_pga"), 1);
    const auto layer = layerNamed("EqTractPga_pga");
    EXPECT_TRUE(layer->visible());
    EXPECT_FALSE(layer->selectable());
    EXPECT_GE(layer->findField("pga"), 0);
    const auto& renderer = breaksOf(*layer);
    EXPECT_EQ(renderer.breakCount(), 5);
    EXPECT_DOUBLE_EQ(renderer.minimumBreak(), 0.199);
    EXPECT_DOUBLE_EQ(renderer.breakValue(4), 0.401);

    // The shared tract map reads the table named by its fourth argument.
    executeSql("CREATE TABLE pgaTable (Tract TEXT, pgaTable REAL)");
    CreateThmMapForTract("EqTractThMap", boundary(), 2, "pgaTable", 0.0, 1.0, 0, true);
    ASSERT_TRUE(layerNamed("pgaTable"));
    EXPECT_EQ(breaksOf(*layerNamed("pgaTable")).breakValue(4), 2.0);
    EXPECT_EQ(records(), 0);
}

TEST_F(EqThematicMap, ReplacingKeepsOneLayerOfTheName)
{
    auto other = std::make_shared<FeatureLayer>();
    other->setName("Study Region Boundary");
    m_map->addLayer(other);
    for (int i = 0; i < 2; ++i) {
        double minimum = 0.1;
        double maximum = 0.5;
        CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "");
    }
    EXPECT_EQ(layersNamed("EqHighwayBridge_pga"), 1);
    EXPECT_EQ(m_map->layerCount(), 2);
    EXPECT_EQ(m_map->layer(0)->name(), "EqHighwayBridge_pga") << "added on top";
}

// What the reference host's open of a missing class raises.
constexpr int32_t HostOpenFailure = -2147213308;

TEST_F(EqThematicMap, FailuresClimbTheBuildersEachAddingItsRecord)
{
    double minimum = 0.1;
    double maximum = 0.5;
    CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "kept");

    auto error = raisedBy([&] {
        CreateThematicMap("EqNothing", trn(), 2, "pga", minimum, maximum, true, true, "kept");
    });
    // The host's number and source are kept for the calling procedure's trap to convert.
    EXPECT_EQ(error.number(), HostOpenFailure);
    EXPECT_EQ(error.description(), " CreateThematicMap for EqNothing column pga");
    EXPECT_EQ(records(), 2);
    EXPECT_NE(errorLog().find("failed in GetJoinThmMap for EqNothing\nCode = " +
                              std::to_string(HostOpenFailure)),
              std::string::npos);
    EXPECT_TRUE(layerNamed("kept")) << "the old layer stays when the build fails";
    EXPECT_EQ(minimum, 0.099) << "out-parameters are not changed by a failure";

    context::setCurrentMap(nullptr);
    error = raisedBy([&] {
        CreateThematicMap("EqHighwayBridge", trn(), 2, "pga", minimum, maximum, true, true, "");
    });
    EXPECT_EQ(error.number(), 91);
    EXPECT_EQ(error.description(), " CreateThematicMap for EqHighwayBridge column pga");
    EXPECT_EQ(records(), 3);
}

TEST_F(EqThematicMap, ClassSymbols)
{
    const auto point = GetResultsPointSymbol();
    ASSERT_EQ(point.layerCount(), 2);
    const auto& first = std::get<CharacterMarkerSymbol>(point.layers[0]);
    const auto& second = std::get<CharacterMarkerSymbol>(point.layers[1]);
    EXPECT_EQ(first.characterIndex, 33);
    EXPECT_EQ(second.characterIndex, 40);
    for (const auto& marker : {first, second}) {
        EXPECT_EQ(marker.fontName, "ESRI Default Marker");
        EXPECT_EQ(marker.size, 12.0);
        EXPECT_EQ(marker.color, kBlack);
        EXPECT_EQ(marker.angle, 0.0);
    }
    EXPECT_EQ(GetResultMarkerSymbol(7).characterIndex, 40);

    const auto coloured =
        std::get<MultiLayerMarkerSymbol>(CreateThmLayerSymbol(point, 1, "10,20,30"));
    EXPECT_EQ(colourOf(coloured.layers[0]), kBlack);
    EXPECT_EQ(colourOf(coloured.layers[1]), (RgbColor{10, 20, 30}));

    MultiLayerLineSymbol line;
    line.addLayer(CartographicLineSymbol{});
    MarkerLineSymbol markers;
    markers.marker = CharacterMarkerSymbol{};
    line.addLayer(markers);
    const auto lines = std::get<MultiLayerLineSymbol>(CreateThmLayerSymbol(line, 3, "1,2,3"));
    EXPECT_EQ(std::get<CartographicLineSymbol>(lines.layers[0]).color, (RgbColor{1, 2, 3}));
    const auto& recoloured = std::get<MarkerLineSymbol>(lines.layers[1]);
    EXPECT_EQ(recoloured.color, (RgbColor{1, 2, 3}));
    EXPECT_EQ(std::get<CharacterMarkerSymbol>(recoloured.marker).color, (RgbColor{1, 2, 3}));

    const auto fill = std::get<SimpleFillSymbol>(CreateThmLayerSymbol(std::nullopt, 2, "4,5,6"));
    EXPECT_EQ(fill.color, (RgbColor{4, 5, 6}));
    EXPECT_EQ(fill.style, SimpleFillStyle::Solid);

    EXPECT_FALSE(SymbolForTable("anything", 0));
    EXPECT_EQ(SymbolForTable("anything", 1), std::optional<Symbol>(point));
    EXPECT_EQ(records(), 0);

    // A point class needs the marker template; the failure names the symbol builder.
    const auto error = raisedBy([&] { CreateThmLayerSymbol(std::nullopt, 1, "1,2,3"); });
    EXPECT_EQ(error.description(), " CreateThmLayerSymbol");
    EXPECT_EQ(records(), 1);
}

TEST_F(EqThematicMap, SymbolTypeFollowsTheShape)
{
    addPolygons("eqsrsoil", "SoilType", {"A"});
    const auto open = [](const std::string& path, const std::string& name) {
        return platform::geodatabase::Workspace::open(path).openFeatureClass(name);
    };
    EXPECT_EQ(GetSymbolType(open(trn(), "hzHighwayBridge")), 1);
    EXPECT_EQ(GetSymbolType(open(boundary(), "eqsrsoil")), 2);
    EXPECT_EQ(raisedBy([] { GetSymbolType(nullptr); }).description(), " GetSymbolType");
}

} // namespace
} // namespace brevant::thematic
