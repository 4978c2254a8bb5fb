#include "host/local/LocalSymbolCatalog.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/JsonEntryReader.h"
#include "host/local/JsonFiles.h"
#include "platform/automation/CaseInsensitive.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace brevant::host::local {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

namespace {

constexpr std::string_view kCharacterMarker = "Character Marker Symbol";
constexpr std::string_view kSimpleMarker = "Simple Marker Symbol";
constexpr std::string_view kCartographicLine = "Cartographic Line Symbol";
constexpr std::string_view kMarkerLine = "Marker Line Symbol";
constexpr std::string_view kHashLine = "Hash Line Symbol";

struct CharacterMarker {
    std::string colour;
    std::string font;
    double size = 0;
    double angle = 0;
    int32_t character = 0;
};

struct SimpleMarker {};

struct CartographicLine {
    std::string colour;
    double width = 0;
    std::string cap;
    std::string join;
    double mark = 0;
    double gap = 0;
    double interval = 0;
    double extra = 0;
};

struct MarkerLine {
    std::string colour;
    double width = 0;
    std::string cap;
    std::string join;
    std::optional<CharacterMarker> marker; // none: a simple marker
    double mark = 0;
    double gap = 0;
    double interval = 0;
    double extra = 0;
};

struct HashLine {
    std::string colour;
    double width = 0;
    double angle = 0;
    std::variant<CartographicLine, MarkerLine> hash;
    double mark = 0;
    double gap = 0;
    double interval = 0;
};

using Layer = std::variant<CharacterMarker, SimpleMarker, CartographicLine, MarkerLine, HashLine>;

std::string_view typeName(const Layer& layer)
{
    constexpr std::string_view names[] = {kCharacterMarker, kSimpleMarker, kCartographicLine,
                                          kMarkerLine, kHashLine};
    return names[layer.index()];
}

bool isPointLayer(const Layer& layer)
{
    return std::holds_alternative<CharacterMarker>(layer) ||
           std::holds_alternative<SimpleMarker>(layer);
}

/// Reads one symbol entry, naming file, symbol and layer in every complaint.
class SymbolParser : public JsonEntryReader {
public:
    SymbolParser(const fs::path& file, std::string symbol)
        : m_file(file), m_symbol(std::move(symbol))
    {
    }

    std::vector<Layer> layers(const json& entry)
    {
        checkKeys(entry, {"name", "description", "layers"});
        const auto found = entry.find("layers");
        if (found == entry.end() || !found->is_array()) {
            fail("needs a \"layers\" array");
        }
        std::vector<Layer> out;
        for (const json& item : *found) {
            m_where = "layer " + std::to_string(out.size() + 1);
            out.push_back(layer(item));
            if (out.size() > 1 && isPointLayer(out.front()) != isPointLayer(out.back())) {
                fail("mixes point and line layers; a symbol is either a point or a line symbol");
            }
        }
        return out;
    }

private:
    Layer layer(const json& item)
    {
        const std::string type = text(item, "type");
        if (type == kCharacterMarker) {
            return characterMarker(item);
        }
        if (type == kSimpleMarker) {
            checkKeys(item, {"type", "description"});
            return SimpleMarker{};
        }
        if (type == kCartographicLine) {
            return cartographicLine(item);
        }
        if (type == kMarkerLine) {
            return markerLine(item);
        }
        if (type == kHashLine) {
            return hashLine(item);
        }
        fail("has the unknown type \"" + type + "\"; the types are \"" +
             std::string(kCharacterMarker) + "\", \"" + std::string(kSimpleMarker) + "\", \"" +
             std::string(kCartographicLine) + "\", \"" + std::string(kMarkerLine) + "\" and \"" +
             std::string(kHashLine) + "\"");
    }

    CharacterMarker characterMarker(const json& item)
    {
        checkKeys(item, {"type", "description", "colour", "font", "size", "angle", "character"});
        CharacterMarker out;
        out.colour = colour(item, "colour");
        out.font = text(item, "font");
        out.size = number(item, "size");
        out.angle = number(item, "angle", 0.0);
        out.character = integer(item, "character");
        return out;
    }

