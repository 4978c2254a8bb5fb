#include "context/EqShape.h"
#include "layers/frmLayer.h"
#include "platform/carto/AnnotationLayer.h"
#include "platform/carto/CharacterMarkerSymbol.h"
#include "platform/carto/ClassBreaksRenderer.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/RasterLayer.h"
#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ScriptedPrompts.h"
#include "platform/ui/qt/ModalWindow.h"
#include "support/HostFixture.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace brevant::layers {
namespace {

namespace carto = platform::carto;
namespace gdb = platform::geodatabase;
using platform::geometry::ShapeType;

/// The layer control over layers of real feature classes of each shape type.
class Symbology : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        context::openStudyRegion(true);
        platform::ui::qt::ensureWidgetApplication();
        m_prompts = std::make_shared<platform::ui::ScriptedPrompts>();
        platform::ui::installUserPrompts(m_prompts);
        m_workspace = std::make_unique<gdb::Workspace>(
            gdb::Workspace::createGeoPackage(root() / "symbols.gpkg"));
        m_form = std::make_unique<frmLayer>();
        m_form->show();
    }

    void TearDown() override
    {
        m_form.reset();
        platform::ui::installUserPrompts(nullptr);
        HostFixture::TearDown();
    }

    std::shared_ptr<carto::FeatureLayer> layerOf(const std::string& name, ShapeType type)
    {
        auto layer = std::make_shared<carto::FeatureLayer>(
            m_workspace->createFeatureClass(name, gdb::Fields(), type));
        layer->setName(name);
        return layer;
    }

    /// Shows `layers` (top first) and selects the first.
    std::shared_ptr<carto::Map> show(const std::vector<std::shared_ptr<carto::Layer>>& layers)
    {
        m_map = std::make_shared<carto::Map>();
        for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
            m_map->addLayer(*it);
        }
        m_form->CreateLayerList(m_map);
        return m_map;
    }

    void selectLine(int line)
    {
        auto* list = m_form->findChild<QListWidget*>("lstLayers");
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(list->item(line)).center());
    }

    template <class Widget> Widget& control(const char* name)
    {
        auto* found = m_form->findChild<Widget*>(name);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no control ") + name);
        }
        return *found;
    }

    static carto::Symbol& symbolOf(carto::FeatureLayer& layer)
    {
        return *std::get<carto::SimpleRenderer>(layer.renderer()).symbol;
    }

    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
    std::unique_ptr<gdb::Workspace> m_workspace;
    std::unique_ptr<frmLayer> m_form;
    std::shared_ptr<carto::Map> m_map;
};

TEST_F(Symbology, EachKindOfLayerGetsItsPage)
{
    const auto points = layerOf("Sites", ShapeType::Point);
    const auto characters = layerOf("Wells", ShapeType::Point);
    symbolOf(*characters) = carto::CharacterMarkerSymbol{};
    const auto classes = layerOf("Tracts", ShapeType::Polygon);
    classes->setRenderer(carto::ClassBreaksRenderer{});
    const auto multipoint = layerOf("Clusters", ShapeType::Multipoint);
    auto raster = std::make_shared<carto::RasterLayer>(root() / "dem.tif",
                                                       platform::geometry::Envelope(0, 0, 1, 1));
    raster->setName("Elevation");
    auto detached = std::make_shared<carto::FeatureLayer>();
    detached->setName("Lost");
    show({points, characters, classes, multipoint, raster, detached,
          layerOf("Roads", ShapeType::Polyline), layerOf("Lakes", ShapeType::Polygon)});

    const std::vector<int> expected{0, 4, 3, 3, 6, 7, 1, 2};
    for (int line = 0; line < static_cast<int>(expected.size()); ++line) {
        selectLine(line);
        EXPECT_EQ(m_form->symbologyPage(), expected[line]) << "line " << line;
        int shown = 0;
        for (int page : {0, 1, 2, 3, 4, 6, 7}) {
            auto& widget =
                control<QWidget>(QString("fraDisplayPage(%1)").arg(page).toUtf8().constData());
            shown += widget.isVisible() ? 1 : 0;
        }
        EXPECT_EQ(shown, 1) << "one page at a time";
    }
}

