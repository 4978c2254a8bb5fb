#include "app/GeoprocessingCommands.h"

#include "platform/automation/AutomationError.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/ValueTransfer.h"
#include "platform/geodatabase/Workspace.h"

#include <unistd.h>

#include <chrono>
#include <cstring>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <ostream>
#include <stdexcept>

namespace brevant::app {

namespace fs = std::filesystem;
using platform::geodatabase::FeatureClass;
using platform::geodatabase::Workspace;

const char* const kTransferUsage =
    R"(Usage: brevant transfer --target SRC --source SRC --field F [--source-field F] [--contained-only]

Gives each feature of the target the value of field F (or --source-field) of the source polygon
that contains it, else of the nearest source polygon at any distance. With --contained-only only
a polygon that contains or touches the feature counts; other features keep their value. The
target is changed in place (it must be writable: a GeoPackage, or a shapefile folder).
SRC is a file or folder GDAL reads, optionally PATH:LAYER.
)";

const char* const kClipUsage = R"(Usage: brevant clip --input SRC --clip SRC --output GPKG:LAYER

Writes the features of the input cut by the union of the clip polygons, with the input's
attributes, to LAYER of the GeoPackage GPKG (created if missing; an existing LAYER is replaced).
)";

const char* const kIntersectUsage =
    R"(Usage: brevant intersect --input SRC --with SRC --output GPKG:LAYER

Writes the pairwise intersections of the input's features with those of the second source,
each with the attributes of both, to LAYER of the GeoPackage GPKG (an existing LAYER is
replaced).
)";

namespace {
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The arguments are well formed but the data does not fit them (a missing field).
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// --name value options, and bare flags.
struct Options {
    std::map<std::string, std::string> values;
    std::vector<std::string> flags;

    const std::string& required(const std::string& name) const
    {
        const auto found = values.find(name);
        if (found == values.end()) {
            throw UsageError("missing --" + name);
        }
        return found->second;
    }
    std::string optional(const std::string& name, const std::string& fallback) const
    {
        const auto found = values.find(name);
        return found == values.end() ? fallback : found->second;
    }
    bool has(const std::string& flag) const
    {
        return std::find(flags.begin(), flags.end(), flag) != flags.end();
    }
};

Options parse(const std::vector<std::string>& args, const std::vector<std::string>& valueNames,
              const std::vector<std::string>& flagNames)
{
    Options options;
    for (std::size_t i = 1; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg.rfind("--", 0) != 0) {
            throw UsageError("unexpected argument " + arg);
        }
        const std::string name = arg.substr(2);
        if (std::find(flagNames.begin(), flagNames.end(), name) != flagNames.end()) {
            options.flags.push_back(name);
        } else if (std::find(valueNames.begin(), valueNames.end(), name) != valueNames.end()) {
            if (i + 1 == args.size()) {
                throw UsageError(arg + " needs a value");
            }
            options.values[name] = args[++i];
        } else {
            throw UsageError("unknown option " + arg);
        }
    }
    return options;
}

struct Source {
    fs::path path;
    std::string layer;
};

/// PATH or PATH:LAYER; a path that exists as written wins over the split.
Source splitSource(const std::string& text)
{
    std::error_code ec;
    const auto colon = text.rfind(':');
    if (fs::exists(text, ec) || colon == std::string::npos || colon == 0) {
        return {text, {}};
    }
    return {text.substr(0, colon), text.substr(colon + 1)};
}

std::shared_ptr<FeatureClass> openSource(const std::string& text, bool writable)
{
    const Source source = splitSource(text);
    Workspace workspace = Workspace::open(source.path, !writable);
    std::string layer = source.layer;
    if (layer.empty()) {
        const auto names = workspace.datasetNames();
        if (names.size() != 1) {
            throw UsageError(source.path.string() + " holds " + std::to_string(names.size()) +
                             " layers; name one as PATH:LAYER");
        }
        layer = names.front();
    }
    return workspace.openFeatureClass(layer);
}

// The result is written under a scratch name and takes the requested name only once it is
// complete, so a failure leaves an earlier result of that name as it was.
constexpr const char* kScratchSuffix = "_brevant_partial";

platform::geodatabase::OutputDescription outputOf(const std::string& text)
{
    const auto colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
        throw UsageError("--output needs GPKG:LAYER, not " + text);
    }
    const fs::path path = text.substr(0, colon);
    const std::string layer = text.substr(colon + 1);
    std::error_code ec;
    Workspace workspace = fs::exists(path, ec) ? Workspace::open(path)
                                               : Workspace::createGeoPackage(path);
    workspace.deleteDataset(layer + kScratchSuffix);
    return {workspace, layer + kScratchSuffix, "Shape"};
}

