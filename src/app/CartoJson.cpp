#include "app/CartoJson.h"

#include "platform/carto/AnnotationLayer.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/FrameElement.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Legend.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/MarkerNorthArrow.h"
#include "platform/carto/PictureElement.h"
#include "platform/carto/RasterLayer.h"
#include "platform/carto/Renderer.h"
#include "platform/carto/ScaleLine.h"
#include "platform/carto/TextElement.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"

namespace brevant::app {

using json = nlohmann::ordered_json;
namespace carto = platform::carto;

namespace {

template <class... Ts> struct Overloaded : Ts... {
    using Ts::operator()...;
};
template <class... Ts> Overloaded(Ts...) -> Overloaded<Ts...>;

json colour(const carto::RgbColor& c)
{
    return json::array({c.red, c.green, c.blue});
}

const char* capName(carto::LineCap cap)
{
    switch (cap) {
    case carto::LineCap::Round:
        return "round";
    case carto::LineCap::Square:
        return "square";
    case carto::LineCap::Butt:
        break;
    }
    return "butt";
}

const char* joinName(carto::LineJoin join)
{
    switch (join) {
    case carto::LineJoin::Round:
        return "round";
    case carto::LineJoin::Bevel:
        return "bevel";
    case carto::LineJoin::Miter:
        break;
    }
    return "miter";
}

json lineTemplate(const std::optional<carto::LineTemplate>& pattern)
{
    if (!pattern) {
        return nullptr;
    }
    json elements = json::array();
    for (const auto& element : pattern->elements) {
        elements.push_back({{"mark", element.mark}, {"gap", element.gap}});
    }
    return {{"interval", pattern->interval}, {"elements", elements}};
}

json marker(const carto::MarkerLayer& layer);
json line(const carto::LineLayer& layer);

json simpleMarker(const carto::SimpleMarkerSymbol& s)
{
    json out = {{"type", "simple marker"},
                {"style", static_cast<int>(s.style)},
                {"color", colour(s.color)},
                {"size", s.size},
                {"angle", s.angle}};
    if (s.outline) {
        out["outline"] = {{"color", colour(s.outlineColor)}, {"size", s.outlineSize}};
    }
    return out;
}

json characterMarker(const carto::CharacterMarkerSymbol& s)
{
    return {{"type", "character marker"}, {"font", s.fontName},
            {"character", s.characterIndex},  {"color", colour(s.color)},
            {"size", s.size},                 {"angle", s.angle}};
}

json marker(const carto::MarkerLayer& layer)
{
    return std::visit(Overloaded{[](const carto::SimpleMarkerSymbol& s) { return simpleMarker(s); },
                                 [](const carto::CharacterMarkerSymbol& s) {
                                     return characterMarker(s);
                                 }},
                      layer);
}

json cartographic(const carto::CartographicLineSymbol& s)
{
    return {{"type", "cartographic line"},   {"color", colour(s.color)}, {"width", s.width},
            {"cap", capName(s.cap)},         {"join", joinName(s.join)}, {"offset", s.offset},
            {"template", lineTemplate(s.lineTemplate)}};
}

json markerLine(const carto::MarkerLineSymbol& s)
{
    return {{"type", "marker line"},     {"color", colour(s.color)}, {"width", s.width},
            {"cap", capName(s.cap)},     {"join", joinName(s.join)}, {"offset", s.offset},
            {"marker", marker(s.marker)}, {"template", lineTemplate(s.lineTemplate)}};
}

json line(const carto::LineLayer& layer)
{
    return std::visit(
        Overloaded{
            [](const carto::SimpleLineSymbol& s) -> json {
                return {{"type", "simple line"},
                        {"style", static_cast<int>(s.style)},
                        {"color", colour(s.color)},
                        {"width", s.width}};
            },
            [](const carto::CartographicLineSymbol& s) { return cartographic(s); },
            [](const carto::MarkerLineSymbol& s) { return markerLine(s); },
            [](const carto::HashLineSymbol& s) -> json {
                json hash = nullptr;
                if (s.hashSymbol) {
                    hash = std::visit(
                        Overloaded{
                            [](const carto::CartographicLineSymbol& h) { return cartographic(h); },
                            [](const carto::MarkerLineSymbol& h) { return markerLine(h); }},
                        *s.hashSymbol);
                }
                return {{"type", "hash line"},       {"color", colour(s.color)},
                        {"width", s.width},          {"angle", s.angle},
                        {"cap", capName(s.cap)},     {"join", joinName(s.join)},
                        {"offset", s.offset},        {"hash", hash},
                        {"template", lineTemplate(s.lineTemplate)}};
            }},
        layer);
}

json lineSymbol(const carto::LineSymbol& symbol)
{
    return describeSymbol(carto::toSymbol(symbol));
}

json optionalSymbol(const std::optional<carto::Symbol>& symbol)
{
    return symbol ? describeSymbol(*symbol) : json(nullptr);
}

json renderer(const carto::Renderer& described)
{
    return std::visit(
        Overloaded{
            [](const carto::SimpleRenderer& r) -> json {
                return {{"type", "simple"},
                        {"symbol", optionalSymbol(r.symbol)},
                        {"label", r.label}};
            },
            [](const carto::ClassBreaksRenderer& r) -> json {
                json classes = json::array();
                for (int i = 0; i < r.breakCount(); ++i) {
                    classes.push_back({{"break", r.breakValue(i)},
                                       {"label", r.label(i)},
                                       {"symbol", optionalSymbol(r.symbol(i))}});
                }
                return {{"type", "class breaks"},
                        {"field", r.field()},
                        {"breakCount", r.breakCount()},
                        {"minimumBreak", r.minimumBreak()},
                        {"heading", r.legendHeading()},
                        {"colorRamp", r.colorRampName()},
                        {"classes", classes}};
            },
            [](const carto::UniqueValueRenderer& r) -> json {
                json fields = json::array();
                for (int i = 0; i < r.fieldCount(); ++i) {
                    fields.push_back(r.field(i));
                }
                json values = json::array();
                for (int i = 0; i < r.valueCount(); ++i) {
                    const std::string& value = r.value(i);
                    values.push_back({{"value", value},
                                      {"heading", r.heading(value)},
                                      {"label", r.label(value)},
                                      {"symbol", optionalSymbol(r.symbol(value))}});
                }
                json out = {{"type", "unique values"},
                            {"fields", fields},
                            {"fieldType", r.fieldType() == carto::ValueFieldType::Text ? "text"
                                          : r.fieldType() == carto::ValueFieldType::Numeric
                                              ? "numeric"
                                              : "unset"},
                            {"values", values}};
                if (r.useDefaultSymbol()) {
                    out["default"] = {{"label", r.defaultLabel()},
                                      {"symbol", optionalSymbol(r.defaultSymbol())}};
                }
                return out;
            }},
        described);
}

json dataOf(const std::shared_ptr<platform::geodatabase::FeatureClass>& table)
{
    if (!table) {
        return {{"class", nullptr}, {"database", nullptr}};
    }
    return {{"class", table->name()}, {"database", table->workspace().path().string()}};
}

json layer(const carto::Layer& item)
{
    json out = {{"name", item.name()}};
    switch (item.kind()) {
    case carto::LayerKind::Feature: {
        const auto& feature = static_cast<const carto::FeatureLayer&>(item);
        out["kind"] = "feature";
        out.update(dataOf(feature.featureClass()));
        out["visible"] = item.visible();
        out["selectable"] = feature.selectable();
        out["minimumScale"] = item.minimumScale();
        out["maximumScale"] = item.maximumScale();
        out["selectionCount"] = feature.selectionSet().count();
        out["selectionColor"] =
            feature.selectionColor() ? colour(*feature.selectionColor()) : json(nullptr);
        out["displayAnnotation"] = feature.displayAnnotation();
        json relates = json::array();
        for (const auto& relate : feature.relationshipClasses()) {
            relates.push_back(relate->name());
        }
        out["relates"] = relates;
        out["join"] = feature.displayJoin() ? json(feature.displayJoin()->relationship().name())
                                            : json(nullptr);
        out["renderer"] = renderer(feature.renderer());
        break;
    }
    case carto::LayerKind::Group: {
        const auto& group = static_cast<const carto::GroupLayer&>(item);
        out["kind"] = "group";
        out["visible"] = item.visible();
        json members = json::array();
        for (const auto& member : group.layers()) {
            members.push_back(layer(*member));
        }
        out["layers"] = members;
        break;
    }
    case carto::LayerKind::Annotation: {
        const auto& annotation = static_cast<const carto::AnnotationLayer&>(item);
        out["kind"] = "annotation";
        out.update(dataOf(annotation.featureClass()));
        out["visible"] = item.visible();
        out["textField"] = annotation.textField();
        break;
    }
    case carto::LayerKind::Raster:
        out["kind"] = "raster";
        out["file"] = static_cast<const carto::RasterLayer&>(item).file().string();
        out["visible"] = item.visible();
        break;
    }
    return out;
}

json textSymbol(const carto::TextSymbol& s)
{
    return {{"font", s.fontName}, {"size", s.size},     {"color", colour(s.color)},
            {"bold", s.bold},     {"italic", s.italic}, {"angle", s.angle}};
}

json element(const carto::Element& item)
{
    const auto box = item.geometry().envelope();
    json out = {{"name", item.name()}};
    out["rectangle"] = box.isEmpty() ? json(nullptr)
                                     : json::array({box.xmin(), box.ymin(), box.xmax(), box.ymax()});
    if (const auto* frame = dynamic_cast<const carto::MapFrame*>(&item)) {
        out["kind"] = "map frame";
        out["map"] = frame->map() ? json(frame->map()->name()) : json(nullptr);
        out["border"] = frame->border() ? lineSymbol(*frame->border()) : json(nullptr);
    } else if (const auto* text = dynamic_cast<const carto::TextElement*>(&item)) {
        out["kind"] = "text";
        out["text"] = text->text();
        out["symbol"] = textSymbol(text->symbol());
    } else if (const auto* picture = dynamic_cast<const carto::PictureElement*>(&item)) {
        out["kind"] = "picture";
        out["file"] = picture->file().string();
    } else if (const auto* surround = dynamic_cast<const carto::MapSurroundFrame*>(&item)) {
        const auto& content = surround->mapSurround();
        out["border"] = surround->border() ? lineSymbol(*surround->border()) : json(nullptr);
        if (!content) {
            out["kind"] = "surround";
        } else if (const auto* legend = dynamic_cast<const carto::Legend*>(content.get())) {
            out["kind"] = "legend";
            out["title"] = legend->title();
            out["showTitle"] = legend->showTitle();
        } else if (const auto* arrow = dynamic_cast<const carto::MarkerNorthArrow*>(content.get())) {
            out["kind"] = "north arrow";
            out["marker"] = marker(arrow->markerSymbol());
        } else if (const auto* scale = dynamic_cast<const carto::ScaleLine*>(content.get())) {
            out["kind"] = "scale line";
            out["divisions"] = scale->divisions();
            out["units"] = scale->units() == carto::ScaleUnits::Miles ? "miles" : "kilometers";
        }
    } else if (const auto* plainFrame = dynamic_cast<const carto::FrameElement*>(&item)) {
        out["kind"] = "frame";
        out["border"] = plainFrame->border() ? lineSymbol(*plainFrame->border()) : json(nullptr);
        out["background"] =
            plainFrame->background() ? describeSymbol(*plainFrame->background()) : json(nullptr);
    } else {
        out["kind"] = std::string(item.className());
    }
    return out;
}

} // namespace

json describeSymbol(const carto::Symbol& symbol)
{
    return std::visit(
        Overloaded{
            [](const carto::SimpleMarkerSymbol& s) { return simpleMarker(s); },
            [](const carto::CharacterMarkerSymbol& s) { return characterMarker(s); },
            [](const carto::MultiLayerMarkerSymbol& s) -> json {
                json layers = json::array();
                for (const auto& item : s.layers) {
                    layers.push_back(marker(item));
                }
                return {{"type", "multi-layer marker"}, {"layers", layers}};
            },
            [](const carto::SimpleLineSymbol& s) { return line(s); },
            [](const carto::CartographicLineSymbol& s) { return line(s); },
            [](const carto::MarkerLineSymbol& s) { return line(s); },
            [](const carto::HashLineSymbol& s) { return line(s); },
            [](const carto::MultiLayerLineSymbol& s) -> json {
                json layers = json::array();
                for (const auto& item : s.layers) {
                    layers.push_back(line(item));
                }
                return {{"type", "multi-layer line"}, {"layers", layers}};
            },
            [](const carto::SimpleFillSymbol& s) -> json {
                return {{"type", "simple fill"},
                        {"style", static_cast<int>(s.style)},
                        {"color", colour(s.color)},
                        {"outline", lineSymbol(s.outline)}};
            }},
        symbol);
}

json describeMap(const carto::Map& map)
{
    json layers = json::array();
    for (const auto& item : map.layers()) {
        layers.push_back(layer(*item));
    }
    const auto extent = map.extent();
    return {{"name", map.name()},
            {"spatialReference", map.spatialReference().name()},
            {"extent", extent.isEmpty() ? json(nullptr)
                                        : json::array({extent.xmin(), extent.ymin(),
                                                       extent.xmax(), extent.ymax()})},
            {"layers", layers}};
}

json describeLayout(const carto::PageLayout& layout)
{
    json elements = json::array();
    for (const auto& item : layout.graphicsContainer().elements()) {
        elements.push_back(element(*item));
    }
    return {{"pageWidth", layout.pageWidth()},
            {"pageHeight", layout.pageHeight()},
            {"orientation",
             layout.orientation() == carto::PageOrientation::Landscape ? "landscape" : "portrait"},
            {"elements", elements}};
}

} // namespace brevant::app
