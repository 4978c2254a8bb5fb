#include "context/EqSimpleRenderer.h"

#include "context/EqShape.h"
#include "host/SymbolCatalog.h"
#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalHostServices.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/TestFeatures.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/Raised.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <vector>

namespace brevant::context {
namespace {

using test::raisedBy;

using namespace platform::carto;
using platform::automation::AutomationError;
using platform::geometry::ShapeType;
constexpr int32_t kProcedure = platform::automation::LibraryCode::Procedure;

// A character marker over a simple marker; a second point symbol to tell builds apart; every
// line layer kind, once with a gap and once without.
constexpr const char* kCatalogue = R"({"format": 1, "symbols": [
  {"name": "hzHighwayBridge", "layers": [
    {"type": "Character Marker Symbol", "colour": "255,0,0", "font": "Map Symbols", "size": 14,
     "angle": 45, "character": 36},
    {"type": "Simple Marker Symbol"}]},
  {"name": "hzAirportFlty", "layers": [
    {"type": "Character Marker Symbol", "colour": "0,0,255", "font": "Wingdings", "size": 9,
     "character": 81}]},
  {"name": "empty", "layers": []},
  {"name": "lines", "layers": [
    {"type": "Cartographic Line Symbol", "colour": "10,20,30", "width": 1.5, "cap": "Round",
     "join": "Bevel", "mark": 4, "gap": 0, "interval": 3},
    {"type": "Cartographic Line Symbol", "colour": "10,20,30", "width": 1.5, "cap": "Square",
     "mark": 4, "gap": 2, "interval": 3},
    {"type": "Marker Line Symbol", "colour": "0,128,0", "width": 2, "cap": "Round",
     "join": "Round", "marker": {"type": "Character Marker Symbol", "colour": "1,2,3",
     "font": "Map Symbols", "size": 6, "character": 40}, "mark": 4, "gap": 2, "interval": 5},
    {"type": "Marker Line Symbol", "colour": "0,128,0", "width": 2, "mark": 4, "interval": 5},
    {"type": "Hash Line Symbol", "colour": "90,90,90", "width": 6, "angle": 60,
     "hash": {"type": "Cartographic Line Symbol", "colour": "7,7,7", "width": 0.5}, "mark": 4,
     "gap": 2, "interval": 3},
    {"type": "Hash Line Symbol", "colour": "90,90,90", "width": 6, "angle": 90,
     "hash": {"type": "Marker Line Symbol", "colour": "8,8,8", "width": 1}, "mark": 4,
     "interval": 3}]}]})";

LineTemplate dashes(double mark, double gap, double interval)
{
    return LineTemplate{interval, {{mark, gap}}};
}

const SimpleMarkerSymbol kFixedMarker{SimpleMarkerStyle::Circle, RgbColor{0, 0, 0}, 0.0};

class EqSimpleRenderer : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        context::openStudyRegion(true);
        platform::ui::installUserPrompts(prompts);
        const auto system = host::local::HostRoot::load(root()).systemDataFolder();
        std::ofstream(std::filesystem::path(system) / "symbols.json") << kCatalogue;
    }

    void TearDown() override
    {
        platform::ui::installUserPrompts(nullptr);
        HostFixture::TearDown();
    }


    int records() const
    {
        const std::string log = errorLog();
        return static_cast<int>(std::count(log.begin(), log.end(), '\n') / 6);
    }

    /// The first two lines of the latest record.
    std::string lastRecord() const
    {
        const std::string log = errorLog();
        const auto code = log.rfind("\nCode = ");
        const auto previous = log.rfind('\n', code - 1);
        const std::size_t begin = previous == std::string::npos ? 0 : previous + 1;
        return log.substr(begin, log.find('\n', code + 1) - begin);
    }

    std::shared_ptr<platform::ui::ScriptedPrompts> prompts =
        std::make_shared<platform::ui::ScriptedPrompts>();
};

