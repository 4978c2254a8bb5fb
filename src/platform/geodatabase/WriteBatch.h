#pragma once

#include <memory>

namespace brevant::platform::geodatabase {

class Table;
struct WorkspaceData;

/// Keeps every write to a table's workspace in one transaction while it lives, and commits
/// them when it ends, also when it ends by an exception: what was stored stays, as it would
/// without the batch. Statements that are all-or-nothing on their own (Table::calculate,
/// Table::deleteSearchedRows) stay so, as savepoints inside it. Meant for a run of whole-table
/// statements, such as resetting several fields: SQLite then journals each page of a million-row
/// table once instead of once a statement. Does nothing on a read-only workspace.
class WriteBatch {
public:
    explicit WriteBatch(const Table& table);
    ~WriteBatch();
    WriteBatch(const WriteBatch&) = delete;
    WriteBatch& operator=(const WriteBatch&) = delete;

private:
    std::shared_ptr<WorkspaceData> m_workspace;
};

} // namespace brevant::platform::geodatabase
