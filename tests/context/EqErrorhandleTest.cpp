#include "context/EqErrorhandle.h"

#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "support/HostFixture.h"
#include "support/Raised.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace brevant::context {
namespace {

using test::raisedBy;

using platform::automation::AutomationError;
namespace LibraryCode = platform::automation::LibraryCode;

class ErrorLog : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        openStudyRegion(true);
    }

};

TEST_F(ErrorLog, FirstErrorCreatesTheLogWithOneSixLineRecord)
{
    ASSERT_FALSE(std::filesystem::exists(studyRegionContext().ErrorLogPath));
    const auto error = raisedBy([] {
        runTrapped(" AddLayer", LibraryCode::MapLayer, [] {
            throw platform::automation::PlatformError(0x80042004, "GDAL", "cannot open hztract");
        });
    });
    EXPECT_EQ(error.number(), LibraryCode::MapLayer);
    EXPECT_EQ(error.source(), "GDAL");
    EXPECT_EQ(error.description(), "Could not put the layer on the map: AddLayer");

    const std::regex record("Could not put the layer on the map: AddLayer\n"
                            "Code = -2147213308\n"
                            "Source = GDAL\n"
                            "Description = cannot open hztract\n"
                            "Time = [0-9]{1,2}:[0-9]{2}:[0-9]{2}( ?[AaPp][Mm])?\n"
                            "\n");
    EXPECT_TRUE(std::regex_match(errorLog(), record)) << errorLog();
}

TEST_F(ErrorLog, RecordsAreAppended)
{
    for (int i = 0; i < 2; ++i) {
        raisedBy([] {
            runTrapped(" Init", LibraryCode::Procedure, [] { throw std::out_of_range("x"); });
        });
    }
    const std::string log = errorLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 12);
    EXPECT_NE(log.find("The map engine failed in Init\nCode = 9\nSource = Brevant\n"),
              std::string::npos);
}

TEST_F(ErrorLog, AlreadyRecordedErrorsPassUnchanged)
{
    for (uint32_t number : {0x80040601u, 0x800406FFu, 0x80030701u}) {
        int32_t errNumber = static_cast<int32_t>(number);
        std::string message = " UpdateFieldValue";
        WriteErrorRecord(errNumber, "host", "raised by the host", message, LibraryCode::Procedure);
        EXPECT_EQ(errNumber, static_cast<int32_t>(number));
        EXPECT_EQ(message, "raised by the host");
    }
    EXPECT_EQ(errorLog(), "");
    // The range ends are exclusive: they are new errors.
    for (uint32_t number : {0x80040600u, 0x80040700u, 0x80030800u}) {
        int32_t errNumber = static_cast<int32_t>(number);
        std::string message = " Tag";
        WriteErrorRecord(errNumber, "host", "d", message, LibraryCode::Procedure);
        EXPECT_EQ(errNumber, LibraryCode::Procedure);
    }
}

TEST_F(ErrorLog, NestedTrapsWriteOneRecordWithTheInnermostCode)
{
    const auto error = raisedBy([] {
        runTrapped(" ClipHazardDataMaps", LibraryCode::Procedure, [] {
            runTrapped(" MapSoilDataMap", LibraryCode::MapLayer, [] {
                runTrapped(" EqPoint", LibraryCode::ClassInit,
                           [] { throw std::runtime_error("innermost failure"); });
            });
        });
    });
    EXPECT_EQ(error.hex(), "0x80040607");
    EXPECT_EQ(error.description(), "Could not open the study region for the map engine: EqPoint");
    const std::string log = errorLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 6) << log;
    EXPECT_NE(log.find("Description = innermost failure"), std::string::npos);
}

TEST_F(ErrorLog, UnwritableLogLeavesTheCaughtErrorWithTheBareTag)
{
    // A folder in the log's place cannot be opened for writing, whatever the rights.
    std::filesystem::create_directory(regionFolder() + "EqErrorLog.txt");
    const auto error = raisedBy([] {
        runTrapped(" RemoveObjects", LibraryCode::Procedure,
                   [] { throw std::out_of_range("index 7"); });
    });
    EXPECT_EQ(error.number(), platform::automation::ErrorNumber::SubscriptOutOfRange);
    EXPECT_EQ(error.description(), " RemoveObjects");
    EXPECT_TRUE(std::filesystem::is_directory(regionFolder() + "EqErrorLog.txt"));
}

TEST_F(ErrorLog, MissingRegionFolderFailsSilently)
{
    std::filesystem::remove_all(regionFolder());
    int32_t number = 5;
    std::string message = " Tag";
    WriteErrorRecord(number, "Brevant", "d", message, LibraryCode::Procedure);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(message, " Tag");
}

TEST(ErrorLogWithoutContext, NoHostMeansNoRecordAndNoCrash)
{
    resetStudyRegionContext();
    int32_t number = 13;
    std::string message = " Init";
    WriteErrorRecord(number, "Brevant", "Type mismatch", message, LibraryCode::Procedure);
    EXPECT_EQ(number, 13);
    EXPECT_EQ(message, " Init");
}

TEST_F(ErrorLog, EventHandlersLogAndCarryOn)
{
    EXPECT_FALSE(runLogged(" GetSelLayer", LibraryCode::Procedure,
                           [] { throw std::runtime_error("no layer"); }));
    EXPECT_TRUE(runLogged(" GetSelLayer", LibraryCode::Procedure, [] {}));
    EXPECT_NE(errorLog().find("The map engine failed in GetSelLayer"), std::string::npos);
}

} // namespace
} // namespace brevant::context
