#include "app/ScriptRunner.h"

#include "app/DialogActions.h"
#include "app/JsonVariant.h"
#include "layers/frmLayer.h"
#include "platform/ui/qt/ModalWindow.h"
#include "context/EqErrorhandle.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/MemberTable.h"
#include "app/CartoJson.h"
#include "host/HostServices.h"
#include "host/local/JsonFiles.h"
#include "host/local/LocalApplication.h"
#include "host/RegionContextService.h"
#include "host/GisDataService.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/PageLayout.h"
#include "platform/display/LayoutRenderer.h"
#include "platform/display/MapRenderer.h"
#include "platform/geodatabase/FeatureClass.h"

#include <QImage>
#include <filesystem>

#include <istream>
#include <ostream>

namespace brevant::app {

using json = nlohmann::ordered_json;
using platform::automation::ArgList;
using platform::automation::AutomationError;
using platform::automation::AutomationObject;
using platform::automation::InvokeKind;
using platform::automation::Variant;

namespace {
constexpr const char* kSource = "brevant script";

[[noreturn]] void badStatement(const std::string& why)
{
    throw AutomationError(platform::automation::ErrorNumber::InvalidArgument, kSource, why);
}

struct Target {
    std::string object;
    std::string member;
};

Target splitTarget(const json& statement, const char* key)
{
    if (!statement.at(key).is_string()) {
        badStatement(std::string("\"") + key + "\" needs \"object.Member\"");
    }
    const auto text = statement.at(key).get<std::string>();
    const auto dot = text.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == text.size()) {
        badStatement(std::string("\"") + key + "\" needs \"object.Member\", not \"" + text + "\"");
    }
    return {text.substr(0, dot), text.substr(dot + 1)};
}

json errorJson(const AutomationError& error)
{
    return {{"number", error.number()},
            {"hex", error.hex()},
            {"source", error.source()},
            {"description", error.description()}};
}
} // namespace

ScriptRunner::ScriptRunner(const platform::automation::ClassRegistry& classes,
                           std::shared_ptr<platform::ui::ScriptedPrompts> prompts)
    : m_classes(classes), m_prompts(std::move(prompts)),
      m_dialogs(std::make_shared<platform::ui::DialogScript>())
{
    auto map = std::make_shared<platform::carto::Map>();
    auto layout = std::make_shared<platform::carto::PageLayout>();
    m_objects["app"] = std::make_shared<host::local::LocalApplication>(map, layout);
    m_objects["map"] = std::move(map);
    m_objects["layout"] = std::move(layout);
    platform::ui::installDialogScript(m_dialogs);
    platform::ui::qt::useWidgetApplication();
}

ScriptRunner::~ScriptRunner()
{
    if (platform::ui::dialogScript() == m_dialogs.get()) {
        platform::ui::installDialogScript(nullptr);
    }
}

json ScriptRunner::execute(const json& statement)
{
    json out;
    context::clearRecordedCause();
    try {
        const json result = dispatch(statement);
        out = json{{"ok", true}};
        out.update(result);
    } catch (...) {
        json error = errorJson(platform::automation::toAutomationError(std::current_exception()));
        // The host sees "The map engine failed in X"; a user of the command line also wants
        // what failed there, which the error log keeps.
        if (const auto cause = context::firstRecordedCause()) {
            error["cause"] = errorJson(AutomationError(cause->number, cause->source,
                                                       cause->description));
        }
        out = json{{"ok", false}, {"error", error}};
    }
    json messages = json::array();
    for (const auto& message : m_prompts->takeMessages()) {
        messages.push_back({{"title", message.title}, {"text", message.text}});
    }
    out["messages"] = messages;
    const auto reports = m_dialogs->takeReports();
    if (!reports.empty()) {
        json dialogs = json::array();
        for (const auto& report : reports) {
            dialogs.push_back(dialogReportToJson(report));
        }
        out["dialogs"] = dialogs;
    }
    return out;
}

json ScriptRunner::executeLine(const std::string& line)
{
    json statement;
    try {
        statement = host::local::parseJson<json>(line);
    } catch (const std::exception& e) {
        return execute(json{{"invalid", std::string("not a JSON statement: ") + e.what()}});
    }
    return execute(statement);
}