TEST_F(EqSimpleRenderer, ColourTextsRoundHalvesToEvenAndReadRedAndGreenLeniently)
{
    EXPECT_EQ(GetColor("255,255,190"), (RgbColor{255, 255, 190}));
    EXPECT_EQ(GetColor("000,000,000"), (RgbColor{0, 0, 0}));
    EXPECT_EQ(GetColor("10.5,2,3").red, 10);
    EXPECT_EQ(GetColor("11.5,2.5, 3.5 "), (RgbColor{12, 2, 4}));
    EXPECT_EQ(GetColor("  12abc, 7.9 px,5"), (RgbColor{12, 8, 5}));
    EXPECT_EQ(GetColor(",,0"), (RgbColor{0, 0, 0}));
    EXPECT_EQ(GetColor("1e2,-0.4,9"), (RgbColor{100, 0, 9}));
    EXPECT_EQ(records(), 0);
}

TEST_F(EqSimpleRenderer, BadColourTextsAreRecordedUnderGetColor)
{
    const std::map<int32_t, std::vector<const char*>> textsByCaughtCode = {
        {5, {"255,255", "255"}},
        {13, {"1,2,x", "1,2,", "1,2,3,4"}},
        {platform::automation::ErrorNumber::InvalidArgument,
         {"256,0,0", "0,-1,0", "0,0,300", "255.5,0,0"}},
        {6, {"1e12,0,0"}}};
    for (const auto& [caught, texts] : textsByCaughtCode) {
        for (const char* text : texts) {
            // The factory keeps the caught number and names itself; its caller converts.
            const auto error = raisedBy([&] { GetColor(text); });
            EXPECT_EQ(error.number(), caught) << text;
            EXPECT_EQ(error.description(), " GetColor") << text;
            EXPECT_EQ(lastRecord(),
                      "The map engine failed in GetColor\nCode = " + std::to_string(caught))
                << text;
        }
    }
    EXPECT_EQ(records(), 10);
}

TEST_F(EqSimpleRenderer, CapAndJoinNamesMatchExactly)
{
    EXPECT_EQ(GetLineCap("Butt"), 0);
    EXPECT_EQ(GetLineCap("Round"), 1);
    EXPECT_EQ(GetLineCap("Square"), 2);
    EXPECT_EQ(GetLineCap("round"), 0);
    EXPECT_EQ(GetLineJoin("Miter"), 0);
    EXPECT_EQ(GetLineJoin("Round"), 1);
    EXPECT_EQ(GetLineJoin("Bevel"), 2);
    EXPECT_EQ(GetLineJoin("bevel"), 0);
}

TEST_F(EqSimpleRenderer, PointSymbolStacksItsLayersInCatalogueOrder)
{
    const MultiLayerMarkerSymbol symbol = GetMultiPointSymbol("hzHighwayBridge");
    EXPECT_EQ(symbol.layers,
              (std::vector<MarkerLayer>{
                  CharacterMarkerSymbol{"Map Symbols", 36, 14.0, 45.0, RgbColor{255, 0, 0}},
                  kFixedMarker}));
    EXPECT_EQ(GetMultiPointSymbol("empty").layerCount(), 0);
    EXPECT_EQ(GetMultiLineSymbol("empty").layerCount(), 0);
}

TEST_F(EqSimpleRenderer, EveryBuildOpensAFreshCatalogueThatLayerBuildersRead)
{
    GetMultiPointSymbol("hzHighwayBridge");
    GetMultiPointSymbol("hzAirportFlty");
    EXPECT_EQ(created().at("SymbolCatalog"), 2);
    EXPECT_EQ(std::get<CharacterMarkerSymbol>(GetPointSymbol(1)).fontName, "Wingdings");
}

