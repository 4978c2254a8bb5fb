#include "platform/carto/PageLayout.h"

#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"

#include <utility>

namespace brevant::platform::carto {

PageLayout::PageLayout()
{
    // A page is measured in inches, not ground units.
    displayTransformation().setMetersPerUnit(0.0254);
}

void PageLayout::setPageSize(double width, double height)
{
    if (!(width > 0.0) || !(height > 0.0)) {
        throw automation::PlatformError(automation::ErrorNumber::InvalidProcedureCall, "Carto",
                                        "a page of " + std::to_string(width) + " by " +
                                            std::to_string(height) + " inches");
    }
    m_width = width;
    m_height = height;
}

PageOrientation PageLayout::orientation() const
{
    return m_width > m_height ? PageOrientation::Landscape : PageOrientation::Portrait;
}

void PageLayout::setOrientation(PageOrientation orientation)
{
    if (orientation != this->orientation()) {
        std::swap(m_width, m_height);
    }
}

geometry::Envelope PageLayout::naturalFullExtent() const
{
    return {0.0, 0.0, m_width, m_height};
}

} // namespace brevant::platform::carto
