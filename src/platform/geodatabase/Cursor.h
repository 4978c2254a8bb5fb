#pragma once

#include "platform/geodatabase/Row.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace brevant::platform::geodatabase {

class Table;
struct CursorState;

/// A move-only cursor over rows. An update cursor stores changes as it goes, in batched
/// transactions; what it has stored is committed when it is flushed after its last row or
/// released, also when an error unwinds it, so rows stored before a failure stay changed.
class Cursor {
public:
    Cursor(const Table& table, std::unique_ptr<CursorState> state);
    ~Cursor();
    Cursor(Cursor&&) noexcept;
    Cursor& operator=(Cursor&&) noexcept;

    /// The next row; false at the end.
    bool next(Row& row);
    std::optional<Row> next();
    /// Stores the row last handed out with its changed values (update cursors only).
    void updateRow(const Row& row);
    /// Deletes the row last handed out (update cursors only).
    void deleteRow(const Row& row);
    /// Commits what was stored so far once the rows ran out; in the middle of a walk, only
    /// when many rows wait, so frequent flushes cost no disk syncs. Throws when the commit fails.
    void flush();

private:
    std::unique_ptr<CursorState> m_state;
};

/// Adds rows to a table, committed in batches and on flush or release.
class InsertCursor {
public:
    InsertCursor(const Table& table, std::unique_ptr<CursorState> state);
    ~InsertCursor();
    InsertCursor(InsertCursor&&) noexcept;
    InsertCursor& operator=(InsertCursor&&) noexcept;

    /// Adds a row (its identifier is ignored); returns the new identifier.
    int64_t insertRow(const Row& row);
    void flush();

private:
    std::unique_ptr<CursorState> m_state;
};

} // namespace brevant::platform::geodatabase
