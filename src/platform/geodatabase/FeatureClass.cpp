#include "platform/geodatabase/FeatureClass.h"

#include "gdal/StorageData.h"

namespace brevant::platform::geodatabase {

geometry::ShapeType FeatureClass::shapeType() const
{
    return data().shapeType;
}

const std::string& FeatureClass::shapeFieldName() const
{
    return data().shapeFieldName;
}

const geometry::SpatialReference& FeatureClass::spatialReference() const
{
    return data().spatialReference;
}

geometry::Envelope FeatureClass::extent() const
{
    WorkspaceData& workspace = *workspaceData();
    OGRLayer& layer = data().requireLayer(workspace);
    gdal::ErrorScope errors;
    OGREnvelope envelope;
    if (workspace.kind == Workspace::Kind::GeoPackage) {
        // The extent a GeoPackage keeps only ever grows; deleted rows must not widen it.
        const std::string column = layer.GetGeometryColumn();
        const std::string table = layer.GetName();
        const std::string sql = "SELECT MIN(ST_MinX(" + gdal::sqlName(column) + ")), MIN(ST_MinY(" +
                                gdal::sqlName(column) + ")), MAX(ST_MaxX(" + gdal::sqlName(column) +
                                ")), MAX(ST_MaxY(" + gdal::sqlName(column) + ")) FROM " +
                                gdal::sqlName(table);
        const gdal::ResultSet result(*workspace.dataset,
                                     workspace.dataset->ExecuteSQL(sql.c_str(), nullptr, nullptr));
        if (!result) {
            errors.fail("cannot read the extent of " + workspace.describe(table));
        }
        gdal::FeaturePtr row(result->GetNextFeature());
        geometry::Envelope found;
        if (row && row->IsFieldSetAndNotNull(0)) {
            found = geometry::Envelope(row->GetFieldAsDouble(0), row->GetFieldAsDouble(1),
                                       row->GetFieldAsDouble(2), row->GetFieldAsDouble(3));
        }
        return found;
    }
    if (layer.GetExtent(&envelope, TRUE) != OGRERR_NONE) {
        return {};
    }
    return geometry::Envelope(envelope.MinX, envelope.MinY, envelope.MaxX, envelope.MaxY);
}

} // namespace brevant::platform::geodatabase
