#include "host/local/LocalRegionContextService.h"
#include "host/local/LocalRegionSelectionStore.h"
#include "samplehost/SampleHost.h"
#include "platform/automation/PlatformError.h"
#include "platform/tabular/Recordset.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::host::local {
namespace {

namespace fs = std::filesystem;
using platform::tabular::Recordset;

class RegionSelection : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        s_dir = new test::TempDir;
        samplehost::writeSampleHost(s_dir->path() / "host", samplehost::SampleSize::Small, 5);
    }
    static void TearDownTestSuite()
    {
        delete s_dir;
        s_dir = nullptr;
    }
    static fs::path root() { return s_dir->path() / "host"; }

    /// The units stored at a level, as "column 0|column 1|column 2" lines.
    static std::vector<std::string> stored(LocalRegionSelectionStore& store, int16_t level)
    {
        auto units = store.GetRegionUnits(level).objectAs<Recordset>();
        std::vector<std::string> lines;
        for (int32_t i = 0; i < units->recordCount(); ++i) {
            i == 0 ? units->moveFirst() : units->moveNext();
            lines.push_back(units->value(0).toString() + "|" + units->value(1).toString() + "|" +
                            units->value(2).toString());
        }
        return lines;
    }

    static test::TempDir* s_dir;
};

test::TempDir* RegionSelection::s_dir = nullptr;

TEST_F(RegionSelection, LookupStateNamesTheStateOfACodeAndNothingForOthers)
{
    LocalRegionContextService context(root());
    EXPECT_EQ(context.LookupState("06"), "California");
    EXPECT_EQ(context.LookupState("32"), "Nevada");
    EXPECT_EQ(context.LookupState("99"), "");
    EXPECT_EQ(context.LookupState("06' OR '1'='1"), "") << "the code is a value, not a clause";
}

TEST_F(RegionSelection, AddedUnitsAreStoredBySaveOnlyAndReadBackInOrderPerLevel)
{
    LocalRegionSelectionStore store(root());
    ASSERT_EQ(stored(store, 1).size(), 0u);

    auto counties = store.OpenRegionUnits(1, true).objectAs<Recordset>();
    for (const auto& [code, state] :
         {std::pair{"06075", "California"}, {"06001", "California"}, {"32031", "Nevada"}}) {
        counties->addNew();
        counties->setValue(0, std::string(code));
        counties->setValue(1, std::string(state));
    }
    EXPECT_TRUE(stored(store, 1).empty()) << "nothing is stored before SaveRegionUnits";

    store.SaveRegionUnits(counties);
    // Another store object, as the block copy makes, reads the same units.
    LocalRegionSelectionStore again(root());
    EXPECT_EQ(stored(again, 1), (std::vector<std::string>{"06075|California|0",
                                                          "06001|California|0", "32031|Nevada|0"}));
    EXPECT_TRUE(stored(again, 0).empty()) << "each level keeps its own units";
    EXPECT_TRUE(stored(again, 2).empty());

    auto readOnly = store.OpenRegionUnits(1, false).objectAs<Recordset>();
    EXPECT_EQ(readOnly->lockType(), Recordset::LockType::ReadOnly);
    EXPECT_THROW(readOnly->addNew(), platform::automation::PlatformError);
}

TEST_F(RegionSelection, ALevelOutsideTheFourAndANonRecordsetAreRefused)
{
    LocalRegionSelectionStore store(root());
    EXPECT_THROW(store.GetRegionUnits(4), platform::automation::PlatformError);
    EXPECT_THROW(store.OpenRegionUnits(-1, true), platform::automation::PlatformError);
    EXPECT_THROW(store.SaveRegionUnits(platform::automation::Variant(std::string("06"))),
                 platform::automation::PlatformError);
}

} // namespace
} // namespace brevant::host::local
