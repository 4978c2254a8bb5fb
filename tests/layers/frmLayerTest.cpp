#include "layers/frmLayer.h"

#include "context/EqShape.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/GroupLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/RasterLayer.h"
#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/DialogScript.h"
#include "platform/ui/ScriptedPrompts.h"
#include "platform/ui/qt/ModalWindow.h"
#include "support/HostFixture.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace brevant::layers {
namespace {

namespace carto = platform::carto;

std::shared_ptr<carto::FeatureLayer> featureLayer(const std::string& name)
{
    auto layer = std::make_shared<carto::FeatureLayer>();
    layer->setName(name);
    return layer;
}

/// A map holding `layers` from the top down.
std::shared_ptr<carto::Map> mapOf(const std::vector<std::shared_ptr<carto::Layer>>& layers)
{
    auto map = std::make_shared<carto::Map>();
    for (auto it = layers.rbegin(); it != layers.rend(); ++it) {
        map->addLayer(*it);
    }
    return map;
}

std::vector<std::string> namesOnMap(const carto::Map& map)
{
    std::vector<std::string> names;
    for (const auto& layer : map.layers()) {
        names.push_back(layer->name());
    }
    return names;
}

class LayerControl : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        context::openStudyRegion(true);
        platform::ui::qt::ensureWidgetApplication();
        m_form = std::make_unique<frmLayer>();
        m_form->show();
    }

    void TearDown() override
    {
        m_form.reset();
        HostFixture::TearDown();
    }

    template <class Widget> Widget& control(const char* name)
    {
        auto* found = m_form->findChild<Widget*>(name);
        if (found == nullptr) {
            throw std::runtime_error(std::string("no control ") + name);
        }
        return *found;
    }

    QListWidget& list() { return control<QListWidget>("lstLayers"); }

    std::vector<std::string> listed()
    {
        std::vector<std::string> names;
        for (int i = 0; i < list().count(); ++i) {
            names.push_back(list().item(i)->text().toStdString());
        }
        return names;
    }

    void clickLine(int line, Qt::MouseButton button = Qt::LeftButton)
    {
        auto& lines = list();
        QTest::mouseClick(lines.viewport(), button, {},
                          lines.visualItemRect(lines.item(line)).center());
    }

    void press(const char* name) { QTest::mouseClick(&control<QPushButton>(name), Qt::LeftButton); }

    void clickBox(const char* name)
    {
        auto& box = control<QCheckBox>(name);
        // On the box itself: a wide check box ignores clicks right of its caption.
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(8, box.height() / 2));
    }

    std::unique_ptr<frmLayer> m_form;
};

TEST_F(LayerControl, ShowsItsControlsUnderTheirNamesAndTexts)
{
    EXPECT_EQ(m_form->windowTitle().toStdString(), "Layer Control");
    EXPECT_EQ(control<QPushButton>("cmdUp").text(), "Up");
    EXPECT_EQ(control<QPushButton>("cmdBottom").text(), "Bottom");
    EXPECT_EQ(control<QCheckBox>("chkLabel").text(), "Label");
    EXPECT_EQ(control<QMenu>("mnuLayerPopup").title(), "Layer Popup");
    EXPECT_EQ(control<QAction>("mnuRemoveLayer").text(), "Remove Layer");
}

TEST_F(LayerControl, TwoLayersOfOneNameAreListedApartAndEachBoxActsOnItsOwnLayer)
{
    const auto first = featureLayer("Roads");
    const auto second = featureLayer("Roads");
    m_form->CreateLayerList(mapOf({first, second}));
    EXPECT_EQ(listed(), (std::vector<std::string>{"Roads", "Roads"}));
    EXPECT_EQ(m_form->listedLayer(0), first);
    EXPECT_EQ(m_form->listedLayer(1), second);

    clickLine(1);
    clickBox("chkVisible");
    EXPECT_TRUE(first->visible());
    EXPECT_FALSE(second->visible());
    clickBox("chkSelectable");
    EXPECT_TRUE(first->selectable());
    EXPECT_FALSE(second->selectable());

    clickLine(0);
    EXPECT_TRUE(control<QCheckBox>("chkVisible").isChecked()) << "the box shows the first layer";
}

