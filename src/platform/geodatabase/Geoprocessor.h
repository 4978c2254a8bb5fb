#pragma once

#include "platform/geodatabase/Workspace.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace brevant::platform::geodatabase {

class FeatureClass;

/// Where a geoprocessing result goes: a feature class `name` of `workspace`, its shape field
/// named `shapeFieldName`. An existing class of that name receives the features (matched by
/// field name); otherwise it is created.
struct OutputDescription {
    Workspace workspace;
    std::string name;
    std::string shapeFieldName = "Shape";
};

/// Clip and intersect between feature classes, written to a new or existing feature class.
class Geoprocessor {
public:
    /// Called with the number of input features done and their total.
    using Progress = std::function<void(int64_t done, int64_t total)>;

    /// The features of `input` cut by the union of the polygons of `clip`, with the input's
    /// attributes only. Features the clip area properly contains are copied unchanged; the
    /// rest are intersected; features outside are dropped. Returns the output class.
    static std::shared_ptr<FeatureClass> Clip(const FeatureClass& input, const FeatureClass& clip,
                                              const OutputDescription& output,
                                              const Progress& progress = {});

    /// The pairwise intersections of the features of `input` with those of `with`, each
    /// carrying the attributes of both (a name the input already uses takes "_1" on the second
    /// side) and the identifiers of both sources in FID_<input> and FID_<with>. The output has
    /// the lower shape dimension of the two.
    static std::shared_ptr<FeatureClass> Intersect(const FeatureClass& input,
                                                   const FeatureClass& with,
                                                   const OutputDescription& output,
                                                   const Progress& progress = {});
};

} // namespace brevant::platform::geodatabase
