#include "app/AdminCommands.h"

#include "app/CommandOptions.h"
#include "host/local/HostBuilder.h"
#include "host/local/HostRoot.h"
#include "host/local/InventoryBuilder.h"
#include "host/local/MapRegistration.h"
#include "host/local/RegionBuilder.h"
#include "host/local/RegionDatabase.h"
#include "samplehost/SampleHost.h"

#include <charconv>
#include <ostream>

namespace brevant::app {

namespace fs = std::filesystem;
using namespace host::local;

namespace {

constexpr const char* kHostUsage = R"(Usage: brevant host init DIR

Writes an empty reference host root into DIR (missing or empty): host.json, the state, system,
scenario and regions folders, the system's scratch and template databases, message texts,
the default symbol catalogue and class settings, and the layout logo.
)";

constexpr const char* kRegionUsage =
    R"(Usage: brevant region create --host DIR NAME --boundary SRC --tracts SRC [--counties SRC]
                             [--tract-field F] [--county-field F] [--agg-level N] [--current]
       brevant region list --host DIR

create builds a study region from the user's files: the boundary (dissolved into one polygon),
the census tracts whose interior lies inside it (11-digit codes from --tract-field, else from
the first of Tract, GEOID, GEOID10, GEOID20), and the counties of those tracts (from --counties,
codes from --county-field or the first of CountyFips, GEOID, FIPS, id; without --counties the
tracts are dissolved by their first five digits). Shapes are moved to geographic NAD83 and
invalid ones repaired. The first region, or one made with --current, becomes the current
region. --agg-level defaults to 2. Bad input changes nothing.
list prints each region: name, number, whether it is current, folder.
SRC is a file or folder GDAL reads, optionally PATH:LAYER.
)";

constexpr const char* kMapUsage =
    R"(Usage: brevant map register --host DIR [--region NAME] CODE SRC [--value-field F | --value V]
       brevant map list --host DIR [--region NAME]

register records the user's polygon map of a hazard code (SOIL, LIQF, LAND, WATR, DAMF, TSUN,
SEIC, LEVF, PGAM, PGVM, SA03, SA10, STGD, LSGD, LFPR, LDGD, LDPR, SRGD, SRPR) for a region (the
current one by default). Its polygons are copied into the region's UserMaps folder with the
code's value field: from the user's field F with --value-field, the same value V for every
polygon with --value, else from the source's own Type or paramvalue field. A map registered
earlier for the code is replaced. Bad input changes nothing.
list prints each registered code: the copy, what it was made from, whether it was processed.
)";

constexpr const char* kInventoryUsage =
    R"(Usage: brevant inventory add --host DIR [--region NAME] CLASS --kind P|L [--database FILE]
                             [--from SRC [--id-field F] [--name-field F]]

Adds the inventory class CLASS (points with --kind P, lines with --kind L) to a region (the
current one by default): the class with its fields (and a line class's hazard table) in FILE
of the region folder (trn.mdb, util.mdb, ef.mdb, hplf.mdb or uds.mdb; by default where the
system keeps a class of that name, else uds.mdb), its server tables and its catalogue entry.
With --from the features of SRC become the region's inventory: points (a point inside polygon
features) take the tract they lie in; lines are cut at the region boundary; features outside
the region are left out and counted. Identifiers come from --id-field or are generated; names
from --name-field, else from a Name field when the source has one.
)";

VectorSource vectorSource(const std::string& text)
{
    const SourceName name = splitSource(text);
    return {name.path, name.layer};
}

int32_t wholeNumber(const std::string& text, const std::string& option)
{
    int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        throw UsageError(option + " needs a whole number, not " + text);
    }
    return value;
}

std::string repairs(int64_t repaired, int64_t dropped)
{
    std::string text = std::to_string(repaired) + " shapes repaired";
    if (dropped > 0) {
        text += ", " + std::to_string(dropped) + " without a usable shape left out";
    }
    return text;
}

int hostCommand(const std::vector<std::string>& args, std::ostream& out)
{
    const Options options = parseOptions(args, 2, {}, {});
    options.expectPositional(1, "DIR");
    initHost(options.positional[0]);
    out << "host init: empty host root in " << options.positional[0] << "\n";
    return 0;
}

