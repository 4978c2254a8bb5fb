#pragma once

#include "host/HostService.h"

#include <cstdint>
#include <string>

namespace brevant::host {

/// The host's catalogue of named multi-layer symbols. OpenSymbol selects a symbol; the other
/// operations read its layers, numbered from 1. Colours are texts "red,green,blue". Every
/// operation the host does not provide raises automation error 438.
class SymbolCatalog : public HostService {
public:
    /// Selects the named symbol for the reads that follow; returns its number of layers.
    virtual int32_t OpenSymbol(const std::string& symbolName);
    /// Type name of a layer of a line symbol ("Cartographic Line Symbol", ...).
    virtual std::string GetLineLayerType(int16_t layerIndex);
    /// Type name of a layer of a point symbol ("Character Marker Symbol", ...).
    virtual std::string GetPointLayerType(int16_t layerIndex);
    /// Reads a character marker layer.
    virtual void GetCharacterMarkerLayer(int16_t layerIndex, std::string& colour,
                                         std::string& fontName, double& size, double& angle,
                                         int32_t& characterIndex);
    /// Reads a cartographic line layer; extra is a value the library does not use.
    virtual void GetCartographicLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                          std::string& capName, std::string& joinName, double& mark,
                                          double& gap, double& interval, double& extra);
    /// Reads a marker line layer; extra is a value the library does not use.
    virtual void GetMarkerLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                    std::string& capName, std::string& joinName,
                                    std::string& markerTypeName, double& mark, double& gap,
                                    double& interval, double& extra);
    /// Reads a hash line layer; hashTypeName names the line type of the hashes.
    virtual void GetHashLineLayer(int16_t layerIndex, std::string& colour, double& width,
                                  std::string& hashTypeName, double& mark, double& gap,
                                  double& interval, double& angle);
};

inline int32_t SymbolCatalog::OpenSymbol(const std::string&)
{
    unsupported("SymbolCatalog", "OpenSymbol");
}

inline std::string SymbolCatalog::GetLineLayerType(int16_t)
{
    unsupported("SymbolCatalog", "GetLineLayerType");
}

inline std::string SymbolCatalog::GetPointLayerType(int16_t)
{
    unsupported("SymbolCatalog", "GetPointLayerType");
}

inline void SymbolCatalog::GetCharacterMarkerLayer(int16_t, std::string&, std::string&, double&,
                                                   double&, int32_t&)
{
    unsupported("SymbolCatalog", "GetCharacterMarkerLayer");
}

inline void SymbolCatalog::GetCartographicLineLayer(int16_t, std::string&, double&, std::string&,
                                                    std::string&, double&, double&, double&,
                                                    double&)
{
    unsupported("SymbolCatalog", "GetCartographicLineLayer");
}

inline void SymbolCatalog::GetMarkerLineLayer(int16_t, std::string&, double&, std::string&,
                                              std::string&, std::string&, double&, double&, double&,
                                              double&)
{
    unsupported("SymbolCatalog", "GetMarkerLineLayer");
}

inline void SymbolCatalog::GetHashLineLayer(int16_t, std::string&, double&, std::string&, double&,
                                            double&, double&, double&)
{
    unsupported("SymbolCatalog", "GetHashLineLayer");
}

} // namespace brevant::host
