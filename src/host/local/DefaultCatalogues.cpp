#include "host/local/DefaultCatalogues.h"

#include "host/local/HostErrors.h"
#include "host/local/JsonFiles.h"
#include "host/local/LocalSymbolCatalog.h"
#include "host/local/LocalThematicClassSettings.h"
#include "platform/automation/CaseInsensitive.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <vector>

namespace brevant::host::local {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

namespace {

// Character markers name this font; where it is not installed the display draws a shape in
// its place, so the markers stay visible.
constexpr const char* kMarkerFont = "ESRI Default Marker";
constexpr const char* kWhite = "255,255,255";

std::string rgb(int red, int green, int blue)
{
    char text[16];
    std::snprintf(text, sizeof text, "%03d,%03d,%03d", red, green, blue);
    return text;
}

json characterMarker(const std::string& colour, double size, int character)
{
    return {{"type", "Character Marker Symbol"},
            {"colour", colour},
            {"font", kMarkerFont},
            {"size", size},
            {"angle", 0},
            {"character", character}};
}

json solidLine(const std::string& colour, double width, const char* cap = "Round",
               const char* join = "Round")
{
    return {{"type", "Cartographic Line Symbol"},
            {"colour", colour},
            {"width", width},
            {"cap", cap},
            {"join", join}};
}

json dashedLine(const std::string& colour, double width, double mark, double gap)
{
    json line = solidLine(colour, width, "Butt", "Miter");
    line["mark"] = mark;
    line["gap"] = gap;
    line["interval"] = 1;
    return line;
}

json symbol(const std::string& name, const std::string& description,
            const std::vector<json>& layers)
{
    json list = json::array();
    for (const json& layer : layers) {
        list.push_back(layer);
    }
    return {{"name", name}, {"description", description}, {"layers", std::move(list)}};
}

// Polygon layers are filled with one fixed fill; their entry is the outline, read only where
// a layer of that name holds lines.
std::string outlineNote(const std::string& what)
{
    return what + ". Polygons get the fixed fill; this outline is drawn where the layer holds "
                  "lines";
}

json defaultSymbols()
{
    const std::string black = rgb(0, 0, 0);
    const std::string leveeBrown = rgb(115, 76, 0);
    json symbols = json::array();

    // Facilities: a coloured marker on a white disc, so it stands out on any fill.
    struct Facility {
        const char* name;
        const char* description;
        std::string colour;
        int character;
    };
    const Facility facilities[] = {
        {"hzHighwayBridge", "Highway bridges", rgb(0, 92, 230), 34},
        {"hzDams", "Dams", rgb(0, 77, 168), 36},
        {"hzPotableWaterFlty", "Potable-water facilities", rgb(0, 112, 255), 38},
        {"hzElectricPowerFlty", "Electric-power facilities", rgb(255, 170, 0), 39},
        {"hzSchool", "Schools", rgb(56, 168, 0), 40},
        {"hzFireStation", "Fire stations", rgb(230, 0, 0), 41},
        {"hzPoliceStation", "Police stations", rgb(0, 38, 115), 42},
        {"hzCareFlty", "Medical care facilities", rgb(230, 0, 169), 43},
        {"hzUserDefinedFlty", "User-defined facilities", rgb(115, 115, 115), 44},
        {"eqAebm", "Engineered buildings", rgb(168, 0, 132), 37},
    };
    for (const auto& facility : facilities) {
        symbols.push_back(symbol(facility.name, facility.description,
                                 {characterMarker(kWhite, 14, 33),
                                  characterMarker(facility.colour, 10, facility.character)}));
    }
    symbols.push_back(symbol("hzHazmat", "Hazardous-material sites",
                             {json::object({{"type", "Simple Marker Symbol"}}),
                              characterMarker(rgb(230, 0, 0), 12, 35)}));
    symbols.push_back(
        symbol("eqTract", "Tract points", {characterMarker(rgb(110, 110, 110), 6, 33)}));
    symbols.push_back(
        symbol("eqGrid", "Grid points", {characterMarker(rgb(156, 156, 156), 4, 33)}));

    symbols.push_back(symbol("hzHighwaySegment", "Highway segments: grey casing, orange centre",
                             {solidLine(rgb(110, 110, 110), 3.5), solidLine(rgb(255, 170, 0), 2)}));
    json ties = {{"type", "Hash Line Symbol"},
                 {"colour", black},
                 {"width", 6},
                 {"angle", 90},
                 {"hash", solidLine(black, 1, "Butt", "Miter")},
                 {"mark", 1},
                 {"gap", 7},
                 {"interval", 1}};
    symbols.push_back(symbol("hzRailwaySegment", "Railway segments: rail with cross ties",
                             {solidLine(black, 1, "Butt", "Miter"), ties}));
    json embankment = {{"type", "Marker Line Symbol"},
                       {"colour", leveeBrown},
                       {"width", 1},
                       {"cap", "Round"},
                       {"join", "Round"},
                       {"marker", characterMarker(leveeBrown, 6, 35)},
                       {"mark", 1},
                       {"gap", 10},
                       {"interval", 1}};
    symbols.push_back(symbol("hzLevees", "Levees: embankment line with markers",
                             {solidLine(leveeBrown, 2), embankment}));
    symbols.push_back(
        symbol("hzLightRailSegment", "Light-rail segments: purple with white dashes",
               {solidLine(rgb(132, 0, 168), 2.5, "Butt", "Miter"), dashedLine(kWhite, 1, 4, 4)}));

    symbols.push_back(symbol("Study Region Boundary", outlineNote("Study-region boundary"),
                             {dashedLine(black, 2, 8, 3)}));
    symbols.push_back(symbol("Region Boundary",
                             outlineNote("Study-region boundary behind the selection map"),
                             {dashedLine(rgb(78, 78, 78), 1.5, 6, 3)}));
    symbols.push_back(symbol("RegionSelection", outlineNote("Units offered for selection"),
                             {solidLine(rgb(78, 78, 78), 0.8, "Butt", "Miter")}));
    symbols.push_back(symbol("hztract", outlineNote("Census tracts of the study region"),
                             {solidLine(rgb(156, 156, 156), 0.5, "Butt", "Miter")}));
    symbols.push_back(symbol("Marplot foot print", outlineNote("Plume footprints"),
                             {dashedLine(rgb(132, 0, 168), 1.5, 4, 2)}));
    symbols.push_back(symbol("Flood view print", outlineNote("Flood-view output"),
                             {solidLine(rgb(0, 112, 255), 1.5)}));
    return {{"format", 1}, {"symbols", std::move(symbols)}};
}

json classBreaks(const std::string& title, const std::string& singleColour,
                 const std::vector<std::string>& colours)
{
    json classes = json::array();
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const double fraction = static_cast<double>(i + 1) / static_cast<double>(colours.size());
        classes.push_back({{"fraction", std::round(fraction * 1e6) / 1e6}, {"colour", colours[i]}});
    }
    return {{"title", title}, {"singleColour", singleColour}, {"classes", std::move(classes)}};
}

struct Value {
    json value;
    std::string label;
    std::string colour;
};

json uniqueValues(const std::string& title, const char* fieldKind, const std::vector<Value>& values)
{
    json list = json::array();
    for (const auto& value : values) {
        list.push_back({{"value", value.value}, {"label", value.label}, {"colour", value.colour}});
    }
    return {{"title", title}, {"fieldKind", fieldKind}, {"values", std::move(list)}};
}

json inundation(int type, const std::string& title)
{
    return {{"type", type},
            {"description", title + " areas by depth of water"},
            {"uniqueValues", uniqueValues(title, "C",
                                          {{"0-1 ft", "Less than 1 ft", rgb(198, 219, 239)},
                                           {"1-3 ft", "1 to 3 ft", rgb(158, 202, 225)},
                                           {"3-6 ft", "3 to 6 ft", rgb(107, 174, 214)},
                                           {"6-10 ft", "6 to 10 ft", rgb(49, 130, 189)},
                                           {"10+ ft", "More than 10 ft", rgb(8, 81, 156)}})}};
}

json defaultClassSettings()
{
    const std::vector<std::string> yellowToRed = {rgb(255, 255, 178), rgb(254, 204, 92),
                                                  rgb(253, 141, 60), rgb(240, 59, 32),
                                                  rgb(189, 0, 38)};
    json types = json::array();
    types.push_back(
        {{"type", 2},
         {"description", "Equal intervals: results, water depth, shake maps"},
         {"classBreaks", classBreaks("Equal Interval", rgb(255, 255, 190), yellowToRed)}});
    types.push_back({{"type", 3},
                     {"description", "Below and above a confidence value"},
                     {"classBreaks", classBreaks("Confidence", rgb(255, 255, 190),
                                                 {rgb(204, 204, 204), rgb(230, 0, 0)})}});
    // Type 4 is classified with type 2's settings; its own differ so that a mix-up shows.
    types.push_back({{"type", 4},
                     {"description", "Equal intervals, as type 2"},
                     {"classBreaks", classBreaks("Equal Interval", rgb(240, 249, 232),
                                                 {rgb(186, 228, 188), rgb(123, 204, 196),
                                                  rgb(67, 162, 202), rgb(8, 104, 172)})}});
    types.push_back(
        {{"type", 5},
         {"description", "Ground-motion contours"},
         {"classBreaks",
          classBreaks("Contours", rgb(255, 255, 204),
                      {rgb(255, 255, 204), rgb(255, 237, 160), rgb(254, 217, 118),
                       rgb(254, 178, 76), rgb(253, 141, 60), rgb(252, 78, 42), rgb(227, 26, 28),
                       rgb(189, 0, 38), rgb(128, 0, 38), rgb(84, 0, 60)})}});
    types.push_back(
        {{"type", 8},
         {"description", "Soil (site) class; as class breaks, tract results"},
         {"classBreaks", classBreaks("Tract Results", rgb(242, 240, 247),
                                     {rgb(242, 240, 247), rgb(203, 201, 226), rgb(158, 154, 200),
                                      rgb(117, 107, 177), rgb(84, 39, 143)})},
         {"uniqueValues",
          uniqueValues("Soil Type", "C",
                       {{"A", "A - Hard rock", rgb(56, 168, 0)},
                        {"B", "B - Rock", rgb(152, 230, 0)},
                        {"C", "C - Very dense soil and soft rock", rgb(255, 255, 0)},
                        {"D", "D - Stiff soil", rgb(255, 170, 0)},
                        {"E", "E - Soft soil", rgb(255, 0, 0)}})}});

    const std::vector<std::string> landslideColours = {
        rgb(255, 255, 212), rgb(254, 240, 180), rgb(254, 227, 145), rgb(254, 204, 92),
        rgb(254, 178, 76),  rgb(253, 141, 60),  rgb(236, 112, 20),  rgb(204, 76, 2),
        rgb(153, 52, 4),    rgb(102, 37, 6)};
    const char* roman[] = {"I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX", "X"};
    std::vector<Value> landslide = {{0, "0 - None", rgb(225, 225, 225)}};
    for (int category = 1; category <= 10; ++category) {
        landslide.push_back({category,
                             std::to_string(category) + " - Category " + roman[category - 1],
                             landslideColours[category - 1]});
    }
    types.push_back({{"type", 10},
                     {"description", "Landslide susceptibility category, 0 to 10"},
                     {"uniqueValues", uniqueValues("Landslide Susceptibility", "N", landslide)}});
    types.push_back({{"type", 12},
                     {"description", "Liquefaction susceptibility category, 0 to 5"},
                     {"uniqueValues", uniqueValues("Liquefaction Susceptibility", "N",
                                                   {{0, "0 - None", rgb(225, 225, 225)},
                                                    {1, "1 - Very low", rgb(255, 255, 190)},
                                                    {2, "2 - Low", rgb(255, 211, 127)},
                                                    {3, "3 - Moderate", rgb(255, 170, 0)},
                                                    {4, "4 - High", rgb(230, 76, 0)},
                                                    {5, "5 - Very high", rgb(168, 0, 0)}})}});
    types.push_back(inundation(14, "Dam Failure Inundation"));
    types.push_back(inundation(15, "Tsunami Inundation"));
    types.push_back(inundation(16, "Seiche Inundation"));
    types.push_back(inundation(17, "Levee Failure Inundation"));
    return {{"format", 1}, {"mapTypes", std::move(types)}};
}

// Write beside and rename, so a failed write never leaves a half file behind.
void writeFile(const fs::path& file, const std::string& content)
{
    std::error_code ec;
    fs::create_directories(file.parent_path(), ec);
    const fs::path temporary = file.string() + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << content;
        if (!out) {
            hostError(HostError::MissingFile, "cannot write " + temporary.string());
        }
    }
    fs::rename(temporary, file, ec);
    if (ec) {
        hostError(HostError::MissingFile, "cannot write " + file.string() + ": " + ec.message());
    }
}