int ScriptRunner::run(std::istream& in, std::ostream& out)
{
    int failed = 0;
    std::string line;
    while (std::getline(in, line)) {
        const auto first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '#') {
            continue;
        }
        const json result = executeLine(line);
        if (!result.at("ok").get<bool>()) {
            ++failed;
        }
        // Text from the line or a file name may not be UTF-8: that line's output shows U+FFFD
        // where it is not, and the other lines still run.
        out << result.dump(-1, ' ', false, json::error_handler_t::replace) << '\n' << std::flush;
    }
    return failed;
}

json ScriptRunner::dispatch(const json& statement)
{
    if (!statement.is_object()) {
        badStatement("a statement is a JSON object, not " + statement.dump());
    }
    if (statement.contains("invalid")) {
        badStatement(statement.at("invalid").get<std::string>());
    }
    try {
        if (statement.contains("new")) {
            auto object = m_classes.create(statement.at("new").get<std::string>());
            keep(statement, object);
            return json{{"result", toJson(object)}};
        }
        if (statement.contains("call")) {
            return callStatement(statement);
        }
        if (statement.contains("get")) {
            const auto target = splitTarget(statement, "get");
            const Variant value =
                platform::automation::getProperty(*objectNamed(target.object), target.member);
            keep(statement, value);
            return json{{"result", toJson(value)}};
        }
        if (statement.contains("set")) {
            const auto target = splitTarget(statement, "set");
            if (!statement.contains("value")) {
                badStatement("\"set\" needs a \"value\"");
            }
            const Variant value = variantFromJson(
                statement.at("value"), [this](const std::string& n) { return objectNamed(n); });
            platform::automation::setProperty(*objectNamed(target.object), target.member, value);
            return json{{"result", nullptr}};
        }
        if (statement.contains("answers")) {
            if (!statement.at("answers").is_array()) {
                badStatement("\"answers\" needs an array of texts");
            }
            for (const auto& answer : statement.at("answers")) {
                m_prompts->queueAnswer(answer.is_string() ? answer.get<std::string>()
                                                          : answer.dump());
            }
            return json{{"result", nullptr}};
        }
        if (auto view = viewStatement(statement)) {
            return *view;
        }
        if (auto window = windowStatement(statement)) {
            return *window;
        }
    } catch (const json::exception& e) {
        badStatement("cannot read statement " + statement.dump() + ": " + e.what());
    }
    const std::string kind = statement.empty() ? std::string("{}") : statement.begin().key();
    badStatement("unknown statement \"" + kind +
                 "\"; brevant scripts know new, call, get, set, answers, open, add-layer, render, "
                 "export-layout, describe, dialog and show");
}

std::shared_ptr<platform::geodatabase::FeatureClass>
ScriptRunner::openRegionClass(const std::string& text, const std::string& verb)
{
    // DATABASE:CLASS, the database relative to the current region's folder.
    const auto colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
        badStatement("\"" + verb + "\" needs \"DATABASE:CLASS\", not \"" + text + "\"");
    }
    std::string database = text.substr(0, colon);
    if (!std::filesystem::path(database).is_absolute()) {
        database = host::hostServices().createRegionContextService()->GetRegionFolder() + database;
    }
    const Variant opened =
        host::hostServices().createGisDataService()->OpenFeatureClass(text.substr(colon + 1), database);
    return opened.objectAs<platform::geodatabase::FeatureClass>();
}

