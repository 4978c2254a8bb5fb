#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/automation/ClassRegistry.h"
#include "platform/automation/Variant.h"
#include "platform/ui/DialogScript.h"
#include "platform/ui/ScriptedPrompts.h"

#include <iosfwd>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::layers {
class frmLayer;
}

namespace brevant::app {

/// Runs script statements against the library, one JSON object per statement:
///
///     {"new": "Brevant.EqDataMaps", "as": "dm"}
///     {"call": "dm.ClipHazardDataMaps", "args": [...], "as": "result"}
///     {"get": "pt.m_pMap"}   {"set": "pt.m_pMap", "value": {"ref": "map"}}
///     {"answers": ["80"]}
///     {"open": "RegionBndry.mdb:eqTract", "as": "points"}
///     {"add-layer": "RegionBndry.mdb:hztract", "name": "Tracts", "as": "tracts"}
///     {"render": "map.png", "width": 1200, "height": 900}
///     {"export-layout": "page.pdf"}   {"describe": "map"}   {"describe": "layout"}
///     {"dialog": [{"select": ["lstLayers", 1]}, {"press": "cmdUp"}]}   {"show": "layers"}
///
/// and answers each with one JSON object: {"ok": true, "result": ..., "byref": [...],
/// "messages": [...]} or {"ok": false, "error": {"number", "hex", "source", "description"},
/// "messages": [...]}. The names "map" and "layout" are the host document's map and page
/// layout from the start, and "app" the host application that holds them; open names a class
/// for later arguments; add-layer opens a class (its database relative to the current region's
/// folder, or absolute) through the host and puts it on top of the map. dialog queues actions
/// for the next window shown; show opens the layer control on the map. The output line of a
/// statement that showed windows carries a "dialogs" entry per window.
class ScriptRunner {
public:
    /// Installs its dialog script for the windows the library shows.
    ScriptRunner(const platform::automation::ClassRegistry& classes,
                 std::shared_ptr<platform::ui::ScriptedPrompts> prompts);
    ~ScriptRunner();
    ScriptRunner(const ScriptRunner&) = delete;
    ScriptRunner& operator=(const ScriptRunner&) = delete;

    /// Runs one statement; never throws.
    nlohmann::ordered_json execute(const nlohmann::ordered_json& statement);
    /// Parses and runs one line; never throws.
    nlohmann::ordered_json executeLine(const std::string& line);
    /// Runs every non-blank line that does not start with '#', writing one JSON line each;
    /// returns the number of statements that failed.
    int run(std::istream& in, std::ostream& out);

private:
    nlohmann::ordered_json dispatch(const nlohmann::ordered_json& statement);
    nlohmann::ordered_json callStatement(const nlohmann::ordered_json& statement);
    std::optional<nlohmann::ordered_json> viewStatement(const nlohmann::ordered_json& statement);
    std::optional<nlohmann::ordered_json> windowStatement(const nlohmann::ordered_json& statement);
    /// The class of "DATABASE:CLASS", the database relative to the current region's folder;
    /// `verb` names the statement in the error for a malformed text.
    std::shared_ptr<platform::geodatabase::FeatureClass> openRegionClass(const std::string& text,
                                                                         const std::string& verb);
    std::shared_ptr<platform::automation::AutomationObject>
    objectNamed(const std::string& name) const;
    std::string nameOf(const platform::automation::AutomationObject& object) const;
    nlohmann::ordered_json toJson(const platform::automation::Variant& value) const;
    void keep(const nlohmann::ordered_json& statement, const platform::automation::Variant& value);

    const platform::automation::ClassRegistry& m_classes;
    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
    std::map<std::string, std::shared_ptr<platform::automation::AutomationObject>> m_objects;
    std::shared_ptr<platform::ui::DialogScript> m_dialogs;
    /// The layer control, kept between showings as its close box only hides it.
    std::unique_ptr<layers::frmLayer> m_layerControl;
};

} // namespace brevant::app