/// Gives the finished scratch result its requested name.
std::string publish(const platform::geodatabase::OutputDescription& output)
{
    Workspace workspace = output.workspace;
    const std::string layer = output.name.substr(0, output.name.size() - std::strlen(kScratchSuffix));
    workspace.deleteDataset(layer);
    workspace.renameDataset(output.name, layer);
    return layer;
}

/// Progress on stderr: a bar redrawn in place on a terminal, a line per quarter in a log.
auto progressBar(std::ostream& err, const std::string& label)
{
    const bool terminal = &err == &std::cerr && isatty(STDERR_FILENO);
    return [&err, label, terminal, last = -1](int64_t done, int64_t total) mutable {
        const int percent = total > 0 ? static_cast<int>(100 * done / total) : 100;
        const int step = terminal ? percent : percent / 25 * 25;
        if (step == last) {
            return;
        }
        last = step;
        if (!terminal) {
            err << label << ": " << percent << "% (" << done << "/" << total << ")\n";
            return;
        }
        const int filled = percent / 5;
        err << '\r' << label << " [" << std::string(filled, '#') << std::string(20 - filled, ' ')
            << "] " << percent << "% (" << done << "/" << total << ")" << std::flush;
        if (percent >= 100) {
            err << '\n';
        }
    };
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string fixed(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

template <class Body>
int guarded(const std::vector<std::string>& args, const char* usage, std::ostream& out,
            std::ostream& err, Body&& body)
{
    for (const auto& arg : args) {
        if (arg == "--help" || arg == "-h") {
            out << usage;
            return 0;
        }
    }
    try {
        return body();
    } catch (const UsageError& e) {
        err << "brevant " << args[0] << ": " << e.what() << "\n" << usage;
        return 2;
    } catch (const InputError& e) {
        err << "brevant " << args[0] << ": " << e.what() << "\n";
        return 1;
    } catch (...) {
        const auto error = platform::automation::toAutomationError(std::current_exception());
        err << "brevant " << args[0] << ": " << error.description() << " (" << error.source()
            << " " << error.hex() << ")\n";
        return 1;
    }
}
} // namespace

int runTransfer(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return guarded(args, kTransferUsage, out, err, [&] {
        const Options options =
            parse(args, {"target", "source", "field", "source-field"}, {"contained-only"});
        const auto start = std::chrono::steady_clock::now();
        auto target = openSource(options.required("target"), true);
        auto source = openSource(options.required("source"), false);
        const std::string field = options.required("field");
        const std::string sourceField = options.optional("source-field", field);
        const int targetIndex = target->findField(field);
        const int sourceIndex = source->findField(sourceField);
        if (targetIndex < 2) {
            throw InputError("the target " + target->name() + " has no attribute " + field);
        }
        if (sourceIndex < 2) {
            throw InputError("the source " + source->name() + " has no attribute " + sourceField);
        }
        const auto counts = platform::geodatabase::transferValues(
            *target, *source, targetIndex, sourceIndex, options.has("contained-only"),
            progressBar(err, "transfer"));
        out << "transfer: " << counts.contained + counts.nearest + counts.unmatched
            << " features: " << counts.contained << " contained, " << counts.nearest
            << " nearest, " << counts.unmatched << " unmatched (" << fixed(secondsSince(start))
            << " s)\n";
        return 0;
    });
}

namespace {
/// Runs an overlay of two sources into a scratch layer and publishes it; a failure removes
/// the scratch layer and leaves any earlier result untouched.
template <class Overlay>
int runOverlay(const std::vector<std::string>& args, const char* usage, const char* second,
               std::ostream& out, std::ostream& err, Overlay&& overlay)
{
    return guarded(args, usage, out, err, [&] {
        const std::string command = args[0];
        const Options options = parse(args, {"input", second, "output"}, {});
        const auto start = std::chrono::steady_clock::now();
        auto input = openSource(options.required("input"), false);
        auto other = openSource(options.required(second), false);
        const auto output = outputOf(options.required("output"));
        int64_t count = 0;
        try {
            count = overlay(*input, *other, output, progressBar(err, command))->rowCount();
        } catch (...) {
            Workspace scratch = output.workspace;
            try {
                scratch.deleteDataset(output.name);
            } catch (...) {
                // The overlay's own error is the one to report.
            }
            throw;
        }
        out << command << ": " << count << " features written to " << publish(output) << " of "
            << output.workspace.path().string() << " (" << fixed(secondsSince(start))
            << " s)\n";
        return 0;
    });
}
} // namespace

int runClip(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return runOverlay(args, kClipUsage, "clip", out, err, platform::geodatabase::Geoprocessor::Clip);
}

int runIntersect(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return runOverlay(args, kIntersectUsage, "with", out, err,
                      platform::geodatabase::Geoprocessor::Intersect);
}

} // namespace brevant::app