int regionCommand(const std::vector<std::string>& args, const std::string& action,
                  std::ostream& out, std::ostream& err)
{
    if (action == "list") {
        const Options options = parseOptions(args, 2, {"host"}, {});
        options.expectPositional(0, "");
        const HostRoot host = HostRoot::load(options.required("host"));
        std::string current;
        try {
            current = host.currentRegion();
        } catch (const std::exception&) {
            // A host without regions has no current one.
        }
        for (const auto& region : host.regions()) {
            out << region.name << "\t" << region.number << "\t"
                << (region.name == current ? "current" : "") << "\t"
                << host.regionFolder(region.name) << "\n";
        }
        return 0;
    }
    if (action != "create") {
        throw UsageError("unknown action region " + action);
    }
    const Options options = parseOptions(
        args, 2,
        {"host", "boundary", "tracts", "counties", "tract-field", "county-field", "agg-level"},
        {"current"});
    options.expectPositional(1, "NAME");
    RegionRequest request;
    request.name = options.positional[0];
    request.boundary = vectorSource(options.required("boundary"));
    request.tracts = vectorSource(options.required("tracts"));
    if (options.values.count("counties")) {
        request.counties = vectorSource(options.required("counties"));
    }
    request.tractField = options.optional("tract-field", "");
    request.countyField = options.optional("county-field", "");
    request.aggLevel = wholeNumber(options.optional("agg-level", "2"), "--agg-level");
    request.makeCurrent = options.has("current");
    const auto start = std::chrono::steady_clock::now();
    const RegionReport report = createRegion(options.required("host"), request,
                                             [&err](const std::string& step) {
                                                 err << "region create: " << step << "\n";
                                             });
    out << "region create: " << report.name << " (region " << report.number
        << (report.current ? ", current" : "") << "): " << report.tracts << " tracts ("
        << report.tractsOutside << " outside the boundary left out), " << report.counties
        << " counties, " << repairs(report.repaired, report.dropped) << "; "
        << report.folder.string() << " (" << fixed(secondsSince(start)) << " s)\n";
    return 0;
}

int mapCommand(const std::vector<std::string>& args, const std::string& action, std::ostream& out)
{
    if (action == "list") {
        const Options options = parseOptions(args, 2, {"host", "region"}, {});
        options.expectPositional(0, "");
        const HostRoot host = HostRoot::load(options.required("host"));
        const std::string region = host.regionNamed(options.optional("region", "")).name;
        for (const auto& map : RegionDatabase(host.regionDatabasePath(region)).userMaps()) {
            out << map.code << "\t" << map.folder << map.fileName << ":" << map.className
                << "\t" << map.source << "\t" << (map.processed ? "processed" : "") << "\n";
        }
        return 0;
    }
    if (action != "register") {
        throw UsageError("unknown action map " + action);
    }
    const Options options =
        parseOptions(args, 2, {"host", "region", "value-field", "value"}, {});
    options.expectPositional(2, "CODE SRC");
    if (options.values.count("value") && options.values.count("value-field")) {
        throw UsageError("give --value-field or --value, not both");
    }
    MapRequest request;
    request.region = options.optional("region", "");
    request.code = options.positional[0];
    request.source = vectorSource(options.positional[1]);
    request.valueField = options.optional("value-field", "");
    if (options.values.count("value")) {
        request.value = options.required("value");
    }
    const auto claim = claimRegion(options.required("host"), request.region, args);
    const MapReport report = registerMap(options.required("host"), request);
    out << "map register: " << report.code << " for " << report.region << ": "
        << report.polygons << " polygons into " << report.database.string() << ":"
        << report.className << ", " << report.emptyValues << " without a value, "
        << repairs(report.repaired, report.dropped) << "\n";
    return 0;
}

