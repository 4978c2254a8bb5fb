#pragma once

#include "host/ThematicClassSettings.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace brevant::host::local {

/// The reference host's classification settings, kept in `classes.json` of the system data
/// folder, one entry per thematic map type:
///
///     {"format": 1,
///      "mapTypes": [
///        {"type": 2, "description": "free text, not read",
///         "classBreaks": {"title": "Equal Interval", "singleColour": "255,255,190",
///                         "classes": [{"fraction": 0.2, "colour": "255,255,178"}, ...]}},
///        {"type": 8,
///         "classBreaks": {...},
///         "uniqueValues": {"title": "Soil Type", "fieldKind": "C",
///                          "values": [{"value": "A", "label": "A - Hard rock",
///                                      "colour": "056,168,000"}, ...]}}]}
///
/// An entry holds class-break settings, unique-value settings or both (a type drawn both ways,
/// such as a unique-value data map whose type also classifies tract results). "fraction" is the
/// upper end of a class as a fraction of the value range, rising from class to class. A "C"
/// field has text values, an "N" field numbers; values are unique within a map. Colours are
/// "red,green,blue" with components 0 to 255. Unknown keys are errors.
///
/// Lists are zero-based two-dimensional arrays of one column, one row per class or value, in
/// file order. The operations without a type answer for the type last given to GetClassCount
/// or GetValueCount. The file is read once per object, at the first operation that needs it.
///
/// Errors are host errors: MissingFile when classes.json cannot be read, MalformedFile (naming
/// the type) when it is not in the format above, UnknownKey for a type without the settings
/// asked for and for operations called before any type was given.
class LocalThematicClassSettings : public ThematicClassSettings {
public:
    explicit LocalThematicClassSettings(std::filesystem::path root);
    ~LocalThematicClassSettings() override;

    /// `classes.json` in a system data folder.
    static std::filesystem::path settingsFile(const std::filesystem::path& systemFolder);

    int32_t GetClassCount(int16_t mapType) override;
    /// Nothing to prepare: the settings are complete once read.
    void Prepare() override;
    std::string GetClassTitle() override;
    std::string GetSingleColour() override;
    Variant GetBreakFractions() override;
    int32_t GetValueCount(int16_t mapType) override;
    std::string GetValueTitle() override;
    std::string GetValueFieldKind() override;
    Variant GetValueLabels() override;
    Variant GetValueColours() override;
    Variant GetValues() override;
    Variant GetClassColours() override;

    struct Settings;
    struct ClassBreaks;
    struct UniqueValues;

private:
    const Settings& settings();
    const ClassBreaks& classBreaks(const char* operation);
    const UniqueValues& uniqueValues(const char* operation);
    int16_t lastType(const char* operation) const;

    std::filesystem::path m_root;
    std::unique_ptr<const Settings> m_settings;
    std::optional<int16_t> m_type;
};

} // namespace brevant::host::local
