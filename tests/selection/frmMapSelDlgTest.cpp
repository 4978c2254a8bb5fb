#include "selection/frmMapSelDlg.h"

#include "app/DialogActions.h"
#include "context/EqShape.h"
#include "context/StudyRegionContext.h"
#include "host/RegionSelectionStore.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Fields.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/Recordset.h"
#include "platform/ui/DialogScript.h"
#include "platform/ui/ScriptedPrompts.h"
#include "platform/ui/qt/ModalWindow.h"
#include "selection/IdentifyWindow.h"
#include "selection/MapSelectionView.h"
#include "support/HostFixture.h"

#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace brevant::selection {
namespace {

namespace carto = platform::carto;
namespace gdb = platform::geodatabase;
namespace geometry = platform::geometry;
using json = nlohmann::ordered_json;
using platform::automation::Variant;

constexpr int kUnits = 1002;

/// The unit square `i` of a grid 40 wide: 0.2 on a side, 0.25 apart, from the origin.
geometry::Point unitCentre(int i)
{
    return {(i % 40) * 0.25 + 0.1, (i / 40) * 0.25 + 0.1};
}

std::string tractCode(int i)
{
    char code[12];
    std::snprintf(code, sizeof code, "06001%06d", i);
    return code;
}

/// A study area 10 degrees square with, in one GeoPackage: its boundary; epicentres E3 and E4
/// at one place; the fault F1 running north
/// from (5, 1) to (5, 9) and F2 east from (6, 2); the empty HazardSelection; and 1002 small
/// tract squares.
class MapSelectionWindow : public test::HostFixture {
protected:
    void SetUp() override
    {
        HostFixture::SetUp();
        context::openStudyRegion(true);
        platform::ui::qt::ensureWidgetApplication();
        m_script = std::make_shared<platform::ui::DialogScript>();
        platform::ui::installDialogScript(m_script);
        m_prompts = std::make_shared<platform::ui::ScriptedPrompts>();
        platform::ui::installUserPrompts(m_prompts);

        auto data = gdb::Workspace::createGeoPackage(root() / "selection.gpkg");
        using gdb::FieldType;
        m_boundary =
            data.createFeatureClass("boundary", gdb::Fields(), geometry::ShapeType::Polygon);
        add(*m_boundary, {}, "POLYGON ((0 0, 10 0, 10 10, 0 10, 0 0))");
        m_epicentres = data.createFeatureClass(
            "eqEpicenter", gdb::Fields({{"eqEpicenterId", FieldType::String, 10, {}}}),
            geometry::ShapeType::Point);
        add(*m_epicentres, "E3", "POINT (3.005 3)");
        add(*m_epicentres, "E4", "POINT (3.005 3)");
        m_faults = data.createFeatureClass("eqFault",
                                           gdb::Fields({{"eqFaultId", FieldType::String, 10, {}}}),
                                           geometry::ShapeType::Polyline);
        add(*m_faults, "F1", "LINESTRING (5 1, 5 9)");
        add(*m_faults, "F2", "LINESTRING (6 2, 9 2)");
        m_epicentre =
            data.createFeatureClass("HazardSelection", gdb::Fields(), geometry::ShapeType::Point);
        m_tracts = data.createFeatureClass("tracts",
                                           gdb::Fields({{"StateFips", FieldType::String, 2, {}},
                                                        {"CountyFips", FieldType::String, 5, {}},
                                                        {"Tract", FieldType::String, 11, {}}}),
                                           geometry::ShapeType::Polygon);
        auto insert = m_tracts->insert();
        for (int i = 0; i < kUnits; ++i) {
            const auto c = unitCentre(i);
            gdb::Row row = m_tracts->createRow();
            row.setValue(2, std::string("06"));
            row.setValue(3, std::string("06001"));
            row.setValue(4, tractCode(i));
            row.setShape(geometry::Geometry::polygon({{{c.x - 0.1, c.y - 0.1},
                                                       {c.x + 0.1, c.y - 0.1},
                                                       {c.x + 0.1, c.y + 0.1},
                                                       {c.x - 0.1, c.y + 0.1},
                                                       {c.x - 0.1, c.y - 0.1}}}));
            insert.insertRow(row);
        }
        insert.flush();
    }

