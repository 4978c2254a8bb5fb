#include "host/HostServices.h"
#include "host/ThematicClassSettings.h"
#include "host/local/DefaultCatalogues.h"
#include "host/local/HostErrors.h"
#include "platform/automation/PlatformError.h"
#include "platform/automation/Variant.h"
#include "platform/automation/VariantArray.h"
#include "support/HostFixture.h"
#include "support/Raised.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace brevant::host::local {
namespace {

namespace fs = std::filesystem;
using platform::automation::PlatformError;
using platform::automation::Variant;
using platform::automation::VariantArray;
using platform::automation::VariantType;

using test::errorOf;
using test::mentions;

/// The first column of a list, after checking that it has the shape the thematic builder
/// reads: rows 0 to rows - 1, one column 0.
std::vector<Variant> column(const Variant& list, int32_t rows)
{
    const VariantArray& array = list.array();
    EXPECT_EQ(array.dimensions(), 2);
    EXPECT_EQ(array.lowerBound(1), 0);
    EXPECT_EQ(array.upperBound(1), rows - 1);
    EXPECT_EQ(array.lowerBound(2), 0);
    EXPECT_EQ(array.upperBound(2), 0);
    std::vector<Variant> out;
    for (int32_t i = 0; i < rows; ++i) {
        out.push_back(array.at(i, 0));
    }
    return out;
}

std::vector<std::string> texts(const std::vector<Variant>& items)
{
    std::vector<std::string> out;
    for (const auto& item : items) {
        out.push_back(item.toString());
    }
    return out;
}

class ClassSettingsFile : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        writeDefaultClassSettings(systemFolder());
        m_settings = hostServices().createThematicClassSettings();
    }

    fs::path systemFolder() const { return root() / "System"; }

    void writeSettings(const std::string& text) const
    {
        std::ofstream(systemFolder() / "classes.json", std::ios::trunc) << text;
    }

    std::shared_ptr<ThematicClassSettings> m_settings;
};

TEST_F(ClassSettingsFile, ClassBreakTypesGiveOneRowPerClass)
{
    for (int16_t type : {2, 3, 4, 5, 8}) {
        SCOPED_TRACE(type);
        const int32_t count = m_settings->GetClassCount(type);
        ASSERT_GE(count, 1);
        m_settings->Prepare();
        EXPECT_FALSE(m_settings->GetClassTitle().empty());
        EXPECT_EQ(m_settings->GetSingleColour().find(','), 3u);
        for (const auto& colour : column(m_settings->GetClassColours(), count)) {
            EXPECT_EQ(colour.type(), VariantType::String);
        }
        EXPECT_DOUBLE_EQ(column(m_settings->GetBreakFractions(), count).back().toDouble(), 1.0);
    }
    // A confidence map has the classes below and above the confidence value.
    EXPECT_EQ(m_settings->GetClassCount(3), 2);
    // Type 4 is drawn with type 2's settings; its own differ so that a mix-up shows.
    EXPECT_NE(m_settings->GetClassCount(4), m_settings->GetClassCount(2));
}

