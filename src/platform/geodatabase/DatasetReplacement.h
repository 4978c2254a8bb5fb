#pragma once

#include "platform/geodatabase/Geoprocessor.h"
#include "platform/geodatabase/Workspace.h"

#include <memory>
#include <string>

namespace brevant::platform::geodatabase {

class FeatureClass;

/// The new content of a feature class, built beside it under a scratch name and put in its
/// place in one step (Workspace::replaceDataset), so that the class keeps its old rows until
/// the new ones are complete, whatever fails on the way. A scratch class that is not
/// published is deleted with this object; one that a killed process left behind is deleted
/// when the next replacement of the same class starts.
class DatasetReplacement {
public:
    /// Starts replacing `target` of `workspace` by an empty class with the fields, shape
    /// type, spatial reference and shape field of `schema`. Throws when the scratch class
    /// cannot be made.
    DatasetReplacement(Workspace workspace, std::string target, const FeatureClass& schema);
    ~DatasetReplacement();
    DatasetReplacement(const DatasetReplacement&) = delete;
    DatasetReplacement& operator=(const DatasetReplacement&) = delete;

    /// The scratch class, to fill.
    const std::shared_ptr<FeatureClass>& featureClass() const { return m_scratch; }
    /// The scratch class as a geoprocessing output.
    OutputDescription output() const;
    /// Puts the scratch class in place of the target; throws, leaving the target as it was,
    /// when the storage refuses.
    void publish();

    /// The name scratch classes of `target` take.
    static std::string scratchName(const std::string& target);

private:
    Workspace m_workspace;
    std::string m_target;
    std::shared_ptr<FeatureClass> m_scratch;
    bool m_published = false;
};

} // namespace brevant::platform::geodatabase
