#include "thematic/EqThematicMap.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/EqSimpleRenderer.h"
#include "context/EqUtilFunctions.h"
#include "context/ErrorTrap.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/ThematicClassSettings.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Collection.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/NumberText.h"
#include "platform/automation/Variant.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/ui/UserPrompts.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace brevant::thematic {

namespace carto = platform::carto;
namespace geodatabase = platform::geodatabase;
using platform::automation::AutomationError;
using platform::automation::Variant;
namespace ErrorNumber = platform::automation::ErrorNumber;
using context::GetColor;
using context::GetMultiLineSymbol;
using context::GetSimplePolygonSymbol;

namespace {

constexpr const char* kSource = "Brevant";

constexpr int16_t kContourMapType = 5;
constexpr int16_t kConfidenceMapType = 3;
constexpr int16_t kContourPrecision = 4;

// The state every build replaces: the precision and number format of the mapped field, and the
// host's classification settings object.
struct ModuleState {
    int16_t precision = 0;
    // Decimals of the number format; 0 is the format "0".
    int formatDecimals = 0;
    std::shared_ptr<host::ThematicClassSettings> settings;
    // Builds under way; the outermost one creates the settings object.
    int buildDepth = 0;
};

ModuleState& state()
{
    static ModuleState current;
    return current;
}

// Every build reads a fresh settings object; the procedures a build calls share it, since
// operations without a map type answer for the type the build gave last.
class BuildScope {
public:
    BuildScope()
    {
        if (state().buildDepth == 0) {
            state().settings = host::hostServices().createThematicClassSettings();
        }
        ++state().buildDepth;
    }
    ~BuildScope() { --state().buildDepth; }
    BuildScope(const BuildScope&) = delete;
    BuildScope& operator=(const BuildScope&) = delete;
};

host::ThematicClassSettings& classSettings()
{
    auto& settings = state().settings;
    if (!settings) {
        throw AutomationError(ErrorNumber::ObjectVariableNotSet, kSource,
                              "Object variable or With block variable not set (thematic class "
                              "settings)");
    }
    return *settings;
}

// Rounds `value` to `decimals` places, halves away from zero. The rounding works on the
// value's 15-digit decimal form, so the binary noise of repeated additions (0.1794 stored as
// 0.17940000000000003) never decides a half.
double roundToDecimals(double value, int decimals)
{
    if (!std::isfinite(value) || value == 0.0) {
        return value;
    }
    char text[48];
    std::snprintf(text, sizeof text, "%.14e", std::fabs(value));
    // text is "d.dddddddddddddde[+-]xx": 15 significant digits and the exponent of the first.
    std::string digits;
    const char* p = text;
    for (; *p != 'e'; ++p) {
        if (*p != '.') {
            digits += *p;
        }
    }
    const int exponent = std::atoi(p + 1);
    // Digits whose place is 10^-decimals or larger.
    const int kept = exponent + 1 + decimals;
    if (kept >= static_cast<int>(digits.size())) {
        return std::strtod(text, nullptr) * (value < 0 ? -1.0 : 1.0);
    }
    long long scaled = 0;
    for (int i = 0; i < kept; ++i) {
        scaled = scaled * 10 + (digits[static_cast<std::size_t>(i)] - '0');
    }
    if (kept >= 0 && digits[static_cast<std::size_t>(kept)] >= '5') {
        ++scaled;
    }
    if (scaled == 0) {
        return 0.0;
    }
    const std::string rounded = std::to_string(scaled) + "e-" + std::to_string(decimals);
    const double magnitude = std::strtod(rounded.c_str(), nullptr);
    return value < 0 ? -magnitude : magnitude;
}

// A class break passed through the module's number format.
double formatted(double value)
{
    return roundToDecimals(value, state().formatDecimals);
}

// A break in the legend: the general number form, as many digits as the value needs.
std::string numberText(double value)
{
    return Variant(value).toString();
}


// Empty ranges are not widened: a map of one value keeps that value as its only class.
void widen(double& minimum, double& maximum, int16_t precision)
{
    if (maximum - minimum > 0.0) {
        const double delta = SetDelta(precision);
        minimum -= delta;
        maximum += delta;
    }
    if (minimum < 0.0) {
        minimum = 0.0;
    }
}

std::shared_ptr<geodatabase::FeatureClass> openFeatureClass(const std::string& className,
                                                            const std::string& databaseName)
{
    auto featureClass = context::contextGisDataService()
                            .OpenFeatureClass(className, databaseName)
                            .objectAs<geodatabase::FeatureClass>();
    if (!featureClass) {
        context::throwObjectNotSet("feature class");
    }
    return featureClass;
}

// A layer that is built but not yet shown: the caller decides visibility and adds it.
std::shared_ptr<carto::FeatureLayer>
hiddenLayer(const std::shared_ptr<geodatabase::FeatureClass>& featureClass, const std::string& name)
{
    auto layer = std::make_shared<carto::FeatureLayer>(featureClass);
    layer->setName(name);
    layer->setVisible(false);
    return layer;
}

// Renderer by thematic map type, shared by the joined and the plain build.
void applyRenderer(carto::FeatureLayer& layer, const std::string& className, int16_t mapType,
                   const std::string& fieldName, double minimum, double maximum)
{
    const int16_t symbolType = GetSymbolType(layer.featureClass());
    if (mapType >= 2 && mapType <= kContourMapType) {
        layer.setRenderer(
            GetCBRenderer(className, mapType, symbolType, fieldName, minimum, maximum));
    } else if (mapType > kContourMapType) {
        layer.setRenderer(GetUniquevalueRenderer(className, mapType, symbolType, fieldName));
        auto& settings = classSettings();
        settings.Prepare();
        layer.setName(settings.GetValueTitle());
    }
}

// Replaces a same-named layer only now, so a failed build leaves the map as it was.
void putOnMap(const std::shared_ptr<carto::FeatureLayer>& layer)
{
    auto& map = context::currentMapOrFail();
    context::RemoveLayer(layer->name());
    map.addLayer(layer);
    map.activeView().partialRefresh(carto::ViewPhase::Geography);
}

std::string textOf(const Variant& item)
{
    return item.toString();
}

std::string trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string::npos) {
        return {};
    }
    const auto last = text.find_last_not_of(' ');
    return text.substr(first, last - first + 1);
}

