#pragma once

#include "platform/automation/AutomationObject.h"
#include "platform/carto/ActiveView.h"
#include "platform/carto/GraphicsContainer.h"

namespace brevant::platform::carto {

/// Page orientations, with the codes callers pass.
enum class PageOrientation : int { Portrait = 1, Landscape = 2 };

/// A printable page: its size in inches, its orientation and its elements (map frames, texts,
/// frames, surrounds, pictures), whose shapes are in inches from the lower-left corner. A page
/// is its own active view, showing the whole page unless zoomed.
class PageLayout : public automation::AutomationObject, public ActiveView {
public:
    /// A portrait letter page (8.5 by 11 inches) without elements.
    PageLayout();

    std::string_view className() const override { return "PageLayout"; }

    /// The page layout as its active view.
    ActiveView& activeView() { return *this; }

    double pageWidth() const { return m_width; }
    double pageHeight() const { return m_height; }
    /// Sets the size as given, whatever the orientation; throws PlatformError for a size that
    /// is not positive.
    void setPageSize(double width, double height);
    /// Landscape when the page is wider than high.
    PageOrientation orientation() const;
    /// Turns the page so that it is wider (landscape) or higher (portrait) than it is high.
    void setOrientation(PageOrientation orientation);

    GraphicsContainer& graphicsContainer() { return m_graphics; }
    const GraphicsContainer& graphicsContainer() const { return m_graphics; }

protected:
    /// The page.
    geometry::Envelope naturalFullExtent() const override;

private:
    double m_width = 8.5;
    double m_height = 11.0;
    GraphicsContainer m_graphics;
};

} // namespace brevant::platform::carto
