#include "platform/carto/FeatureLayer.h"

#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"

#include <algorithm>

namespace brevant::platform::carto {

using geodatabase::QueryFilter;
using geodatabase::Row;

FeatureLayer::FeatureLayer(std::shared_ptr<geodatabase::FeatureClass> featureClass)
    : Layer(featureClass ? featureClass->aliasName() : std::string())
{
    setFeatureClass(std::move(featureClass));
}

geometry::Envelope FeatureLayer::extent() const
{
    return m_class ? m_class->extent() : geometry::Envelope();
}

void FeatureLayer::setFeatureClass(std::shared_ptr<geodatabase::FeatureClass> featureClass)
{
    m_class = std::move(featureClass);
    const auto* simple = std::get_if<SimpleRenderer>(&m_renderer);
    if (m_class && simple && !simple->symbol) {
        m_renderer = SimpleRenderer{defaultSymbol(m_class->shapeType()), {}, {}};
    }
}

geometry::ShapeType FeatureLayer::shapeType() const
{
    return m_class ? m_class->shapeType() : geometry::ShapeType::Null;
}

std::optional<Symbol> FeatureLayer::defaultSymbol(geometry::ShapeType type)
{
    const RgbColor blue{0, 92, 230};
    switch (type) {
    case geometry::ShapeType::Point:
    case geometry::ShapeType::Multipoint:
        return SimpleMarkerSymbol{SimpleMarkerStyle::Circle, blue, 6.0};
    case geometry::ShapeType::Polyline:
        return SimpleLineSymbol{SimpleLineStyle::Solid, blue, 1.0};
    case geometry::ShapeType::Polygon:
        return SimpleFillSymbol{SimpleFillStyle::Solid,
                                {209, 224, 199},
                                SimpleLineSymbol{SimpleLineStyle::Solid, {110, 110, 110}, 0.4}};
    case geometry::ShapeType::Null:
        break;
    }
    return std::nullopt;
}

int FeatureLayer::selectFeatures(const QueryFilter& filter, SelectionResult how, bool justOne)
{
    std::vector<int64_t> found;
    if (m_class) {
        geodatabase::Cursor cursor = m_class->search(filter);
        Row row;
        while (cursor.next(row)) {
            found.push_back(row.oid());
            if (justOne) {
                break;
            }
        }
    }
    const int count = static_cast<int>(found.size());
    m_selection.combine(SelectionSet(std::move(found)), how);
    return count;
}

void FeatureLayer::addRelationshipClass(
    std::shared_ptr<const geodatabase::RelationshipClass> relationship)
{
    if (relationship && std::find(m_relationships.begin(), m_relationships.end(), relationship) ==
                            m_relationships.end()) {
        m_relationships.push_back(std::move(relationship));
    }
}

void FeatureLayer::removeRelationshipClass(const geodatabase::RelationshipClass& relationship)
{
    std::erase_if(m_relationships,
                  [&relationship](const auto& held) { return held.get() == &relationship; });
}

void FeatureLayer::displayRelationshipClass(
    std::shared_ptr<const geodatabase::RelationshipClass> relationship,
    geodatabase::JoinedTable::Kind kind)
{
    m_join = std::make_shared<const geodatabase::JoinedTable>(std::move(relationship), kind);
}

const geodatabase::Fields& FeatureLayer::displayFields() const
{
    static const geodatabase::Fields none;
    if (m_join) {
        return m_join->fields();
    }
    return m_class ? m_class->fields() : none;
}

int FeatureLayer::findField(std::string_view name) const
{
    return m_join ? m_join->findField(name) : displayFields().findField(name);
}

int FeatureLayer::labelFieldIndex() const
{
    if (!m_displayField.empty()) {
        return findField(m_displayField);
    }
    const geodatabase::Fields& fields = displayFields();
    for (int i = 2; i < fields.count(); ++i) {
        if (fields.field(i).type == geodatabase::FieldType::String) {
            return i;
        }
    }
    return fields.count() > 2 ? 2 : -1;
}

void FeatureLayer::search(const QueryFilter& filter,
                          const std::function<bool(const Row&)>& visit) const
{
    if (!m_class) {
        return;
    }
    if (m_join) {
        for (const Row& row : m_join->rows(filter)) {
            if (!visit(row)) {
                return;
            }
        }
        return;
    }
    geodatabase::Cursor cursor = m_class->search(filter);
    Row row;
    while (cursor.next(row)) {
        if (!visit(row)) {
            return;
        }
    }
}

std::vector<Row> FeatureLayer::identify(const geometry::Geometry& shape) const
{
    std::vector<Row> rows;
    search(QueryFilter::spatial(shape), [&rows](const Row& row) {
        rows.push_back(row);
        return true;
    });
    return rows;
}

} // namespace brevant::platform::carto
