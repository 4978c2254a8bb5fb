#include "app/GeoprocessingCommands.h"

#include "app/CommandOptions.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/ValueTransfer.h"
#include "platform/geodatabase/Workspace.h"

#include <chrono>
#include <cstring>
#include <filesystem>
#include <optional>
#include <ostream>

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

// The result is written under a scratch name and takes the requested name only once it is
// complete, so a failure leaves an earlier result of that name as it was.
constexpr const char* kScratchSuffix = "_brevant_partial";

/// GPKG:LAYER of --output.
std::pair<fs::path, std::string> splitOutput(const std::string& text)
{
    const auto colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
        throw UsageError("--output needs GPKG:LAYER, not " + text);
    }
    const fs::path path = text.substr(0, colon);
    // The output is always a GeoPackage; one named like a shapefile would only mislead.
    if (platform::automation::equalsIgnoreCase(path.extension().string(), ".shp")) {
        throw UsageError("--output writes a GeoPackage, and " + path.string() +
                         " names a shapefile; give a .gpkg path");
    }
    return {path, text.substr(colon + 1)};
}

bool sameFile(const fs::path& a, const fs::path& b)
{
    std::error_code ec;
    return fs::exists(a, ec) && fs::exists(b, ec) && fs::equivalent(a, b, ec);
}

/// The scratch output of LAYER in `workspace`, or in the GeoPackage at `path` (created when
/// missing).
platform::geodatabase::OutputDescription outputOf(const fs::path& path, const std::string& layer,
                                                  std::optional<Workspace> workspace)
{
    std::error_code ec;
    if (!workspace) {
        workspace = fs::exists(path, ec) ? Workspace::open(path) : Workspace::createGeoPackage(path);
    }
    workspace->deleteDataset(layer + kScratchSuffix);
    return {*workspace, layer + kScratchSuffix, "Shape"};
}

/// Gives the finished scratch result its requested name.
std::string publish(const platform::geodatabase::OutputDescription& output)
{
    Workspace workspace = output.workspace;
    const std::string layer = output.name.substr(0, output.name.size() - std::strlen(kScratchSuffix));
    workspace.replaceDataset(output.name, layer);
    return layer;
}

} // namespace

int runTransfer(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return guarded(args, "transfer", kTransferUsage, out, err, [&] {
        const Options options =
            parseOptions(args, 1, {"target", "source", "field", "source-field"}, {"contained-only"});
        options.expectPositional(0, "");
        const auto start = std::chrono::steady_clock::now();
        auto target = openSource(splitSource(options.required("target")), true);
        auto source = openSource(splitSource(options.required("source")), false);
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
    const std::string command = args[0];
    return guarded(args, command, usage, out, err, [&] {
        const Options options = parseOptions(args, 1, {"input", second, "output"}, {});
        options.expectPositional(0, "");
        const auto start = std::chrono::steady_clock::now();
        const SourceName inputName = splitSource(options.required("input"));
        const SourceName otherName = splitSource(options.required(second));
        const auto [outputPath, outputLayer] = splitOutput(options.required("output"));
        // Readers and the writer of one file share one connection: a writer of its own would
        // wait at its first commit for the readers' lock, held by this same thread.
        std::optional<Workspace> shared;
        if (sameFile(inputName.path, outputPath) || sameFile(otherName.path, outputPath)) {
            shared = Workspace::open(outputPath);
        }
        const auto open = [&](const SourceName& name) {
            return shared && sameFile(name.path, outputPath) ? openSourceIn(*shared, name)
                                                             : openSource(name, false);
        };
        auto input = open(inputName);
        auto other = open(otherName);
        std::error_code ec;
        const bool newFile = !fs::exists(outputPath, ec);
        const auto output = outputOf(outputPath, outputLayer, shared);
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
            // A failed run leaves no empty GeoPackage behind where there was no file.
            if (newFile) {
                fs::remove(outputPath, ec);
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
