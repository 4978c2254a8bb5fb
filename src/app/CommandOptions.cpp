#include "app/CommandOptions.h"

#include "host/local/HostRoot.h"
#include "platform/automation/AutomationError.h"
#include "platform/geodatabase/Workspace.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace brevant::app {

namespace fs = std::filesystem;
using platform::geodatabase::Workspace;

const std::string& Options::required(const std::string& name) const
{
    const auto found = values.find(name);
    if (found == values.end()) {
        throw UsageError("missing --" + name);
    }
    return found->second;
}

std::string Options::optional(const std::string& name, const std::string& fallback) const
{
    const auto found = values.find(name);
    return found == values.end() ? fallback : found->second;
}

bool Options::has(const std::string& flag) const
{
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

void Options::expectPositional(std::size_t count, const std::string& what) const
{
    if (positional.size() < count) {
        throw UsageError("missing " + what);
    }
    if (positional.size() > count) {
        throw UsageError("unexpected argument " + positional[count]);
    }
}

Options parseOptions(const std::vector<std::string>& args, std::size_t skip,
                     const std::vector<std::string>& valueNames,
                     const std::vector<std::string>& flagNames)
{
    Options options;
    for (std::size_t i = skip; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg.rfind("--", 0) != 0) {
            options.positional.push_back(arg);
            continue;
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

SourceName splitSource(const std::string& text)
{
    std::error_code ec;
    const auto colon = text.rfind(':');
    if (fs::exists(text, ec) || colon == std::string::npos || colon == 0) {
        return {text, {}, text};
    }
    return {text.substr(0, colon), text.substr(colon + 1), text};
}

std::shared_ptr<platform::geodatabase::FeatureClass> openSource(const SourceName& source,
                                                                bool writable)
{
    return openSourceIn(Workspace::open(source.path, !writable), source);
}

std::shared_ptr<platform::geodatabase::FeatureClass> openSourceIn(const Workspace& workspace,
                                                                  const SourceName& source)
{
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

std::function<void(int64_t, int64_t)> progressBar(std::ostream& err, const std::string& label)
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

int guarded(const std::vector<std::string>& args, const std::string& name, const char* usage,
            std::ostream& out, std::ostream& err, const std::function<int()>& body)
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
        err << "brevant " << name << ": " << e.what() << "\n" << usage;
        return 2;
    } catch (const InputError& e) {
        err << "brevant " << name << ": " << e.what() << "\n";
        return 1;
    } catch (...) {
        const auto error = platform::automation::toAutomationError(std::current_exception());
        err << "brevant " << name << ": " << error.description() << " (" << error.source()
            << " " << error.hex() << ")\n";
        return 1;
    }
}

std::optional<host::local::RegionLock> claimRegion(const std::filesystem::path& root,
                                                   const std::string& region,
                                                   const std::vector<std::string>& args)
{
    std::string name;
    std::string folder;
    try {
        const auto host = host::local::HostRoot::load(root);
        name = host.regionNamed(region).name;
        folder = host.regionFolder(name);
    } catch (const std::exception&) {
        return std::nullopt;
    }
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec)) {
        return std::nullopt;
    }
    std::string command = "brevant";
    for (const auto& arg : args) {
        command += " " + arg;
    }
    return host::local::RegionLock::acquire(folder, name, command,
                                            host::local::RegionLock::defaultWait());
}

} // namespace brevant::app
