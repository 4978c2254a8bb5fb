#pragma once

#include "host/SymbolCatalog.h"

#include <filesystem>
#include <memory>

namespace brevant::host::local {

/// The reference host's symbol catalogue, kept in `symbols.json` of the system data folder:
///
///     {"format": 1,
///      "symbols": [
///        {"name": "hzHighwayBridge", "description": "free text, not read",
///         "layers": [
///           {"type": "Character Marker Symbol", "colour": "255,255,255",
///            "font": "ESRI Default Marker", "size": 14, "angle": 0, "character": 33},
///           {"type": "Simple Marker Symbol"}]},
///        {"name": "hzRailwaySegment",
///         "layers": [
///           {"type": "Cartographic Line Symbol", "colour": "000,000,000", "width": 1,
///            "cap": "Butt", "join": "Miter", "mark": 0, "gap": 0, "interval": 0, "extra": 0},
///           {"type": "Marker Line Symbol", "colour": "...", "width": 1, "cap": "Round",
///            "join": "Round", "marker": {"type": "Character Marker Symbol", ...},
///            "mark": 1, "gap": 8, "interval": 0},
///           {"type": "Hash Line Symbol", "colour": "...", "width": 6, "angle": 90,
///            "hash": {"type": "Cartographic Line Symbol", ...}, "mark": 1, "gap": 5}]}]}
///
/// Layers are numbered from 1 in file order. A symbol is a point symbol (character and simple
/// marker layers) or a line symbol (cartographic, marker and hash line layers), never both.
/// Colours are "red,green,blue" with components 0 to 255. Optional numbers default to 0, cap
/// and join to "Butt" and "Miter"; caps are Butt, Round, Square and joins Miter, Round, Bevel,
/// spelt exactly. A simple marker carries no values: it is always drawn black and of size 0. A
/// marker line without "marker" has a simple marker. A dash pattern is one mark and one gap
/// repeated; a gap of 0 draws the line solid. Unknown keys are errors, so a misspelt key never
/// goes unnoticed.
///
/// A marker line answers for its marker, and a hash line for its hash line (and that line's
/// marker), under the same layer index: reading layer i as a character marker gives the marker
/// of a marker line at i. Symbol names are matched without regard to case.
///
/// Every call of OpenSymbol reads the file again, so edits are seen by the next symbol built.
/// Errors are host errors: MissingFile when symbols.json cannot be read, MalformedFile (naming
/// symbol and layer) when it is not in the format above, UnknownKey for an unknown symbol, a
/// layer index out of range, a layer read as a type it does not hold, and reads before any
/// OpenSymbol.
class LocalSymbolCatalog : public SymbolCatalog {
public:
    explicit LocalSymbolCatalog(std::filesystem::path root);
    ~LocalSymbolCatalog() override;

    /// `symbols.json` in a system data folder.
    static std::filesystem::path catalogueFile(const std::filesystem::path& systemFolder);

    int32_t OpenSymbol(const std::string& symbolName) override;
    /// Throws for a layer of a point symbol.
    std::string GetLineLayerType(int16_t layerIndex) override;
    /// Throws for a layer of a line symbol.
    std::string GetPointLayerType(int16_t layerIndex) override;
    void GetCharacterMarkerLayer(int16_t layerIndex, std::string& colour, std::string& fontName,
                                 double& size, double& angle, int32_t& characterIndex) override;
    void GetCartographicLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                  std::string& capName, std::string& joinName, double& mark,
                                  double& gap, double& interval, double& extra) override;
    void GetMarkerLineLayer(int16_t layerIndex, std::string& colour, double& width,
                            std::string& capName, std::string& joinName,
                            std::string& markerTypeName, double& mark, double& gap,
                            double& interval, double& extra) override;
    void GetHashLineLayer(int16_t layerIndex, std::string& colour, double& width,
                          std::string& hashTypeName, double& mark, double& gap, double& interval,
                          double& angle) override;

    struct Symbol;

private:
    const Symbol& openSymbol(const char* operation) const;

    std::filesystem::path m_root;
    std::unique_ptr<const Symbol> m_symbol;
};

} // namespace brevant::host::local
