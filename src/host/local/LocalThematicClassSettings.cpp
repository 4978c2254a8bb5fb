#include "host/local/LocalThematicClassSettings.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/JsonEntryReader.h"
#include "host/local/JsonFiles.h"
#include "platform/automation/VariantArray.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

namespace brevant::host::local {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;
using platform::automation::Variant;
using platform::automation::VariantArray;

struct LocalThematicClassSettings::ClassBreaks {
    std::string title;
    std::string singleColour;
    std::vector<double> fractions;
    std::vector<std::string> colours;
};

struct LocalThematicClassSettings::UniqueValues {
    std::string title;
    std::string fieldKind;
    std::vector<Variant> values;
    std::vector<std::string> labels;
    std::vector<std::string> colours;
};

struct LocalThematicClassSettings::Settings {
    struct Entry {
        std::optional<ClassBreaks> classBreaks;
        std::optional<UniqueValues> uniqueValues;
    };
    fs::path file;
    std::map<int16_t, Entry> types;
};

namespace {

using ClassBreaks = LocalThematicClassSettings::ClassBreaks;
using UniqueValues = LocalThematicClassSettings::UniqueValues;
using Settings = LocalThematicClassSettings::Settings;

/// Reads classes.json, naming file and map type in every complaint.
class SettingsParser : public JsonEntryReader {
    static constexpr std::string_view kNotAnObject = "has an entry that is not a JSON object";

public:
    explicit SettingsParser(const fs::path& file) : m_file(file) {}

    Settings parse(const json& doc)
    {
        if (!doc.is_object() || !doc.contains("mapTypes") || !doc.at("mapTypes").is_array()) {
            fail("must hold an object with a \"mapTypes\" array");
        }
        Settings out;
        out.file = m_file;
        for (const json& item : doc.at("mapTypes")) {
            m_where.clear();
            checkKeys(item, {"type", "description", "classBreaks", "uniqueValues"}, kNotAnObject);
            const auto type = item.find("type");
            if (type == item.end() || !type->is_number_integer() || type->get<int64_t>() < 0 ||
                type->get<int64_t>() > INT16_MAX) {
                fail("every map type needs a \"type\" number from 0 to 32767");
            }
            const auto mapType = type->get<int16_t>();
            m_where = "map type " + std::to_string(mapType);
            if (out.types.contains(mapType)) {
                fail("is listed twice");
            }
            Settings::Entry entry;
            if (item.contains("classBreaks")) {
                entry.classBreaks = classBreaks(item.at("classBreaks"));
            }
            if (item.contains("uniqueValues")) {
                entry.uniqueValues = uniqueValues(item.at("uniqueValues"));
            }
            if (!entry.classBreaks && !entry.uniqueValues) {
                fail("needs \"classBreaks\", \"uniqueValues\" or both");
            }
            out.types.emplace(mapType, std::move(entry));
        }
        return out;
    }

private:
    ClassBreaks classBreaks(const json& item)
    {
        checkKeys(item, {"title", "singleColour", "classes"}, kNotAnObject);
        ClassBreaks out;
        out.title = text(item, "title");
        out.singleColour = colour(item, "singleColour");
        for (const json& entry : list(item, "classes")) {
            checkKeys(entry, {"fraction", "colour"}, kNotAnObject);
            const auto fraction = entry.find("fraction");
            if (fraction == entry.end() || !fraction->is_number() ||
                fraction->get<double>() < 0.0 || fraction->get<double>() > 1.0) {
                fail("needs a \"fraction\" from 0 to 1 for every class");
            }
            if (!out.fractions.empty() && fraction->get<double>() <= out.fractions.back()) {
                fail("has class fractions that do not rise from class to class");
            }
            out.fractions.push_back(fraction->get<double>());
            out.colours.push_back(colour(entry, "colour"));
        }
        return out;
    }

    UniqueValues uniqueValues(const json& item)
    {
        checkKeys(item, {"title", "fieldKind", "values"}, kNotAnObject);
        UniqueValues out;
        out.title = text(item, "title");
        out.fieldKind = text(item, "fieldKind");
        if (out.fieldKind != "C" && out.fieldKind != "N") {
            fail("has the field kind \"" + out.fieldKind +
                 "\"; it is \"C\" (text field) or \"N\" (numeric field)");
        }
        for (const json& entry : list(item, "values")) {
            checkKeys(entry, {"value", "label", "colour"}, kNotAnObject);
            const auto value = entry.find("value");
            Variant parsed;
            if (out.fieldKind == "C" && value != entry.end() && value->is_string()) {
                parsed = Variant(value->get<std::string>());
            } else if (out.fieldKind == "N" && value != entry.end() && value->is_number_integer() &&
                       value->get<int64_t>() >= INT32_MIN && value->get<int64_t>() <= INT32_MAX) {
                parsed = Variant(value->get<int32_t>());
            } else if (out.fieldKind == "N" && value != entry.end() && value->is_number()) {
                parsed = Variant(value->get<double>());
            } else {
                fail(out.fieldKind == "C"
                         ? "needs a text \"value\" for every value of a \"C\" field"
                         : "needs a number \"value\" for every value of an "
                           "\"N\" field");
            }
            // Renderers match values as text, so 1 and 1.0 are the same value.
            const bool repeated =
                std::any_of(out.values.begin(), out.values.end(), [&](const Variant& earlier) {
                    return earlier.toString() == parsed.toString();
                });
            if (repeated) {
                fail("lists the value " + parsed.toString() + " twice");
            }
            out.values.push_back(parsed);
            out.labels.push_back(text(entry, "label"));
            out.colours.push_back(colour(entry, "colour"));
        }
        return out;
    }