TEST_F(Symbology, WidthsAreWholeNumbersRoundedHalvesToEven)
{
    const auto roads = layerOf("Roads", ShapeType::Polyline);
    show({roads});
    auto& width = control<QLineEdit>("txtPolylineWidth");
    const auto stored = [&] { return std::get<carto::SimpleLineSymbol>(symbolOf(*roads)).width; };
    width.setText("2.5");
    EXPECT_EQ(stored(), 2.0);
    width.setText("3.5");
    EXPECT_EQ(stored(), 4.0);
    width.setText("");
    width.setText("wide");
    EXPECT_EQ(stored(), 4.0) << "no number, no change";
    width.setText("40000");
    EXPECT_EQ(stored(), 4.0) << "beyond 16 bits the width stays";
    EXPECT_NE(errorLog().find(" polyine width change"), std::string::npos) << errorLog();
}

TEST_F(Symbology, StyleListsWriteOnlyAChangedStyle)
{
    const auto lakes = layerOf("Lakes", ShapeType::Polygon);
    show({lakes});
    m_map->clearRefreshes();
    auto& styles = control<QComboBox>("cboPolyStyle");
    EXPECT_EQ(styles.itemText(7), "Diagonal Cross");
    styles.setCurrentIndex(styles.findText("Hollow"));
    EXPECT_EQ(std::get<carto::SimpleFillSymbol>(symbolOf(*lakes)).style,
              carto::SimpleFillStyle::Hollow);
    EXPECT_FALSE(m_map->refreshes().empty()) << "an edit redraws the map";
}

TEST_F(Symbology, ColourBoxesAskWithThePresetAndCancelKeepsIt)
{
    const auto sites = layerOf("Sites", ShapeType::Point);
    const auto lakes = layerOf("Lakes", ShapeType::Polygon);
    show({sites, lakes});
    auto& marker = std::get<carto::SimpleMarkerSymbol>(symbolOf(*sites));
    const auto before = marker.color;
    m_prompts->queueAnswer("Cancel");
    QTest::mouseClick(&control<QPushButton>("picPt"), Qt::LeftButton);
    EXPECT_EQ(marker.color, before);
    ASSERT_EQ(m_prompts->colourDialogs().size(), 1u);
    EXPECT_EQ(m_prompts->colourDialogs()[0].title, "Select Point Color");
    EXPECT_EQ(m_prompts->colourDialogs()[0].preset, before.rgb());
    EXPECT_EQ(static_cast<int>(m_prompts->colourDialogs()[0].flags), 3);

    selectLine(1);
    m_prompts->queueAnswer("#FF0000");
    QTest::mouseClick(&control<QPushButton>("picPolyOutline"), Qt::LeftButton);
    const auto& fill = std::get<carto::SimpleFillSymbol>(symbolOf(*lakes));
    EXPECT_EQ(std::get<carto::SimpleLineSymbol>(fill.outline).color.rgb(), 0x0000FF);
    EXPECT_EQ(m_prompts->colourDialogs().back().title, "Select Outline Color");
    EXPECT_EQ(control<QPushButton>("picPolyOutline").property("value").toString(), "255,000,000");
}

// Filling a page runs the boxes' change handling, which writes a fractional size back as a
// whole number without redrawing; a zero outline shows as 1 and is not written back.
TEST_F(Symbology, FillingAPageWritesItsValuesBackWithoutARedraw)
{
    const auto sites = layerOf("Sites", ShapeType::Point);
    std::get<carto::SimpleMarkerSymbol>(symbolOf(*sites)).size = 8.5;
    const auto lakes = layerOf("Lakes", ShapeType::Polygon);
    auto& fill = std::get<carto::SimpleFillSymbol>(symbolOf(*lakes));
    std::get<carto::SimpleLineSymbol>(fill.outline).width = 0.0;
    show({lakes, sites});
    EXPECT_EQ(control<QLineEdit>("txtPolyOutlineWidth").text(), "1");
    m_map->clearRefreshes();
    selectLine(1);
    EXPECT_EQ(control<QLineEdit>("txtPtSize").text(), "8.5");
    EXPECT_EQ(std::get<carto::SimpleMarkerSymbol>(symbolOf(*sites)).size, 8.0);
    EXPECT_TRUE(m_map->refreshes().empty());
    EXPECT_TRUE(m_form->refreshFlag());
}

} // namespace
} // namespace brevant::layers
