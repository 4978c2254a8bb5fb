#include "platform/geodatabase/WriteBatch.h"

#include "gdal/StorageData.h"
#include "platform/geodatabase/Table.h"

namespace brevant::platform::geodatabase {

WriteBatch::WriteBatch(const Table& table)
{
    const auto& workspace = table.workspaceData();
    if (workspace->readOnly) {
        return;
    }
    workspace->beginWrite();
    ++workspace->writeBatches;
    m_workspace = workspace;
}

WriteBatch::~WriteBatch()
{
    if (!m_workspace || --m_workspace->writeBatches > 0) {
        return;
    }
    if (!m_workspace->commit()) {
        // Nothing was stored; fields added meanwhile are gone again, so GDAL's view of the
        // tables is read afresh.
        m_workspace->rollback();
        try {
            m_workspace->reopen();
        } catch (...) {
        }
    }
}

} // namespace brevant::platform::geodatabase
