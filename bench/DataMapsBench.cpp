// Clipping the four statewide site-condition maps of the large sample host (more than 100,000
// polygons each) to its study region, then refreshing the site conditions of its whole
// inventory (more than 1,000,000 points) and the host's analysis tables: ClipHazardDataMaps
// end to end, as the user starts it after registering new maps.
//
// The sample host takes about a minute and a gigabyte to write, so it is written once into
// <build>/datamaps-host (a ".done" marker skips it on later runs; delete the folder to write
// it afresh) and is not timed. Every run of the clip starts from the same state: the clip
// empties and refills its targets, and the inventory's site fields are overwritten.

#include "context/StudyRegionContext.h"
#include "datamaps/EqDataMaps.h"
#include "host/HostServices.h"
#include "host/local/LocalHostServices.h"
#include "samplehost/SampleHost.h"
#include "platform/automation/Collection.h"
#include "platform/ui/ScriptedPrompts.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using brevant::platform::automation::Collection;
using brevant::platform::automation::Variant;

fs::path sampleHost()
{
    const fs::path folder = fs::path(BREVANT_BENCH_BUILD_DIR) / "datamaps-host";
    const fs::path root = folder / "host";
    if (!fs::exists(folder / ".done")) {
        fs::remove_all(folder);
        fs::create_directories(folder);
        brevant::samplehost::writeSampleHost(root, brevant::samplehost::SampleSize::Large, 7);
        std::ofstream(folder / ".done") << "written\n";
    }
    return root;
}

void ClipHazardDataMaps(benchmark::State& state)
{
    const fs::path root = sampleHost();
    brevant::host::installHostServices(
        std::make_shared<brevant::host::local::LocalHostServices>(root));
    brevant::context::resetStudyRegionContext();
    auto prompts = std::make_shared<brevant::platform::ui::ScriptedPrompts>();
    brevant::platform::ui::installUserPrompts(prompts);

    for (auto _ : state) {
        auto codes = std::make_shared<Collection>();
        for (const char* code : {"SOIL", "LIQF", "LAND", "WATR"}) {
            codes->add(Variant(code));
        }
        Variant argument(codes);
        brevant::datamaps::EqDataMaps maps;
        maps.ClipHazardDataMaps(argument);
        if (!prompts->takeMessages().empty()) {
            state.SkipWithError("a map failed; see DataMapsLog.txt in the region folder");
            break;
        }
    }

    brevant::platform::ui::installUserPrompts(nullptr);
    brevant::context::resetStudyRegionContext();
    brevant::host::installHostServices(nullptr);
}
BENCHMARK(ClipHazardDataMaps)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

} // namespace
