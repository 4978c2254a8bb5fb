#include "platform/geodatabase/FeatureDataConverter.h"

#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

namespace brevant::platform::geodatabase {

Conversion convertFeatureClass(const FeatureClass& input, const QueryFilter& filter,
                               Workspace& output, const std::string& outputName,
                               int flushInterval)
{
    FieldCheck check = checkFields(input.fields(), output.kind());
    Conversion result;
    result.renamed = check.renamed;
    result.output = output.createFeatureClass(outputName, check.fields, input.shapeType(),
                                              input.spatialReference());

    // Source index -> output index, matched by the checked names.
    std::vector<std::pair<int, int>> pairs;
    for (int i = 0; i < check.fields.count(); ++i) {
        const Field& field = check.fields.field(i);
        if (field.type == FieldType::OID || field.type == FieldType::Geometry) {
            continue;
        }
        const int j = result.output->findField(field.name);
        if (j >= 0) {
            pairs.emplace_back(i, j);
        }
    }

    Cursor cursor = input.search(filter);
    InsertCursor insert = result.output->insert();
    Row row;
    int pending = 0;
    while (cursor.next(row)) {
        if (row.shape().isNull() || row.shape().isEmpty()) {
            result.invalid.push_back({row.oid(), "The feature has no geometry"});
            continue;
        }
        Row copy = result.output->createRow();
        copy.setShape(row.shape());
        for (const auto& [i, j] : pairs) {
            copy.setValue(j, row.value(i));
        }
        try {
            insert.insertRow(copy);
            ++result.converted;
        } catch (const automation::PlatformError& error) {
            result.invalid.push_back({row.oid(), error.what()});
        }
        if (flushInterval > 0 && ++pending >= flushInterval) {
            insert.flush();
            pending = 0;
        }
    }
    insert.flush();
    return result;
}

} // namespace brevant::platform::geodatabase