TEST_F(ClassSettingsFile, UniqueValueTypesListTheCategoriesOfTheirDataMaps)
{
    struct Expected {
        int16_t type;
        const char* kind;
        std::vector<std::string> values;
    };
    const std::vector<std::string> levels = {"0-1 ft", "1-3 ft", "3-6 ft", "6-10 ft", "10+ ft"};
    const Expected maps[] = {
        {8, "C", {"A", "B", "C", "D", "E"}},
        {10, "N", {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}},
        {12, "N", {"0", "1", "2", "3", "4", "5"}},
        {14, "C", levels},
        {15, "C", levels},
        {16, "C", levels},
        {17, "C", levels},
    };
    std::set<std::string> titles;
    for (const auto& map : maps) {
        SCOPED_TRACE(map.type);
        const int32_t count = m_settings->GetValueCount(map.type);
        ASSERT_EQ(count, static_cast<int32_t>(map.values.size()));
        m_settings->Prepare();
        titles.insert(m_settings->GetValueTitle());
        EXPECT_EQ(m_settings->GetValueFieldKind(), map.kind);
        const auto values = column(m_settings->GetValues(), count);
        EXPECT_EQ(texts(values), map.values);
        for (const auto& value : values) {
            EXPECT_EQ(value.isNumeric(), std::string(map.kind) == "N");
        }
        for (const auto& label : texts(column(m_settings->GetValueLabels(), count))) {
            EXPECT_FALSE(label.empty());
        }
        EXPECT_EQ(column(m_settings->GetValueColours(), count).size(), values.size());
    }
    // The title names the layer, and a layer replaces one of the same name.
    EXPECT_EQ(titles.size(), std::size(maps));
    EXPECT_TRUE(titles.contains("Soil Type"));
}

/// Perceived lightness of a colour text "red,green,blue", 0 (black) to 255 (white).
double lightness(const std::string& colour)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    EXPECT_EQ(std::sscanf(colour.c_str(), "%d,%d,%d", &red, &green, &blue), 3) << colour;
    return 0.299 * red + 0.587 * green + 0.114 * blue;
}

TEST_F(ClassSettingsFile, DefaultColoursMakeReadableLegends)
{
    // Equal-interval ramps run from light to dark, so a higher class reads as more.
    for (int16_t type : {2, 4, 5, 8}) {
        SCOPED_TRACE(type);
        const int32_t count = m_settings->GetClassCount(type);
        EXPECT_GE(count, 4);
        m_settings->Prepare();
        const auto colours = texts(column(m_settings->GetClassColours(), count));
        for (std::size_t i = 1; i < colours.size(); ++i) {
            EXPECT_LT(lightness(colours[i]), lightness(colours[i - 1])) << colours[i];
        }
    }
    // Below and above the confidence value.
    m_settings->GetClassCount(3);
    const auto confidence = texts(column(m_settings->GetClassColours(), 2));
    EXPECT_NE(confidence[0], confidence[1]);

    // Categories are told apart by colour alone.
    for (int16_t type : {8, 10, 12, 14, 15, 16, 17}) {
        SCOPED_TRACE(type);
        const int32_t count = m_settings->GetValueCount(type);
        m_settings->Prepare();
        const auto colours = texts(column(m_settings->GetValueColours(), count));
        EXPECT_EQ(std::set<std::string>(colours.begin(), colours.end()).size(), colours.size());
    }
}

TEST_F(ClassSettingsFile, OperationsWithoutTypeAnswerForTheTypeLastGiven)
{
    auto e = errorOf([&] { m_settings->GetClassColours(); });
    EXPECT_EQ(e.number(), HostError::UnknownKey);
    EXPECT_TRUE(mentions(e, "GetClassColours")) << e.what();
    EXPECT_TRUE(mentions(e, "call GetClassCount or GetValueCount first")) << e.what();

    // Type 8 has both kinds of settings: the type last given decides, whichever call gave it.
    const int32_t soilClasses = m_settings->GetClassCount(8);
    const auto tractColours = texts(column(m_settings->GetClassColours(), soilClasses));
    m_settings->GetClassCount(2);
    m_settings->GetValueCount(8);
    EXPECT_EQ(texts(column(m_settings->GetClassColours(), soilClasses)), tractColours);
    m_settings->GetClassCount(2);
    e = errorOf([&] { m_settings->GetValueTitle(); });
    EXPECT_TRUE(mentions(e, "no unique-value settings for thematic map type 2 (it has "
                            "class-break settings only)"))
        << e.what();
    m_settings->GetValueCount(12);
    EXPECT_EQ(m_settings->GetValueTitle(), "Liquefaction Susceptibility");
    e = errorOf([&] { m_settings->GetSingleColour(); });
    EXPECT_TRUE(mentions(e, "no class-break settings for thematic map type 12")) << e.what();
    e = errorOf([&] { m_settings->GetClassCount(99); });
    EXPECT_EQ(e.number(), HostError::UnknownKey);
    EXPECT_TRUE(mentions(e, "thematic map type 99")) << e.what();
}

