#include "platform/geodatabase/Geoprocessor.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Reprojector.h"
#include "platform/geometry/FeatureIndex.h"
#include "platform/geometry/PreparedGeometry.h"

#include <algorithm>

namespace brevant::platform::geodatabase {

using geometry::Geometry;
using geometry::ShapeType;

namespace {
std::vector<Field> attributesOf(const FeatureClass& table)
{
    std::vector<Field> attributes;
    for (const auto& field : table.fields().all()) {
        if (field.type != FieldType::OID && field.type != FieldType::Geometry) {
            attributes.push_back(field);
        }
    }
    return attributes;
}

std::shared_ptr<FeatureClass> prepareOutput(const OutputDescription& output,
                                            const std::vector<Field>& attributes,
                                            ShapeType shapeType,
                                            const geometry::SpatialReference& reference)
{
    Workspace workspace = output.workspace;
    if (workspace.exists(output.name)) {
        return workspace.openFeatureClass(output.name);
    }
    return workspace.createFeatureClass(output.name, Fields(attributes), shapeType, reference,
                                        output.shapeFieldName);
}

/// Per source attribute, the output field it goes to (-1: the output lacks it).
std::vector<int> targetIndexes(const std::vector<Field>& attributes, const FeatureClass& output)
{
    std::vector<int> indexes;
    for (const auto& field : attributes) {
        indexes.push_back(output.findField(field.name));
    }
    return indexes;
}

/// The attributes of a row in the order attributesOf lists them.
std::vector<automation::Variant> attributeValues(const Row& row)
{
    std::vector<automation::Variant> values;
    const Fields& fields = row.fields();
    for (int i = 0; i < fields.count(); ++i) {
        const auto type = fields.field(i).type;
        if (type != FieldType::OID && type != FieldType::Geometry) {
            values.push_back(row.value(i));
        }
    }
    return values;
}

int dimension(ShapeType type)
{
    switch (type) {
    case ShapeType::Point:
    case ShapeType::Multipoint:
        return 0;
    case ShapeType::Polyline:
        return 1;
    case ShapeType::Polygon:
        return 2;
    case ShapeType::Null:
        break;
    }
    return -1;
}

void insertFeature(InsertCursor& insert, const FeatureClass& result, const std::vector<int>& targets,
                   const std::vector<automation::Variant>& values, const Geometry& shape)
{
    Row out = result.createRow();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (targets[i] >= 0) {
            out.setValue(targets[i], values[i]);
        }
    }
    out.setShape(shape);
    insert.insertRow(out);
}

void requirePolygons(const FeatureClass& table, const char* role)
{
    if (table.shapeType() != ShapeType::Polygon) {
        throw automation::PlatformError(automation::ErrorNumber::GdalBase + 100, "Geoprocessor",
                                        std::string("the ") + role + " class " + table.name() +
                                            " must hold polygons");
    }
}
} // namespace

std::shared_ptr<FeatureClass> Geoprocessor::Clip(const FeatureClass& input,
                                                 const FeatureClass& clip,
                                                 const OutputDescription& output,
                                                 const Progress& progress)
{
    requirePolygons(clip, "clip");
    const auto reproject = overlayReprojector(input, clip);
    std::vector<Geometry> clipShapes;
    {
        Cursor cursor = clip.search();
        Row row;
        while (cursor.next(row)) {
            if (!row.shape().isEmpty()) {
                clipShapes.push_back(reproject->apply(row.shape()));
            }
        }
    }
    const std::vector<Field> attributes = attributesOf(input);
    auto result = prepareOutput(output, attributes, input.shapeType(), input.spatialReference());
    const std::vector<int> targets = targetIndexes(attributes, *result);
    if (clipShapes.empty()) {
        return result;
    }
    const geometry::PreparedGeometry area(Geometry::unionAll(clipShapes));
    const auto& box = area.geometry().envelope();
    const Geometry boxShape = Geometry::polygon({{{box.xmin(), box.ymin()},
                                                  {box.xmax(), box.ymin()},
                                                  {box.xmax(), box.ymax()},
                                                  {box.xmin(), box.ymax()}}});

    const int64_t total = progress ? input.rowCount() : 0;
    int64_t done = 0;
    InsertCursor insert = result->insert();
    Cursor cursor = input.search(QueryFilter::spatial(boxShape));
    Row row;
    while (cursor.next(row)) {
        const Geometry& shape = row.shape();
        Geometry kept;
        if (area.containsProperly(shape)) {
            kept = shape;
        } else if (area.intersects(shape)) {
            // Cutting the clip area down to the feature's box first keeps the overlay small.
            kept = area.geometry()
                       .clipToEnvelope(shape.envelope())
                       .intersection(shape)
                       .asShapeOf(input.shapeType());
        }
        if (!kept.isNull() && !kept.isEmpty()) {
            insertFeature(insert, *result, targets, attributeValues(row), kept);
        }
        if (progress && ++done % 1000 == 0) {
            progress(done, total);
        }
    }
    insert.flush();
    if (progress) {
        progress(total, total);
    }
    return result;
}

