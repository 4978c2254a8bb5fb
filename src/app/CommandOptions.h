#pragma once

#include "host/local/RegionLock.h"
#include "platform/geodatabase/FeatureClass.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace brevant::app {

/// A malformed command line: reported with the command's usage, exit status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The arguments are well formed but the data does not fit them (a missing field): exit
/// status 1, without the usage.
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Positional arguments, --name value options, and bare --flags.
struct Options {
    std::vector<std::string> positional;
    std::map<std::string, std::string> values;
    std::vector<std::string> flags;

    const std::string& required(const std::string& name) const;
    std::string optional(const std::string& name, const std::string& fallback) const;
    bool has(const std::string& flag) const;
    /// Throws UsageError unless there are exactly `count` positional arguments, named in
    /// `what` for the message ("NAME", "CODE SRC").
    void expectPositional(std::size_t count, const std::string& what) const;
};

/// Parses args[skip..]: each --name in `valueNames` takes the next argument as its value,
/// each in `flagNames` stands alone; other --options are usage errors, the rest positional.
Options parseOptions(const std::vector<std::string>& args, std::size_t skip,
                     const std::vector<std::string>& valueNames,
                     const std::vector<std::string>& flagNames);

/// A vector source on the command line: PATH, or PATH:LAYER.
struct SourceName {
    std::filesystem::path path;
    std::string layer;
    /// As the user wrote it, for messages.
    std::string text;
};
/// A path that exists as written wins over the split at the last colon.
SourceName splitSource(const std::string& text);
/// Opens a source's layer; a source of several layers must name one (UsageError).
std::shared_ptr<platform::geodatabase::FeatureClass> openSource(const SourceName& source,
                                                                bool writable);
/// The same, in a workspace already open on the source's file.
std::shared_ptr<platform::geodatabase::FeatureClass>
openSourceIn(const platform::geodatabase::Workspace& workspace, const SourceName& source);

/// Progress on `err`: a bar redrawn in place on a terminal, a line per quarter in a log.
std::function<void(int64_t done, int64_t total)> progressBar(std::ostream& err,
                                                             const std::string& label);

double secondsSince(std::chrono::steady_clock::time_point start);
/// Two decimals.
std::string fixed(double value);

/// Claims the region `region` (empty: the current one) of the host root `root` for this
/// process while the returned lock lives, so that two processes never write one region at
/// once; waits RegionLock::defaultWait() for another holder, then throws a host error naming
/// it. Nothing is claimed when the root has no such region: the command reports that itself.
/// `args` is the command line, recorded for a process that has to wait.
std::optional<host::local::RegionLock> claimRegion(const std::filesystem::path& root,
                                                   const std::string& region,
                                                   const std::vector<std::string>& args);

/// Runs a command body: --help prints the usage; UsageError prints the message and the usage
/// (status 2); InputError and any other error print one line naming the command (status 1).
/// `name` is the command as the user typed it ("transfer", "region create").
int guarded(const std::vector<std::string>& args, const std::string& name, const char* usage,
            std::ostream& out, std::ostream& err, const std::function<int()>& body);

} // namespace brevant::app
