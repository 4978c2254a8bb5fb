#pragma once

#include "platform/carto/Layer.h"
#include "platform/carto/Renderer.h"
#include "platform/carto/SelectionSet.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geometry/ShapeType.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::platform::carto {

/// A layer over one feature class: drawn by its renderer, selectable, with a selection of its
/// own, relationship classes that relate rows of other tables to its features, and at most one
/// display join whose fields the renderer and labels may use as if they were the layer's.
/// Reading errors of the feature class pass through as PlatformError.
class FeatureLayer : public Layer {
public:
    FeatureLayer() = default;
    /// A visible, selectable layer named after the class's alias name, drawn with the default
    /// symbol of its shape type.
    explicit FeatureLayer(std::shared_ptr<geodatabase::FeatureClass> featureClass);

    std::string_view className() const override { return "FeatureLayer"; }
    LayerKind kind() const override { return LayerKind::Feature; }
    geometry::Envelope extent() const override;

    const std::shared_ptr<geodatabase::FeatureClass>& featureClass() const { return m_class; }
    /// Sets the class (null detaches it). A layer still drawn by an empty simple renderer gets
    /// the default symbol of the class's shape type.
    void setFeatureClass(std::shared_ptr<geodatabase::FeatureClass> featureClass);
    /// The class's shape type; Null without a class.
    geometry::ShapeType shapeType() const;

    bool selectable() const { return m_selectable; }
    void setSelectable(bool selectable) { m_selectable = selectable; }

    const Renderer& renderer() const { return m_renderer; }
    /// The renderer, to edit its symbols in place.
    Renderer& renderer() { return m_renderer; }
    void setRenderer(Renderer renderer) { m_renderer = std::move(renderer); }
    /// The symbol a new layer of a shape type is drawn with.
    static std::optional<Symbol> defaultSymbol(geometry::ShapeType type);

    /// Whether labels (the display field's values) are drawn with the features.
    bool displayAnnotation() const { return m_displayAnnotation; }
    void setDisplayAnnotation(bool display) { m_displayAnnotation = display; }
    /// The field labels show; when empty, the first text field after the shape, else field 2.
    const std::string& displayField() const { return m_displayField; }
    void setDisplayField(std::string field) { m_displayField = std::move(field); }

    const SelectionSet& selectionSet() const { return m_selection; }
    SelectionSet& selectionSet() { return m_selection; }
    /// Colour of selected features; unset, the map's selection environment decides.
    const std::optional<RgbColor>& selectionColor() const { return m_selectionColor; }
    void setSelectionColor(RgbColor color) { m_selectionColor = color; }
    /// Selects the features of the class that `filter` lets through, combined with the current
    /// selection; with `justOne` only the first of them. Returns how many the filter found.
    int selectFeatures(const geodatabase::QueryFilter& filter, SelectionResult how,
                       bool justOne = false);
    void clearSelection() { m_selection.clear(); }

    const std::vector<std::shared_ptr<const geodatabase::RelationshipClass>>&
    relationshipClasses() const
    {
        return m_relationships;
    }
    void addRelationshipClass(std::shared_ptr<const geodatabase::RelationshipClass> relationship);
    void removeRelationshipClass(const geodatabase::RelationshipClass& relationship);
    void removeAllRelationshipClasses() { m_relationships.clear(); }

    /// Shows the relationship's origin fields as fields of the layer.
    void displayRelationshipClass(
        std::shared_ptr<const geodatabase::RelationshipClass> relationship,
        geodatabase::JoinedTable::Kind kind = geodatabase::JoinedTable::Kind::LeftOuter);
    const std::shared_ptr<const geodatabase::JoinedTable>& displayJoin() const { return m_join; }
    void removeDisplayJoin() { m_join.reset(); }

    /// The fields features are read with: the class's, or the join's when there is one.
    const geodatabase::Fields& displayFields() const;
    /// A displayed field by (qualified or plain) name, without regard to case; -1 when missing.
    int findField(std::string_view name) const;
    /// The field labels show, as an index of the displayed fields; -1 when there is none.
    int labelFieldIndex() const;

    /// Hands each feature the filter lets through, with its displayed fields, to `visit` until
    /// it returns false. Does nothing without a class.
    void search(const geodatabase::QueryFilter& filter,
                const std::function<bool(const geodatabase::Row&)>& visit) const;
    /// The features whose shapes meet `shape`, with their displayed fields.
    std::vector<geodatabase::Row> identify(const geometry::Geometry& shape) const;

private:
    std::shared_ptr<geodatabase::FeatureClass> m_class;
    bool m_selectable = true;
    Renderer m_renderer;
    bool m_displayAnnotation = false;
    std::string m_displayField;
    SelectionSet m_selection;
    std::optional<RgbColor> m_selectionColor;
    std::vector<std::shared_ptr<const geodatabase::RelationshipClass>> m_relationships;
    std::shared_ptr<const geodatabase::JoinedTable> m_join;
};

} // namespace brevant::platform::carto
