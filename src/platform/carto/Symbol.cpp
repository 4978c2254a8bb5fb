#include "platform/carto/Symbol.h"

namespace brevant::platform::carto {

namespace {
template <class... Ts> struct Overloaded : Ts... {
    using Ts::operator()...;
};

RgbColor colorOf(const MarkerLayer& marker)
{
    return std::visit([](const auto& m) { return m.color; }, marker);
}

RgbColor colorOf(const LineLayer& line)
{
    return std::visit([](const auto& l) { return l.color; }, line);
}
} // namespace

SymbolKind symbolKind(const Symbol& symbol)
{
    return std::visit(Overloaded{
                          [](const SimpleMarkerSymbol&) { return SymbolKind::Marker; },
                          [](const CharacterMarkerSymbol&) { return SymbolKind::Marker; },
                          [](const MultiLayerMarkerSymbol&) { return SymbolKind::Marker; },
                          [](const SimpleFillSymbol&) { return SymbolKind::Fill; },
                          [](const auto&) { return SymbolKind::Line; },
                      },
                      symbol);
}

Symbol toSymbol(const LineSymbol& line)
{
    return std::visit([](const auto& l) { return Symbol(l); }, line);
}

Symbol toSymbol(const MarkerLayer& marker)
{
    return std::visit([](const auto& m) { return Symbol(m); }, marker);
}

std::optional<LineSymbol> asLineSymbol(const Symbol& symbol)
{
    return std::visit(
        Overloaded{
            [](const SimpleLineSymbol& l) { return std::optional<LineSymbol>(l); },
            [](const CartographicLineSymbol& l) { return std::optional<LineSymbol>(l); },
            [](const MarkerLineSymbol& l) { return std::optional<LineSymbol>(l); },
            [](const HashLineSymbol& l) { return std::optional<LineSymbol>(l); },
            [](const MultiLayerLineSymbol& l) { return std::optional<LineSymbol>(l); },
            [](const auto&) { return std::optional<LineSymbol>(); },
        },
        symbol);
}

RgbColor mainColor(const Symbol& symbol)
{
    return std::visit(Overloaded{
                          [](const MultiLayerMarkerSymbol& s) {
                              return s.layers.empty() ? RgbColor{} : colorOf(s.layers.back());
                          },
                          [](const MultiLayerLineSymbol& s) {
                              return s.layers.empty() ? RgbColor{} : colorOf(s.layers.back());
                          },
                          [](const auto& s) { return s.color; },
                      },
                      symbol);
}

} // namespace brevant::platform::carto