TEST_F(LayerControl, GroupMembersAreListedAndTheGroupIsNot)
{
    auto group = std::make_shared<carto::GroupLayer>("Utilities");
    for (const char* name : {"Water", "Gas", "Power"}) {
        group->add(featureLayer(name));
    }
    m_form->CreateLayerList(mapOf({featureLayer("Roads"), group}));
    EXPECT_EQ(listed(), (std::vector<std::string>{"Roads", "Water", "Gas", "Power"}));
}

TEST_F(LayerControl, HazardSelectionIsLeftOutAndShiftsMovesOneDown)
{
    const auto map = mapOf({featureLayer("hazardSelection"), featureLayer("Roads"),
                            featureLayer("Bridges"), featureLayer("Tracts")});
    m_form->CreateLayerList(map);
    EXPECT_EQ(listed(), (std::vector<std::string>{"Roads", "Bridges", "Tracts"}));
    EXPECT_TRUE(m_form->hazardSelectionListed());

    clickLine(2);
    press("cmdTop");
    EXPECT_EQ(namesOnMap(*map),
              (std::vector<std::string>{"hazardSelection", "Tracts", "Roads", "Bridges"}));
    EXPECT_EQ(list().currentRow(), 0);

    press("cmdDown");
    EXPECT_EQ(namesOnMap(*map),
              (std::vector<std::string>{"hazardSelection", "Roads", "Tracts", "Bridges"}));
    EXPECT_EQ(list().currentItem()->text(), "Tracts");
}

TEST_F(LayerControl, UpOnTheFirstLineAndDownOnTheLastChangeNothing)
{
    const auto map = mapOf({featureLayer("Roads"), featureLayer("Bridges")});
    m_form->CreateLayerList(map);
    map->clearRefreshes();
    clickLine(0);
    press("cmdUp");
    clickLine(1);
    press("cmdDown");
    EXPECT_EQ(namesOnMap(*map), (std::vector<std::string>{"Roads", "Bridges"}));
    EXPECT_TRUE(map->refreshes().empty());

    press("cmdUp");
    EXPECT_EQ(namesOnMap(*map), (std::vector<std::string>{"Bridges", "Roads"}));
    EXPECT_FALSE(map->refreshes().empty()) << "a move redraws the view";
}

TEST_F(LayerControl, SystemLayersCannotBeHiddenOrRemovedWhateverTheirCase)
{
    const auto boundary = featureLayer("REGION BOUNDARY");
    m_form->CreateLayerList(mapOf({featureLayer("Roads"), boundary}));
    clickLine(1);
    EXPECT_FALSE(control<QCheckBox>("chkVisible").isEnabled());
    EXPECT_FALSE(control<QCheckBox>("chkSelectable").isEnabled());
    clickLine(1, Qt::RightButton);
    auto& popup = control<QMenu>("mnuLayerPopup");
    EXPECT_TRUE(popup.isVisible());
    EXPECT_FALSE(control<QAction>("mnuRemoveLayer").isEnabled());
    EXPECT_FALSE(control<QAction>("mnuVisible").isEnabled());
    popup.hide();

    clickLine(0, Qt::RightButton);
    EXPECT_TRUE(control<QAction>("mnuRemoveLayer").isEnabled());
    EXPECT_TRUE(control<QCheckBox>("chkVisible").isEnabled());
    popup.hide();
}

TEST_F(LayerControl, ScaleBoxesTakeNumbersOnly)
{
    const auto roads = featureLayer("Roads");
    m_form->CreateLayerList(mapOf({roads}));
    auto& maximum = control<QLineEdit>("txtMax");
    EXPECT_EQ(maximum.text(), "0");
    maximum.setText("12a");
    EXPECT_EQ(roads->maximumScale(), 0.0);
    maximum.setText("25000");
    EXPECT_EQ(roads->maximumScale(), 25000.0);
    control<QLineEdit>("txtMin").setText("1000000");
    EXPECT_EQ(roads->minimumScale(), 1000000.0);
}