    void TearDown() override
    {
        platform::ui::installDialogScript(nullptr);
        platform::ui::installUserPrompts(nullptr);
        HostFixture::TearDown();
    }

    static void add(gdb::FeatureClass& target, const std::string& id, const std::string& wkt)
    {
        auto insert = target.insert();
        gdb::Row row = target.createRow();
        if (!id.empty()) {
            row.setValue(2, id);
        }
        row.setShape(geometry::Geometry::fromWkt(wkt));
        insert.insertRow(row);
        insert.flush();
    }

    static std::shared_ptr<carto::FeatureLayer> layerOf(std::shared_ptr<gdb::FeatureClass> c,
                                                        const std::string& name)
    {
        auto layer = std::make_shared<carto::FeatureLayer>(std::move(c));
        layer->setName(name);
        return layer;
    }

    /// A window as the selection service prepares it, for dialog kind `kind`; kind 0 offers the
    /// tract squares at level 2.
    std::unique_ptr<frmMapSelDlg> form(int16_t kind, const std::string& preselected = {})
    {
        auto window = std::make_unique<frmMapSelDlg>();
        window->m_pMap = std::make_shared<carto::Map>();
        window->m_pActiveView = &window->m_pMap->activeView();
        window->m_iDlgType = kind;
        window->m_DlgCaption = "Caption of kind " + std::to_string(kind);
        if (kind == 0) {
            window->m_pFeatureClass = m_tracts;
            window->m_pFeatureLayer = layerOf(m_tracts, "RegionSelection");
            window->m_iSelType = 2;
            return window;
        }
        window->m_pSrFeatureLayer = layerOf(m_boundary, "Region Boundary");
        window->m_pFeatureClass = kind == 1 ? m_epicentres : m_faults;
        window->m_pFeatureLayer =
            layerOf(window->m_pFeatureClass, kind == 1 ? "Epicenters" : "Faults");
        if (!preselected.empty()) {
            window->m_pFeatureLayer->selectFeatures(
                gdb::QueryFilter::where(std::string(kind == 1 ? "eqEpicenterId" : "eqFaultId") +
                                        " = '" + preselected + "'"),
                carto::SelectionResult::New);
        }
        if (kind >= 3) {
            window->m_pEpicFeatureClass = m_epicentre;
            window->m_pEpicLayer = layerOf(m_epicentre, "HazardSelection");
        }
        return window;
    }

    /// Shows the window with the actions queued; returns its report.
    platform::ui::DialogReport run(frmMapSelDlg& window, const json& actions, bool allRun = true)
    {
        m_script->queue(app::dialogActionsFromJson(actions));
        window.showModal();
        auto reports = m_script->takeReports();
        if (reports.size() != 1u) {
            ADD_FAILURE() << reports.size() << " windows reported";
            return {};
        }
        for (const auto& action : reports.back().actions) {
            EXPECT_TRUE(!allRun || action.ok) << action.action << ": " << action.error;
        }
        return reports.back();
    }

    /// The transformation the window draws with once loaded, from a window opened and closed.
    carto::DisplayTransformation viewOf(int16_t kind, const std::string& preselected = {})
    {
        auto probe = form(kind, preselected);
        run(*probe, json::array({{{"close", true}}}));
        return probe->m_pMap->displayTransformation();
    }

    static json at(const geometry::Point& p) { return json::array({p.x, p.y}); }

    static std::vector<std::string> selectedTracts(const frmMapSelDlg& window)
    {
        std::vector<std::string> codes;
        for (const int64_t oid : window.m_pFeatureLayer->selectionSet().ids()) {
            codes.push_back(window.m_pFeatureClass->row(oid)->value(4).toString());
        }
        return codes;
    }

    /// Stores tract units through the host store, as an earlier Selection Done would.
    static void storeTracts(const std::vector<std::string>& codes)
    {
        auto& store = *context::studyRegionContext().RegionSelectionStore;
        auto units = store.OpenRegionUnits(2, true).objectAs<platform::tabular::Recordset>();
        for (const auto& code : codes) {
            units->addNew();
            units->setValue(0, code);
            units->setValue(1, code.substr(0, 5));
        }
        store.SaveRegionUnits(Variant(units));
    }

    static void storeTracts(int count)
    {
        std::vector<std::string> codes;
        for (int i = 0; i < count; ++i) {
            codes.push_back(tractCode(i));
        }
        storeTracts(codes);
    }