TEST_F(ClassSettingsFile, MissingAndMalformedFilesAreNamed)
{
    const std::string file = (systemFolder() / "classes.json").string();
    fs::remove(file);
    auto e = errorOf([&] { m_settings->GetClassCount(2); });
    EXPECT_EQ(e.number(), HostError::MissingFile);
    EXPECT_TRUE(mentions(e, file)) << e.what();

    const std::pair<const char*, const char*> cases[] = {
        {R"([{"type": 2, "classBreaks": {"title": "t", "singleColour": "1,2,3",
              "classes": [{"fraction": 0.6, "colour": "1,2,3"},
                          {"fraction": 0.5, "colour": "1,2,3"}]}}])",
         "map type 2 has class fractions that do not rise"},
        {R"([{"type": 7, "uniqueValues": {"title": "t", "fieldKind": "N",
              "values": [{"value": "A", "label": "a", "colour": "1,2,3"}]}}])",
         "map type 7 needs a number \"value\""},
        {R"([{"type": 7, "uniqueValues": {"title": "t", "fieldKind": "N",
              "values": [{"value": 1, "label": "a", "colour": "1,2,3"},
                         {"value": 1.0, "label": "b", "colour": "1,2,3"}]}}])",
         "lists the value 1 twice"},
        {R"([{"type": 7, "uniqueValues": {"title": "t", "fieldKind": "T",
              "values": [{"value": "A", "label": "a", "colour": "1,2,3"}]}}])",
         "field kind \"T\""},
        {R"([{"type": 7, "uniqueValues": {"title": "t", "fieldKind": "C",
              "values": [{"value": "A", "label": "a", "color": "1,2,3"}]}}])",
         "unknown key \"color\""},
        {R"([{"type": 2, "description": "first"}])", "needs \"classBreaks\", \"uniqueValues\""},
        {R"([{"type": 6, "uniqueValues": {"title": "t", "fieldKind": "C", "values": []}}])",
         "needs \"values\" as a list of at least one entry"},
        {R"([{"type": 7, "uniqueValues": {"title": "t", "fieldKind": "C", "values": [5]}}])",
         "map type 7 has an entry that is not a JSON object"},
        {R"([{"type": 2, "classBreaks": {"title": 5, "singleColour": "1,2,3",
              "classes": [{"fraction": 0.5, "colour": "1,2,3"}]}}])",
         "map type 2 needs \"title\" as a text"},
    };
    for (const auto& [types, complaint] : cases) {
        SCOPED_TRACE(types);
        writeSettings(std::string(R"({"mapTypes": )") + types + "}");
        auto fresh = hostServices().createThematicClassSettings();
        e = errorOf([&] { fresh->GetValueCount(7); });
        EXPECT_EQ(e.number(), HostError::MalformedFile);
        EXPECT_TRUE(mentions(e, file + ": ")) << e.what();
        EXPECT_TRUE(mentions(e, complaint)) << e.what();
    }
    writeSettings(R"({"mapTypes": [
        {"type": 2, "uniqueValues": {"title": "t", "fieldKind": "C",
          "values": [{"value": "A", "label": "a", "colour": "1,2,3"}]}},
        {"type": 2, "uniqueValues": {"title": "t", "fieldKind": "C",
          "values": [{"value": "A", "label": "a", "colour": "1,2,3"}]}}]})");
    auto fresh = hostServices().createThematicClassSettings();
    EXPECT_TRUE(mentions(errorOf([&] { fresh->GetValueCount(2); }), "map type 2 is listed twice"));
}

} // namespace
} // namespace brevant::host::local
