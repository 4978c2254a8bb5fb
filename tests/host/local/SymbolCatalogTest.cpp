#include "host/HostServices.h"
#include "host/SymbolCatalog.h"
#include "host/local/DefaultCatalogues.h"
#include "host/local/HostErrors.h"
#include "platform/automation/PlatformError.h"
#include "support/HostFixture.h"
#include "support/Raised.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

namespace brevant::host::local {
namespace {

namespace fs = std::filesystem;
using platform::automation::PlatformError;

using test::errorOf;
using test::mentions;

/// Reads layers the way the symbol builder does: the type first, then the record of that
/// type, then the parts of marker and hash lines under the same index. Records every type met
/// and whether a dash pattern was seen, and returns a short text of the layer.
struct LayerWalker {
    SymbolCatalog& catalog;
    std::set<std::string> types;
    bool dashed = false;
    bool solid = false;

    std::string point(int16_t i)
    {
        const std::string type = catalog.GetPointLayerType(i);
        types.insert(type);
        return type == "Character Marker Symbol" ? characterMarker(i) : type;
    }

    std::string line(int16_t i)
    {
        const std::string type = catalog.GetLineLayerType(i);
        types.insert(type);
        if (type == "Hash Line Symbol") {
            std::string colour, hashType;
            double width, mark, gap, interval, angle;
            catalog.GetHashLineLayer(i, colour, width, hashType, mark, gap, interval, angle);
            pattern(gap);
            return "hash " + colour + " of " + ownLine(i, hashType);
        }
        return ownLine(i, type);
    }

private:
    std::string ownLine(int16_t i, const std::string& type)
    {
        std::string colour, cap, join;
        double width, mark, gap, interval, extra;
        if (type == "Cartographic Line Symbol") {
            catalog.GetCartographicLineLayer(i, colour, width, cap, join, mark, gap, interval,
                                             extra);
            pattern(gap);
            return "line " + colour + " " + std::to_string(width);
        }
        if (type == "Marker Line Symbol") {
            std::string markerType;
            catalog.GetMarkerLineLayer(i, colour, width, cap, join, markerType, mark, gap, interval,
                                       extra);
            types.insert(markerType);
            pattern(gap);
            return "markers " +
                   (markerType == "Character Marker Symbol" ? characterMarker(i) : markerType);
        }
        ADD_FAILURE() << "unexpected line type " << type;
        return type;
    }

    std::string characterMarker(int16_t i)
    {
        std::string colour, font;
        double size, angle;
        int32_t character;
        catalog.GetCharacterMarkerLayer(i, colour, font, size, angle, character);
        EXPECT_FALSE(font.empty());
        EXPECT_GT(size, 0);
        return "character " + std::to_string(character) + " " + colour;
    }

    void pattern(double gap) { (gap != 0.0 ? dashed : solid) = true; }
};

class SymbolCatalogFile : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        writeDefaultSymbols(systemFolder());
        m_catalog = hostServices().createSymbolCatalog();
    }

    fs::path systemFolder() const { return root() / "System"; }

    void writeCatalogue(const std::string& text) const
    {
        std::ofstream(systemFolder() / "symbols.json", std::ios::trunc) << text;
    }

    static nlohmann::json entries(const fs::path& folder)
    {
        std::ifstream in(folder / "symbols.json");
        return nlohmann::json::parse(in).at("symbols");
    }

    std::vector<std::string> namesInFile() const
    {
        std::vector<std::string> names;
        for (const auto& entry : entries(systemFolder())) {
            names.push_back(entry.at("name").get<std::string>());
        }
        return names;
    }

    /// Every layer of a symbol read as the builder reads a point or line symbol.
    std::vector<std::string> read(const std::string& name, bool point, LayerWalker& walker)
    {
        std::vector<std::string> layers;
        const int32_t count = m_catalog->OpenSymbol(name);
        for (int16_t i = 1; i <= count; ++i) {
            layers.push_back(point ? walker.point(i) : walker.line(i));
        }
        return layers;
    }

    std::shared_ptr<SymbolCatalog> m_catalog;
};