    static std::vector<std::string> storedTracts()
    {
        auto units = context::studyRegionContext()
                         .RegionSelectionStore->GetRegionUnits(2)
                         .objectAs<platform::tabular::Recordset>();
        std::vector<std::string> codes;
        for (int i = 0; i < units->recordCount(); ++i) {
            i == 0 ? units->moveFirst() : units->moveNext();
            codes.push_back(units->value(0).toString() + "/" + units->value(1).toString());
        }
        return codes;
    }

    std::shared_ptr<platform::ui::DialogScript> m_script;
    std::shared_ptr<platform::ui::ScriptedPrompts> m_prompts;
    std::shared_ptr<gdb::FeatureClass> m_boundary;
    std::shared_ptr<gdb::FeatureClass> m_epicentres;
    std::shared_ptr<gdb::FeatureClass> m_faults;
    std::shared_ptr<gdb::FeatureClass> m_epicentre;
    std::shared_ptr<gdb::FeatureClass> m_tracts;
};

TEST_F(MapSelectionWindow, UnitClicksToggleWithShiftWhileBoxesAndSelectAllIgnoreIt)
{
    auto window = form(0);
    const auto report = run(*window, json::array({{{"read", "cmdSelectionDone"}},
                                                  {{"click", at(unitCentre(0))}},
                                                  {{"click", at(unitCentre(1))}, {"shift", true}},
                                                  {{"click", at(unitCentre(0))}, {"shift", true}},
                                                  {{"read", "cmdSelectionDone"}},
                                                  {{"close", true}}}));
    EXPECT_EQ(report.caption, "Caption of kind 0");
    EXPECT_FALSE(report.values[0].enabled) << "no current selection shown: nothing to finish";
    EXPECT_TRUE(report.values[1].enabled);
    EXPECT_EQ(selectedTracts(*window), std::vector<std::string>{tractCode(1)})
        << "the second Shift click took square 0 out again";
    EXPECT_FALSE(window->m_bSelection) << "the close box stores nothing";

    // A box with Shift held replaces the selection, as without it.
    auto boxed = form(0);
    const auto a = unitCentre(40);
    const auto b = unitCentre(81);
    run(*boxed, json::array({{{"click", at(unitCentre(0))}},
                             {{"drag", json::array({a.x, a.y, b.x, b.y})}, {"shift", true}},
                             {{"close", true}}}));
    EXPECT_EQ(selectedTracts(*boxed), (std::vector<std::string>{tractCode(40), tractCode(41),
                                                                tractCode(80), tractCode(81)}));

    // After Select All a click on the map selects nothing until another tool is chosen.
    auto all = form(0);
    const auto allReport = run(*all, json::array({{{"tool", "SelectAll"}},
                                                  {{"click", at(unitCentre(5))}},
                                                  {{"read", "cmdSelectionDone"}},
                                                  {{"close", true}}}));
    EXPECT_TRUE(allReport.values[0].enabled);
    EXPECT_EQ(all->m_pFeatureLayer->selectionSet().count(), kUnits);

    // Switch Selection leaves the units that were not selected.
    auto switched = form(0);
    run(*switched, json::array({{{"tool", "SelectAll"}},
                                {{"tool", "SelectFeatures"}},
                                {{"click", at(unitCentre(5))}},
                                {{"tool", "SwitchSelection"}},
                                {{"close", true}}}));
    EXPECT_EQ(switched->m_pFeatureLayer->selectionSet().count(), kUnits - 1);
    EXPECT_FALSE(switched->m_pFeatureLayer->selectionSet().contains(6)) << "square 5 is feature 6";
}

TEST_F(MapSelectionWindow, CurrentUnitsComeBackInBatchesAndSelectionDoneReplacesThem)
{
    // 1,002 stored units are applied as two conditions; both must add to the selection.
    storeTracts(kUnits);
    auto window = form(0);
    window->m_bCurSel = true;
    const auto report = run(*window, json::array({{{"read", "cmdSelectionDone"}},
                                                  {{"tool", "DeSelectAll"}},
                                                  {{"read", "cmdSelectionDone"}},
                                                  {{"close", true}}}));
    EXPECT_TRUE(report.values[0].enabled);
    EXPECT_FALSE(report.values[1].enabled);

    auto shown = form(0);
    shown->m_bCurSel = true;
    run(*shown, json::array({{{"close", true}}}));
    EXPECT_EQ(shown->m_pFeatureLayer->selectionSet().count(), kUnits);

    // Selection Done with the squares 7 and 8 only: the level holds exactly them now.
    auto done = form(0);
    run(*done, json::array({{{"click", at(unitCentre(7))}},
                            {{"click", at(unitCentre(8))}, {"shift", true}},
                            {{"press", "cmdSelectionDone"}}}));
    EXPECT_TRUE(done->m_bSelection);
    EXPECT_EQ(storedTracts(),
              (std::vector<std::string>{tractCode(7) + "/06001", tractCode(8) + "/06001"}));

    // A stored unit the window does not offer leaves the selection empty while Selection Done
    // is enabled: pressing it reports a selection and stores nothing.
    storeTracts({"99999999999"});
    auto empty = form(0);
    empty->m_bCurSel = true;
    run(*empty, json::array({{{"press", "cmdSelectionDone"}}}));
    EXPECT_TRUE(empty->m_bSelection);
    EXPECT_EQ(storedTracts(), std::vector<std::string>{"99999999999/99999"});
}

TEST_F(MapSelectionWindow, ANearbyEpicentreIsPickedNearestFirstAndTheFirstOnATie)
{
    // Placed beside the point the click lands on (the centre of its pixel), the nearer one added
    // last, so keeping the first candidate would be caught.
    const auto view = viewOf(1);
    const auto pixel = view.fromMapPoint({5.0, 5.0});
    const auto click = view.toMapPoint(static_cast<double>(std::lround(pixel.x)),
                                       static_cast<double>(std::lround(pixel.y)));
    add(*m_epicentres, "E1",
        "POINT (" + std::to_string(click.x + 0.02) + " " + std::to_string(click.y) + ")");
    add(*m_epicentres, "E2",
        "POINT (" + std::to_string(click.x) + " " + std::to_string(click.y + 0.01) + ")");
    auto window = form(1);
    const auto report = run(*window, json::array({{{"read", "cmdSelectionDone"}},
                                                  {{"click", at(click)}},
                                                  {{"read", "cmdSelectionDone"}},
                                                  {{"press", "cmdSelectionDone"}}}));
    EXPECT_FALSE(report.values[0].enabled) << "nothing preselected";
    EXPECT_TRUE(report.values[1].enabled);
    EXPECT_TRUE(window->m_bSelection);
    EXPECT_EQ(window->m_sFaultId, "E2") << "E2 lies 0.01 from the click, E1 0.02";

    auto tie = form(1);
    run(*tie, json::array({{{"click", json::array({3.0, 3.0})}}, {{"press", "cmdSelectionDone"}}}));
    EXPECT_EQ(tie->m_sFaultId, "E3") << "E3 and E4 lie together; E3 was visited first";

    auto none = form(1, "E3");
    const auto noneReport = run(*none, json::array({{{"read", "cmdSelectionDone"}},
                                                    {{"click", json::array({8.0, 8.0})}},
                                                    {{"read", "cmdSelectionDone"}},
                                                    {{"press", "cmdBack"}}}));
    EXPECT_TRUE(noneReport.values[0].enabled) << "a preselected epicentre can be confirmed";
    EXPECT_FALSE(noneReport.values[1].enabled) << "nothing lies within 0.03 degrees";
    EXPECT_TRUE(none->m_pFeatureLayer->selectionSet().isEmpty());
    EXPECT_FALSE(none->m_bSelection);
    EXPECT_EQ(none->m_sFaultId, "") << "Back hands back nothing";
}

TEST_F(MapSelectionWindow, AnEpicentreOnTheFaultIsSnappedWithinNinePixelsAndRejectedBeyond)
{
    const auto view = viewOf(3, "F1");
    const auto fault = view.fromMapPoint({5.0, 5.0});
    const auto pixel = [&](long dx) {
        return view.toMapPoint(static_cast<double>(std::lround(fault.x) + dx),
                               static_cast<double>(std::lround(fault.y)));
    };

    auto far = form(3, "F1");
    const auto rejected = run(*far, json::array({{{"click", at(pixel(10))}},
                                                 {{"read", "cmdSelectionDone"}},
                                                 {{"press", "cmdBack"}}}));
    EXPECT_FALSE(rejected.values[0].enabled);
    EXPECT_EQ(m_epicentre->rowCount(), 0);
    const auto messages = m_prompts->takeMessages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "Defined epicenter does not lie within the fault area");
    EXPECT_EQ(messages[0].title, "KORVAL");
    EXPECT_EQ(far->m_dLong, 0.0);