TEST_F(EqSimpleRenderer, LinesOfEveryKindAreDashedOnlyWithAGap)
{
    const CartographicLineSymbol solid{RgbColor{10, 20, 30}, 1.5, LineCap::Round, LineJoin::Bevel};
    const CartographicLineSymbol dashed{RgbColor{10, 20, 30}, 1.5, LineCap::Square,
                                        LineJoin::Miter,      0.0, dashes(4, 2, 3)};
    // A marker line's cap and join are read but not used.
    const MarkerLineSymbol markerDashed{
        RgbColor{0, 128, 0},
        2.0,
        LineCap::Butt,
        LineJoin::Miter,
        0.0,
        CharacterMarkerSymbol{"Map Symbols", 40, 6.0, 0.0, RgbColor{1, 2, 3}},
        dashes(4, 2, 5)};
    const MarkerLineSymbol markerSolid{RgbColor{0, 128, 0}, 2.0, LineCap::Butt,
                                       LineJoin::Miter,     0.0, kFixedMarker};
    const HashLineSymbol hashDashed{RgbColor{90, 90, 90},
                                    6.0,
                                    60.0,
                                    LineCap::Butt,
                                    LineJoin::Miter,
                                    0.0,
                                    CartographicLineSymbol{RgbColor{7, 7, 7}, 0.5},
                                    dashes(4, 2, 3)};
    const HashLineSymbol hashSolid{RgbColor{90, 90, 90},
                                   6.0,
                                   90.0,
                                   LineCap::Butt,
                                   LineJoin::Miter,
                                   0.0,
                                   MarkerLineSymbol{RgbColor{8, 8, 8}, 1.0, LineCap::Butt,
                                                    LineJoin::Miter, 0.0, kFixedMarker}};

    EXPECT_EQ(
        GetMultiLineSymbol("lines").layers,
        (std::vector<LineLayer>{solid, dashed, markerDashed, markerSolid, hashDashed, hashSolid}));
}

TEST_F(EqSimpleRenderer, PolygonsGetTheSameFillWhateverTheName)
{
    const SimpleFillSymbol fill = GetSimplePolygonSymbol("hzHighwayBridge");
    EXPECT_EQ(fill, (SimpleFillSymbol{SimpleFillStyle::Solid, RgbColor{255, 255, 190}}));
    EXPECT_EQ(GetSimplePolygonSymbol("not in any catalogue"), fill);
    EXPECT_EQ(created().count("SymbolCatalog"), 0u);
}

TEST_F(EqSimpleRenderer, UnknownSymbolNameIsRecordedByTheBuilderAndKeepsTheHostsNumber)
{
    const auto error = raisedBy([] { GetMultiPointSymbol("hzNoSuchClass"); });
    EXPECT_EQ(error.number(), host::local::HostError::UnknownKey);
    EXPECT_EQ(error.source(), host::local::kHostSource);
    EXPECT_EQ(error.description(), " GetMultiPointSymbol");
    EXPECT_EQ(records(), 1);
    EXPECT_EQ(lastRecord(), "The map engine failed in GetMultiPointSymbol\nCode = " +
                                std::to_string(host::local::HostError::UnknownKey));
}

// Answers the reference catalogue refuses to store: unknown line types, bad colours, huge
// layer counts.
class ScriptedCatalogue : public host::SymbolCatalog {
public:
    int32_t count = 0;
    std::vector<std::string> lineTypes;
    std::string colour = "0,0,0";

    int32_t OpenSymbol(const std::string&) override { return count; }
    std::string GetLineLayerType(int16_t i) override { return lineTypes.at(i - 1); }
    void GetCartographicLineLayer(int16_t, std::string& c, double& width, std::string& cap,
                                  std::string& join, double& mark, double& gap, double& interval,
                                  double& extra) override
    {
        c = colour;
        cap = join = "";
        width = mark = gap = interval = extra = 0;
    }
};

class ScriptedCatalogueHost : public host::local::LocalHostServices {
public:
    ScriptedCatalogueHost(std::filesystem::path root, std::shared_ptr<ScriptedCatalogue> catalogue)
        : LocalHostServices(std::move(root)), m_catalogue(std::move(catalogue))
    {
    }
    std::shared_ptr<host::SymbolCatalog> createSymbolCatalog() override { return m_catalogue; }

private:
    std::shared_ptr<ScriptedCatalogue> m_catalogue;
};