std::optional<json> ScriptRunner::viewStatement(const json& statement)
{
    namespace carto = platform::carto;
    namespace display = platform::display;
    const auto map = std::dynamic_pointer_cast<carto::Map>(objectNamed("map"));
    const auto layout = std::dynamic_pointer_cast<carto::PageLayout>(objectNamed("layout"));
    if (statement.contains("open")) {
        const auto opened = openRegionClass(statement.at("open").get<std::string>(), "open");
        keep(statement, Variant(std::static_pointer_cast<AutomationObject>(opened)));
        return json{{"result", toJson(Variant(std::static_pointer_cast<AutomationObject>(opened)))}};
    }
    if (statement.contains("add-layer")) {
        const auto opened = openRegionClass(statement.at("add-layer").get<std::string>(), "add-layer");
        auto layer = std::make_shared<carto::FeatureLayer>(opened);
        if (statement.contains("name")) {
            layer->setName(statement.at("name").get<std::string>());
        }
        if (map->spatialReference().isUnknown() && layer->featureClass()) {
            map->setSpatialReference(layer->featureClass()->spatialReference());
        }
        map->addLayer(layer);
        keep(statement, Variant(std::static_pointer_cast<AutomationObject>(layer)));
        return json{{"result", toJson(Variant(std::static_pointer_cast<AutomationObject>(layer)))}};
    }
    if (statement.contains("render")) {
        const std::string file = statement.at("render").get<std::string>();
        const int width = statement.value("width", 1200);
        const int height = statement.value("height", 900);
        if (width < 1 || height < 1) {
            badStatement("\"render\" needs a positive width and height");
        }
        auto extent = map->extent();
        if (extent.isEmpty()) {
            extent = map->fullExtent();
        }
        const QImage image = display::MapRenderer(*map).render(extent, QSize(width, height));
        if (!image.save(QString::fromStdString(file), "PNG")) {
            throw AutomationError(platform::automation::ErrorNumber::InvalidArgument, kSource,
                                  "cannot write " + file);
        }
        return json{{"result", file}};
    }
    if (statement.contains("export-layout")) {
        const std::filesystem::path file = statement.at("export-layout").get<std::string>();
        const display::LayoutRenderer renderer(*layout);
        if (file.extension() == ".pdf" || file.extension() == ".PDF") {
            renderer.exportPdf(file);
        } else {
            renderer.exportPng(file);
        }
        return json{{"result", file.string()}};
    }
    if (statement.contains("describe")) {
        const auto what = statement.at("describe").get<std::string>();
        if (what == "map") {
            return json{{"result", describeMap(*map)}};
        }
        if (what == "layout") {
            return json{{"result", describeLayout(*layout)}};
        }
        badStatement("\"describe\" takes \"map\" or \"layout\", not \"" + what + "\"");
    }
    return std::nullopt;
}

std::optional<json> ScriptRunner::windowStatement(const json& statement)
{
    if (statement.contains("dialog")) {
        m_dialogs->queue(dialogActionsFromJson(statement.at("dialog")));
        return json{{"result", nullptr}};
    }
    if (statement.contains("show")) {
        const auto what = statement.at("show").get<std::string>();
        if (what != "layers") {
            badStatement("\"show\" takes \"layers\", not \"" + what + "\"");
        }
        platform::ui::qt::ensureWidgetApplication();
        if (!m_layerControl) {
            m_layerControl = std::make_unique<layers::frmLayer>();
        }
        m_layerControl->CreateLayerList(std::dynamic_pointer_cast<platform::carto::Map>(objectNamed("map")));
        m_layerControl->showModal();
        return json{{"result", nullptr}};
    }
    return std::nullopt;
}

json ScriptRunner::callStatement(const json& statement)
{
    const auto target = splitTarget(statement, "call");
    auto object = objectNamed(target.object);
    ArgList args;
    if (statement.contains("args")) {
        if (!statement.at("args").is_array()) {
            badStatement("\"args\" needs an array");
        }
        for (const auto& arg : statement.at("args")) {
            args.push_back(
                variantFromJson(arg, [this](const std::string& n) { return objectNamed(n); }));
        }
    }
    const Variant result =
        platform::automation::invoke(*object, target.member, InvokeKind::Method, args);
    keep(statement, result);

    json byref = json::array();
    if (const auto* table = object->members()) {
        if (const auto* member = table->find(target.member)) {
            for (std::size_t i = 0; i < member->byRef.size() && i < args.size(); ++i) {
                if (member->byRef[i]) {
                    byref.push_back(toJson(args[i]));
                }
            }
        }
    }
    return json{{"result", toJson(result)}, {"byref", byref}};
}

std::shared_ptr<AutomationObject> ScriptRunner::objectNamed(const std::string& name) const
{
    const auto found = m_objects.find(name);
    if (found == m_objects.end()) {
        throw AutomationError(platform::automation::ErrorNumber::ObjectRequired, kSource,
                              "Object required: no object is named \"" + name + "\"");
    }
    return found->second;
}

std::string ScriptRunner::nameOf(const AutomationObject& object) const
{
    for (const auto& [name, held] : m_objects) {
        if (held.get() == &object) {
            return name;
        }
    }
    return {};
}

json ScriptRunner::toJson(const Variant& value) const
{
    return variantToJson(value, [this](const AutomationObject& o) { return nameOf(o); });
}

void ScriptRunner::keep(const json& statement, const Variant& value)
{
    if (!statement.contains("as")) {
        return;
    }
    const auto name = statement.at("as").get<std::string>();
    auto object = value.isObject() ? value.object() : nullptr;
    if (!object) {
        badStatement("\"as\" names objects only, and the result is " + value.typeName());
    }
    m_objects[name] = std::move(object);
}

} // namespace brevant::app
