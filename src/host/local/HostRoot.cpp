#include "host/local/HostRoot.h"

#include "host/local/HostErrors.h"
#include "host/local/JsonFiles.h"
#include "platform/automation/CaseInsensitive.h"

#include <fstream>
#include <nlohmann/json.hpp>

namespace brevant::host::local {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

namespace {
std::string withSeparator(const fs::path& path)
{
    std::string text = path.string();
    if (text.empty() || text.back() != fs::path::preferred_separator) {
        text += fs::path::preferred_separator;
    }
    return text;
}

template <class T>
T field(const json& object, const char* key, const T& fallback, const fs::path& file)
{
    if (!object.contains(key)) {
        return fallback;
    }
    try {
        return object.at(key).get<T>();
    } catch (const json::exception& e) {
        hostError(HostError::MalformedFile,
                  file.string() + ": \"" + key + "\" has the wrong type (" + e.what() + ")");
    }
}
} // namespace

HostRoot::HostRoot(fs::path root) : m_root(std::move(root))
{
}

HostRoot HostRoot::load(const fs::path& root)
{
    std::error_code ec;
    if (!fs::is_directory(root, ec)) {
        hostError(HostError::MissingFile, "host root " + root.string() + " is not a folder");
    }
    HostRoot host(root);
    const fs::path file = host.hostFile();
    const json doc = readJsonFile(file, "the host root has no host.json");
    if (!doc.is_object()) {
        hostError(HostError::MalformedFile, file.string() + " must hold a JSON object");
    }
    host.m_currentRegion = field<std::string>(doc, "currentRegion", "", file);
    const json folders = field<json>(doc, "folders", json::object(), file);
    if (!folders.is_object()) {
        hostError(HostError::MalformedFile, file.string() + ": \"folders\" must be an object");
    }
    host.m_stateFolder = field<std::string>(folders, "state", host.m_stateFolder, file);
    host.m_systemFolder = field<std::string>(folders, "system", host.m_systemFolder, file);
    host.m_scenarioFolder = field<std::string>(folders, "scenario", host.m_scenarioFolder, file);
    host.m_regionsFolder = field<std::string>(folders, "regions", host.m_regionsFolder, file);
    const json regions = field<json>(doc, "regions", json::array(), file);
    if (!regions.is_array()) {
        hostError(HostError::MalformedFile, file.string() + ": \"regions\" must be an array");
    }
    for (const auto& entry : regions) {
        if (!entry.is_object() || !entry.contains("name")) {
            hostError(HostError::MalformedFile,
                      file.string() + ": every region needs at least a \"name\"");
        }
        Region region;
        region.name = field<std::string>(entry, "name", "", file);
        region.number = field<int32_t>(entry, "number", 0, file);
        const auto hazards = field<std::vector<bool>>(entry, "hazards", {}, file);
        if (!hazards.empty() && hazards.size() != 3) {
            hostError(HostError::MalformedFile, file.string() + ": region \"" + region.name +
                                                    "\" needs exactly three hazard flags");
        }
        std::copy(hazards.begin(), hazards.end(), region.hazards.begin());
        host.m_regions.push_back(region);
    }
    return host;
}

void HostRoot::save() const
{
    json regions = json::array();
    for (const auto& region : m_regions) {
        regions.push_back(
            {{"name", region.name}, {"number", region.number}, {"hazards", region.hazards}});
    }
    const json doc = {{"format", 1},
                      {"currentRegion", m_currentRegion},
                      {"folders",
                       {{"state", m_stateFolder},
                        {"system", m_systemFolder},
                        {"scenario", m_scenarioFolder},
                        {"regions", m_regionsFolder}}},
                      {"regions", regions}};
    for (const auto* name :
         {&m_stateFolder, &m_systemFolder, &m_scenarioFolder, &m_regionsFolder}) {
        fs::create_directories(m_root / *name);
    }
    // Write beside and rename, so a failed write never leaves a half file behind.
    const fs::path file = hostFile();
    const fs::path temporary = file.string() + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << doc.dump(2) << '\n';
        if (!out) {
            hostError(HostError::MissingFile, "cannot write " + temporary.string());
        }
    }
    fs::rename(temporary, file);
}

std::string HostRoot::folder(const std::string& name) const
{
    return withSeparator(m_root / name);
}

std::string HostRoot::stateDataFolder() const
{
    return folder(m_stateFolder);
}

std::string HostRoot::systemDataFolder() const
{
    return folder(m_systemFolder);
}

std::string HostRoot::scenarioFolder() const
{
    return folder(m_scenarioFolder);
}

std::string HostRoot::regionsFolder() const
{
    return folder(m_regionsFolder);
}

std::string HostRoot::regionFolder(const std::string& region) const
{
    return withSeparator(m_root / m_regionsFolder / region);
}

fs::path HostRoot::regionDatabasePath(const std::string& region) const
{
    return m_root / m_regionsFolder / region / "region.sqlite";
}

const std::string& HostRoot::currentRegion() const
{
    if (m_currentRegion.empty()) {
        hostError(HostError::NoCurrentRegion,
                  "no study region is open: " + hostFile().string() + " names no currentRegion");
    }
    return m_currentRegion;
}

void HostRoot::putRegion(Region region)
{
    for (auto& existing : m_regions) {
        if (existing.name == region.name) {
            existing = std::move(region);
            return;
        }
    }
    m_regions.push_back(std::move(region));
}

const HostRoot::Region& HostRoot::regionByNumber(int32_t number) const
{
    for (const auto& region : m_regions) {
        if (region.number == number) {
            return region;
        }
    }
    hostError(HostError::UnknownKey, "region number " + std::to_string(number) +
                                         " is not listed in " + hostFile().string());
}

const HostRoot::Region& HostRoot::regionNamed(const std::string& name) const
{
    const std::string& wanted = name.empty() ? currentRegion() : name;
    for (const auto& region : m_regions) {
        if (platform::automation::equalsIgnoreCase(region.name, wanted)) {
            return region;
        }
    }
    hostError(HostError::UnknownKey,
              "region " + wanted + " is not listed in " + hostFile().string());
}

} // namespace brevant::host::local