    // Accepted at 9 pixels and placed on the fault; a zoom afterwards moves nothing.
    auto near = form(3, "F1");
    const auto accepted = run(*near, json::array({{{"click", at(pixel(9))}},
                                                  {{"read", "cmdSelectionDone"}},
                                                  {{"tool", "ZoomIn"}},
                                                  {{"click", json::array({2.0, 2.0})}},
                                                  {{"press", "cmdSelectionDone"}}}));
    EXPECT_TRUE(accepted.values[0].enabled);
    EXPECT_TRUE(near->m_bSelection);
    EXPECT_DOUBLE_EQ(near->m_dLong, 5.0);
    EXPECT_NEAR(near->m_dLat, pixel(9).y, 1e-9);
    EXPECT_EQ(m_epicentre->rowCount(), 1);
    EXPECT_TRUE(m_prompts->takeMessages().empty());

    // An arbitrary event takes the click as it lies.
    auto anywhere = form(4);
    run(*anywhere, json::array({{{"click", json::array({7.5, 8.5})}},
                                {{"click", json::array({1.5, 2.5})}},
                                {{"press", "cmdSelectionDone"}}}));
    EXPECT_NEAR(anywhere->m_dLong, 1.5, view.unitsPerPixel());
    EXPECT_NEAR(anywhere->m_dLat, 2.5, view.unitsPerPixel());
    EXPECT_EQ(m_epicentre->rowCount(), 1) << "each definition replaces the one before";
}

