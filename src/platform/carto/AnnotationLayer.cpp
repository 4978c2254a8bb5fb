#include "platform/carto/AnnotationLayer.h"

#include "platform/geodatabase/FeatureClass.h"

namespace brevant::platform::carto {

AnnotationLayer::AnnotationLayer(std::shared_ptr<geodatabase::FeatureClass> featureClass)
    : Layer(featureClass ? featureClass->aliasName() : std::string()),
      m_class(std::move(featureClass))
{
}

geometry::Envelope AnnotationLayer::extent() const
{
    return m_class ? m_class->extent() : geometry::Envelope();
}

} // namespace brevant::platform::carto
