#pragma once

#include "platform/geodatabase/FieldChecker.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/Workspace.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {

class FeatureClass;

/// A source row the converter could not write, with the reason.
struct InvalidObject {
    int64_t oid = 0;
    std::string description;
};

struct Conversion {
    std::shared_ptr<FeatureClass> output;
    int64_t converted = 0;
    std::vector<FieldRename> renamed;
    std::vector<InvalidObject> invalid;
};

/// Copies the features of `input` that `filter` selects into a new feature class `outputName`
/// of `output` (a shapefile folder or a geodatabase): fields are checked for the target first
/// (see checkFields) and values follow their renamed fields. A feature without a shape, or one
/// the target refuses, is reported as invalid and the conversion goes on; writes are committed
/// every `flushInterval` features. Throws when the output exists or cannot be created.
Conversion convertFeatureClass(const FeatureClass& input, const QueryFilter& filter,
                               Workspace& output, const std::string& outputName,
                               int flushInterval = 100);

} // namespace brevant::platform::geodatabase
