#include "BrevantClasses.h"

#include "context/StudyRegionContext.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/MemberTable.h"
#include "platform/carto/Map.h"
#include "support/HostFixture.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace brevant {
namespace {

using platform::automation::AutomationError;
using platform::automation::Variant;

class PublicClasses : public test::HostFixture {
protected:
    AutomationError creationError(const std::string& progId)
    {
        try {
            classes().create(progId);
        } catch (const AutomationError& e) {
            return e;
        }
        ADD_FAILURE() << progId << " was created";
        return AutomationError(0, "", "");
    }
};

TEST_F(PublicClasses, EveryProgIdCreatesItsClass)
{
    const std::vector<std::string> expected = {
        "Brevant.EqPoint",      "Brevant.EqPolyLine",     "Brevant.EqDataMaps",
        "Brevant.EqPolyGon",    "Brevant.EqCustomMap",    "Brevant.EQMapSelDlg",
        "Brevant.RegionExpImp", "Brevant.EqOpenDocument", "Brevant.EqThmMap"};
    EXPECT_EQ(classes().progIds(), expected);
    for (const auto& progId : expected) {
        auto object = classes().create(progId);
        EXPECT_EQ("Brevant." + std::string(object->className()), progId);
    }
}

TEST_F(PublicClasses, OnlyTheMapClassesRefreshHazardFlags)
{
    for (const char* progId : {"Brevant.EQMapSelDlg", "Brevant.RegionExpImp"}) {
        classes().create(progId);
        EXPECT_FALSE(context::studyRegionContext().OpenedByClass) << progId;
    }
    EXPECT_EQ(created().count("RegionHazardService"), 0u);
    for (const char* progId :
         {"Brevant.EqPoint", "Brevant.EqPolyLine", "Brevant.EqDataMaps", "Brevant.EqPolyGon",
          "Brevant.EqCustomMap", "Brevant.EqOpenDocument"}) {
        classes().create(progId);
        EXPECT_TRUE(context::studyRegionContext().OpenedByClass) << progId;
    }
    EXPECT_EQ(created().at("RegionHazardService"), 6);
}

TEST_F(PublicClasses, FailingInitFailsCreationWithTheRecordedCode)
{
    removeSetting("General", "AggLevel");
    for (const char* progId : {"Brevant.EqPoint", "Brevant.EqDataMaps", "Brevant.EQMapSelDlg"}) {
        const auto error = creationError(progId);
        EXPECT_EQ(error.hex(), "0x8004060C") << progId;
        EXPECT_EQ(error.description(), "The map engine failed in Init") << progId;
    }
    // EqThmMap does not open the region, so nothing stops it.
    EXPECT_NO_THROW(classes().create("Brevant.EqThmMap"));
}

TEST_F(PublicClasses, InitialiserTagsShowWhenTheLogCannotBeWritten)
{
    classes().create("Brevant.EqPoint");
    removeSetting("General", "AggLevel");
    // A folder in the log's place cannot be opened for writing, whatever the rights.
    std::filesystem::create_directory(regionFolder() + "EqErrorLog.txt");
    const std::map<std::string, std::string> tags = {
        {"Brevant.EqPoint", " EqPoint"},         {"Brevant.EqPolyLine", " EqPoint"},
        {"Brevant.EqPolyGon", " EqPolygon "},    {"Brevant.EqCustomMap", " EqCustomMap"},
        {"Brevant.EQMapSelDlg", " EQMapSelDlg"}, {"Brevant.RegionExpImp", " RegionExpImp"},
        {"Brevant.EqDataMaps", " Init"},         {"Brevant.EqOpenDocument", " Init"}};
    for (const auto& [progId, tag] : tags) {
        const auto error = creationError(progId);
        EXPECT_EQ(error.description(), tag) << progId;
        EXPECT_EQ(error.source(), "Brevant.LocalHost") << progId;
    }
}

TEST_F(PublicClasses, MapPropertyIsSharedByAllObjects)
{
    auto point = classes().create("Brevant.EqPoint");
    auto polygon = classes().create("Brevant.EqPolyGon");
    auto line = classes().create("Brevant.EqPolyLine");
    auto map = std::make_shared<platform::carto::Map>();
    platform::automation::setProperty(*point, "m_pMap", Variant(map));
    EXPECT_EQ(platform::automation::getProperty(*polygon, "m_pMap").object(), map);

    auto other = std::make_shared<platform::carto::Map>("other");
    platform::automation::setProperty(*line, "m_pMap", Variant(other));
    EXPECT_EQ(platform::automation::getProperty(*point, "m_pMap").object(), other);

    try {
        platform::automation::setProperty(*point, "m_pMap", Variant(polygon));
        FAIL() << "a non-map was accepted";
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.number(), platform::automation::ErrorNumber::TypeMismatch);
    }
    EXPECT_EQ(platform::automation::getProperty(*point, "m_pMap").object(), other);
}

TEST_F(PublicClasses, UnknownMembersAreClearErrors)
{
    auto dataMaps = classes().create("Brevant.EqDataMaps");
    platform::automation::ArgList args{Variant("SOIL")};
    try {
        platform::automation::call(*dataMaps, "ClipHazardDataMap", args);
        FAIL();
    } catch (const AutomationError& e) {
        EXPECT_EQ(e.number(), platform::automation::ErrorNumber::MemberNotFound);
        EXPECT_NE(e.description().find("EqDataMaps.ClipHazardDataMap"), std::string::npos);
    }
}

} // namespace
} // namespace brevant
