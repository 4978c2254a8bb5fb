#include "context/EqSimpleRenderer.h"

#include "context/ErrorTrap.h"
#include "host/HostServices.h"
#include "host/SymbolCatalog.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/NumberText.h"
#include "platform/automation/Variant.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/SimpleRenderer.h"
#include "platform/ui/UserPrompts.h"

#include <memory>
#include <string_view>

namespace brevant::context {

namespace carto = platform::carto;
using platform::automation::AutomationError;
using platform::automation::Variant;
namespace ErrorNumber = platform::automation::ErrorNumber;

namespace {

constexpr const char* kSource = "Brevant";

constexpr std::string_view kCharacterMarker = "Character Marker Symbol";
constexpr std::string_view kMarkerLine = "Marker Line Symbol";
constexpr std::string_view kCartographicLine = "Cartographic Line Symbol";
constexpr std::string_view kHashLine = "Hash Line Symbol";

// The catalogue object of the latest multi-layer build. The per-layer builders read the symbol
// it opened, so it stays alive until the next build replaces it.
std::shared_ptr<host::SymbolCatalog>& openCatalogue()
{
    static std::shared_ptr<host::SymbolCatalog> catalogue;
    return catalogue;
}

host::SymbolCatalog& catalogue()
{
    auto& open = openCatalogue();
    if (!open) {
        throw AutomationError(ErrorNumber::ObjectVariableNotSet, kSource,
                              "Object variable not set: no symbol has been opened in the symbol "
                              "catalogue");
    }
    return *open;
}

int colourComponent(int32_t value, const char* part, const std::string& colourText)
{
    if (value < 0 || value > 255) {
        throw AutomationError(ErrorNumber::InvalidArgument, kSource,
                              std::string("The parameter is incorrect: the ") + part +
                                  " part of the colour \"" + colourText + "\" is " +
                                  std::to_string(value) + ", outside 0 to 255");
    }
    return value;
}

// A dash template only for a real gap: with gap 0 the line stays solid whatever its mark and
// interval say.
template <class Line> void applyDashPattern(Line& line, double mark, double gap, double interval)
{
    if (gap == 0.0) {
        return;
    }
    line.offset = 0.0;
    carto::LineTemplate lineTemplate;
    lineTemplate.interval = interval;
    lineTemplate.addPatternElement(mark, gap);
    line.lineTemplate = std::move(lineTemplate);
}

// Creates the catalogue object a build reads through and opens the named symbol in it.
int16_t openSymbol(const std::string& symbolName)
{
    auto& open = openCatalogue();
    open = host::hostServices().createSymbolCatalog();
    return Variant(open->OpenSymbol(symbolName)).toInt16();
}

} // namespace

void CreateRendrer(carto::FeatureLayer& layer, const std::string& symbolName)
{
    context::runChained(" CreateRendrer", [&] {
        carto::SimpleRenderer renderer;
        if (!layer.featureClass()) {
            throw AutomationError(ErrorNumber::ObjectVariableNotSet, kSource,
                                  "Object variable not set: the layer \"" + layer.name() +
                                      "\" has no feature class");
        }
        switch (layer.shapeType()) {
        case platform::geometry::ShapeType::Point:
            renderer.symbol = GetMultiPointSymbol(symbolName);
            break;
        case platform::geometry::ShapeType::Polyline:
            renderer.symbol = GetMultiLineSymbol(symbolName);
            break;
        case platform::geometry::ShapeType::Polygon:
            renderer.symbol = GetSimplePolygonSymbol(symbolName);
            break;
        default:
            platform::ui::userPrompts().messageBox("Invalid feature type", "KORVAL",
                                                   platform::ui::MessageButtons::Ok);
            break;
        }
        layer.setRenderer(std::move(renderer));
    });
}

carto::RgbColor GetColor(const std::string& colourText)
{
    return context::runChained(" GetColor", [&] {
        const std::size_t first = colourText.find(',');
        const std::size_t second =
            first == std::string::npos ? std::string::npos : colourText.find(',', first + 1);
        if (second == std::string::npos) {
            throw AutomationError(ErrorNumber::InvalidProcedureCall, kSource,
                                  "Invalid procedure call or argument: the colour \"" + colourText +
                                      "\" is not red,green,blue");
        }
        // Variant narrowing rounds half to even and raises the overflow of a too-large part.
        const int32_t red =
            Variant(platform::automation::leadingNumber(std::string_view(colourText).substr(0, first), kSource)).toInt32();
        const int32_t green =
            Variant(
                platform::automation::leadingNumber(std::string_view(colourText).substr(first + 1, second - first - 1),
                              kSource))
                .toInt32();
        const int32_t blue = Variant(colourText.substr(second + 1)).toInt32();
        return carto::RgbColor{colourComponent(red, "red", colourText),
                               colourComponent(green, "green", colourText),
                               colourComponent(blue, "blue", colourText)};
    });
}

carto::MultiLayerMarkerSymbol GetMultiPointSymbol(const std::string& symbolName)
{
    return context::runChained(" GetMultiPointSymbol", [&] {
        carto::MultiLayerMarkerSymbol symbol;
        const int16_t layerCount = openSymbol(symbolName);
        for (int i = 1; i <= layerCount; ++i) {
            symbol.addLayer(GetPointSymbol(static_cast<int16_t>(i)));
        }
        return symbol;
    });
}

carto::MultiLayerLineSymbol GetMultiLineSymbol(const std::string& symbolName)
{
    return context::runChained(" GetMultiLineSymbol", [&] {
        carto::MultiLayerLineSymbol symbol;
        const int16_t layerCount = openSymbol(symbolName);
        for (int i = 1; i <= layerCount; ++i) {
            symbol.addLayer(GetLineSymbol(static_cast<int16_t>(i)));
        }
        return symbol;
    });
}

carto::SimpleFillSymbol GetSimplePolygonSymbol(const std::string& /*symbolName*/)
{
    return context::runChained(" GetSimplePolygonSymbol", [] {
        carto::SimpleFillSymbol fill;
        fill.style = carto::SimpleFillStyle::Solid;
        fill.color = carto::RgbColor{255, 255, 190};
        return fill;
    });
}

carto::MarkerLayer GetPointSymbol(int16_t layerIndex)
{
    return context::runChained(" GetPointSymbol", [&]() -> carto::MarkerLayer {
        if (catalogue().GetPointLayerType(layerIndex) == kCharacterMarker) {
            return GetCharacterMarkerSymbol(layerIndex);
        }
        return GetSimpleMarkerSymbol(layerIndex);
    });
}

std::optional<carto::LineLayer> GetLineSymbol(int16_t layerIndex)
{
    return context::runChained(
        " GetLineSymbol", [&]() -> std::optional<carto::LineLayer> {
            const std::string type = catalogue().GetLineLayerType(layerIndex);
            if (type == kMarkerLine) {
                return GetMarkerLineSymbol(layerIndex);
            }
            if (type == kCartographicLine) {
                return GetCartograhicLineSymbol(layerIndex);
            }
            if (type == kHashLine) {
                return GetHashLineSymbol(layerIndex);
            }
            return std::nullopt;
        });
}

carto::CharacterMarkerSymbol GetCharacterMarkerSymbol(int16_t layerIndex)
{
    return context::runChained(" GetCharacterMarkerSymbol", [&] {
        std::string colour;
        std::string fontName;
        double size = 0.0;
        double angle = 0.0;
        int32_t characterIndex = 0;
        catalogue().GetCharacterMarkerLayer(layerIndex, colour, fontName, size, angle,
                                            characterIndex);
        carto::CharacterMarkerSymbol marker;
        marker.characterIndex = characterIndex;
        marker.size = size;
        marker.color = GetColor(colour);
        marker.fontName = fontName;
        marker.angle = angle;
        return marker;
    });
}

carto::SimpleMarkerSymbol GetSimpleMarkerSymbol(int16_t /*layerIndex*/)
{
    return context::runChained(" GetSimpleMarkerSymbol", [] {
        carto::SimpleMarkerSymbol marker;
        marker.color = carto::RgbColor{0, 0, 0};
        marker.size = 0.0;
        return marker;
    });
}

carto::CartographicLineSymbol GetCartograhicLineSymbol(int16_t layerIndex)
{
    return context::runChained(" GetCartograhicLineSymbol", [&] {
        std::string colour;
        double width = 0.0;
        std::string capName;
        std::string joinName;
        double mark = 0.0;
        double gap = 0.0;
        double interval = 0.0;
        double unused = 0.0;
        catalogue().GetCartographicLineLayer(layerIndex, colour, width, capName, joinName, mark,
                                             gap, interval, unused);
        carto::CartographicLineSymbol line;
        line.color = GetColor(colour);
        line.width = width;
        line.cap = static_cast<carto::LineCap>(GetLineCap(capName));
        line.join = static_cast<carto::LineJoin>(GetLineJoin(joinName));
        applyDashPattern(line, mark, gap, interval);
        return line;
    });
}

carto::MarkerLineSymbol GetMarkerLineSymbol(int16_t layerIndex)
{
    return context::runChained(" GetMarkerLineSymbol", [&] {
        std::string colour;
        double width = 0.0;
        std::string capName;
        std::string joinName;
        std::string markerType;
        double mark = 0.0;
        double gap = 0.0;
        double interval = 0.0;
        double unused = 0.0;
        catalogue().GetMarkerLineLayer(layerIndex, colour, width, capName, joinName, markerType,
                                       mark, gap, interval, unused);
        carto::MarkerLineSymbol line;
        // The marker is stored under the line's own layer index.
        carto::MarkerLayer marker = markerType == kCharacterMarker
                                        ? carto::MarkerLayer(GetCharacterMarkerSymbol(layerIndex))
                                        : carto::MarkerLayer(GetSimpleMarkerSymbol(layerIndex));
        line.color = GetColor(colour);
        line.width = width;
        line.marker = std::move(marker);
        applyDashPattern(line, mark, gap, interval);
        return line;
    });
}

carto::HashLineSymbol GetHashLineSymbol(int16_t layerIndex)
{
    return context::runChained(" GetHashLineSymbol", [&] {
        std::string colour;
        double width = 0.0;
        std::string hashType;
        double mark = 0.0;
        double gap = 0.0;
        double interval = 0.0;
        double angle = 0.0;
        catalogue().GetHashLineLayer(layerIndex, colour, width, hashType, mark, gap, interval,
                                     angle);
        carto::HashLineSymbol line;
        line.angle = angle;
        line.color = GetColor(colour);
        line.width = width;
        // The hashes' line is stored under the hash line's own layer index.
        if (hashType == kMarkerLine) {
            line.hashSymbol = GetMarkerLineSymbol(layerIndex);
        } else if (hashType == kCartographicLine) {
            line.hashSymbol = GetCartograhicLineSymbol(layerIndex);
        }
        applyDashPattern(line, mark, gap, interval);
        return line;
    });
}

int16_t GetLineCap(const std::string& name)
{
    return context::runChained(" GetLineCap", [&]() -> int16_t {
        if (name == "Round") {
            return static_cast<int16_t>(carto::LineCap::Round);
        }
        if (name == "Square") {
            return static_cast<int16_t>(carto::LineCap::Square);
        }
        return static_cast<int16_t>(carto::LineCap::Butt);
    });
}

int16_t GetLineJoin(const std::string& name)
{
    return context::runChained(" GetLineJoin", [&]() -> int16_t {
        if (name == "Round") {
            return static_cast<int16_t>(carto::LineJoin::Round);
        }
        if (name == "Bevel") {
            return static_cast<int16_t>(carto::LineJoin::Bevel);
        }
        return static_cast<int16_t>(carto::LineJoin::Miter);
    });
}

} // namespace brevant::context
