// EqPoint's tract assignment on real shapes, checked against a point-in-polygon query made
// here straight from the files with OGR and GEOS.

#include "host/local/HostBuilder.h"
#include "host/local/HostRoot.h"
#include "host/local/InventoryBuilder.h"
#include "host/local/RegionDatabase.h"
#include "inventory/EqPoint.h"
#include "support/GeosOracle.h"
#include "support/HostFixture.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

namespace brevant::inventory {
namespace {

namespace local = host::local;
using namespace test::oracle;

TEST(RealDataImport, SanFranciscoHospitalsTakeTheTractAPointInPolygonQueryGives)
{
    const fs::path data = test::sharedData();
    const fs::path hospitals = data / "facilities/bayarea_hospitals_spc.geojson";
    if (!fs::exists(data / "tracts/sf_tracts_2010_clipped.geojson") || !fs::exists(hospitals)) {
        GTEST_SKIP() << "no real data in " << data;
    }
    test::TempDir dir;
    const fs::path root = dir.path() / "host";
    local::initHost(root);
    test::createSanFranciscoRegion(root, dir.path());
    local::addInventory(root, {"", "hzCareFlty", 'P', "", std::nullopt, ""});
    {
        InstalledHost installed(root);
        EqPoint().ImportData("hzCareFlty", hospitals.string(), "bayarea_hospitals_spc");
    }

    const auto host = local::HostRoot::load(root);
    const fs::path folder = host.regionFolder(host.currentRegion());
    const auto entry =
        local::RegionDatabase(host.regionDatabasePath(host.currentRegion())).inventoryClass("hzCareFlty");
    ASSERT_TRUE(entry.has_value());
    const auto tracts = readLayer(folder / "RegionBndry.mdb", "hztract", "Tract");
    const PolygonLookup lookup(tracts);

    const auto kept = readLayer(folder / entry->databaseName, "hzCareFlty", "Tract");
    for (const Record& hospital : kept) {
        const auto covering = lookup.covering(hospital.shape.get());
        ASSERT_FALSE(covering.empty()) << "a kept hospital lies in a tract";
        bool found = false;
        for (const Record* tract : covering) {
            found = found || tract->value == hospital.value;
        }
        EXPECT_TRUE(found) << hospital.value.value_or("<null>");
    }
    std::size_t inside = 0;
    const auto source = readLayer(hospitals, "bayarea_hospitals_spc", "");
    for (const Record& hospital : source) {
        inside += lookup.covering(hospital.shape.get()).empty() ? 0 : 1;
    }
    EXPECT_EQ(kept.size(), inside) << "every dropped hospital lies in no tract";
    EXPECT_GT(kept.size(), 5u);
    EXPECT_LT(kept.size(), source.size()) << "most Bay Area hospitals are outside the city";
}

} // namespace
} // namespace brevant::inventory
