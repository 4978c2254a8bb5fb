#pragma once

#include "platform/geodatabase/Table.h"
#include "platform/geometry/Envelope.h"
#include "platform/geometry/ShapeType.h"
#include "platform/geometry/SpatialReference.h"

namespace brevant::platform::geodatabase {

/// A table whose rows have shapes: field 1 is the shape field.
class FeatureClass : public Table {
public:
    using Table::Table;

    std::string_view className() const override { return "FeatureClass"; }

    geometry::ShapeType shapeType() const;
    const std::string& shapeFieldName() const;
    const geometry::SpatialReference& spatialReference() const;
    /// The extent of all shapes (empty for an empty class).
    geometry::Envelope extent() const;
};

} // namespace brevant::platform::geodatabase