TEST_F(SymbolCatalogFile, DefaultsCoverEveryDrawnLayerAndEveryLayerType)
{
    LayerWalker walker{*m_catalog};
    // Names as the map layers carry them; some tables are also spelt in lower case.
    const char* points[] = {"hzHighwayBridge",
                            "hzdams",
                            "hzhazmat",
                            "hzPotableWaterFlty",
                            "hzElectricPowerFlty",
                            "hzSchool",
                            "hzFireStation",
                            "hzPoliceStation",
                            "hzCareFlty",
                            "hzUserDefinedFlty",
                            "eqAebm",
                            "eqTract",
                            "eqGrid"};
    const char* lines[] = {"hzHighwaySegment", "hzRailwaySegment", "hzLightRailSegment",
                           "hzlevees",         "hztract",          "Study Region Boundary",
                           "Region Boundary",  "RegionSelection",  "Marplot foot print",
                           "Flood view print"};
    for (const char* name : points) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(read(name, true, walker).empty());
    }
    for (const char* name : lines) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(read(name, false, walker).empty());
    }
    EXPECT_EQ(walker.types,
              (std::set<std::string>{"Character Marker Symbol", "Simple Marker Symbol",
                                     "Cartographic Line Symbol", "Marker Line Symbol",
                                     "Hash Line Symbol"}));
    EXPECT_TRUE(walker.dashed);
    EXPECT_TRUE(walker.solid);
    EXPECT_EQ(namesInFile().size(), std::size(points) + std::size(lines))
        << "a default symbol is not checked above";
}

TEST_F(SymbolCatalogFile, MarkerAndHashLinesAnswerForTheirPartsUnderTheirOwnIndex)
{
    ASSERT_EQ(m_catalog->OpenSymbol("hzRailwaySegment"), 2);
    std::string colour, type, cap, join;
    double width, mark, gap, interval, angle, extra;
    m_catalog->GetHashLineLayer(2, colour, width, type, mark, gap, interval, angle);
    EXPECT_EQ(type, "Cartographic Line Symbol");
    EXPECT_EQ(width, 6);
    EXPECT_EQ(angle, 90);
    EXPECT_NE(gap, 0.0);
    m_catalog->GetCartographicLineLayer(2, colour, width, cap, join, mark, gap, interval, extra);
    EXPECT_EQ(width, 1) << "the hash line's own line, not the hash layer";
    EXPECT_EQ(gap, 0.0);

    ASSERT_EQ(m_catalog->OpenSymbol("hzLevees"), 2);
    std::string markerType, font;
    m_catalog->GetMarkerLineLayer(2, colour, width, cap, join, markerType, mark, gap, interval,
                                  extra);
    EXPECT_EQ(markerType, "Character Marker Symbol");
    EXPECT_EQ(cap, "Round");
    double size;
    int32_t character;
    m_catalog->GetCharacterMarkerLayer(2, colour, font, size, angle, character);
    EXPECT_EQ(font, "ESRI Default Marker");
    EXPECT_EQ(colour, "115,076,000");
}

TEST_F(SymbolCatalogFile, ReadsNameTheFileSymbolAndLayer)
{
    const std::string file = (systemFolder() / "symbols.json").string();
    auto e = errorOf([&] { m_catalog->GetPointLayerType(1); });
    EXPECT_TRUE(mentions(e, "call OpenSymbol first")) << e.what();

    e = errorOf([&] { m_catalog->OpenSymbol("hzPipelines"); });
    EXPECT_EQ(e.number(), HostError::UnknownKey);
    EXPECT_TRUE(mentions(e, "\"hzPipelines\" is not in " + file)) << e.what();

    ASSERT_EQ(m_catalog->OpenSymbol("hzHighwaySegment"), 2);
    for (int16_t outside : {0, 3}) {
        e = errorOf([&] { m_catalog->GetLineLayerType(outside); });
        EXPECT_EQ(e.number(), HostError::UnknownKey);
        EXPECT_TRUE(mentions(e, "its layers are 1 to 2")) << e.what();
    }
    e = errorOf([&] { m_catalog->GetPointLayerType(1); });
    EXPECT_TRUE(mentions(e, "is a line symbol")) << e.what();
    std::string colour, cap, join, markerType;
    double width, mark, gap, interval, extra;
    e = errorOf([&] {
        m_catalog->GetMarkerLineLayer(1, colour, width, cap, join, markerType, mark, gap, interval,
                                      extra);
    });
    EXPECT_EQ(e.number(), HostError::UnknownKey);
    EXPECT_TRUE(mentions(e, "has no Marker Line Symbol at layer 1: that layer is a "
                            "Cartographic Line Symbol"))
        << e.what();

    // A failed open closes the symbol before: no read answers for the wrong symbol.
    EXPECT_THROW(m_catalog->OpenSymbol("nothing"), PlatformError);
    EXPECT_THROW(m_catalog->GetLineLayerType(1), PlatformError);

    fs::remove(file);
    e = errorOf([&] { m_catalog->OpenSymbol("hzHighwaySegment"); });
    EXPECT_EQ(e.number(), HostError::MissingFile);
    EXPECT_TRUE(mentions(e, file)) << e.what();
}