TEST_F(LayerControl, AnEmptyMapLeavesTheControlsDisabled)
{
    m_form->CreateLayerList(std::make_shared<carto::Map>());
    EXPECT_EQ(list().count(), 0);
    EXPECT_FALSE(list().isEnabled());
    EXPECT_FALSE(control<QWidget>("fraLayerProperties").isEnabled());
    EXPECT_FALSE(control<QCheckBox>("chkVisible").isEnabled());
    EXPECT_FALSE(control<QPushButton>("cmdUp").isEnabled());
}

TEST_F(LayerControl, TheListFollowsTheMapsViewEvents)
{
    const auto map = mapOf({featureLayer("Roads")});
    m_form->CreateLayerList(map);
    const auto bridges = featureLayer("Bridges");
    map->addLayer(bridges);
    EXPECT_EQ(listed(), (std::vector<std::string>{"Bridges", "Roads"}));
    map->moveLayer(bridges, 1);
    EXPECT_EQ(listed(), (std::vector<std::string>{"Roads", "Bridges"}));
    map->deleteLayer(bridges);
    EXPECT_EQ(listed(), (std::vector<std::string>{"Roads"}));
}

TEST_F(LayerControl, PopupMenuHidesAndRemovesTheSelectedLayer)
{
    const auto roads = featureLayer("Roads");
    const auto map = mapOf({roads, featureLayer("Bridges")});
    m_form->CreateLayerList(map);
    // The menu shows the marks of the press before it; a first left press sets them.
    clickLine(0);
    clickLine(0, Qt::RightButton);
    auto& popup = control<QMenu>("mnuLayerPopup");
    EXPECT_TRUE(control<QAction>("mnuVisible").isChecked());
    control<QAction>("mnuVisible").trigger();
    popup.hide();
    EXPECT_FALSE(roads->visible());
    EXPECT_FALSE(control<QCheckBox>("chkVisible").isChecked());

    clickLine(0, Qt::RightButton);
    EXPECT_FALSE(control<QAction>("mnuVisible").isChecked()) << "marks follow the last press";
    control<QAction>("mnuRemoveLayer").trigger();
    popup.hide();
    EXPECT_EQ(namesOnMap(*map), (std::vector<std::string>{"Bridges"}));
    EXPECT_EQ(listed(), (std::vector<std::string>{"Bridges"}));
}

TEST_F(LayerControl, MovingALayerThatIsNotAFeatureLayerIsLoggedAndChangesNothing)
{
    auto raster = std::make_shared<carto::RasterLayer>(root() / "dem.tif",
                                                       platform::geometry::Envelope(0, 0, 1, 1));
    raster->setName("Elevation");
    const auto map = mapOf({featureLayer("Roads"), raster});
    m_form->CreateLayerList(map);
    clickLine(1);
    press("cmdTop");
    EXPECT_EQ(namesOnMap(*map), (std::vector<std::string>{"Roads", "Elevation"}));
    EXPECT_NE(errorLog().find(" layer location change "), std::string::npos) << errorLog();
    EXPECT_EQ(errorLog().find(" move Top "), std::string::npos)
        << "one record, from the procedure that failed";
    EXPECT_TRUE(m_form->isVisible());
}

TEST_F(LayerControl, TheSelectedLayerMustBeAFeatureLayerToBeTakenUp)
{
    auto raster = std::make_shared<carto::RasterLayer>(root() / "dem.tif",
                                                       platform::geometry::Envelope(0, 0, 1, 1));
    raster->setName("Elevation");
    const auto map = mapOf({featureLayer("Roads"), raster});
    m_form->CreateLayerList(map);
    clickLine(0);
    m_form->SelectedLayerChanged();
    EXPECT_EQ(errorLog(), "");
    clickLine(1);
    m_form->SelectedLayerChanged();
    EXPECT_NE(errorLog().find(" is layer selectable selection"), std::string::npos) << errorLog();
}