    CartographicLine cartographicLine(const json& item)
    {
        checkKeys(item, {"type", "description", "colour", "width", "cap", "join", "mark", "gap",
                         "interval", "extra"});
        CartographicLine out;
        out.colour = colour(item, "colour");
        out.width = number(item, "width");
        out.cap = choice(item, "cap", {"Butt", "Round", "Square"});
        out.join = choice(item, "join", {"Miter", "Round", "Bevel"});
        out.mark = number(item, "mark", 0.0);
        out.gap = number(item, "gap", 0.0);
        out.interval = number(item, "interval", 0.0);
        out.extra = number(item, "extra", 0.0);
        return out;
    }

    MarkerLine markerLine(const json& item)
    {
        checkKeys(item, {"type", "description", "colour", "width", "cap", "join", "marker", "mark",
                         "gap", "interval", "extra"});
        MarkerLine out;
        out.colour = colour(item, "colour");
        out.width = number(item, "width");
        out.cap = choice(item, "cap", {"Butt", "Round", "Square"});
        out.join = choice(item, "join", {"Miter", "Round", "Bevel"});
        if (item.contains("marker")) {
            const json& marker = item.at("marker");
            const std::string type = text(marker, "type");
            if (type == kCharacterMarker) {
                out.marker = characterMarker(marker);
            } else if (type == kSimpleMarker) {
                checkKeys(marker, {"type", "description"});
            } else {
                fail("has a marker of type \"" + type + "\"; a marker is a \"" +
                     std::string(kCharacterMarker) + "\" or a \"" + std::string(kSimpleMarker) +
                     "\"");
            }
        }
        out.mark = number(item, "mark", 0.0);
        out.gap = number(item, "gap", 0.0);
        out.interval = number(item, "interval", 0.0);
        out.extra = number(item, "extra", 0.0);
        return out;
    }

    HashLine hashLine(const json& item)
    {
        checkKeys(item, {"type", "description", "colour", "width", "angle", "hash", "mark", "gap",
                         "interval"});
        HashLine out;
        out.colour = colour(item, "colour");
        out.width = number(item, "width");
        out.angle = number(item, "angle", 0.0);
        if (!item.contains("hash") || !item.at("hash").is_object()) {
            fail("needs a \"hash\" object: the line its hashes are drawn with");
        }
        const json& hash = item.at("hash");
        const std::string type = text(hash, "type");
        if (type == kCartographicLine) {
            out.hash = cartographicLine(hash);
        } else if (type == kMarkerLine) {
            out.hash = markerLine(hash);
        } else {
            fail("has hashes of type \"" + type + "\"; hashes are a \"" +
                 std::string(kCartographicLine) + "\" or a \"" + std::string(kMarkerLine) + "\"");
        }
        out.mark = number(item, "mark", 0.0);
        out.gap = number(item, "gap", 0.0);
        out.interval = number(item, "interval", 0.0);
        return out;
    }

    double number(const json& item, const char* key, std::optional<double> fallback = {})
    {
        const auto found = item.find(key);
        if (found == item.end() && fallback) {
            return *fallback;
        }
        if (found == item.end() || !found->is_number()) {
            fail(std::string("needs \"") + key + "\" as a number");
        }
        return found->get<double>();
    }

    int32_t integer(const json& item, const char* key)
    {
        const auto found = item.find(key);
        if (found == item.end() || !found->is_number_integer() || found->get<int64_t>() < 0 ||
            found->get<int64_t>() > INT32_MAX) {
            fail(std::string("needs \"") + key + "\" as a whole number of 0 or more");
        }
        return found->get<int32_t>();
    }

    std::string colour(const json& item, const char* key)
    {
        const std::string value = text(item, key);
        if (!isColourText(value)) {
            fail(std::string("has \"") + key + "\" \"" + value +
                 "\"; a colour is \"red,green,blue\" with components 0 to 255");
        }
        return value;
    }

    std::string choice(const json& item, const char* key,
                       std::initializer_list<std::string_view> names)
    {
        if (!item.contains(key)) {
            return std::string(*names.begin());
        }
        const std::string value = text(item, key);
        if (std::find(names.begin(), names.end(), value) == names.end()) {
            std::string list;
            for (const auto name : names) {
                list += (list.empty() ? "" : ", ") + std::string(name);
            }
            fail(std::string("has \"") + key + "\" \"" + value + "\"; it is one of " + list +
                 " (case matters)");
        }
        return value;
    }