template <class Wanted> Wanted templateAs(const std::optional<carto::Symbol>& symbolTemplate)
{
    if (!symbolTemplate) {
        throw AutomationError(ErrorNumber::ObjectVariableNotSet, kSource,
                              "Object variable or With block variable not set (no template "
                              "symbol to colour)");
    }
    const auto* wanted = std::get_if<Wanted>(&*symbolTemplate);
    if (!wanted) {
        throw AutomationError(ErrorNumber::TypeMismatch, kSource,
                              "Type mismatch: the template symbol is not of the kind the "
                              "symbol type needs");
    }
    return *wanted;
}

void recolour(carto::MarkerLayer& marker, carto::RgbColor color)
{
    std::visit([&](auto& m) { m.color = color; }, marker);
}

// A marker line and a hash line draw with their markers and hashes, so those take the colour
// too.
void recolour(carto::LineLayer& line, carto::RgbColor color)
{
    std::visit(
        [&](auto& l) {
            using T = std::decay_t<decltype(l)>;
            l.color = color;
            if constexpr (std::is_same_v<T, carto::MarkerLineSymbol>) {
                recolour(l.marker, color);
            } else if constexpr (std::is_same_v<T, carto::HashLineSymbol>) {
                if (l.hashSymbol) {
                    std::visit(
                        [&](auto& hash) {
                            using H = std::decay_t<decltype(hash)>;
                            hash.color = color;
                            if constexpr (std::is_same_v<H, carto::MarkerLineSymbol>) {
                                recolour(hash.marker, color);
                            }
                        },
                        *l.hashSymbol);
                }
            }
        },
        line);
}

} // namespace