// Whole numbers are written without a decimal point ("size": 14, not 14.0): the files are
// meant to be read and edited by people.
void tidyNumbers(json& value)
{
    if (value.is_structured()) {
        for (auto& item : value) {
            tidyNumbers(item);
        }
    } else if (value.is_number_float() && std::trunc(value.get<double>()) == value.get<double>() &&
               std::abs(value.get<double>()) < 1e15) {
        value = static_cast<int64_t>(value.get<double>());
    }
}

void writeJson(const fs::path& file, json doc)
{
    tidyNumbers(doc);
    writeFile(file, doc.dump(2) + "\n");
}

/// A small canvas of 24-bit colours, row 0 at the top.
class Canvas {
public:
    struct Colour {
        uint8_t red, green, blue;
    };

    Canvas(int width, int height) : m_width(width), m_height(height), m_pixels(width * height) {}

    void set(int x, int y, Colour colour)
    {
        if (x >= 0 && x < m_width && y >= 0 && y < m_height) {
            m_pixels[static_cast<std::size_t>(y * m_width + x)] = colour;
        }
    }

    void fill(int x0, int y0, int x1, int y1, Colour colour)
    {
        for (int y = y0; y < y1; ++y) {
            for (int x = x0; x < x1; ++x) {
                set(x, y, colour);
            }
        }
    }

