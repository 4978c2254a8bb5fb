// Writes the seeded GeoPackages that bench/run times the geoprocessing commands on.
//   brevant_generate_data --out DIR [--scale F]

#include "samplehost/GeoprocessingData.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;
namespace samplehost = brevant::samplehost;

int usage()
{
    std::fputs("Usage: brevant_generate_data --out DIR [--scale F]\n", stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    fs::path out;
    double scale = 1.0;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (i + 1 < argc && arg == "--out") {
            out = argv[++i];
        } else if (i + 1 < argc && arg == "--scale") {
            try {
                scale = std::stod(argv[++i]);
            } catch (const std::exception&) {
                return usage();
            }
        } else {
            return usage();
        }
    }
    if (out.empty() || !std::isfinite(scale) || scale <= 0) {
        return usage();
    }

    try {
        fs::create_directories(out);
        const auto started = std::chrono::steady_clock::now();
        samplehost::writeGeoprocessingData(out, scale, [](const samplehost::GeneratedFile& file) {
            std::printf("%-20s %9lld features %7.2f s\n", file.name.c_str(),
                        static_cast<long long>(file.features), file.seconds);
            std::fflush(stdout);
        });
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - started;
        std::printf("%-20s %9s          %7.2f s\n", "total", "", elapsed.count());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "brevant_generate_data: %s\n", error.what());
        return 1;
    }
    return 0;
}