std::shared_ptr<FeatureClass> Geoprocessor::Intersect(const FeatureClass& input,
                                                      const FeatureClass& with,
                                                      const OutputDescription& output,
                                                      const Progress& progress)
{
    const auto reproject = overlayReprojector(input, with);
    std::vector<Geometry> withShapes;
    std::vector<Row> withRows;
    {
        Cursor cursor = with.search();
        Row row;
        while (cursor.next(row)) {
            withShapes.push_back(reproject->apply(row.shape()));
            withRows.push_back(row);
        }
    }
    const geometry::FeatureIndex index(withShapes);
    std::vector<std::unique_ptr<geometry::PreparedGeometry>> preparedWith(withShapes.size());

    std::vector<Field> attributes;
    attributes.push_back({"FID_" + input.name(), FieldType::Integer, 0, {}});
    for (auto field : attributesOf(input)) {
        attributes.push_back(field);
    }
    std::vector<Field> second{{"FID_" + with.name(), FieldType::Integer, 0, {}}};
    for (const auto& field : attributesOf(with)) {
        second.push_back(field);
    }
    // Names the first side already uses get "_1", as when a class meets itself.
    for (auto field : second) {
        const auto clash = [&field](const Field& f) {
            return automation::equalsIgnoreCase(f.name, field.name);
        };
        if (std::any_of(attributes.begin(), attributes.end(), clash)) {
            field.name += "_1";
        }
        attributes.push_back(field);
    }
    const ShapeType shapeType = dimension(input.shapeType()) <= dimension(with.shapeType())
                                    ? input.shapeType()
                                    : with.shapeType();
    auto result = prepareOutput(output, attributes, shapeType, input.spatialReference());
    const std::vector<int> targets = targetIndexes(attributes, *result);

    const int64_t total = progress ? input.rowCount() : 0;
    int64_t done = 0;
    InsertCursor insert = result->insert();
    Cursor cursor = input.search();
    Row row;
    while (cursor.next(row)) {
        if (row.shape().isEmpty()) {
            continue;
        }
        const geometry::PreparedGeometry shape(row.shape());
        for (std::size_t j : index.candidates(row.shape().envelope())) {
            const Geometry& other = withShapes[j];
            if (!preparedWith[j]) {
                preparedWith[j] = std::make_unique<geometry::PreparedGeometry>(other);
            }
            // A shape wholly inside the other is its own intersection: the overlay, by far the
            // costliest step, is left for the pairs whose boundaries cross.
            Geometry piece;
            if (preparedWith[j]->containsProperly(row.shape())) {
                piece = row.shape().asShapeOf(shapeType);
            } else if (shape.containsProperly(other)) {
                piece = other.asShapeOf(shapeType);
            } else if (shape.intersects(other)) {
                piece = other.clipToEnvelope(row.shape().envelope())
                            .intersection(row.shape())
                            .asShapeOf(shapeType);
            }
            if (piece.isNull() || piece.isEmpty()) {
                continue;
            }
            std::vector<automation::Variant> values;
            values.push_back(static_cast<double>(row.oid()));
            for (auto& value : attributeValues(row)) {
                values.push_back(std::move(value));
            }
            values.push_back(static_cast<double>(withRows[j].oid()));
            for (auto& value : attributeValues(withRows[j])) {
                values.push_back(std::move(value));
            }
            insertFeature(insert, *result, targets, values, piece);
        }
        if (progress && ++done % 1000 == 0) {
            progress(done, total);
        }
    }
    insert.flush();
    if (progress) {
        progress(total, total);
    }
    return result;
}

} // namespace brevant::platform::geodatabase