int inventoryCommand(const std::vector<std::string>& args, const std::string& action,
                     std::ostream& out, std::ostream& err)
{
    if (action != "add") {
        throw UsageError("unknown action inventory " + action);
    }
    const Options options = parseOptions(
        args, 2, {"host", "region", "kind", "database", "from", "id-field", "name-field"}, {});
    options.expectPositional(1, "CLASS");
    const std::string kind = options.required("kind");
    if (kind != "P" && kind != "L" && kind != "p" && kind != "l") {
        throw UsageError("--kind is P or L, not " + kind);
    }
    if ((options.values.count("id-field") || options.values.count("name-field")) &&
        !options.values.count("from")) {
        throw UsageError("--id-field and --name-field need --from");
    }
    InventoryRequest request;
    request.region = options.optional("region", "");
    request.className = options.positional[0];
    request.kind = kind[0];
    request.database = options.optional("database", "");
    if (options.values.count("from")) {
        request.from = vectorSource(options.required("from"));
    }
    request.idField = options.optional("id-field", "");
    request.nameField = options.optional("name-field", "");
    const auto claim = claimRegion(options.required("host"), request.region, args);
    const auto start = std::chrono::steady_clock::now();
    const InventoryReport report =
        addInventory(options.required("host"), request, progressBar(err, "inventory add"));
    out << "inventory add: " << report.className << " in " << report.database << " of "
        << report.region;
    if (!report.hazardTable.empty()) {
        out << " with hazard table " << report.hazardTable;
    }
    out << ": " << report.loaded << " features loaded, " << report.outside
        << " outside the region left out, " << repairs(report.repaired, report.dropped) << " ("
        << fixed(secondsSince(start)) << " s)\n";
    return 0;
}

} // namespace

const char* const kSampleHostUsage =
    R"(Usage: brevant sample-host DIR [--size small|medium|large] [--seed N]

Writes a complete reference host root with one study region into DIR (missing or empty), built
from synthetic files the way a user builds one from their own: states, counties, tracts and
census blocks, the region boundary, statewide site-condition maps, inundation and ground-motion
maps, a probabilistic map, point and line inventory, epicentres and faults, flood study cases.
small (the default) takes seconds; large has more than 1,000,000 inventory points and maps of
more than 100,000 polygons. The same size and seed (default 1) give the same host.
)";

samplehost::SampleSize sampleSizeNamed(const std::string& name)
{
    return name == "small"    ? samplehost::SampleSize::Small
           : name == "medium" ? samplehost::SampleSize::Medium
           : name == "large"
               ? samplehost::SampleSize::Large
               : throw UsageError("--size is small, medium or large, not " + name);
}

int runSampleHost(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return guarded(args, "sample-host", kSampleHostUsage, out, err, [&]() -> int {
        const Options options = parseOptions(args, 1, {"size", "seed"}, {});
        options.expectPositional(1, "DIR");
        const auto size = sampleSizeNamed(options.optional("size", "small"));
        const int32_t seed = wholeNumber(options.optional("seed", "1"), "--seed");
        const auto start = std::chrono::steady_clock::now();
        const auto report = samplehost::writeSampleHost(
            options.positional[0], size, static_cast<std::uint64_t>(seed),
            [&err](const std::string& step) { err << "sample-host: " << step << "\n"; });
        out << "sample-host: " << options.positional[0] << ": region " << report.region << ", "
            << report.tracts << " tracts, " << report.maps << " maps, "
            << report.inventoryClasses << " inventory classes with " << report.inventoryFeatures
            << " features, " << report.repaired << " shapes repaired ("
            << fixed(secondsSince(start)) << " s)\n";
        return 0;
    });
}

const char* adminUsage(const std::string& group)
{
    if (group == "host") {
        return kHostUsage;
    }
    if (group == "region") {
        return kRegionUsage;
    }
    if (group == "map") {
        return kMapUsage;
    }
    if (group == "inventory") {
        return kInventoryUsage;
    }
    return nullptr;
}

int runAdmin(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    const std::string group = args.at(0);
    const std::string action = args.size() > 1 ? args[1] : "";
    return guarded(args, group + (action.empty() ? "" : " " + action), adminUsage(group), out,
                   err, [&]() -> int {
                       if (action.empty() || action.rfind("--", 0) == 0) {
                           throw UsageError("missing the action");
                       }
                       if (group == "host") {
                           if (action != "init") {
                               throw UsageError("unknown action host " + action);
                           }
                           return hostCommand(args, out);
                       }
                       if (group == "region") {
                           return regionCommand(args, action, out, err);
                       }
                       if (group == "map") {
                           return mapCommand(args, action, out);
                       }
                       return inventoryCommand(args, action, out, err);
                   });
}

} // namespace brevant::app
