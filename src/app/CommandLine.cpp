#include "app/CommandLine.h"

#include "BrevantClasses.h"
#include "app/AdminCommands.h"
#include "app/CommandOptions.h"
#include "app/DemoCommand.h"
#include "app/GeoprocessingCommands.h"
#include "app/ScriptRunner.h"
#include "platform/ui/ConsolePrompts.h"
#include "host/HostServices.h"
#include "host/local/JsonFiles.h"
#include "host/local/LocalHostServices.h"
#include "platform/automation/AutomationError.h"

#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

namespace brevant::app {

namespace {
using json = nlohmann::ordered_json;

constexpr const char* kUsage = R"(Usage: brevant COMMAND [OPTIONS]

The map engine of a multi-hazard loss-estimation system, driven from the command line.

Commands:
  demo        Build a sample host and run a typical session on it, writing each map as a PNG
  call        Create an object and call one member, print the result as JSON
  script      Run a script of JSON statements, one per line
  transfer    Copy a polygon field onto the features inside (or nearest to) them
  clip        Clip features by polygons into a GeoPackage layer
  intersect   Intersect two sources into a GeoPackage layer
  host        host init: write an empty host root
  region      region create, region list: study regions from the user's files
  map         map register, map list: the user's hazard maps of a region
  inventory   inventory add: an inventory class of a region, optionally loaded from a file
  sample-host Write a complete sample host root built from synthetic files
  help        Show help for a command

Run 'brevant COMMAND --help' for the options of a command.
)";

constexpr const char* kCallUsage = R"(Usage: brevant call --host DIR PROGID MEMBER [ARG ...]

Creates an object of the class PROGID (for example Brevant.EqPolyGon) on the reference host
rooted at DIR, calls MEMBER (a method, or a property to read) and prints one JSON line:
  {"ok": true, "result": ..., "byref": [...], "messages": [...]}
  {"ok": false, "error": {"number", "hex", "source", "description", "cause"}, "messages": [...]}

Each ARG is read as JSON when it parses ({"i2": 5}, true, 1.5, {"collection": ["SOIL"]}),
otherwise taken as a string. Exit status: 0 when the call succeeded, 1 when it failed.
)";

constexpr const char* kScriptUsage = R"(Usage: brevant script --host DIR [FILE|-]

Runs JSON Lines statements from FILE (or standard input) against the reference host rooted at
DIR, printing one JSON line per statement. Statements:
  {"new": "Brevant.EqDataMaps", "as": "dm"}           create an object, name it
  {"call": "dm.Member", "args": [...], "as": "x"}     call a method (name an object result)
  {"get": "pt.m_pMap"}                                read a property
  {"set": "pt.m_pMap", "value": {"ref": "map"}}       assign a property
  {"answers": ["80", "Cancel"]}                       queue answers for input and message boxes
  {"open": "RegionBndry.mdb:eqTract", "as": "tracts"}  open a class (an argument by "ref")
  {"add-layer": "RegionBndry.mdb:hztract", "name": "Tracts"}   put a class on the map
  {"render": "map.png", "width": 1200, "height": 900} draw the map to a PNG
  {"export-layout": "page.pdf"}                       draw the page layout to PDF (or PNG)
  {"describe": "map"}  {"describe": "layout"}         the map or the page as JSON
  {"dialog": [{"select": ["lstLayers", 1]}, {"press": "cmdUp"}]}
                                                      queue actions for the next window
  {"show": "layers"}                                  open the layer control on the map
The names "map" and "layout" are the host document's map and page layout. Blank lines and
lines starting with # are skipped.

Arguments: strings, booleans and null as they are; numbers are doubles unless typed
({"i2": 5}, {"i4": 5}, {"r8": 1}); {"date": "2026-01-31"}; {"empty": true};
{"collection": [...]}; arrays are one-dimensional arrays, {"array2": [[...], ...]}
two-dimensional; {"ref": "name"} an object made earlier. By-reference arguments come back in
"byref", in argument order. Message boxes never block: they are printed to standard error
and reported in "messages".

Windows never wait for a user in a script: each runs the actions queued by "dialog" (tool,
click, drag, move, press, select, check, text, choose, menu, read, colour, screenshot, close),
offscreen when there is no display, and is closed as by its close box when they run out. The
line of the statement that showed it carries "dialogs": per window its form, caption, actions
(each with "ok" and, when refused, "error"), values read, how it closed and the Qt platform.

Exit status: 0 when every statement succeeded, 1 when any failed, 2 for a usage error.
)";

bool wantsHelp(const std::vector<std::string>& args)
{
    for (const auto& arg : args) {
        if (arg == "--help" || arg == "-h") {
            return true;
        }
    }
    return false;
}

struct Options {
    std::optional<std::string> host;
    std::vector<std::string> positional;
};

std::optional<Options> parseOptions(const std::vector<std::string>& args, std::ostream& err)
{
    Options options;
    for (std::size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--host") {
            if (i + 1 == args.size()) {
                err << "brevant: --host needs a folder\n";
                return std::nullopt;
            }
            options.host = args[++i];
        } else if (args[i].rfind("--host=", 0) == 0) {
            options.host = args[i].substr(7);
        } else if (args[i].size() > 1 && args[i][0] == '-' && args[i] != "-") {
            err << "brevant: unknown option " << args[i] << '\n';
            return std::nullopt;
        } else {
            options.positional.push_back(args[i]);
        }
    }
    if (!options.host) {
        err << "brevant: " << args[0] << " needs --host DIR\n";
        return std::nullopt;
    }
    return options;
}