    /// The canvas as a bottom-up, uncompressed 24-bit bitmap file.
    std::string bitmap() const
    {
        const int stride = (m_width * 3 + 3) & ~3;
        const uint32_t imageSize = static_cast<uint32_t>(stride * m_height);
        std::string out;
        auto put = [&out](uint32_t value, int bytes) {
            for (int i = 0; i < bytes; ++i) {
                out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
            }
        };
        out += "BM";
        put(54 + imageSize, 4);
        put(0, 4);
        put(54, 4);
        put(40, 4);
        put(static_cast<uint32_t>(m_width), 4);
        put(static_cast<uint32_t>(m_height), 4);
        put(1, 2);
        put(24, 2);
        put(0, 4);
        put(imageSize, 4);
        put(2835, 4); // 72 dots per inch
        put(2835, 4);
        put(0, 4);
        put(0, 4);
        for (int y = m_height - 1; y >= 0; --y) {
            for (int x = 0; x < m_width; ++x) {
                const Colour& c = m_pixels[static_cast<std::size_t>(y * m_width + x)];
                out.push_back(static_cast<char>(c.blue));
                out.push_back(static_cast<char>(c.green));
                out.push_back(static_cast<char>(c.red));
            }
            out.append(static_cast<std::size_t>(stride - m_width * 3), '\0');
        }
        return out;
    }

private:
    int m_width;
    int m_height;
    std::vector<Colour> m_pixels;
};