    [[noreturn]] void fail(const std::string& what) const override
    {
        std::string subject = "symbol \"" + m_symbol + "\"";
        if (!m_where.empty()) {
            subject += ", " + m_where + ",";
        }
        hostError(HostError::MalformedFile, m_file.string() + ": " + subject + " " + what);
    }

    const fs::path& m_file;
    std::string m_symbol;
    std::string m_where;
};

json readCatalogue(const fs::path& file)
{
    json doc = readJsonFile(file, "the host has no symbol catalogue");
    if (!doc.is_object() || !doc.contains("symbols") || !doc.at("symbols").is_array()) {
        hostError(HostError::MalformedFile,
                  file.string() + " must hold an object with a \"symbols\" array");
    }
    return doc;
}

} // namespace

struct LocalSymbolCatalog::Symbol {
    fs::path file;
    std::string name;
    std::vector<Layer> layers;

    [[noreturn]] void fail(const std::string& what) const
    {
        hostError(HostError::UnknownKey,
                  "symbol \"" + name + "\" in " + file.string() + " " + what);
    }

    const Layer& at(int16_t index) const
    {
        if (index < 1 || static_cast<std::size_t>(index) > layers.size()) {
            fail("has no layer " + std::to_string(index) +
                 (layers.empty() ? std::string(": it has no layers")
                                 : ": its layers are 1 to " + std::to_string(layers.size())));
        }
        return layers[static_cast<std::size_t>(index - 1)];
    }

    [[noreturn]] void wrongType(int16_t index, std::string_view wanted) const
    {
        fail("has no " + std::string(wanted) + " at layer " + std::to_string(index) +
             ": that layer is a " + std::string(typeName(at(index))));
    }
};

LocalSymbolCatalog::LocalSymbolCatalog(fs::path root) : m_root(std::move(root))
{
}

LocalSymbolCatalog::~LocalSymbolCatalog() = default;

fs::path LocalSymbolCatalog::catalogueFile(const fs::path& systemFolder)
{
    return systemFolder / "symbols.json";
}

int32_t LocalSymbolCatalog::OpenSymbol(const std::string& symbolName)
{
    // The previous symbol stays closed after a failed open, so no read answers for a symbol
    // other than the one asked for.
    m_symbol.reset();
    const fs::path file = catalogueFile(HostRoot::load(m_root).systemDataFolder());
    const json doc = readCatalogue(file);
    const json* match = nullptr;
    for (const json& entry : doc.at("symbols")) {
        if (!entry.is_object() || !entry.contains("name") || !entry.at("name").is_string()) {
            hostError(HostError::MalformedFile,
                      file.string() + ": every symbol needs a \"name\" text");
        }
        if (!platform::automation::equalsIgnoreCase(entry.at("name").get<std::string>(),
                                                    symbolName)) {
            continue;
        }
        if (match) {
            hostError(HostError::MalformedFile, file.string() + " holds the symbol \"" +
                                                    symbolName + "\" twice (names ignore case)");
        }
        match = &entry;
    }
    if (!match) {
        hostError(HostError::UnknownKey,
                  "the symbol \"" + symbolName + "\" is not in " + file.string());
    }
    const std::string name = match->at("name").get<std::string>();
    auto symbol = std::make_unique<Symbol>();
    symbol->file = file;
    symbol->name = name;
    symbol->layers = SymbolParser(file, name).layers(*match);
    m_symbol = std::move(symbol);
    return static_cast<int32_t>(m_symbol->layers.size());
}

const LocalSymbolCatalog::Symbol& LocalSymbolCatalog::openSymbol(const char* operation) const
{
    if (!m_symbol) {
        hostError(HostError::UnknownKey, std::string("SymbolCatalog.") + operation +
                                             " reads the open symbol, and no symbol is open: "
                                             "call OpenSymbol first");
    }
    return *m_symbol;
}

std::string LocalSymbolCatalog::GetLineLayerType(int16_t layerIndex)
{
    const Symbol& symbol = openSymbol("GetLineLayerType");
    const Layer& layer = symbol.at(layerIndex);
    if (isPointLayer(layer)) {
        symbol.fail("is a point symbol; its layer " + std::to_string(layerIndex) + " is a " +
                    std::string(typeName(layer)) + ", not a line layer");
    }
    return std::string(typeName(layer));
}

