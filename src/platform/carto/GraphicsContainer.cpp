#include "platform/carto/GraphicsContainer.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/carto/MapFrame.h"

#include <algorithm>

namespace brevant::platform::carto {

const std::shared_ptr<Element>& GraphicsContainer::element(int index) const
{
    if (index < 0 || index >= count()) {
        throw automation::PlatformError(automation::ErrorNumber::SubscriptOutOfRange, "Carto",
                                        "the page has no element " + std::to_string(index));
    }
    return m_elements[static_cast<std::size_t>(index)];
}

void GraphicsContainer::addElement(std::shared_ptr<Element> element)
{
    if (!element) {
        throw automation::PlatformError(automation::ErrorNumber::ObjectRequired, "Carto",
                                        "cannot add a missing element to the page");
    }
    m_elements.push_back(std::move(element));
}

bool GraphicsContainer::deleteElement(const std::shared_ptr<Element>& element)
{
    const auto at = std::find(m_elements.begin(), m_elements.end(), element);
    if (at == m_elements.end()) {
        return false;
    }
    m_elements.erase(at);
    return true;
}

std::shared_ptr<MapFrame> GraphicsContainer::findFrame(const Map& map) const
{
    for (const auto& element : m_elements) {
        auto frame = std::dynamic_pointer_cast<MapFrame>(element);
        if (frame && frame->map().get() == &map) {
            return frame;
        }
    }
    return nullptr;
}

} // namespace brevant::platform::carto
