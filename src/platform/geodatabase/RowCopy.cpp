#include "platform/geodatabase/RowCopy.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Reprojector.h"
#include "platform/geodatabase/Table.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace brevant::platform::geodatabase {

int64_t appendRows(const Table& source, Table& target, const QueryFilter& filter)
{
    // Pairs of (source index, target index) for the attributes both tables have.
    std::vector<std::pair<int, int>> pairs;
    const Fields& from = source.fields();
    for (int i = 0; i < from.count(); ++i) {
        const auto type = from.field(i).type;
        if (type == FieldType::OID || type == FieldType::Geometry) {
            continue;
        }
        const int j = target.findField(from.field(i).name);
        if (j >= 0 && target.fields().field(j).type != FieldType::OID &&
            target.fields().field(j).type != FieldType::Geometry) {
            pairs.emplace_back(i, j);
        }
    }
    const bool shapes = source.hasShape() && target.hasShape();
    // Shapes land in the target's coordinate system, as a loader projects them on the fly.
    std::unique_ptr<Reprojector> reproject;
    if (shapes) {
        const auto* sourceClass = dynamic_cast<const FeatureClass*>(&source);
        const auto* targetClass = dynamic_cast<const FeatureClass*>(&target);
        if (sourceClass && targetClass) {
            reproject = std::make_unique<Reprojector>(sourceClass->spatialReference(),
                                                      targetClass->spatialReference());
        }
    }
    // Many rows into a table holding no more get its spatial index built once at the end. The
    // source is counted only as far as that needs, and only unfiltered, where that is cheap.
    constexpr int64_t kBulkRows = 10000;
    bool bulk = false;
    if (filter.whereClause.empty() && filter.intersects.isNull() && target.hasShape()) {
        const int64_t enough = std::max(kBulkRows, target.rowCount());
        bulk = source.rowCount(filter, enough) == enough;
    }
    int64_t added = 0;
    Cursor cursor = source.search(filter);
    InsertCursor insert =
        target.insert(bulk ? Table::InsertMode::Bulk : Table::InsertMode::RowByRow);
    Row row;
    while (cursor.next(row)) {
        Row copy = target.createRow();
        for (const auto& [i, j] : pairs) {
            copy.setValue(j, row.value(i));
        }
        if (shapes) {
            copy.setShape(reproject && reproject->changes() && !row.shape().isNull()
                              ? reproject->apply(row.shape())
                              : row.shape());
        }
        insert.insertRow(copy);
        ++added;
    }
    insert.flush();
    return added;
}

} // namespace brevant::platform::geodatabase
