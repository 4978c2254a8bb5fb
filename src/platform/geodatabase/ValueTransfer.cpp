#include "platform/geodatabase/ValueTransfer.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Reprojector.h"
#include "platform/geometry/Envelope.h"
#include "platform/geometry/FeatureIndex.h"

#include <vector>

namespace brevant::platform::geodatabase {

TransferCounts transferValues(FeatureClass& target, const FeatureClass& source, int targetField,
                              int sourceField, bool containedOnly,
                              const std::function<void(int64_t, int64_t)>& progress)
{
    // The index covers the target's extent: a source shape whose envelope lies wholly outside
    // it is no candidate, not even as the nearest one.
    const geometry::Envelope extent = target.extent();
    const auto reproject = overlayReprojector(target, source);
    std::vector<geometry::Geometry> shapes;
    std::vector<automation::Variant> values;
    {
        Cursor cursor = source.search(QueryFilter::fields({source.fields().field(sourceField).name}));
        Row row;
        while (cursor.next(row)) {
            if (row.shape().isNull()) {
                continue;
            }
            geometry::Geometry shape = reproject->apply(row.shape());
            if (!shape.envelope().intersects(extent)) {
                continue;
            }
            shapes.push_back(std::move(shape));
            values.push_back(row.value(sourceField));
        }
    }
    const geometry::FeatureIndex index(std::move(shapes));
    const bool points = target.shapeType() == geometry::ShapeType::Point;

    TransferCounts counts;
    const int64_t total = progress ? target.rowCount() : 0;
    int64_t done = 0;
    Cursor cursor = target.update(QueryFilter::fields({target.fields().field(targetField).name}));
    Row row;
    while (cursor.next(row)) {
        const geometry::Geometry& shape = row.shape();
        std::optional<std::size_t> match;
        if (!shape.isNull() && !shape.isEmpty()) {
            match = points ? index.containing(shape.firstPoint()) : index.containing(shape);
            if (match) {
                ++counts.contained;
            } else if (auto near = points ? index.nearest(shape.firstPoint()) : index.nearest(shape)) {
                if (near->distance == 0.0) {
                    match = near->index;
                    ++counts.contained;
                } else if (!containedOnly) {
                    match = near->index;
                    ++counts.nearest;
                }
            }
        }
        if (match) {
            row.setValue(targetField, values[*match]);
            cursor.updateRow(row);
        } else {
            ++counts.unmatched;
        }
        if (progress && ++done % 10000 == 0) {
            progress(done, total);
        }
    }
    cursor.flush();
    if (progress) {
        progress(total, total);
    }
    return counts;
}

} // namespace brevant::platform::geodatabase
