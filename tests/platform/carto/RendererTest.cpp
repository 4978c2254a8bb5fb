#include "platform/carto/Renderer.h"

#include "platform/automation/PlatformError.h"
#include "platform/carto/SelectionSet.h"

#include <gtest/gtest.h>

namespace brevant::platform::carto {
namespace {

using automation::Variant;

SimpleFillSymbol fill(int red)
{
    return SimpleFillSymbol{SimpleFillStyle::Solid, {red, 0, 0}};
}

TEST(ClassBreaks, ValuesFallInTheClassOfTheirUpperBreak)
{
    ClassBreaksRenderer renderer;
    renderer.setField("pga");
    renderer.setBreakCount(3);
    renderer.setMinimumBreak(0.1);
    renderer.setBreak(0, 0.2);
    renderer.setBreak(1, 0.4);
    renderer.setBreak(2, 0.6);
    EXPECT_EQ(renderer.classIndex(0.15), 0);
    EXPECT_EQ(renderer.classIndex(0.2), 0);
    EXPECT_EQ(renderer.classIndex(0.2000001), 1);
    EXPECT_EQ(renderer.classIndex(0.6), 2);
    EXPECT_EQ(renderer.classIndex(0.61), -1);
    // Below the minimum break still draws in the first class.
    EXPECT_EQ(renderer.classIndex(0.0), 0);

    EXPECT_EQ(renderer.legendHeading(), "pga");
    renderer.setLegendHeading("");
    EXPECT_EQ(renderer.legendHeading(), "");

    try {
        renderer.setLabel(3, "beyond");
        FAIL() << "class 3 of 3 was written";
    } catch (const automation::PlatformError& error) {
        EXPECT_EQ(error.number(), 9);
    }
}

TEST(UniqueValues, NumbersMatchAsNumbersOnlyWhereTheyAreNumbers)
{
    UniqueValueRenderer renderer;
    renderer.setFieldCount(1);
    renderer.setField(0, "type");
    renderer.addValue("8", "", fill(8));
    renderer.addValue("B", "", fill(66));

    // Unset: a numeric value compares as a number, text as text.
    EXPECT_EQ(renderer.match(Variant(8.0)), 0);
    EXPECT_EQ(renderer.match(Variant(int16_t{8})), 0);
    EXPECT_EQ(renderer.match(Variant("8")), 0);
    EXPECT_EQ(renderer.match(Variant("08")), -1);
    EXPECT_EQ(renderer.match(Variant("B")), 1);
    EXPECT_EQ(renderer.match(Variant("b")), -1);
    EXPECT_EQ(renderer.match(Variant::null()), -1);

    renderer.setFieldType(ValueFieldType::Numeric);
    EXPECT_EQ(renderer.match(Variant("08")), 0);
    EXPECT_EQ(renderer.match(Variant("B")), -1);

    renderer.setFieldType(ValueFieldType::Text);
    EXPECT_EQ(renderer.match(Variant(8.0)), 0);
    EXPECT_EQ(renderer.match(Variant("08")), -1);
}

TEST(UniqueValues, UnlistedValuesAreDrawnOnlyWithADefaultSymbol)
{
    UniqueValueRenderer renderer;
    renderer.setFieldCount(1);
    renderer.setField(0, "type");
    renderer.addValue("A", "Soil", fill(1));
    EXPECT_EQ(renderer.label("A"), "A");
    renderer.setLabel("A", "Rock");
    EXPECT_EQ(renderer.label("A"), "Rock");
    EXPECT_EQ(renderer.heading("A"), "Soil");

    EXPECT_EQ(renderer.symbolFor(Variant("Z")), nullptr);
    renderer.setDefaultSymbol(fill(2));
    EXPECT_EQ(renderer.symbolFor(Variant("Z")), nullptr);
    renderer.setUseDefaultSymbol(true);
    ASSERT_NE(renderer.symbolFor(Variant("Z")), nullptr);
    EXPECT_EQ(mainColor(*renderer.symbolFor(Variant("Z"))).red, 2);
    EXPECT_EQ(mainColor(*renderer.symbolFor(Variant("A"))).red, 1);

    try {
        renderer.addValue("A", "", fill(3));
        FAIL() << "a value was listed twice";
    } catch (const automation::PlatformError& error) {
        EXPECT_EQ(error.number(), 457);
    }
}

TEST(Symbols, MultiLayerSymbolsKeepAddOrderAndSkipMissingLayers)
{
    MultiLayerMarkerSymbol marker;
    marker.addLayer(CharacterMarkerSymbol{"Marker font", 33, 12.0, 0.0, {}});
    marker.addLayer(SimpleMarkerSymbol{});
    EXPECT_TRUE(std::holds_alternative<CharacterMarkerSymbol>(marker.layers[0]));
    EXPECT_TRUE(std::holds_alternative<SimpleMarkerSymbol>(marker.layers[1]));

    MultiLayerLineSymbol line;
    line.addLayer(std::optional<LineLayer>());
    line.addLayer(SimpleLineSymbol{});
    EXPECT_EQ(line.layerCount(), 1);
    EXPECT_EQ(symbolKind(line), SymbolKind::Line);
    EXPECT_TRUE(asLineSymbol(line));
    EXPECT_FALSE(asLineSymbol(marker));
}

TEST(Selections, CombineByEveryMethod)
{
    const SelectionSet current({3, 1, 2, 2});
    const SelectionSet other({2, 3, 4});
    const auto combined = [&](SelectionResult how) {
        SelectionSet result = current;
        result.combine(other, how);
        return result.ids();
    };
    EXPECT_EQ(current.ids(), (std::vector<int64_t>{1, 2, 3}));
    EXPECT_EQ(combined(SelectionResult::New), (std::vector<int64_t>{2, 3, 4}));
    EXPECT_EQ(combined(SelectionResult::Add), (std::vector<int64_t>{1, 2, 3, 4}));
    EXPECT_EQ(combined(SelectionResult::Subtract), (std::vector<int64_t>{1}));
    EXPECT_EQ(combined(SelectionResult::And), (std::vector<int64_t>{2, 3}));
    EXPECT_EQ(combined(SelectionResult::Xor), (std::vector<int64_t>{1, 4}));
}

TEST(Colors, WindowsRgbValueHasRedInTheLowByte)
{
    const RgbColor color{190, 255, 232};
    EXPECT_EQ(color.rgb(), 190 | 255 << 8 | 232 << 16);
    EXPECT_EQ(RgbColor::fromRgb(color.rgb()), color);
}

} // namespace
} // namespace brevant::platform::carto