/// A seismogram over the ground in a navy frame.
std::string logoBitmap()
{
    constexpr int width = 160;
    constexpr int height = 80;
    constexpr Canvas::Colour navy{0, 38, 115};
    constexpr Canvas::Colour grass{56, 168, 0};
    constexpr Canvas::Colour soil{153, 102, 51};
    constexpr Canvas::Colour trace{200, 0, 0};
    Canvas canvas(width, height);
    for (int y = 0; y < height; ++y) {
        const auto shade = static_cast<uint8_t>(235 + 20 * y / height);
        canvas.fill(0, y, width, y + 1,
                    {shade, static_cast<uint8_t>(shade + (255 - shade) / 2), 255});
    }
    canvas.fill(0, 62, width, 65, grass);
    canvas.fill(0, 65, width, height, soil);

    // A burst that grows and dies away around the middle, drawn as joined vertical runs so
    // steep stretches stay unbroken.
    auto level = [](int x) {
        const double t = (x - 80) / 26.0;
        return 36.0 - 22.0 * std::exp(-t * t) * std::sin(x * 0.7);
    };
    for (int x = 6; x < width - 6; ++x) {
        const int a = static_cast<int>(std::lround(level(x)));
        const int b = static_cast<int>(std::lround(level(x + 1)));
        for (int y = std::min(a, b); y <= std::max(a, b); ++y) {
            canvas.set(x, y, trace);
            canvas.set(x, y + 1, trace);
        }
    }
    canvas.fill(0, 0, width, 3, navy);
    canvas.fill(0, height - 3, width, height, navy);
    canvas.fill(0, 0, 3, height, navy);
    canvas.fill(width - 3, 0, width, height, navy);
    return canvas.bitmap();
}