/// Claims the host's current region for this process and installs the reference host; on
/// failure prints the error as a JSON line.
bool installHost(const std::string& root, const std::vector<std::string>& args,
                 std::optional<host::local::RegionLock>& claim, std::ostream& out)
{
    try {
        claim = claimRegion(root, "", args);
        host::installHostServices(std::make_shared<host::local::LocalHostServices>(root));
        return true;
    } catch (...) {
        const auto error = platform::automation::toAutomationError(std::current_exception());
        out << json{{"ok", false},
                    {"error",
                     {{"number", error.number()},
                      {"hex", error.hex()},
                      {"source", error.source()},
                      {"description", error.description()}}},
                    {"messages", json::array()}}
                   .dump(-1, ' ', false, json::error_handler_t::replace)
            << '\n';
        return false;
    }
}

/// Prompts on stderr that never block, installed for the whole library so that what it shows
/// reaches the script's "messages" too.
std::shared_ptr<platform::ui::ScriptedPrompts> consolePrompts()
{
    auto prompts = std::make_shared<platform::ui::ConsolePrompts>();
    platform::ui::installUserPrompts(prompts);
    return prompts;
}

int runCall(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const auto options = parseOptions(args, err);
    if (!options || options->positional.size() < 2) {
        if (options) {
            err << "brevant: call needs PROGID and MEMBER\n";
        }
        err << kCallUsage;
        return 2;
    }
    std::optional<host::local::RegionLock> claim;
    if (!installHost(*options->host, args, claim, out)) {
        return 1;
    }
    ScriptRunner runner(classes(), consolePrompts());
    const auto& progId = options->positional[0];
    json created = runner.execute(json{{"new", progId}, {"as", "object"}});
    if (!created.at("ok").get<bool>()) {
        out << created.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
        return 1;
    }
    json callArgs = json::array();
    for (std::size_t i = 2; i < options->positional.size(); ++i) {
        const auto& text = options->positional[i];
        // An argument that is no JSON (or nests too deep to be read as JSON) is plain text.
        json parsed;
        try {
            parsed = host::local::parseJson<json>(text);
        } catch (const std::exception&) {
            parsed = json(text);
        }
        callArgs.push_back(parsed);
    }
    const json result =
        runner.execute(json{{"call", "object." + options->positional[1]}, {"args", callArgs}});
    out << result.dump(-1, ' ', false, json::error_handler_t::replace) << '\n';
    return result.at("ok").get<bool>() ? 0 : 1;
}

int runScript(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
              std::ostream& err)
{
    const auto options = parseOptions(args, err);
    if (!options || options->positional.size() > 1) {
        if (options) {
            err << "brevant: script takes one FILE\n";
        }
        err << kScriptUsage;
        return 2;
    }
    std::ifstream file;
    std::istream* source = &in;
    if (!options->positional.empty() && options->positional[0] != "-") {
        file.open(options->positional[0]);
        if (!file) {
            err << "brevant: cannot read script " << options->positional[0] << '\n';
            return 2;
        }
        source = &file;
    }
    std::optional<host::local::RegionLock> claim;
    if (!installHost(*options->host, args, claim, out)) {
        return 1;
    }
    ScriptRunner runner(classes(), consolePrompts());
    return runner.run(*source, out) == 0 ? 0 : 1;
}
} // namespace

int runCommandLine(const std::vector<std::string>& args, std::istream& in, std::ostream& out,
                   std::ostream& err)
{
    if (args.empty() || args[0] == "--help" || args[0] == "-h") {
        (args.empty() ? err : out) << kUsage;
        return args.empty() ? 2 : 0;
    }
    const std::string& command = args[0];
    if (command == "help") {
        const std::string topic = args.size() > 1 ? args[1] : "";
        const std::map<std::string, const char*> usages = {
            {"call", kCallUsage},         {"script", kScriptUsage}, {"transfer", kTransferUsage},
            {"clip", kClipUsage},         {"intersect", kIntersectUsage}};
        const auto found = usages.find(topic);
        const char* admin = topic == "sample-host" ? kSampleHostUsage
                            : topic == "demo"      ? kDemoUsage
                                                   : adminUsage(topic);
        out << (found != usages.end() ? found->second : admin ? admin : kUsage);
        return 0;
    }
    if (adminUsage(command)) {
        return runAdmin(args, out, err);
    }
    if (command == "demo") {
        return runDemo(args, out, err);
    }
    if (command == "sample-host") {
        return runSampleHost(args, out, err);
    }
    if (command == "transfer") {
        return runTransfer(args, out, err);
    }
    if (command == "clip") {
        return runClip(args, out, err);
    }
    if (command == "intersect") {
        return runIntersect(args, out, err);
    }
    if (command == "call") {
        if (wantsHelp(args)) {
            out << kCallUsage;
            return 0;
        }
        return runCall(args, out, err);
    }
    if (command == "script") {
        if (wantsHelp(args)) {
            out << kScriptUsage;
            return 0;
        }
        return runScript(args, in, out, err);
    }
    err << "brevant: unknown command \"" << command << "\"\n" << kUsage;
    return 2;
}

} // namespace brevant::app
