#pragma once

#include <filesystem>
#include <string>

namespace brevant::host::local {

/// Writes the reference host's `symbols.json` into a system data folder (replacing any earlier
/// one): a symbol for every inventory class and region layer that is drawn from the catalogue.
/// Creates the folder when missing; throws a host error when the file cannot be written.
void writeDefaultSymbols(const std::filesystem::path& systemFolder);

/// Writes the reference host's `classes.json` into a system data folder (replacing any earlier
/// one): settings for every thematic map type that is drawn. Creates the folder when missing;
/// throws a host error when the file cannot be written.
void writeDefaultClassSettings(const std::filesystem::path& systemFolder);

/// Writes the layout logo `Eq/qelto.bmp` (a 24-bit bitmap of 160 x 80 pixels) into a system
/// data folder, creating `Eq` when missing; throws a host error when it cannot be written.
void writeLogo(const std::filesystem::path& systemFolder);

/// Adds a symbol named after an inventory class or region layer to the `symbols.json` of a
/// system data folder: kind 'P' a point symbol, 'L' a line symbol, 'A' the outline of a polygon
/// layer. The colour is chosen from the name, so every run gives a class the same colour. A
/// symbol of that name (ignoring case) is kept as it is. Throws a host error when the file is
/// missing or malformed, std::invalid_argument for another kind or an empty name.
void addSymbol(const std::filesystem::path& systemFolder, const std::string& name, char kind);

} // namespace brevant::host::local