    const json& list(const json& item, const char* key)
    {
        const auto found = item.find(key);
        if (found == item.end() || !found->is_array() || found->empty()) {
            fail(std::string("needs \"") + key + "\" as a list of at least one entry");
        }
        return *found;
    }

    std::string colour(const json& item, const char* key)
    {
        const std::string value = text(item, key);
        if (!isColourText(value)) {
            fail(std::string("has the ") + key + " \"" + value +
                 "\"; a colour is \"red,green,blue\" with components 0 to 255");
        }
        return value;
    }

    [[noreturn]] void fail(const std::string& what) const override
    {
        hostError(HostError::MalformedFile,
                  m_file.string() + ": " + (m_where.empty() ? "" : m_where + " ") + what);
    }

    const fs::path& m_file;
    std::string m_where;
};

/// One column, one row per item, both dimensions from 0.
Variant column(const std::vector<Variant>& items)
{
    VariantArray array({0, static_cast<int32_t>(items.size())}, {0, 1});
    for (std::size_t i = 0; i < items.size(); ++i) {
        array.at(static_cast<int32_t>(i), 0) = items[i];
    }
    return Variant(std::move(array));
}

template <class T> Variant column(const std::vector<T>& items)
{
    return column(std::vector<Variant>(items.begin(), items.end()));
}

} // namespace

LocalThematicClassSettings::LocalThematicClassSettings(fs::path root) : m_root(std::move(root))
{
}

LocalThematicClassSettings::~LocalThematicClassSettings() = default;

fs::path LocalThematicClassSettings::settingsFile(const fs::path& systemFolder)
{
    return systemFolder / "classes.json";
}

const LocalThematicClassSettings::Settings& LocalThematicClassSettings::settings()
{
    if (m_settings) {
        return *m_settings;
    }
    const fs::path file = settingsFile(HostRoot::load(m_root).systemDataFolder());
    const json doc = readJsonFile(file, "the host has no thematic class settings");
    m_settings = std::make_unique<const Settings>(SettingsParser(file).parse(doc));
    return *m_settings;
}

int16_t LocalThematicClassSettings::lastType(const char* operation) const
{
    if (!m_type) {
        hostError(HostError::UnknownKey,
                  std::string("ThematicClassSettings.") + operation +
                      " answers for the map type last given, and none was given: call "
                      "GetClassCount or GetValueCount first");
    }
    return *m_type;
}

const LocalThematicClassSettings::ClassBreaks&
LocalThematicClassSettings::classBreaks(const char* operation)
{
    const int16_t type = lastType(operation);
    const Settings& all = settings();
    const auto found = all.types.find(type);
    if (found == all.types.end() || !found->second.classBreaks) {
        hostError(HostError::UnknownKey,
                  all.file.string() + " has no class-break settings for thematic map type " +
                      std::to_string(type) +
                      (found == all.types.end() ? "" : " (it has unique-value settings only)"));
    }
    return *found->second.classBreaks;
}

const LocalThematicClassSettings::UniqueValues&
LocalThematicClassSettings::uniqueValues(const char* operation)
{
    const int16_t type = lastType(operation);
    const Settings& all = settings();
    const auto found = all.types.find(type);
    if (found == all.types.end() || !found->second.uniqueValues) {
        hostError(HostError::UnknownKey,
                  all.file.string() + " has no unique-value settings for thematic map type " +
                      std::to_string(type) +
                      (found == all.types.end() ? "" : " (it has class-break settings only)"));
    }
    return *found->second.uniqueValues;
}

int32_t LocalThematicClassSettings::GetClassCount(int16_t mapType)
{
    m_type = mapType;
    return static_cast<int32_t>(classBreaks("GetClassCount").colours.size());
}

void LocalThematicClassSettings::Prepare()
{
}

std::string LocalThematicClassSettings::GetClassTitle()
{
    return classBreaks("GetClassTitle").title;
}

std::string LocalThematicClassSettings::GetSingleColour()
{
    return classBreaks("GetSingleColour").singleColour;
}

Variant LocalThematicClassSettings::GetBreakFractions()
{
    return column(classBreaks("GetBreakFractions").fractions);
}

Variant LocalThematicClassSettings::GetClassColours()
{
    return column(classBreaks("GetClassColours").colours);
}

int32_t LocalThematicClassSettings::GetValueCount(int16_t mapType)
{
    m_type = mapType;
    return static_cast<int32_t>(uniqueValues("GetValueCount").values.size());
}

std::string LocalThematicClassSettings::GetValueTitle()
{
    return uniqueValues("GetValueTitle").title;
}

std::string LocalThematicClassSettings::GetValueFieldKind()
{
    return uniqueValues("GetValueFieldKind").fieldKind;
}

Variant LocalThematicClassSettings::GetValueLabels()
{
    return column(uniqueValues("GetValueLabels").labels);
}

Variant LocalThematicClassSettings::GetValueColours()
{
    return column(uniqueValues("GetValueColours").colours);
}

Variant LocalThematicClassSettings::GetValues()
{
    return column(uniqueValues("GetValues").values);
}

} // namespace brevant::host::local
