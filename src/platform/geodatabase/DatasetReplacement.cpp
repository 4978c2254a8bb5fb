#include "platform/geodatabase/DatasetReplacement.h"

#include "platform/geodatabase/FeatureClass.h"

namespace brevant::platform::geodatabase {

DatasetReplacement::DatasetReplacement(Workspace workspace, std::string target,
                                       const FeatureClass& schema)
    : m_workspace(std::move(workspace)), m_target(std::move(target))
{
    const std::string name = scratchName(m_target);
    m_workspace.deleteDataset(name);
    m_scratch = m_workspace.createFeatureClass(name, schema.fields(), schema.shapeType(),
                                               schema.spatialReference(), schema.shapeFieldName());
}

DatasetReplacement::~DatasetReplacement()
{
    if (m_published) {
        return;
    }
    m_scratch.reset();
    try {
        m_workspace.deleteDataset(scratchName(m_target));
    } catch (...) {
        // The next replacement of the target deletes it; the caller's error is the one to keep.
    }
}

OutputDescription DatasetReplacement::output() const
{
    return {m_workspace, m_scratch->name(), m_scratch->shapeFieldName()};
}

void DatasetReplacement::publish()
{
    m_workspace.replaceDataset(scratchName(m_target), m_target);
    m_published = true;
}

std::string DatasetReplacement::scratchName(const std::string& target)
{
    return target + "_partial";
}

} // namespace brevant::platform::geodatabase
