#include "platform/carto/GroupLayer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <algorithm>

namespace brevant::platform::carto {

geometry::Envelope GroupLayer::extent() const
{
    geometry::Envelope all;
    for (const auto& member : m_layers) {
        all = all.united(member->extent());
    }
    return all;
}

const std::shared_ptr<Layer>& GroupLayer::layer(int index) const
{
    if (index < 0 || index >= count()) {
        throw automation::PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Carto",
                                        "group layer " + name() + " has no member " +
                                            std::to_string(index));
    }
    return m_layers[static_cast<std::size_t>(index)];
}

void GroupLayer::add(std::shared_ptr<Layer> layer)
{
    if (!layer) {
        throw automation::PlatformError(automation::ErrorNumber::ObjectRequired, "Carto",
                                        "cannot add a missing layer to group layer " + name());
    }
    m_layers.push_back(std::move(layer));
}

bool GroupLayer::deleteLayer(const std::shared_ptr<Layer>& layer)
{
    const auto at = std::find(m_layers.begin(), m_layers.end(), layer);
    if (at == m_layers.end()) {
        return false;
    }
    m_layers.erase(at);
    return true;
}

} // namespace brevant::platform::carto
