#pragma once

#include <cstdint>

namespace brevant::platform::tabular {

/// Error numbers of connections and recordsets, the ones the host's data-access objects use
/// for the same faults, so the error log reads the same. Errors of the database itself keep
/// the database's numbers (ErrorNumber::SqliteBase + the SQLite code).
namespace TabularError {
/// The recordset is empty or positioned before its first or after its last record.
inline constexpr int32_t NoCurrentRecord = 3021;
/// The recordset does not allow the change: read-only, or not over one keyed table.
inline constexpr int32_t NotUpdatable = 3251;
/// No field of that name or position.
inline constexpr int32_t FieldNotFound = 3265;
/// The connection or recordset is closed, or the recordset has no connection to write to.
inline constexpr int32_t ObjectClosed = 3704;
/// No driver for the connection string's scheme.
inline constexpr int32_t UnknownProvider = 3706;
/// No table or view of that name.
inline constexpr int32_t TableNotFound = static_cast<int32_t>(0x80040E37u);
/// A record to write back no longer exists under its key.
inline constexpr int32_t RowNotFound = static_cast<int32_t>(0x80040E38u);
} // namespace TabularError

} // namespace brevant::platform::tabular
