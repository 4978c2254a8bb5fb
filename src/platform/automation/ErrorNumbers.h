#pragma once

#include <cstdint>

namespace brevant::platform::automation {

/// The library's own error codes; the code is fixed per procedure.
namespace LibraryCode {
/// Class initialisers, and the flood study-case query.
inline constexpr int32_t ClassInit = static_cast<int32_t>(0x80040607u);
/// Procedures that put a layer on a map.
inline constexpr int32_t MapLayer = static_cast<int32_t>(0x80040608u);
/// The line-inventory class initialiser.
inline constexpr int32_t LineClassInit = static_cast<int32_t>(0x80040609u);
/// Every other procedure.
inline constexpr int32_t Procedure = static_cast<int32_t>(0x8004060Cu);
} // namespace LibraryCode

/// Run-time error numbers the host knows, used for errors that do not come from a library trap.
namespace ErrorNumber {
inline constexpr int32_t InvalidProcedureCall = 5;
inline constexpr int32_t Overflow = 6;
inline constexpr int32_t OutOfMemory = 7;
inline constexpr int32_t SubscriptOutOfRange = 9;
inline constexpr int32_t TypeMismatch = 13;
inline constexpr int32_t FileNotFound = 53;
inline constexpr int32_t PermissionDenied = 70;
inline constexpr int32_t PathNotFound = 76;
inline constexpr int32_t ObjectVariableNotSet = 91;
inline constexpr int32_t InvalidUseOfNull = 94;
inline constexpr int32_t CannotCreateObject = 429;
inline constexpr int32_t ObjectRequired = 424;
inline constexpr int32_t MemberNotFound = 438;
inline constexpr int32_t WrongArgumentCount = 450;
inline constexpr int32_t DuplicateKey = 457;
inline constexpr int32_t Unspecified = static_cast<int32_t>(0x80004005u);
inline constexpr int32_t InvalidArgument = static_cast<int32_t>(0x80070057u);
/// Bases for errors of the libraries under the platform layer; the library's own error number
/// is added to the base. None of them falls in an already-recorded range.
inline constexpr int32_t GdalBase = static_cast<int32_t>(0x80042000u);
inline constexpr int32_t SqliteBase = static_cast<int32_t>(0x80043000u);
inline constexpr int32_t GeosBase = static_cast<int32_t>(0x80044000u);
/// Errors of the reference host's services (bad or missing files, unknown keys).
inline constexpr int32_t HostBase = static_cast<int32_t>(0x80045000u);
} // namespace ErrorNumber

} // namespace brevant::platform::automation