TEST_F(SymbolCatalogFile, EditingMistakesAreReportedWithSymbolAndLayer)
{
    struct Case {
        const char* layers;
        const char* complaint;
    };
    const Case cases[] = {
        {R"([{"type": "Cartographic Line Symbol", "color": "0,0,0", "width": 1}])",
         "layer 1, has the unknown key \"color\""},
        {R"([{"type": "Cartographic Line Symbol", "colour": "0,0", "width": 1}])",
         "a colour is \"red,green,blue\""},
        {R"([{"type": "Cartographic Line Symbol", "colour": "0,0,256", "width": 1}])",
         "components 0 to 255"},
        {R"([{"type": "Cartographic Line Symbol", "colour": "0,0,0", "width": 1,
              "cap": "round"}])",
         "it is one of Butt, Round, Square (case matters)"},
        {R"([{"type": "Simple Marker Symbol"},
             {"type": "Cartographic Line Symbol", "colour": "0,0,0", "width": 1}])",
         "layer 2, mixes point and line layers"},
        {R"([{"type": "Simple Line Symbol"}])", "unknown type \"Simple Line Symbol\""},
        {R"([5])", "layer 1, needs \"type\" as a text"},
        {R"([{"type": "Hash Line Symbol", "colour": "0,0,0", "width": 4}])",
         "needs a \"hash\" object"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.layers);
        writeCatalogue(std::string(R"({"symbols": [{"name": "Broken", "layers": )") + c.layers +
                       "}]}");
        const auto e = errorOf([&] { m_catalog->OpenSymbol("broken"); });
        EXPECT_EQ(e.number(), HostError::MalformedFile);
        EXPECT_TRUE(mentions(e, "symbol \"Broken\"")) << e.what();
        EXPECT_TRUE(mentions(e, c.complaint)) << e.what();
    }
    writeCatalogue(R"({"symbols": [{"name": "Twice", "layers": []},
                                   {"name": "TWICE", "layers": []}]})");
    EXPECT_TRUE(mentions(errorOf([&] { m_catalog->OpenSymbol("twice"); }), "twice"));
    writeCatalogue("{\"symbols\": [");
    EXPECT_EQ(errorOf([&] { m_catalog->OpenSymbol("x"); }).number(), HostError::MalformedFile);
}

TEST_F(SymbolCatalogFile, OptionalValuesDefaultAndEmptySymbolsHaveNoLayers)
{
    writeCatalogue(R"({"symbols": [
        {"name": "Plain", "layers": [
            {"type": "Cartographic Line Symbol", "colour": " 10, 20 ,30 ", "width": 2},
            {"type": "Marker Line Symbol", "colour": "0,0,0", "width": 1}]},
        {"name": "Empty", "layers": []}]})");
    ASSERT_EQ(m_catalog->OpenSymbol("Plain"), 2);
    std::string colour, cap, join, markerType;
    double width, mark = -1, gap = -1, interval = -1, extra = -1;
    m_catalog->GetCartographicLineLayer(1, colour, width, cap, join, mark, gap, interval, extra);
    EXPECT_EQ(colour, " 10, 20 ,30 ");
    EXPECT_EQ(cap, "Butt");
    EXPECT_EQ(join, "Miter");
    EXPECT_EQ(mark + gap + interval + extra, 0.0);
    m_catalog->GetMarkerLineLayer(2, colour, width, cap, join, markerType, mark, gap, interval,
                                  extra);
    EXPECT_EQ(markerType, "Simple Marker Symbol");
    std::string font;
    double size, angle;
    int32_t character;
    EXPECT_THROW(m_catalog->GetCharacterMarkerLayer(2, colour, font, size, angle, character),
                 PlatformError);
    EXPECT_EQ(m_catalog->OpenSymbol("Empty"), 0);
}