void CreateThematicMap(const std::string& tableName, const std::string& databaseName,
                       int16_t mapType, const std::string& fieldName, double& minimum,
                       double& maximum, bool join, bool visible, const std::string& layerName)
{
    context::runChained(
        " CreateThematicMap for " + tableName + " column " + fieldName, [&] {
            const BuildScope build;
            const int16_t precision = mapType == kContourMapType
                                          ? kContourPrecision
                                          : context::GetDisplayPrecision(tableName, fieldName);
            state().precision = precision;

            double low = minimum;
            double high = maximum;
            if (mapType == kConfidenceMapType) {
                std::string answer = "101";
                for (double value = platform::automation::leadingNumber(answer, kSource); value < 0.0 || value > 100.0;
                     value = platform::automation::leadingNumber(answer, kSource)) {
                    answer =
                        platform::ui::userPrompts()
                            .inputBox("Enter confidence value between 0 and 100", "KORVAL", "50")
                            .value_or(std::string());
                }
                if (answer.empty()) {
                    return;
                }
                low = platform::automation::leadingNumber(answer, kSource);
            }

            SetFormat(precision, tableName);
            if (mapType != kConfidenceMapType) {
                widen(low, high, precision);
            } else if (low < 0.0) {
                low = 0.0;
            }

            auto layer =
                join ? GetJoinThmMap(tableName, databaseName, mapType, fieldName, low, high)
                     : GetSimpleThmMap(tableName, databaseName, mapType, fieldName, low, high);
            if (!layerName.empty()) {
                layer->setName(layerName);
            } else if (layer->name() == "eqsrwdepth") {
                layer->setName("Ground Water Depth");
            } else if (mapType >= 2 && mapType <= kContourMapType) {
                layer->setName(tableName + "_" + fieldName);
            }
            layer->setVisible(visible);
            layer->setSelectable(false);
            putOnMap(layer);
            minimum = low;
            maximum = high;
        });
}

void CreateThmMapForTract(const std::string& mapName, const std::string& databaseName,
                          int16_t mapType, const std::string& fieldOrTableName, double minimum,
                          double maximum, int16_t precision, bool nameFlag)
{
    context::runChained(
        " CreateThmMapForTract for  " + mapName + " column " + fieldOrTableName, [&] {
            SetFormat(precision, mapName);
            state().precision = precision;
            widen(minimum, maximum, precision);

            const BuildScope build;
            const auto tracts = openFeatureClass("hztract", databaseName);
            auto layer = hiddenLayer(tracts, mapName);
            // The shared tract map keeps its values in a table named by the caller.
            context::JoineLayerToSqlTable(*layer,
                                          mapName == "EqTractThMap" ? fieldOrTableName : mapName);
            layer->setRenderer(GetCBRenderer(mapName, mapType, GetSymbolType(tracts),
                                             fieldOrTableName, minimum, maximum));
            layer->setVisible(true);
            layer->setSelectable(false);
            layer->setName(nameFlag ? fieldOrTableName : mapName + "_" + fieldOrTableName);
            putOnMap(layer);
        });
}

std::shared_ptr<carto::FeatureLayer> GetJoinThmMap(const std::string& tableName,
                                                   const std::string& databaseName, int16_t mapType,
                                                   const std::string& fieldName, double minimum,
                                                   double maximum)
{
    return context::runChained(" GetJoinThmMap for " + tableName, [&] {
        const BuildScope build;
        // A result table "eq..." is drawn on the inventory class "hz..."; the building results
        // live beside their own class.
        std::string className;
        if (platform::automation::equalsIgnoreCase(tableName, "eqAebmRes")) {
            className = "eqAebm";
        } else if (mapType == kContourMapType) {
            className = tableName;
        } else {
            className = "hz" + (tableName.size() > 2 ? tableName.substr(2) : std::string());
        }
        auto layer = hiddenLayer(openFeatureClass(className, databaseName), tableName);
        context::JoineLayerToSqlTable(*layer, tableName);
        applyRenderer(*layer, className, mapType, fieldName, minimum, maximum);
        return layer;
    });
}