TEST_F(MapSelectionWindow, ToolsZoomPanAndShowWhereThePointerIs)
{
    const auto view = viewOf(0);
    const auto before = view.visibleBounds();
    auto window = form(0);
    run(*window, json::array({{{"tool", "ZoomIn"}},
                              {{"drag", json::array({2.0, 3.0, 6.0, 3.0})}},
                              {{"move", json::array({4.0, 4.0})}},
                              {{"close", true}}}));
    EXPECT_EQ(window->m_pMap->extent(), before) << "a band of no height changes nothing";
    EXPECT_EQ(window->mapCursor(), "ZOOMIN");
    EXPECT_EQ(window->pressedTool(), "ZoomIn");

    auto zoomed = form(0);
    run(*zoomed,
        json::array(
            {{{"tool", "ZoomIn"}}, {{"click", json::array({2.0, 3.0})}}, {{"close", true}}}));
    const auto after = zoomed->m_pMap->extent();
    EXPECT_NEAR(after.width(), before.width() / 2, 1e-9);
    EXPECT_NEAR(after.height(), before.height() / 2, 1e-9);
    EXPECT_NEAR(after.center().x, 2.0, view.unitsPerPixel());
    EXPECT_NEAR(after.center().y, 3.0, view.unitsPerPixel());

    // A pan drag moves the extent with the pointer.
    auto panned = form(0);
    run(*panned,
        json::array(
            {{{"tool", "Pan"}}, {{"drag", json::array({2.0, 3.0, 4.0, 3.0})}}, {{"close", true}}}));
    EXPECT_NEAR(panned->m_pMap->extent().xmin(), before.xmin() - 2.0, 2 * view.unitsPerPixel());
    EXPECT_NEAR(panned->m_pMap->extent().ymin(), before.ymin(), 2 * view.unitsPerPixel());

    auto pointer = form(0);
    const auto moved = view.toMapPoint(100, 100);
    const auto report = run(*pointer, json::array({{{"move", at(moved)}},
                                                   {{"read", "LatLongText"}},
                                                   {{"tool", "SelectAll"}},
                                                   {{"close", true}}}));
    EXPECT_EQ(report.values[0].text, LatLongText(moved.x, moved.y));
    EXPECT_EQ(pointer->pressedTool(), "") << "Select All leaves no button pressed";
    EXPECT_EQ(pointer->currentTool(), 8);
}

