// Whatever host.json holds, loading the host root either succeeds or fails with a host error
// naming the file; it never crashes or hangs.
#include "host/local/HostRoot.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// A scratch folder for the whole run, removed when the run ends.
struct ScratchRoot {
    std::filesystem::path path;
    ScratchRoot()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "brevant-fuzz-XXXXXX");
        if (!mkdtemp(pattern.data())) {
            std::abort();
        }
        path = pattern;
    }
    ~ScratchRoot()
    {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
};

const std::filesystem::path& root()
{
    static const ScratchRoot scratch;
    return scratch.path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    {
        std::ofstream out(root() / "host.json", std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    try {
        const auto host = brevant::host::local::HostRoot::load(root());
        host.stateDataFolder();
        host.regionsFolder();
    } catch (const std::runtime_error&) {
        // MissingFile or MalformedFile naming host.json.
    }
    return 0;
}