std::shared_ptr<carto::FeatureLayer> GetSimpleThmMap(const std::string& tableName,
                                                     const std::string& databaseName,
                                                     int16_t mapType, const std::string& fieldName,
                                                     double minimum, double maximum)
{
    return context::runChained(" GetSimpleThmMap for " + tableName, [&] {
        const BuildScope build;
        auto layer = hiddenLayer(openFeatureClass(tableName, databaseName), tableName);
        SetFormat(kContourPrecision, tableName);
        applyRenderer(*layer, tableName, mapType, fieldName, minimum, maximum);
        return layer;
    });
}

carto::ClassBreaksRenderer GetCBRenderer(const std::string& featureClassName, int16_t mapType,
                                         int16_t symbolType, const std::string& fieldName,
                                         double minimum, double maximum)
{
    return context::runChained(" GetCBRenderer for table " + featureClassName, [&] {
        const BuildScope build;
        const int16_t type = mapType == 4 ? int16_t{2} : mapType;
        auto& settings = classSettings();
        const int32_t classCount = settings.GetClassCount(type);
        const double range = maximum - minimum;
        const int32_t n = range == 0.0 ? 1 : classCount;
        if (n < 1 || n > INT16_MAX) {
            throw AutomationError(ErrorNumber::InvalidProcedureCall, kSource,
                                  "Invalid procedure call or argument: " + std::to_string(n) +
                                      " classes for thematic map type " + std::to_string(type));
        }

        carto::ClassBreaksRenderer renderer;
        renderer.setField(fieldName);
        renderer.setBreakCount(n);

        const bool equalIntervals = type == 2 || type == kContourMapType || type == 8;
        if (equalIntervals) {
            // Without a range every class ends at the one value there is.
            std::vector<double> breaks(static_cast<std::size_t>(n) + 1, formatted(minimum));
            if (range > 0.0) {
                const double interval = range / n;
                for (int32_t k = 1; k < n; ++k) {
                    breaks[k] = formatted(breaks[k - 1] + interval);
                }
                const double top = formatted(maximum);
                breaks[n] = top < breaks[n - 1] ? formatted(breaks[n - 1] + interval) : top;
            }
            renderer.setMinimumBreak(breaks[0]);
            for (int32_t k = 1; k <= n; ++k) {
                renderer.setBreak(k - 1, breaks[k]);
            }
            if (classCount < 2) {
                renderer.setBreak(0, breaks[0]);
                renderer.setLabel(0, numberText(breaks[0]));
            } else {
                renderer.setLabel(0, numberText(renderer.minimumBreak()) + " - " +
                                         numberText(renderer.breakValue(0)));
                for (int32_t i = 1; i < n; ++i) {
                    renderer.setLabel(i, numberText(renderer.breakValue(i - 1)) + " - " +
                                             numberText(renderer.breakValue(i)));
                }
            }
        } else if (type == kConfidenceMapType) {
            renderer.setMinimumBreak(0.0);
            renderer.setBreak(0, formatted(minimum));
            renderer.setBreak(1, formatted(maximum));
        }

        const auto symbolTemplate = SymbolForTable(featureClassName, symbolType);
        settings.Prepare();
        settings.GetClassTitle();
        int16_t fractionCount = 0;
        context::GetCollectionfrom2DArrayVariant(settings.GetBreakFractions(), fractionCount);
        int16_t colourCount = static_cast<int16_t>(n);
        const auto colours =
            context::GetCollectionfrom2DArrayVariant(settings.GetClassColours(), colourCount);
        const auto classSymbol = [&](const std::string& colour) -> carto::Symbol {
            if (type == kContourMapType) {
                return CreateCntrLayerSymbol(symbolTemplate, colour);
            }
            return CreateThmLayerSymbol(symbolTemplate, symbolType, colour);
        };
        if (range <= 0.0) {
            renderer.setSymbol(0, classSymbol(settings.GetSingleColour()));
        } else {
            for (int32_t i = 1; i <= n; ++i) {
                renderer.setSymbol(i - 1, classSymbol(textOf(colours->item(i))));
            }
        }

        // Ground-motion maps carry the parameter's name in their layer name already.
        if (platform::automation::equalsIgnoreCase(fieldName, "paramvalue")) {
            renderer.setLegendHeading("");
        }
        renderer.setColorRampName("Sequential Color Ramp");
        return renderer;
    });
}

