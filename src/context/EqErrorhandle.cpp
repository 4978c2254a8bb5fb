#include "context/EqErrorhandle.h"

#include "context/StudyRegionContext.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "platform/ui/TimeFormat.h"

#include <fstream>

namespace brevant::context {

namespace {
// The log is a plain text file of this platform.
constexpr const char* kLineEnding = "\n";

bool inOpenRange(uint32_t value, uint32_t low, uint32_t high)
{
    return value > low && value < high;
}
} // namespace

bool IsRecordedError(int32_t number)
{
    const auto value = static_cast<uint32_t>(number);
    return inOpenRange(value, 0x80040600u, 0x80040700u) ||
           inOpenRange(value, 0x80030700u, 0x80030800u);
}

namespace {
std::optional<RecordedCause>& recordedCause()
{
    static std::optional<RecordedCause> cause;
    return cause;
}
} // namespace

void clearRecordedCause()
{
    recordedCause().reset();
}

std::optional<RecordedCause> firstRecordedCause()
{
    return recordedCause();
}

void WriteErrorRecord(int32_t& errNumber, const std::string& errSource,
                      const std::string& errDescription, std::string& message, int32_t newCode)
{
    if (IsRecordedError(errNumber)) {
        message = errDescription;
        return;
    }
    if (!recordedCause()) {
        recordedCause() = RecordedCause{errNumber, errSource, errDescription};
    }
    try {
        auto& ctx = studyRegionContext();
        if (!ctx.RegionContextService) {
            ctx.RegionContextService = host::hostServices().createRegionContextService();
        }
        ctx.RegionContextService->GetRegionFolder();

        std::ofstream log(ctx.ErrorLogPath, std::ios::app | std::ios::binary);
        if (!log) {
            return;
        }
        const std::string firstLine = ctx.RegionContextService->GetMessageText(newCode) + message;
        log << firstLine << kLineEnding << "Code = " << errNumber << kLineEnding
            << "Source = " << errSource << kLineEnding << "Description = " << errDescription
            << kLineEnding << "Time = " << platform::ui::longTimeOfDayNow() << kLineEnding
            << kLineEnding;
        log.close();
        if (!log) {
            return;
        }
        message = firstLine;
        errNumber = newCode;
    } catch (...) {
        // The log is best effort: the caller raises the caught error with the bare tag.
    }
}

} // namespace brevant::context
