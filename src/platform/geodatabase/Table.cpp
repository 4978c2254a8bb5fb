#include "platform/geodatabase/Table.h"

#include "gdal/CursorState.h"
#include "gdal/StorageData.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"

#include <string_view>

namespace brevant::platform::geodatabase {

using automation::PlatformError;

namespace {
geometry::ShapeType shapeTypeOf(OGRwkbGeometryType type)
{
    switch (wkbFlatten(type)) {
    case wkbPoint:
        return geometry::ShapeType::Point;
    case wkbMultiPoint:
        return geometry::ShapeType::Multipoint;
    case wkbLineString:
    case wkbMultiLineString:
        return geometry::ShapeType::Polyline;
    case wkbPolygon:
    case wkbMultiPolygon:
        return geometry::ShapeType::Polygon;
    default:
        return geometry::ShapeType::Null;
    }
}

/// The shape type the features of a layer that declares none have in common: single and
/// multi-part shapes of one dimension are one family (a polygon is a multipolygon of one part,
/// a point fits a multipoint class). Null when they mix dimensions or hold no shapes.
geometry::ShapeType shapeTypeOfFeatures(OGRLayer& layer)
{
    using geometry::ShapeType;
    gdal::ErrorScope errors;
    ShapeType found = ShapeType::Null;
    layer.ResetReading();
    for (gdal::FeaturePtr feature(layer.GetNextFeature()); feature;
         feature.reset(layer.GetNextFeature())) {
        const OGRGeometry* shape = feature->GetGeometryRef();
        if (!shape || shape->IsEmpty()) {
            continue;
        }
        const ShapeType type = shapeTypeOf(shape->getGeometryType());
        const bool points = (found == ShapeType::Point && type == ShapeType::Multipoint) ||
                            (found == ShapeType::Multipoint && type == ShapeType::Point);
        if (found == ShapeType::Null || points) {
            found = points ? ShapeType::Multipoint : type;
        } else if (type != found) {
            found = ShapeType::Null;
        }
        if (found == ShapeType::Null) {
            break;
        }
    }
    layer.ResetReading();
    return found;
}
} // namespace

void TableData::loadFields()
{
    OGRFeatureDefn* definition = layer->GetLayerDefn();
    const char* alternative = layer->GetMetadataItem("IDENTIFIER");
    alias = alternative && *alternative ? alternative : name;
    auto list = std::make_shared<Fields>();
    ogrIndex.clear();
    const std::string fidName = layer->GetFIDColumn();
    list->append(Field{fidName.empty() ? "FID" : fidName, FieldType::OID, 0, {}});
    ogrIndex.push_back(-1);
    hasShape = definition->GetGeomFieldCount() > 0;
    if (hasShape) {
        const OGRGeomFieldDefn* geometryField = definition->GetGeomFieldDefn(0);
        shapeFieldName = *geometryField->GetNameRef() ? geometryField->GetNameRef() : "Shape";
        const OGRwkbGeometryType declared = geometryField->GetType();
        shapeType = shapeTypeOf(declared);
        // Files such as GeoJSON declare no type when single and multi-part shapes are mixed;
        // their features are read once, when the table is opened.
        if (shapeType == geometry::ShapeType::Null && wkbFlatten(declared) == wkbUnknown &&
            !fields) {
            shapeType = shapeTypeOfFeatures(*layer);
        }
        const OGRSpatialReference* srs = geometryField->GetSpatialRef();
        // A GeoPackage names a class made without a system "Undefined geographic SRS" (or
        // "Undefined Cartesian SRS"); it is as unknown as a shapefile without its .prj.
        const char* srsName = srs ? srs->GetName() : nullptr;
        if (srsName && std::string_view(srsName).rfind("Undefined ", 0) == 0) {
            srs = nullptr;
        }
        if (srs) {
            char* exported = nullptr;
            srs->exportToWkt(&exported);
            const cpl::CplPtr<> wkt(exported);
            spatialReference = geometry::SpatialReference::fromWkt(wkt.get());
        }
        list->append(Field{shapeFieldName, FieldType::Geometry, 0, {}});
        ogrIndex.push_back(-1);
    }
    for (int i = 0; i < definition->GetFieldCount(); ++i) {
        const OGRFieldDefn* field = definition->GetFieldDefn(i);
        list->append(Field{field->GetNameRef(), gdal::fieldType(*field), field->GetWidth(),
                           field->GetAlternativeNameRef(), gdal::defaultValueOf(*field)});
        ogrIndex.push_back(i);
    }
    fields = std::move(list);
}

OGRLayer& TableData::requireLayer(const WorkspaceData& workspace) const
{
    if (!layer) {
        throw PlatformError(automation::ErrorNumber::GdalBase + CPLE_ObjectNull, "GDAL",
                            workspace.describe(name) + " has been deleted");
    }
    return *layer;
}

Table::Table(std::shared_ptr<WorkspaceData> workspace, std::shared_ptr<TableData> data)
    : m_workspace(std::move(workspace)), m_data(std::move(data))
{
}

Table::~Table() = default;

const std::string& Table::name() const
{
    return m_data->name;
}

const std::string& Table::aliasName() const
{
    return m_data->alias;
}

const Fields& Table::fields() const
{
    return *m_data->fields;
}

std::shared_ptr<const Fields> Table::sharedFields() const
{
    return m_data->fields;
}

int Table::findField(std::string_view name) const
{
    return m_data->fields->findField(name);
}

bool Table::hasShape() const
{
    return m_data->hasShape;
}

Workspace Table::workspace() const
{
    return Workspace::fromData(m_workspace);
}

void Table::addField(const Field& field)
{
    if (findField(field.name) >= 0) {
        throw PlatformError(automation::ErrorNumber::GdalBase + CPLE_AppDefined, "GDAL",
                            "cannot add field " + field.name + " to " +
                                m_workspace->describe(name()) + ": it exists");
    }
    if (m_workspace->readOnly) {
        throw PlatformError(automation::ErrorNumber::GdalBase + CPLE_NotSupported, "GDAL",
                            "cannot add field " + field.name + " to " +
                                m_workspace->describe(name()) + ": the workspace is read-only");
    }
    OGRLayer& layer = m_data->requireLayer(*m_workspace);
    m_workspace->commit();
    gdal::ErrorScope errors;
    const auto definition = gdal::fieldDefinition(field);
    if (layer.CreateField(definition.get()) != OGRERR_NONE) {
        errors.fail("cannot add field " + field.name + " to " + m_workspace->describe(name()));
    }
    m_data->loadFields();
}

int64_t Table::rowCount(const QueryFilter& filter, int64_t upTo) const
{
    if (auto count = countBySql(*m_workspace, *m_data, filter, upTo)) {
        return *count;
    }
    int64_t count = 0;
    Cursor cursor = search(filter);
    Row row;
    while (count != upTo && cursor.next(row)) {
        ++count;
    }
    return count;
}

Cursor Table::search(const QueryFilter& filter) const
{
    return Cursor(*this, openCursor(m_workspace, m_data, filter, false));
}

Cursor Table::update(const QueryFilter& filter)
{
    return Cursor(*this, openCursor(m_workspace, m_data, filter, true));
}

InsertCursor Table::insert(InsertMode mode)
{
    m_data->requireLayer(*m_workspace);
    auto state = std::make_unique<CursorState>();
    state->workspace = m_workspace;
    state->table = m_data;
    state->updatable = true;
    if (mode == InsertMode::Bulk) {
        state->spatialIndex = SpatialIndexDeferral::start(*m_workspace, *m_data);
        state->wrote = state->spatialIndex != nullptr;
    }
    return InsertCursor(*this, std::move(state));
}

int64_t Table::deleteSearchedRows(const QueryFilter& filter)
{
    if (auto deleted = deleteBySql(*m_workspace, *m_data, filter)) {
        return *deleted;
    }
    int64_t deleted = 0;
    Cursor cursor = update(filter);
    Row row;
    while (cursor.next(row)) {
        cursor.deleteRow(row);
        ++deleted;
    }
    cursor.flush();
    return deleted;
}

int64_t Table::calculate(int index, const automation::Variant& value, const QueryFilter& filter)
{
    // Checks the field as a row would, before anything is written.
    Row probe = createRow();
    probe.setValue(index, value);
    if (auto changed = calculateBySql(*m_workspace, *m_data, index, value, filter)) {
        return *changed;
    }
    int64_t changed = 0;
    Cursor cursor = update(filter);
    Row row;
    while (cursor.next(row)) {
        row.setValue(index, value);
        cursor.updateRow(row);
        ++changed;
    }
    cursor.flush();
    return changed;
}

Row Table::createRow() const
{
    return Row(m_data->fields, -1);
}

std::optional<Row> Table::row(int64_t oid) const
{
    OGRLayer& layer = m_data->requireLayer(*m_workspace);
    gdal::ErrorScope errors;
    gdal::FeaturePtr feature(layer.GetFeature(oid));
    if (!feature) {
        return std::nullopt;
    }
    return readRow(*m_data, *feature, nullptr);
}

} // namespace brevant::platform::geodatabase