TEST_F(LayerControl, TheCloseBoxHidesTheWindowWhichKeepsItsList)
{
    m_form->CreateLayerList(mapOf({featureLayer("Roads"), featureLayer("Bridges")}));
    clickLine(1);
    EXPECT_TRUE(m_form->close() == false || !m_form->isVisible());
    EXPECT_FALSE(m_form->isVisible());
    m_form->show();
    EXPECT_EQ(list().currentRow(), 1);
}

TEST_F(LayerControl, LayerPropertiesOpenInTheirOwnWindow)
{
    auto script = std::make_shared<platform::ui::DialogScript>();
    platform::ui::installDialogScript(script);
    const auto roads = featureLayer("Roads");
    roads->setMaximumScale(25000);
    const auto map = mapOf({roads});
    m_form->CreateLayerList(map);
    map->clearRefreshes();
    platform::ui::DialogAction read;
    read.kind = platform::ui::DialogAction::Kind::Read;
    read.name = "lblScaleRange";
    platform::ui::DialogAction ok;
    ok.kind = platform::ui::DialogAction::Kind::Press;
    ok.name = "cmdOK";
    script->queue({read, ok});
    m_form->ShowLayerProperties();
    const auto reports = script->takeReports();
    platform::ui::installDialogScript(nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].caption, "Layer Roads Properties");
    ASSERT_EQ(reports[0].values.size(), 1u);
    EXPECT_EQ(reports[0].values[0].text, "1:0 to 1:25000");
    EXPECT_EQ(reports[0].closed, "accepted");
    EXPECT_FALSE(map->refreshes().empty()) << "confirming redraws the view";
}

// Points end on top of lines and lines on top of areas, whatever order the data set keeps;
// the hazard-selection layer goes to the very top.
TEST_F(LayerControl, AddDataStacksAreasLinesAndPointsAndNamesTheLayers)
{
    namespace gdb = platform::geodatabase;
    using platform::geometry::ShapeType;
    const auto path = root() / "added.gpkg";
    {
        auto workspace = gdb::Workspace::createGeoPackage(path);
        const gdb::Fields none;
        workspace.createFeatureClass("Sites", none, ShapeType::Point);
        workspace.createFeatureClass("Tracts", none, ShapeType::Polygon);
        workspace.createFeatureClass("HazardSelection", none, ShapeType::Polygon);
        workspace.createFeatureClass("Roads", none, ShapeType::Polyline);
        workspace.createTable("Notes", gdb::Fields({{"Text", gdb::FieldType::String, 20, {}}}));
    }
    auto prompts = std::make_shared<platform::ui::ScriptedPrompts>();
    platform::ui::installUserPrompts(prompts);
    const auto map = std::make_shared<carto::Map>();
    m_form->CreateLayerList(map);

    prompts->queueAnswer("Cancel");
    m_form->AddData();
    EXPECT_EQ(map->layerCount(), 0);

    prompts->queueAnswer(path.string());
    m_form->AddData();
    ASSERT_EQ(prompts->fileDialogs().size(), 2u);
    EXPECT_EQ(prompts->fileDialogs()[1].title, "Select Data");
    EXPECT_EQ(namesOnMap(*map),
              (std::vector<std::string>{"HazardSelection", "Sites", "Roads", "Tracts"}));
    std::vector<std::string> shown;
    for (const auto& message : prompts->takeMessages()) {
        shown.push_back(message.text);
    }
    EXPECT_EQ(shown, (std::vector<std::string>{"Roads", "HazardSelection", "Tracts"}));
    EXPECT_EQ(listed(), (std::vector<std::string>{"Sites", "Roads", "Tracts"}));
    platform::ui::installUserPrompts(nullptr);
}

} // namespace
} // namespace brevant::layers
