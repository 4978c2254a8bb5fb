#pragma once

#include "platform/geometry/Envelope.h"

#include <QImage>
#include <QPainter>
#include <QRectF>
#include <filesystem>

namespace brevant::platform::carto {
class PageLayout;
}

namespace brevant::platform::display {

/// Draws a page layout: its elements in order on a white page. A map frame shows its map at the
/// map's extent; a legend lists the map's visible feature layers with their renderers' symbols
/// and labels, shrunk to fit its frame; a north arrow and a scale bar (its length a round
/// distance, split into the scale line's divisions) fill their frames; a picture is stretched
/// over its rectangle (a picture whose file cannot be read is left out). Export errors throw
/// PlatformError naming the file.
class LayoutRenderer {
public:
    explicit LayoutRenderer(const carto::PageLayout& layout) : m_layout(layout) {}

    /// Draws the page into a painter whose device has `dotsPerInch`, the page's top-left corner
    /// at the device's origin.
    void draw(QPainter& painter, double dotsPerInch) const;
    /// A picture of the whole page.
    QImage render(double dotsPerInch) const;
    void exportPng(const std::filesystem::path& file, double dotsPerInch = 150.0) const;
    /// A one-page PDF of the page's size; maps are drawn as vectors.
    void exportPdf(const std::filesystem::path& file, int dotsPerInch = 300) const;

    /// Where a rectangle of the page (inches from the lower-left corner) lies in a picture of
    /// the page at `dotsPerInch` (pixels from the top-left corner).
    QRectF toDevice(const geometry::Envelope& pageRectangle, double dotsPerInch) const;

private:
    const carto::PageLayout& m_layout;
};

} // namespace brevant::platform::display
