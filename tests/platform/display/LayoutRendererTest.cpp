#include "platform/display/LayoutRenderer.h"

#include "platform/automation/PlatformError.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/FrameElement.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/MarkerNorthArrow.h"
#include "platform/carto/PageLayout.h"
#include "platform/carto/PictureElement.h"
#include "platform/carto/ScaleLine.h"
#include "platform/carto/TestFeatures.h"
#include "platform/carto/TextElement.h"

#include <QImage>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brevant::platform::display {
namespace {

using namespace carto;
using geodatabase::Fields;
using geodatabase::FieldType;
using geometry::Envelope;
using geometry::Geometry;
using geometry::ShapeType;

constexpr double Dpi = 100.0;
const QColor Red(230, 0, 0);
const QColor Green(0, 168, 0);
const QColor Logo(0, 0, 230);

SimpleFillSymbol solid(const QColor& color)
{
    return SimpleFillSymbol{SimpleFillStyle::Solid,
                            {color.red(), color.green(), color.blue()},
                            SimpleLineSymbol{SimpleLineStyle::Solid, {}, 0.4}};
}

/// Pixels of a rectangle of a picture that satisfy a test.
template <class Test> int count(const QImage& image, const QRectF& area, Test test)
{
    const QRect r = area.toAlignedRect().intersected(image.rect());
    int found = 0;
    for (int y = r.top(); y <= r.bottom(); ++y) {
        for (int x = r.left(); x <= r.right(); ++x) {
            found += test(image.pixelColor(x, y));
        }
    }
    return found;
}

bool dark(const QColor& c)
{
    return c.lightness() < 100;
}

/// Any ink at all, a thin antialiased line included.
bool inked(const QColor& c)
{
    return c.lightness() < 200;
}

/// A landscape page of a two-class polygon map with the decorations of a printed map: border
/// frames, titles, a legend, a north arrow, a scale bar with ten divisions and a logo.
class PageRendering : public ::testing::Test {
protected:
    void SetUp() override
    {
        auto tracts = std::make_shared<FeatureLayer>(
            data.add("hztract", ShapeType::Polygon, Fields({{"pga", FieldType::Double, 0, {}}}),
                     {{test::squareWkt(-122.6, 37.6, 0.2), {0.1}},
                      {test::squareWkt(-122.3, 37.6, 0.2), {0.4}}}));
        tracts->setName("Tract PGA");
        ClassBreaksRenderer breaks;
        breaks.setField("pga");
        breaks.setBreakCount(2);
        breaks.setMinimumBreak(0.0);
        breaks.setBreak(0, 0.2);
        breaks.setBreak(1, 0.5);
        breaks.setLabel(0, "0 - 0.2");
        breaks.setLabel(1, "0.2 - 0.5");
        breaks.setSymbol(0, solid(Red));
        breaks.setSymbol(1, solid(Green));
        tracts->setRenderer(breaks);
        map->addLayer(tracts);

        layout.setOrientation(PageOrientation::Landscape);
        auto& graphics = layout.graphicsContainer();
        frame = std::make_shared<MapFrame>(map);
        frame->setGeometry(rectangleShape(mapRect));
        graphics.addElement(frame);
        for (const Envelope& r : {lowerRect, upperRect}) {
            auto box = std::make_shared<FrameElement>();
            box->setGeometry(rectangleShape(r));
            graphics.addElement(box);
        }
        addText("Study Region new   : Testville", {0.427951, 7.905096}, 15);
        addText("Hazard Scenario  : Test", {0.427951, 7.482587}, 15);

        const auto surround = [&](SurroundKind kind, const Envelope& r) {
            auto surroundFrame = frame->createSurroundFrame(kind);
            surroundFrame->setGeometry(rectangleShape(r));
            graphics.addElement(surroundFrame);
            return surroundFrame->mapSurround();
        };
        surround(SurroundKind::Legend, legendRect);
        auto arrow = std::static_pointer_cast<MarkerNorthArrow>(
            surround(SurroundKind::MarkerNorthArrow, arrowRect));
        arrow->setMarkerSymbol(CharacterMarkerSymbol{"No Such Arrow Font", 173, 36, 0, {}});
        std::static_pointer_cast<ScaleLine>(surround(SurroundKind::ScaleLine, scaleRect))
            ->setDivisions(10);

        const auto logo = data.folder() / "qelto.bmp";
        QImage bitmap(40, 20, QImage::Format_RGB32);
        bitmap.fill(Logo);
        ASSERT_TRUE(bitmap.save(QString::fromStdString(logo.string()), "BMP"));
        auto picture = std::make_shared<PictureElement>();
        picture->importPictureFromFile(logo);
        picture->setGeometry(rectangleShape(pictureRect));
        graphics.addElement(picture);
    }

    void addText(const std::string& text, geometry::Point at, double size)
    {
        auto element = std::make_shared<TextElement>();
        element->setText(text);
        element->setSymbol(TextSymbol{.size = size});
        element->setGeometry(Geometry::point(at));
        layout.graphicsContainer().addElement(element);
    }

    QRectF device(const Envelope& r) const { return LayoutRenderer(layout).toDevice(r, Dpi); }