TEST_F(MapSelectionWindow, HazardDialogsHideTheUnitToolsAndIdentifyGathersWithShift)
{
    auto window = form(2, "F1");
    const auto report = run(*window,
                            json::array({{{"read", "SelectAll"}},
                                         {{"read", "FullExtent"}},
                                         {{"tool", "Identify"}},
                                         {{"click", json::array({5.0, 5.0})}},
                                         {{"click", json::array({7.0, 2.0})}, {"shift", true}},
                                         {{"read", "lstResults"}},
                                         {{"click", json::array({7.0, 2.0})}},
                                         {{"read", "lstResults"}},
                                         {{"tool", "SelectAll"}},
                                         {{"press", "cmdSelectionDone"}}}),
                            false);
    EXPECT_FALSE(report.values[0].visible);
    EXPECT_EQ(report.values[1].text, "Zoom To Study Region");
    EXPECT_EQ(window->identifyWindow(), nullptr) << "unloaded with the window";
    ASSERT_EQ(report.values.size(), 4u);
    // F1 under the first click, F2 under the second, the boundary under both.
    EXPECT_EQ(report.values[2].text, "4 features in 4 layers");
    EXPECT_EQ(report.values[3].text, "2 features in 2 layers") << "without Shift it starts over";
    EXPECT_FALSE(report.actions[8].ok) << "Select All is hidden in a hazard dialog";
    EXPECT_EQ(window->m_sFaultId, "F1") << "the preselected fault, confirmed";
}

} // namespace
} // namespace brevant::selection

namespace brevant::selection {
namespace {

// "Layers" opens the layer control on the window's own map (the next actions are its); "Add
// Data" adds every class of the chosen file, areas below lines below points, with the
// hazard-selection points on top.
TEST_F(MapSelectionWindow, LayersAndAddDataWorkOnTheWindowsMap)
{
    m_prompts->queueAnswer((root() / "selection.gpkg").string());
    auto window = form(0);
    m_script->queue(app::dialogActionsFromJson(json::array({{{"tool", "Layers"}},
                                                            {{"read", "lstLayers"}},
                                                            {{"close", true}},
                                                            {{"tool", "AddData"}},
                                                            {{"close", true}}})));
    window->showModal();
    const auto reports = m_script->takeReports();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].form, "frmLayer");
    ASSERT_EQ(reports[0].values.size(), 1u);
    EXPECT_EQ(reports[0].values[0].text, "RegionSelection");
    EXPECT_EQ(reports[1].form, "frmMapSelDlg");
    for (const auto& action : reports[1].actions) {
        EXPECT_TRUE(action.ok) << action.action << ": " << action.error;
    }
    EXPECT_EQ(window->currentTool(), 12);

    std::vector<std::string> names;
    for (const auto& layer : window->m_pMap->layers()) {
        names.push_back(layer->name());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"HazardSelection", "eqEpicenter", "eqFault",
                                               "tracts", "boundary", "RegionSelection"}));
    EXPECT_EQ(m_prompts->fileDialogs().at(0).title, "Select Data");
}

} // namespace
} // namespace brevant::selection

namespace brevant::selection {
namespace {

// The first view of a unit dialog leaves Alaska and the other far states out only when the
// layer is named as the state class; under the name the selection service gives, all count.
TEST_F(MapSelectionWindow, TheFirstViewLeavesOutTheFarStatesOfAStateLayer)
{
    gdb::Row alaska = m_tracts->createRow();
    alaska.setValue(2, std::string("02"));
    alaska.setValue(3, std::string("02020"));
    alaska.setValue(4, std::string("02020000100"));
    alaska.setShape(geometry::Geometry::fromWkt("POLYGON ((50 50, 51 50, 51 51, 50 51, 50 50))"));
    auto insert = m_tracts->insert();
    insert.insertRow(alaska);
    insert.flush();

    auto states = form(0);
    states->m_pFeatureLayer->setName("syState");
    run(*states, json::array({{{"close", true}}}));
    EXPECT_LT(states->m_pMap->extent().xmax(), 20.0);
    EXPECT_EQ(states->m_pMap->selectionCount(), 0) << "the selection only found the extent";

    auto units = form(0);
    run(*units, json::array({{{"close", true}}}));
    EXPECT_DOUBLE_EQ(units->m_pMap->extent().xmax(), 51.0);
    EXPECT_EQ(errorLog(), "");
}

} // namespace
} // namespace brevant::selection