carto::UniqueValueRenderer GetUniquevalueRenderer(const std::string& featureClassName,
                                                  int16_t mapType, int16_t symbolType,
                                                  const std::string& fieldName)
{
    return context::runChained(
        " GetUniquevalueRenderer for table " + featureClassName, [&] {
            const BuildScope build;
            auto& settings = classSettings();
            const int32_t valueCount = settings.GetValueCount(mapType);
            if (valueCount < 0 || valueCount > INT16_MAX) {
                throw AutomationError(ErrorNumber::Overflow, kSource,
                                      "Overflow: " + std::to_string(valueCount) +
                                          " values for thematic map type " +
                                          std::to_string(mapType));
            }
            settings.Prepare();
            settings.GetValueTitle();
            const std::string fieldKind = settings.GetValueFieldKind();
            int16_t count = static_cast<int16_t>(valueCount);
            const auto labels =
                context::GetCollectionfrom2DArrayVariant(settings.GetValueLabels(), count);
            const auto colours =
                context::GetCollectionfrom2DArrayVariant(settings.GetValueColours(), count);
            const auto values =
                context::GetCollectionfrom2DArrayVariant(settings.GetValues(), count);

            carto::UniqueValueRenderer renderer;
            renderer.setUseDefaultSymbol(false);
            renderer.setFieldCount(1);
            renderer.setField(0, fieldName);
            const auto symbolTemplate = SymbolForTable(featureClassName, symbolType);
            for (int32_t i = 1; i <= colours->count(); ++i) {
                const std::string value = trimmed(textOf(values->item(i)));
                renderer.addValue(
                    value, "",
                    CreateThmLayerSymbol(symbolTemplate, symbolType, textOf(colours->item(i))));
                renderer.setLabel(value, textOf(labels->item(i)));
            }
            if (fieldKind == "C") {
                renderer.setFieldType(carto::ValueFieldType::Text);
            } else if (fieldKind == "N") {
                renderer.setFieldType(carto::ValueFieldType::Numeric);
            }
            return renderer;
        });
}

carto::Symbol CreateThmLayerSymbol(const std::optional<carto::Symbol>& symbolTemplate,
                                   int16_t symbolType, const std::string& colour)
{
    return context::runChained(" CreateThmLayerSymbol", [&]() -> carto::Symbol {
        switch (symbolType) {
        case 2: {
            carto::SimpleFillSymbol fill;
            fill.style = carto::SimpleFillStyle::Solid;
            fill.color = GetColor(colour);
            return fill;
        }
        case 3: {
            auto line = templateAs<carto::MultiLayerLineSymbol>(symbolTemplate);
            const carto::RgbColor color = GetColor(colour);
            for (auto& layer : line.layers) {
                recolour(layer, color);
            }
            return line;
        }
        case 1: {
            auto marker = templateAs<carto::MultiLayerMarkerSymbol>(symbolTemplate);
            if (marker.layerCount() < 2) {
                throw AutomationError(ErrorNumber::SubscriptOutOfRange, kSource,
                                      "Subscript out of range: the point template has " +
                                          std::to_string(marker.layerCount()) +
                                          " layers, the class colour goes to layer 1");
            }
            // Only the inner marker shows the class; the other layers stay as they are.
            recolour(marker.layers[1], GetColor(colour));
            return marker;
        }
        default:
            throw AutomationError(ErrorNumber::ObjectVariableNotSet, kSource,
                                  "Object variable or With block variable not set (no thematic "
                                  "class symbol for symbol type " +
                                      std::to_string(symbolType) + ")");
        }
    });
}