std::string LocalSymbolCatalog::GetPointLayerType(int16_t layerIndex)
{
    const Symbol& symbol = openSymbol("GetPointLayerType");
    const Layer& layer = symbol.at(layerIndex);
    if (!isPointLayer(layer)) {
        symbol.fail("is a line symbol; its layer " + std::to_string(layerIndex) + " is a " +
                    std::string(typeName(layer)) + ", not a point layer");
    }
    return std::string(typeName(layer));
}

namespace {

// A marker line answers for its marker and a hash line for its hash line, because the symbol
// builder reads the parts of a layer under the layer's own index.
const MarkerLine* markerLineIn(const Layer& layer)
{
    if (const auto* line = std::get_if<MarkerLine>(&layer)) {
        return line;
    }
    if (const auto* hash = std::get_if<HashLine>(&layer)) {
        return std::get_if<MarkerLine>(&hash->hash);
    }
    return nullptr;
}

const CharacterMarker* characterMarkerIn(const Layer& layer)
{
    if (const auto* marker = std::get_if<CharacterMarker>(&layer)) {
        return marker;
    }
    const MarkerLine* line = markerLineIn(layer);
    return line && line->marker ? &*line->marker : nullptr;
}

const CartographicLine* cartographicLineIn(const Layer& layer)
{
    if (const auto* line = std::get_if<CartographicLine>(&layer)) {
        return line;
    }
    if (const auto* hash = std::get_if<HashLine>(&layer)) {
        return std::get_if<CartographicLine>(&hash->hash);
    }
    return nullptr;
}

} // namespace

void LocalSymbolCatalog::GetCharacterMarkerLayer(int16_t layerIndex, std::string& colour,
                                                 std::string& fontName, double& size, double& angle,
                                                 int32_t& characterIndex)
{
    const Symbol& symbol = openSymbol("GetCharacterMarkerLayer");
    const CharacterMarker* marker = characterMarkerIn(symbol.at(layerIndex));
    if (!marker) {
        symbol.wrongType(layerIndex, kCharacterMarker);
    }
    colour = marker->colour;
    fontName = marker->font;
    size = marker->size;
    angle = marker->angle;
    characterIndex = marker->character;
}

void LocalSymbolCatalog::GetCartographicLineLayer(int16_t layerIndex, std::string& colour,
                                                  double& width, std::string& capName,
                                                  std::string& joinName, double& mark, double& gap,
                                                  double& interval, double& extra)
{
    const Symbol& symbol = openSymbol("GetCartographicLineLayer");
    const CartographicLine* line = cartographicLineIn(symbol.at(layerIndex));
    if (!line) {
        symbol.wrongType(layerIndex, kCartographicLine);
    }
    colour = line->colour;
    width = line->width;
    capName = line->cap;
    joinName = line->join;
    mark = line->mark;
    gap = line->gap;
    interval = line->interval;
    extra = line->extra;
}

void LocalSymbolCatalog::GetMarkerLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                            std::string& capName, std::string& joinName,
                                            std::string& markerTypeName, double& mark, double& gap,
                                            double& interval, double& extra)
{
    const Symbol& symbol = openSymbol("GetMarkerLineLayer");
    const MarkerLine* line = markerLineIn(symbol.at(layerIndex));
    if (!line) {
        symbol.wrongType(layerIndex, kMarkerLine);
    }
    colour = line->colour;
    width = line->width;
    capName = line->cap;
    joinName = line->join;
    markerTypeName = std::string(line->marker ? kCharacterMarker : kSimpleMarker);
    mark = line->mark;
    gap = line->gap;
    interval = line->interval;
    extra = line->extra;
}

void LocalSymbolCatalog::GetHashLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                          std::string& hashTypeName, double& mark, double& gap,
                                          double& interval, double& angle)
{
    const Symbol& symbol = openSymbol("GetHashLineLayer");
    const auto* line = std::get_if<HashLine>(&symbol.at(layerIndex));
    if (!line) {
        symbol.wrongType(layerIndex, kHashLine);
    }
    colour = line->colour;
    width = line->width;
    hashTypeName = std::string(
        std::holds_alternative<CartographicLine>(line->hash) ? kCartographicLine : kMarkerLine);
    mark = line->mark;
    gap = line->gap;
    interval = line->interval;
    angle = line->angle;
}

} // namespace brevant::host::local
