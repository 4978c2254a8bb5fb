#pragma once

#include "platform/carto/Layer.h"
#include "platform/carto/TextSymbol.h"

#include <memory>
#include <string>

namespace brevant::platform::geodatabase {
class FeatureClass;
}

namespace brevant::platform::carto {

/// A layer of annotation features: each feature's text, read from the text field, drawn at its
/// shape (at the first vertex of a line or area). Its symbology cannot be edited as a feature
/// layer's can.
class AnnotationLayer : public Layer {
public:
    explicit AnnotationLayer(std::shared_ptr<geodatabase::FeatureClass> featureClass);

    std::string_view className() const override { return "AnnotationLayer"; }
    LayerKind kind() const override { return LayerKind::Annotation; }
    geometry::Envelope extent() const override;

    const std::shared_ptr<geodatabase::FeatureClass>& featureClass() const { return m_class; }
    /// The field holding each feature's text ("TextString" by default).
    const std::string& textField() const { return m_textField; }
    void setTextField(std::string field) { m_textField = std::move(field); }
    const TextSymbol& textSymbol() const { return m_symbol; }
    void setTextSymbol(TextSymbol symbol) { m_symbol = std::move(symbol); }

private:
    std::shared_ptr<geodatabase::FeatureClass> m_class;
    std::string m_textField = "TextString";
    TextSymbol m_symbol{.size = 8.0};
};

} // namespace brevant::platform::carto
