#include "platform/geodatabase/FieldChecker.h"

#include "platform/automation/CaseInsensitive.h"

#include <cctype>
#include <set>

namespace brevant::platform::geodatabase {

namespace {
constexpr std::size_t kShapefileNameLength = 10;
constexpr int kShapefileTextLength = 254;

bool isNameCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

std::string cleanName(const std::string& name, bool shapefile)
{
    std::string clean;
    for (char c : name) {
        clean += isNameCharacter(c) || !shapefile ? c : '_';
    }
    if (clean.empty() || (shapefile && !std::isalpha(static_cast<unsigned char>(clean[0])))) {
        clean = "F" + clean;
    }
    if (shapefile && clean.size() > kShapefileNameLength) {
        clean.resize(kShapefileNameLength);
    }
    return clean;
}

// Numbers a clashing name ("Occupanc_1"), keeping it within the length limit.
std::string uniqueName(const std::string& name, const std::set<std::string>& taken,
                       bool shapefile)
{
    for (int n = 1;; ++n) {
        std::string suffix = std::to_string(n);
        suffix.insert(suffix.begin(), '_');
        std::string stem = name;
        if (shapefile && stem.size() + suffix.size() > kShapefileNameLength) {
            stem.resize(kShapefileNameLength - suffix.size());
        }
        if (!taken.count(automation::toLower(stem + suffix))) {
            return stem + suffix;
        }
    }
}
} // namespace

FieldCheck checkFields(const Fields& fields, Workspace::Kind target)
{
    const bool shapefile = target == Workspace::Kind::ShapefileFolder;
    FieldCheck check;
    std::set<std::string> taken;
    for (int i = 0; i < fields.count(); ++i) {
        Field field = fields.field(i);
        if (field.type != FieldType::OID && field.type != FieldType::Geometry) {
            std::string name = cleanName(field.name, shapefile);
            if (taken.count(automation::toLower(name))) {
                name = uniqueName(name, taken, shapefile);
            }
            if (name != field.name) {
                check.renamed.push_back({i, field.name, name});
                field.name = name;
            }
            if (shapefile && field.type == FieldType::String &&
                (field.length <= 0 || field.length > kShapefileTextLength)) {
                field.length = kShapefileTextLength;
            }
        }
        taken.insert(automation::toLower(field.name));
        check.fields.append(std::move(field));
    }
    return check;
}

} // namespace brevant::platform::geodatabase
