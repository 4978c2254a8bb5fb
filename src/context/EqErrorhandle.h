#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace brevant::context {

/// Records a failure in the region's error log and turns it into a library error.
///
/// An error already recorded (number in 0x80040600..0x80040700 or 0x80030700..0x80030800,
/// exclusive) writes nothing: `message` becomes `errDescription` and `errNumber` stays.
/// Otherwise a six-line record is appended to ErrorLogPath (the file is created when missing):
/// the host's text for `newCode` followed by the tag in `message`, "Code = ", "Source = ",
/// "Description = ", "Time = " and an empty line; then `message` becomes the first line and
/// `errNumber` becomes `newCode`. If the log cannot be written the call ends silently with both
/// unchanged. Never throws.
void WriteErrorRecord(int32_t& errNumber, const std::string& errSource,
                      const std::string& errDescription, std::string& message, int32_t newCode);

/// The caught error of the first record WriteErrorRecord was asked to write since the last
/// clearRecordedCause: the root cause of a failure that reached the host as a library code,
/// for a host that shows it (the command line does).
struct RecordedCause {
    int32_t number = 0;
    std::string source;
    std::string description;
};
void clearRecordedCause();
std::optional<RecordedCause> firstRecordedCause();

/// True for numbers in the two already-recorded ranges.
bool IsRecordedError(int32_t number);

} // namespace brevant::context