carto::SimpleFillSymbol
CreateCntrLayerSymbol(const std::optional<carto::Symbol>& /*symbolTemplate*/,
                      const std::string& colour)
{
    return context::runChained(" CreateCntrLayerSymbol", [&] {
        carto::SimpleFillSymbol fill;
        fill.style = carto::SimpleFillStyle::Solid;
        fill.color = GetColor(colour);
        carto::SimpleLineSymbol outline;
        outline.width = 0.0;
        fill.outline = outline;
        return fill;
    });
}

std::optional<carto::Symbol> SymbolForTable(const std::string& name, int16_t symbolType)
{
    return context::runChained(" SymbolForTable for table " + name, [&]() -> std::optional<carto::Symbol> {
                                   switch (symbolType) {
                                   case 1:
                                       return GetResultsPointSymbol();
                                   case 2:
                                       return GetSimplePolygonSymbol(name);
                                   case 3:
                                       return GetMultiLineSymbol(name);
                                   default:
                                       return std::nullopt;
                                   }
                               });
}

int16_t GetSymbolType(const std::shared_ptr<geodatabase::FeatureClass>& featureClass)
{
    return context::runChained(" GetSymbolType", [&]() -> int16_t {
        if (!featureClass) {
            context::throwObjectNotSet("feature class");
        }
        switch (featureClass->shapeType()) {
        case platform::geometry::ShapeType::Point:
            return 1;
        case platform::geometry::ShapeType::Polygon:
            return 2;
        case platform::geometry::ShapeType::Polyline:
            return 3;
        default:
            return 0;
        }
    });
}

std::string SetFormat(int16_t precision, const std::string& tableName)
{
    return context::runChained(" SetFormat for table " + tableName, [&] {
        auto& current = state();
        if (precision <= 0) {
            current.formatDecimals = 0;
            return std::string("0");
        }
        current.formatDecimals = precision + 2;
        return "0." + std::string(static_cast<std::size_t>(current.formatDecimals), '0');
    });
}

double SetDelta(int16_t precision)
{
    return context::runChained(" SetDelta ", [&] {
        if (precision <= 0) {
            return 1.0;
        }
        // Built as decimal text so the delta is the nearest double to 10^-(p+1) itself.
        const std::string text = "0." + std::string(static_cast<std::size_t>(precision), '0') + "1";
        return std::strtod(text.c_str(), nullptr);
    });
}

carto::MultiLayerMarkerSymbol GetResultsPointSymbol()
{
    return context::runChained(" GetResultsPointSymbol", [] {
        carto::MultiLayerMarkerSymbol symbol;
        symbol.addLayer(GetResultMarkerSymbol(1));
        symbol.addLayer(GetResultMarkerSymbol(2));
        return symbol;
    });
}

carto::CharacterMarkerSymbol GetResultMarkerSymbol(int16_t index)
{
    return context::runChained(" GetResultMarkerSymbol", [&] {
        carto::CharacterMarkerSymbol marker;
        marker.characterIndex = index == 1 ? 33 : 40;
        marker.fontName = "ESRI Default Marker";
        marker.size = 12.0;
        marker.color = GetColor("000,000,000");
        marker.angle = 0.0;
        return marker;
    });
}

} // namespace brevant::thematic