TEST_F(EqSimpleRenderer, UnknownLineTypesAreLeftOutAndBadColoursFailTheBuild)
{
    auto catalogue = std::make_shared<ScriptedCatalogue>();
    host::installHostServices(std::make_shared<ScriptedCatalogueHost>(root(), catalogue));

    catalogue->count = 3;
    catalogue->lineTypes = {"Cartographic Line Symbol", "Simple Line Symbol",
                            "cartographic line symbol"};
    EXPECT_EQ(GetMultiLineSymbol("x").layerCount(), 1);

    catalogue->count = 1;
    catalogue->colour = "0,0";
    // Each builder the error climbs through adds its record.
    EXPECT_EQ(raisedBy([] { GetMultiLineSymbol("x"); }).description(), " GetMultiLineSymbol");
    EXPECT_EQ(records(), 4);
    for (const char* level : {"GetColor", "GetCartograhicLineSymbol", "GetLineSymbol"}) {
        EXPECT_NE(errorLog().find(std::string("failed in ") + level + "\nCode = 5\n"),
                  std::string::npos)
            << level;
    }
    EXPECT_EQ(lastRecord(), "The map engine failed in GetMultiLineSymbol\nCode = 5");

    catalogue->count = 40000;
    raisedBy([] { GetMultiLineSymbol("x"); });
    EXPECT_EQ(lastRecord(), "The map engine failed in GetMultiLineSymbol\nCode = 6");
}

class EqSimpleRendererLayers : public EqSimpleRenderer {
protected:
    std::shared_ptr<FeatureLayer> layerOf(ShapeType type, const std::string& wkt)
    {
        return std::make_shared<FeatureLayer>(data.add("layer" + std::to_string(++m_layers), type,
                                                       platform::geodatabase::Fields(),
                                                       {{wkt, {}}}));
    }

    test::TestFeatures data;

private:
    int m_layers = 0;
};

TEST_F(EqSimpleRendererLayers, EachShapeTypeGetsASimpleRendererWithItsSymbol)
{
    const std::pair<ShapeType, const char*> shapes[] = {
        {ShapeType::Point, "POINT (1 1)"},
        {ShapeType::Polyline, "LINESTRING (0 0, 1 1)"},
        {ShapeType::Polygon, "POLYGON ((0 0, 1 0, 1 1, 0 0))"}};
    const Symbol expected[] = {GetMultiPointSymbol("hzHighwayBridge"), GetMultiLineSymbol("lines"),
                               GetSimplePolygonSymbol("")};
    const char* names[] = {"hzHighwayBridge", "lines", "no such symbol"};
    for (std::size_t i = 0; i < std::size(shapes); ++i) {
        auto layer = layerOf(shapes[i].first, shapes[i].second);
        CreateRendrer(*layer, names[i]);
        EXPECT_EQ(layer->renderer(), Renderer(SimpleRenderer{expected[i]})) << names[i];
    }
    EXPECT_TRUE(prompts->messages().empty());
    EXPECT_EQ(records(), 0);
}

TEST_F(EqSimpleRendererLayers, OtherShapeTypesGetAnEmptyRendererAndAMessage)
{
    auto sites = layerOf(ShapeType::Multipoint, "MULTIPOINT ((1 1), (2 2))");
    CreateRendrer(*sites, "hzHighwayBridge");
    EXPECT_EQ(sites->renderer(), Renderer(SimpleRenderer{}));
    ASSERT_EQ(prompts->messages().size(), 1u);
    EXPECT_EQ(prompts->messages()[0].text, "Invalid feature type");
    EXPECT_EQ(prompts->messages()[0].title, "KORVAL");
    EXPECT_EQ(prompts->messages()[0].buttons, platform::ui::MessageButtons::Ok);
    EXPECT_EQ(records(), 0);
}

TEST_F(EqSimpleRendererLayers, AFailedBuildKeepsTheRendererAndPassesTheInnerCodeOn)
{
    auto points = layerOf(ShapeType::Point, "POINT (1 1)");
    const Renderer before = points->renderer();
    const auto error = raisedBy([&] { CreateRendrer(*points, "hzNoSuchClass"); });
    EXPECT_EQ(error.number(), host::local::HostError::UnknownKey);
    EXPECT_EQ(error.description(), " CreateRendrer");
    EXPECT_EQ(records(), 2);
    EXPECT_EQ(points->renderer(), before);

    FeatureLayer detached;
    EXPECT_EQ(raisedBy([&] { CreateRendrer(detached, "hzHighwayBridge"); }).description(),
              " CreateRendrer");
    EXPECT_EQ(lastRecord(), "The map engine failed in CreateRendrer\nCode = 91");
}

} // namespace
} // namespace brevant::context