json readSymbols(const fs::path& file)
{
    json doc = readJsonFile(file, "the host has no symbol catalogue");
    if (!doc.is_object() || !doc.contains("symbols") || !doc.at("symbols").is_array()) {
        hostError(HostError::MalformedFile,
                  file.string() + " must hold an object with a \"symbols\" array");
    }
    return doc;
}

/// FNV-1a of the lower-case name: the same colour for a class in every run and on every
/// platform, which std::hash does not promise.
uint32_t stableHash(const std::string& name)
{
    uint32_t hash = 2166136261u;
    for (const char c : platform::automation::toLower(name)) {
        hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    }
    return hash;
}

} // namespace

void writeDefaultSymbols(const fs::path& systemFolder)
{
    writeJson(LocalSymbolCatalog::catalogueFile(systemFolder), defaultSymbols());
}

void writeDefaultClassSettings(const fs::path& systemFolder)
{
    writeJson(LocalThematicClassSettings::settingsFile(systemFolder), defaultClassSettings());
}

void writeLogo(const fs::path& systemFolder)
{
    writeFile(systemFolder / "Eq" / "qelto.bmp", logoBitmap());
}

void addSymbol(const fs::path& systemFolder, const std::string& name, char kind)
{
    if (name.empty()) {
        throw std::invalid_argument("a symbol needs a name");
    }
    if (kind != 'P' && kind != 'L' && kind != 'A') {
        throw std::invalid_argument(std::string("symbol kind '") + kind + "' of \"" + name +
                                    "\" is not P (point), L (line) or A (polygon)");
    }
    const fs::path file = LocalSymbolCatalog::catalogueFile(systemFolder);
    json doc = readSymbols(file);
    for (const json& entry : doc.at("symbols")) {
        if (entry.is_object() && entry.contains("name") && entry.at("name").is_string() &&
            platform::automation::equalsIgnoreCase(entry.at("name").get<std::string>(), name)) {
            return;
        }
    }
    // Strong, distinct colours that read on a light map.
    static const std::array<std::string, 10> palette = {
        rgb(230, 0, 0),   rgb(0, 92, 230), rgb(56, 168, 0), rgb(168, 0, 132), rgb(255, 127, 0),
        rgb(0, 168, 132), rgb(115, 76, 0), rgb(76, 0, 115), rgb(204, 153, 0), rgb(0, 38, 115)};
    const std::string& colour = palette[stableHash(name) % palette.size()];
    std::vector<json> layers;
    if (kind == 'P') {
        layers = {characterMarker(kWhite, 12, 33), characterMarker(colour, 8, 33)};
    } else if (kind == 'L') {
        layers = {solidLine(colour, 1.5)};
    } else {
        layers = {solidLine(colour, 1, "Butt", "Miter")};
    }
    const char* what = kind == 'P' ? "Point layer" : kind == 'L' ? "Line layer" : nullptr;
    doc.at("symbols").push_back(symbol(name, what ? what : outlineNote("Polygon layer"), layers));
    writeJson(file, doc);
}

} // namespace brevant::host::local