    const Envelope mapRect{0.25572, 1.180204, 10.72703, 7.218167};
    const Envelope lowerRect{0.25572, 0.274436, 9.148418, 0.955942};
    const Envelope upperRect{0.25572, 7.356175, 10.72703, 8.253223};
    const Envelope legendRect{8.4, 1.62, 10.358086, 2.180128};
    const Envelope arrowRect{8.605166, 0.332259, 9.038293, 0.783432};
    const Envelope scaleRect{0.41984, 0.507418, 8.260148, 0.782565};
    const Envelope pictureRect{9.577297, 0.516431, 10.372917, 0.914774};

    test::TestFeatures data;
    std::shared_ptr<Map> map = std::make_shared<Map>();
    std::shared_ptr<MapFrame> frame;
    PageLayout layout;
};

TEST_F(PageRendering, EveryElementIsDrawnInItsRectangle)
{
    const QImage page = LayoutRenderer(layout).render(Dpi);
    ASSERT_EQ(page.size(), QSize(1100, 850));

    const auto colour = [](const QColor& wanted) {
        return [wanted](const QColor& c) { return c == wanted; };
    };
    EXPECT_GT(count(page, device(mapRect), colour(Red)), 1000);
    EXPECT_GT(count(page, device(mapRect), colour(Green)), 1000);

    // Frame borders run along the rectangles' edges.
    for (const Envelope& r : {lowerRect, upperRect, mapRect}) {
        const QRectF edge = device(r);
        EXPECT_GT(count(page, QRectF(edge.left() - 1, edge.center().y(), 3, 1), dark), 0);
        EXPECT_GT(count(page, QRectF(edge.center().x(), edge.top() - 1, 1, 3), dark), 0);
    }

    // Titles lie on their baselines inside the upper frame.
    const QRectF title(0.43 * Dpi, (8.5 - 8.1) * Dpi, 2.0 * Dpi, 0.2 * Dpi);
    EXPECT_GT(count(page, title, dark), 100);
    EXPECT_GT(count(page, title.translated(0, 0.42 * Dpi), dark), 100);

    // The legend shows both class colours and its labels.
    const QRectF legend = device(legendRect);
    EXPECT_GT(count(page, legend, colour(Red)), 5);
    EXPECT_GT(count(page, legend, colour(Green)), 5);
    EXPECT_GT(count(page, legend, dark), 50);

    EXPECT_GT(count(page, device(arrowRect), dark), 100);
    EXPECT_GT(count(page, device(pictureRect).adjusted(2, 2, -2, -2), colour(Logo)), 1000);

    // Eleven ticks stand on the scale bar's line.
    const QRectF bar = device(scaleRect);
    int line = -1;
    for (int y = static_cast<int>(bar.top()); y < bar.bottom() && line < 0; ++y) {
        if (count(page, QRectF(bar.left(), y, bar.width() * 0.6, 1), dark) > bar.width() * 0.3) {
            line = y;
        }
    }
    ASSERT_GE(line, 0) << "no scale line";
    int ticks = 0;
    bool inTick = false;
    for (int x = static_cast<int>(bar.left()); x < bar.right(); ++x) {
        const bool ink = inked(page.pixelColor(x, line - 3));
        ticks += ink && !inTick;
        inTick = ink;
    }
    EXPECT_EQ(ticks, 11);

    // Nothing outside the elements.
    EXPECT_EQ(count(page, QRectF(10.8 * Dpi, 8.35 * Dpi, 0.15 * Dpi, 0.1 * Dpi), dark), 0);
    EXPECT_EQ(count(page, QRectF(0.3 * Dpi, (8.5 - 1.1) * Dpi, 10 * Dpi, 0.1 * Dpi), dark), 0);
}

TEST_F(PageRendering, PdfOpensWithAPdfReader)
{
    if (std::system("command -v pdftoppm > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "pdftoppm is not installed";
    }
    const auto pdf = data.folder() / "page.pdf";
    LayoutRenderer(layout).exportPdf(pdf, 300);
    const auto out = data.folder() / "page";
    const std::string command =
        "pdftoppm -png -r 50 -singlefile '" + pdf.string() + "' '" + out.string() + "' 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string messages;
    char buffer[256];
    while (fgets(buffer, sizeof buffer, pipe)) {
        messages += buffer;
    }
    ASSERT_EQ(pclose(pipe), 0) << messages;

    QImage page(QString::fromStdString(out.string() + ".png"));
    ASSERT_FALSE(page.isNull());
    EXPECT_EQ(page.size(), QSize(550, 425));
    const auto scaled = [](const QRectF& r) { return QRectF(r.topLeft() / 2, r.size() / 2); };
    EXPECT_GT(
        count(page, scaled(device(mapRect)),
              [](const QColor& c) { return c.red() > 200 && c.green() < 40 && c.blue() < 40; }),
        100);
    EXPECT_GT(count(page, scaled(device(upperRect)), dark), 50);
}

TEST_F(PageRendering, PngExportWritesThePage)
{
    const auto png = data.folder() / "page.png";
    LayoutRenderer(layout).exportPng(png, 50);
    const QImage page(QString::fromStdString(png.string()));
    EXPECT_EQ(page.size(), QSize(550, 425));
    EXPECT_THROW(LayoutRenderer(layout).exportPng(data.folder() / "missing" / "page.png"),
                 automation::PlatformError);
}

} // namespace
} // namespace brevant::platform::display