TEST_F(SymbolCatalogFile, AddedSymbolsAreReadableAndKeepEarlierEntries)
{
    const std::size_t defaults = namesInFile().size();
    addSymbol(systemFolder(), "hzTollPlaza", 'P');
    addSymbol(systemFolder(), "hzPipelines", 'L');
    addSymbol(systemFolder(), "hzSchoolArea", 'A');
    // An existing name, in another case, keeps its entry.
    addSymbol(systemFolder(), "HZHIGHWAYBRIDGE", 'L');

    // The same catalogue object sees the added symbols: each open reads the file again.
    LayerWalker walker{*m_catalog};
    EXPECT_EQ(read("hzTollPlaza", true, walker).size(), 2u);
    EXPECT_EQ(read("hzPipelines", false, walker).size(), 1u);
    EXPECT_EQ(read("hzSchoolArea", false, walker).size(), 1u);
    EXPECT_EQ(read("hzHighwayBridge", true, walker).size(), 2u);
    EXPECT_EQ(namesInFile().size(), defaults + 3);

    // The colour follows from the name alone.
    test::TempDir other;
    writeDefaultSymbols(other.path());
    addSymbol(other.path(), "hzPipelines", 'L');
    EXPECT_EQ(entries(systemFolder())[defaults + 1], entries(other.path()).back());

    EXPECT_THROW(addSymbol(systemFolder(), "x", 'Q'), std::invalid_argument);
    fs::remove(systemFolder() / "symbols.json");
    EXPECT_EQ(errorOf([&] { addSymbol(systemFolder(), "x", 'P'); }).number(),
              HostError::MissingFile);
}

class Logo : public ::testing::Test {
protected:
    void SetUp() override
    {
        writeLogo(m_dir.path());
        std::ifstream in(m_dir.path() / "Eq" / "qelto.bmp", std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(in), {});
        ASSERT_GE(m_bytes.size(), 54u);
    }

    uint32_t field(std::size_t offset, int bytes) const
    {
        uint32_t value = 0;
        for (int i = bytes - 1; i >= 0; --i) {
            value = value << 8 | static_cast<uint8_t>(m_bytes[offset + i]);
        }
        return value;
    }

    /// Red, green, blue of pixel (x, y), y counted from the top.
    std::array<int, 3> pixel(int x, int y) const
    {
        const int width = static_cast<int>(field(18, 4));
        const int height = static_cast<int>(field(22, 4));
        const int stride = (width * 3 + 3) & ~3;
        const std::size_t at =
            field(10, 4) + static_cast<std::size_t>((height - 1 - y) * stride + x * 3);
        return {static_cast<uint8_t>(m_bytes[at + 2]), static_cast<uint8_t>(m_bytes[at + 1]),
                static_cast<uint8_t>(m_bytes[at])};
    }

    test::TempDir m_dir;
    std::string m_bytes;
};

TEST_F(Logo, IsAnUncompressedTwentyFourBitBitmapWithFrameTraceAndGround)
{
    EXPECT_EQ(m_bytes.substr(0, 2), "BM");
    EXPECT_EQ(field(2, 4), m_bytes.size());
    EXPECT_EQ(field(14, 4), 40u);
    EXPECT_EQ(field(18, 4), 160u);
    EXPECT_EQ(field(22, 4), 80u);
    EXPECT_EQ(field(28, 2), 24u);
    EXPECT_EQ(field(30, 4), 0u);
    EXPECT_EQ(m_bytes.size(), 54u + 160u * 3u * 80u);

    EXPECT_EQ(pixel(0, 0), (std::array<int, 3>{0, 38, 115}));
    EXPECT_EQ(pixel(159, 79), (std::array<int, 3>{0, 38, 115}));
    EXPECT_EQ(pixel(40, 70), (std::array<int, 3>{153, 102, 51}));
    int traced = 0;
    for (int y = 3; y < 62; ++y) {
        traced += pixel(80, y) == std::array<int, 3>{200, 0, 0};
    }
    EXPECT_GT(traced, 0) << "the seismic trace crosses the middle column";
    EXPECT_EQ(pixel(10, 10)[2], 255) << "sky above the trace";
}

} // namespace
} // namespace brevant::host::local
