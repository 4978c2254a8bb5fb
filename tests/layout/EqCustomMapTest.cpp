#include "layout/EqCustomMap.h"

#include "BrevantClasses.h"
#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/InventoryRegionFixture.h"
#include "context/StudyRegionContext.h"
#include "host/local/HostRoot.h"
#include "host/local/LocalApplication.h"
#include "host/local/LocalScenarioService.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "layout/IdentifierClauses.h"
#include "platform/automation/MemberTable.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/FrameElement.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/MarkerNorthArrow.h"
#include "platform/carto/PageLayout.h"
#include "platform/carto/PictureElement.h"
#include "platform/carto/ScaleLine.h"
#include "platform/carto/TextElement.h"
#include "platform/display/LayoutRenderer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/Connection.h"
#include "platform/ui/ScriptedPrompts.h"
#include "support/Raised.h"

#include <QImage>
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>

namespace brevant::layout {
namespace {

namespace automation = platform::automation;
namespace carto = platform::carto;
namespace geodatabase = platform::geodatabase;
namespace fs = std::filesystem;
using automation::ArgList;
using automation::Variant;
using platform::geometry::Envelope;
using platform::geometry::Geometry;

/// A region with an open context and map, scenario 3 ("Hayward") current, the scenario
/// database with western source faults of scenarios 3 and 4, and the logo bitmap.
class CustomMapFixture : public test::InventoryRegionFixture {
protected:
    void SetUp() override
    {
        InventoryRegionFixture::SetUp();
        const auto host = host::local::HostRoot::load(root());
        m_scenarios = fs::path(host.scenarioFolder()) / "SrScenario.mdb";
        fs::create_directories(m_scenarios.parent_path());
        host::local::createDatabase(
            *host::local::findDatabase(host::local::HostFolder::Scenario, "SrScenario.mdb"),
            m_scenarios);
        addSourceFault(3, -122.0);
        addSourceFault(3, -121.5);
        addSourceFault(4, -121.0);
        host::local::LocalScenarioService::putScenario(root(), 3, "S", "Hayward");
        setSetting("PESH", "ScenarioID", "3");

        m_logo = fs::path(host.systemDataFolder()) / "Eq" / "qelto.bmp";
        fs::create_directories(m_logo.parent_path());
        QImage logo(40, 20, QImage::Format_RGB32);
        logo.fill(QColor(200, 0, 0));
        ASSERT_TRUE(logo.save(QString::fromStdString(m_logo.string()), "BMP"));

        m_layout = std::make_shared<carto::PageLayout>();
        m_application = std::make_shared<host::local::LocalApplication>(m_map, m_layout);
        m_object = std::make_shared<EqCustomMap>();
    }

    void addSourceFault(int id, double x)
    {
        const auto faults =
            geodatabase::Workspace::open(m_scenarios).openFeatureClass("eqSrWestFault");
        geodatabase::InsertCursor insert = faults->insert();
        geodatabase::Row row = faults->createRow();
        row.setShape(Geometry::polyline({{{x, 37.0}, {x, 38.0}}}));
        row.setValue(faults->findField("eqScenarioId"), id);
        insert.insertRow(row);
    }

    /// A point class of `count` features (OBJECTID 1..count) in a database of the region
    /// folder, as a layer at the bottom of the map.
    std::shared_ptr<carto::FeatureLayer> addPointLayer(const std::string& database,
                                                       const std::string& name, int count)
    {
        const std::string path = regionFolder() + database;
        auto workspace = fs::exists(path) ? geodatabase::Workspace::open(path)
                                          : geodatabase::Workspace::createGeoPackage(path);
        auto points = workspace.createFeatureClass(
            name, geodatabase::Fields(std::vector<geodatabase::Field>{}),
            platform::geometry::ShapeType::Point);
        {
            geodatabase::InsertCursor insert = points->insert();
            for (int i = 0; i < count; ++i) {
                auto row = points->createRow();
                row.setShape(Geometry::point({-122.0 + i * 0.0001, 37.5}));
                insert.insertRow(row);
            }
        }
        auto layer = std::make_shared<carto::FeatureLayer>(points);
        layer->setName(name);
        m_map->addLayer(layer);
        return layer;
    }

    /// The read-only recordset of a query on the region's tabular database.
    std::shared_ptr<platform::tabular::Recordset> recordset(const std::string& query)
    {
        return platform::tabular::Connection::connect(
                   context::studyRegionContext().RegionDatabaseName)
            ->open(query);
    }

    /// A recordset of the identifiers first..last.
    std::shared_ptr<platform::tabular::Recordset> identifiers(int first, int last)
    {
        return recordset("WITH RECURSIVE n(id) AS (SELECT " + std::to_string(first) +
                         " UNION ALL SELECT id + 1 FROM n WHERE id < " + std::to_string(last) +
                         ") SELECT id AS OBJECTID FROM n");
    }

    Variant call(const std::string& member, ArgList args)
    {
        return automation::call(*m_object, member, args);
    }

    template <class T> std::vector<std::shared_ptr<T>> elementsOf() const
    {
        std::vector<std::shared_ptr<T>> found;
        for (const auto& element : m_layout->graphicsContainer().elements()) {
            if (auto typed = std::dynamic_pointer_cast<T>(element)) {
                found.push_back(typed);
            }
        }
        return found;
    }

    std::shared_ptr<carto::MapSurroundFrame> surroundNamed(const std::string& name) const
    {
        for (const auto& frame : elementsOf<carto::MapSurroundFrame>()) {
            if (frame->mapSurround()->name() == name) {
                return frame;
            }
        }
        return nullptr;
    }

    std::vector<std::string> texts() const
    {
        std::vector<std::string> found;
        for (const auto& text : elementsOf<carto::TextElement>()) {
            found.push_back(text->text());
        }
        return found;
    }

    /// eqScenarioId of every row of the scenario layer's class.
    std::vector<int> scenarioLayerFaults() const
    {
        const auto faults =
            geodatabase::Workspace::open(m_scenarios).openFeatureClass("eqWestFault");
        std::vector<int> ids;
        geodatabase::Cursor cursor = faults->search();
        geodatabase::Row row;
        while (cursor.next(row)) {
            ids.push_back(row.value(faults->findField("eqScenarioId")).toInt32());
        }
        return ids;
    }

    int scenarioLayers() const
    {
        const auto& layers = m_map->layers();
        return static_cast<int>(std::count_if(layers.begin(), layers.end(), [](const auto& l) {
            return l->name() == "Hazard Scenario Layer";
        }));
    }

    void layOut()
    {
        Variant application(m_application);
        ArgList args{application};
        call("CreateLayoutView", args);
    }

    fs::path m_scenarios;
    fs::path m_logo;
    std::shared_ptr<carto::PageLayout> m_layout;
    std::shared_ptr<host::local::LocalApplication> m_application;
    std::shared_ptr<EqCustomMap> m_object;
};

void expectBounds(const carto::Element& element, const Envelope& expected)
{
    const Envelope bounds = element.bounds();
    EXPECT_NEAR(bounds.xmin(), expected.xmin(), 1e-9);
    EXPECT_NEAR(bounds.ymin(), expected.ymin(), 1e-9);
    EXPECT_NEAR(bounds.xmax(), expected.xmax(), 1e-9);
    EXPECT_NEAR(bounds.ymax(), expected.ymax(), 1e-9);
}

TEST_F(CustomMapFixture, TheLayoutPageCarriesEveryDecorationInItsPlace)
{
    addPointLayer("other.mdb", "Sites", 3);
    layOut();
    EXPECT_EQ(m_layout->orientation(), carto::PageOrientation::Landscape);
    ASSERT_EQ(elementsOf<carto::MapFrame>().size(), 1u);
    expectBounds(*elementsOf<carto::MapFrame>()[0], {0.25572, 1.180204, 10.72703, 7.218167});

    const auto frames = elementsOf<carto::FrameElement>();
    ASSERT_EQ(frames.size(), 2u);
    expectBounds(*frames[0], {0.25572, 0.274436, 9.148418, 0.955942});
    expectBounds(*frames[1], {0.25572, 7.356175, 10.72703, 8.253223});

    const auto text = texts();
    ASSERT_EQ(text.size(), 4u);
    EXPECT_EQ(text[0], "Study Region new   : Testville");
    EXPECT_EQ(text[1], "Hazard Scenario  : Hayward");
    EXPECT_NE(text[2].find(", 20"), std::string::npos) << "a long date: " << text[2];
    EXPECT_FALSE(text[3].empty()) << "the credit line";
    const auto textElements = elementsOf<carto::TextElement>();
    EXPECT_EQ(textElements[0]->symbol().size, 15.0);
    EXPECT_EQ(textElements[2]->symbol().size, 12.0);
    EXPECT_EQ(textElements[3]->symbol().size, 8.0);
    EXPECT_NEAR(textElements[2]->bounds().xmin(), 8.1, 1e-9);
    EXPECT_NEAR(textElements[3]->bounds().ymin(), 0.283248, 1e-9);

    const auto legend = surroundNamed("Legend");
    const auto arrowFrame = surroundNamed("North Arrow");
    const auto scaleFrame = surroundNamed("Scale Bar");
    ASSERT_TRUE(legend && arrowFrame && scaleFrame);
    expectBounds(*legend, {8.4, 1.62, 10.358086, 2.180128});
    expectBounds(*arrowFrame, {8.605166, 0.332259, 9.038293, 0.783432});
    expectBounds(*scaleFrame, {0.41984, 0.507418, 8.260148, 0.782565});
    const auto arrow =
        std::dynamic_pointer_cast<carto::MarkerNorthArrow>(arrowFrame->mapSurround());
    ASSERT_TRUE(arrow);
    const auto marker = std::get<carto::CharacterMarkerSymbol>(arrow->markerSymbol());
    EXPECT_EQ(marker.characterIndex, 173);
    EXPECT_EQ(marker.size, 36.0);
    EXPECT_EQ(std::dynamic_pointer_cast<carto::ScaleLine>(scaleFrame->mapSurround())->divisions(),
              10);
    EXPECT_EQ(legend->mapSurround()->map(), m_map);

    ASSERT_EQ(elementsOf<carto::PictureElement>().size(), 1u);
    expectBounds(*elementsOf<carto::PictureElement>()[0],
                 {9.577297, 0.516431, 10.372917, 0.914774});

    // Drawn, the logo's red fills its rectangle and the upper frame's border is dark.
    const platform::display::LayoutRenderer renderer(*m_layout);
    const QImage page = renderer.render(50.0);
    const QPointF logo =
        renderer.toDevice({9.577297, 0.516431, 10.372917, 0.914774}, 50.0).center();
    const QColor logoColour = page.pixelColor(logo.toPoint());
    EXPECT_GT(logoColour.red(), 150);
    EXPECT_LT(logoColour.green(), 60);
    const QRectF upper = renderer.toDevice({0.25572, 7.356175, 10.72703, 8.253223}, 50.0);
    EXPECT_LT(page.pixelColor(QPoint(int(upper.center().x()), int(upper.top()) + 0)).lightness(),
              200)
        << "the border line";
    // The credit line ends before the page's edge.
    const QRectF credit = renderer.toDevice({9.312454, 0.283248, 11.0, 0.4}, 50.0);
    int inked = 0;
    for (int y = int(credit.top()); y <= int(credit.bottom()); ++y) {
        inked += page.pixelColor(page.width() - 2, y).lightness() < 200 ? 1 : 0;
    }
    EXPECT_EQ(inked, 0);
}

// The page as a PDF reader shows it: ink in every element's rectangle, the logo's red in its own.
TEST_F(CustomMapFixture, ThePdfPageShowsEveryElementInItsRectangle)
{
    if (std::system("command -v pdftoppm > /dev/null 2>&1") != 0) {
        GTEST_SKIP() << "pdftoppm is not installed";
    }
    addPointLayer("other.mdb", "Sites", 3);
    layOut();
    test::TempDir dir;
    const platform::display::LayoutRenderer renderer(*m_layout);
    renderer.exportPdf(dir.path() / "page.pdf");
    const std::string command = "pdftoppm -png -r 50 -singlefile '" +
                                (dir.path() / "page.pdf").string() + "' '" +
                                (dir.path() / "page").string() + "' > /dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const QImage page(QString::fromStdString((dir.path() / "page.png").string()));
    ASSERT_EQ(page.size(), QSize(550, 425));

    const auto count = [&](const Envelope& rectangle, auto&& accept) {
        const QRect pixels = renderer.toDevice(rectangle, 50.0).toAlignedRect() & page.rect();
        int found = 0;
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                found += accept(page.pixelColor(x, y)) ? 1 : 0;
            }
        }
        return found;
    };
    const auto dark = [](const QColor& c) { return c.lightness() < 128; };
    const auto red = [](const QColor& c) { return c.red() > 150 && c.green() < 60; };
    // Texts start at their points: a band to the right of and above each.
    const auto textBand = [](double x, double y) { return Envelope(x, y, x + 1.2, y + 0.15); };
    const std::vector<std::pair<std::string, Envelope>> inked = {
        {"lower frame", {0.25572, 0.274436, 9.148418, 0.955942}},
        {"upper frame", {0.25572, 7.356175, 10.72703, 8.253223}},
        {"region title", textBand(0.427951, 7.905096)},
        {"scenario title", textBand(0.427951, 7.482587)},
        {"date", textBand(8.1, 1.335608)},
        {"legend", {8.4, 1.62, 10.358086, 2.180128}},
        {"north arrow", {8.605166, 0.332259, 9.038293, 0.783432}},
        {"scale bar", {0.41984, 0.507418, 8.260148, 0.782565}},
        {"credit line", textBand(9.312454, 0.283248)},
    };
    for (const auto& [name, rectangle] : inked) {
        EXPECT_GT(count(rectangle, dark), 5) << name;
    }
    EXPECT_GT(count({9.62, 0.56, 10.33, 0.87}, red), 200) << "logo";
}

TEST_F(CustomMapFixture, ASecondLayoutReplacesTheFirstsDecorations)
{
    layOut();
    const int first = m_layout->graphicsContainer().count();
    layOut();
    EXPECT_EQ(m_layout->graphicsContainer().count(), first);
    EXPECT_EQ(elementsOf<carto::MapFrame>().size(), 1u) << "the map frame stays";
    EXPECT_EQ(elementsOf<carto::FrameElement>().size(), 2u);
    EXPECT_EQ(texts().size(), 4u);
    EXPECT_EQ(elementsOf<carto::PictureElement>().size(), 1u);
}

TEST_F(CustomMapFixture, AMissingLogoFailsOnlyThePicture)
{
    fs::remove(m_logo);
    const auto error = test::raisedBy([&] { layOut(); });
    EXPECT_EQ(error.hex(), "0x8004060C");
    EXPECT_NE(error.description().find(" AddBitMapPicture"), std::string::npos)
        << error.description();
    EXPECT_TRUE(elementsOf<carto::PictureElement>().empty());
    EXPECT_EQ(texts().size(), 4u) << "the credit line came before the picture";
    EXPECT_TRUE(surroundNamed("Legend") && surroundNamed("North Arrow") &&
                surroundNamed("Scale Bar"));
    EXPECT_EQ(elementsOf<carto::FrameElement>().size(), 2u);
    const std::string log = errorLog();
    EXPECT_NE(log.find(" AddBitMapPicture"), std::string::npos);
    EXPECT_EQ(log.find(" CreateLayoutView"), std::string::npos) << "one record, the innermost";
}

TEST_F(CustomMapFixture, ScenarioLayerFollowsTheHalfExactlyAndStaysSingle)
{
    ArgList lowerCase{Variant(int16_t{3}), Variant("e")};
    call("MapScenario", lowerCase);
    EXPECT_EQ(scenarioLayers(), 0);

    ArgList first{Variant(int16_t{3}), Variant("W")};
    call("MapScenario", first);
    EXPECT_EQ(scenarioLayerFaults(), (std::vector<int>{3, 3}));
    ArgList second{Variant(int16_t{4}), Variant("W")};
    call("MapScenario", second);
    EXPECT_EQ(scenarioLayerFaults(), (std::vector<int>{4})) << "the table was emptied first";
    ASSERT_EQ(scenarioLayers(), 1);
    const auto layer = std::dynamic_pointer_cast<carto::FeatureLayer>(m_map->layer(0));
    EXPECT_FALSE(layer->selectable());

    call("RemoveScenariolayer", {});
    EXPECT_EQ(scenarioLayers(), 0);
    call("RemoveScenariolayer", {});
}

TEST_F(CustomMapFixture, OnlyTheRegionsInventoryDatabasesAreEditable)
{
    const auto utility = addPointLayer("UTIL.MDB", "Pipes", 1);
    const auto other = addPointLayer("other.mdb", "Sites", 1);
    Variant utilityLayer(utility);
    ArgList args{utilityLayer};
    EXPECT_TRUE(call("IsEditable", args).toBool());
    Variant otherLayer(other);
    ArgList otherArgs{otherLayer};
    EXPECT_FALSE(call("IsEditable", otherArgs).toBool());
}

TEST_F(CustomMapFixture, IdentifiersTravelInClausesOfAtMost1501)
{
    std::vector<int> sizes;
    auto records = identifiers(1, 3200);
    forEachIdentifierClause(*records, [&](const std::string& clause) {
        EXPECT_EQ(clause.rfind("OBJECTID In (", 0), 0u) << clause;
        sizes.push_back(static_cast<int>(std::count(clause.begin(), clause.end(), ',')) + 1);
    });
    EXPECT_EQ(sizes, (std::vector<int>{1501, 1501, 198}));

    sizes.clear();
    forEachIdentifierClause(*identifiers(1, 1501), [&](const std::string& clause) {
        sizes.push_back(static_cast<int>(std::count(clause.begin(), clause.end(), ',')) + 1);
    });
    EXPECT_EQ(sizes, (std::vector<int>{1501})) << "a full batch that ends the records";
}

TEST_F(CustomMapFixture, ASelectionEndsAsExactlyTheRecordsetsIdentifiers)
{
    const auto layer = addPointLayer("other.mdb", "Sites", 3300);
    layer->setSelectable(false);
    layer->setVisible(false);
    layer->selectionSet().add(3250);
    ArgList args{Variant(int32_t{0}), Variant("Sites"), Variant(int32_t{0}),
                 Variant(identifiers(1, 3200))};
    call("ApplySelection", args);
    EXPECT_EQ(layer->selectionSet().count(), 3200);
    EXPECT_TRUE(layer->selectionSet().contains(3200));
    EXPECT_FALSE(layer->selectionSet().contains(3250)) << "the first clause replaced it";
    EXPECT_TRUE(layer->selectable());
    EXPECT_TRUE(layer->visible());
    EXPECT_TRUE(m_prompts->takeMessages().empty());
}

TEST_F(CustomMapFixture, AnEmptyRecordsetShowsTheMessageAndChangesNothing)
{
    const auto layer = addPointLayer("other.mdb", "Sites", 10);
    layer->selectionSet().add(4);
    layer->setVisible(false);
    ArgList args{Variant(int32_t{0}), Variant("Sites"), Variant(int32_t{0}),
                 Variant(recordset("SELECT 1 AS OBJECTID WHERE 0"))};
    call("ApplySelection", args);
    EXPECT_EQ(layer->selectionSet().ids(), (std::vector<int64_t>{4}));
    EXPECT_FALSE(layer->visible());
    const auto messages = m_prompts->takeMessages();
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_EQ(messages[0].text, "No records could be found for the query");
    EXPECT_EQ(messages[0].title, "KORVAL");
}

TEST_F(CustomMapFixture, ShapefileSelectionsAddUp)
{
    const auto layer = addPointLayer("other.mdb", "Sites", 10);
    ArgList nothing{Variant(int32_t{0}), Variant("Sites"), Variant(int32_t{0}),
                    Variant("OBJECTID > 100")};
    call("ApplySelectionForShapeFile", nothing);
    EXPECT_EQ(m_prompts->takeMessages().size(), 1u) << "the selection stayed empty";

    ArgList low{Variant(int32_t{0}), Variant("Sites"), Variant(int32_t{0}),
                Variant("OBJECTID <= 2")};
    call("ApplySelectionForShapeFile", low);
    ArgList high{Variant(int32_t{0}), Variant("Sites"), Variant(int32_t{0}),
                 Variant("OBJECTID In (9, 10)")};
    call("ApplySelectionForShapeFile", high);
    EXPECT_EQ(layer->selectionSet().ids(), (std::vector<int64_t>{1, 2, 9, 10}));
    EXPECT_TRUE(m_prompts->takeMessages().empty());

    // Once something is selected, a clause that finds nothing keeps it and shows nothing.
    call("ApplySelectionForShapeFile", nothing);
    EXPECT_EQ(layer->selectionSet().count(), 4);
    EXPECT_TRUE(m_prompts->takeMessages().empty());
}

TEST_F(CustomMapFixture, TheQueryToolTableListsTheFocusMapsLayers)
{
    executeSql(host::local::createTableStatement(*host::local::findServerTable("hzQueryTool")));
    executeSql("INSERT INTO hzQueryTool (LayerIndex, LayerName, LayerKind) VALUES (7, 'old', 0)");
    addPointLayer("trn.mdb", "Bridges", 1);
    addPointLayer("other.mdb", "Sites", 1);
    context::setCurrentMap(nullptr);
    Variant application(m_application);
    ArgList args{application};
    call("UpdateQuerytoolTable", args);
    EXPECT_EQ(context::studyRegionContext().CurrentMap, m_map);
    EXPECT_EQ(sqlValue("SELECT count(*) FROM hzQueryTool"), "2") << "earlier records are gone";
    EXPECT_EQ(sqlValue("SELECT LayerName || '|' || LayerKind || '|' || TableName FROM "
                       "hzQueryTool WHERE LayerIndex = 0"),
              "Sites|0|Sites");
    EXPECT_EQ(sqlValue("SELECT DatabaseName FROM hzQueryTool WHERE LayerIndex = 1"),
              regionFolder() + "trn.mdb");
}

TEST_F(CustomMapFixture, JoinedLayersAreToldApartByWhereTheirTablesLie)
{
    executeSql(host::local::createTableStatement(*host::local::findServerTable("hzQueryTool")));
    const auto schools = addPointInventory("hzSchool", {{"SC000001", -122.0, 37.5}}, "ef.mdb");
    const auto relate = [&](const std::shared_ptr<geodatabase::Table>& origin) {
        Variant result;
        context::CreateRelateClass(Variant(schools), "SchoolId", Variant(origin), "SchoolId",
                                   result);
        return result.objectAs<geodatabase::RelationshipClass>();
    };
    const auto server = context::openServerTable("hzSchool");
    auto joined = std::make_shared<carto::FeatureLayer>(schools);
    joined->setName("Joined");
    joined->displayRelationshipClass(relate(server));
    auto related = std::make_shared<carto::FeatureLayer>(schools);
    related->setName("Related");
    related->addRelationshipClass(relate(server));
    // A table outside the region folder is out of the query tool's reach.
    auto outside = geodatabase::Workspace::createGeoPackage(root() / "outside.gpkg")
                       .createTable("Extra", geodatabase::Fields({geodatabase::Field{"SchoolId"}}));
    auto foreign = std::make_shared<carto::FeatureLayer>(schools);
    foreign->setName("Foreign");
    foreign->displayRelationshipClass(relate(outside));
    m_map->addLayer(foreign);
    m_map->addLayer(related);
    m_map->addLayer(joined);

    Variant application(m_application);
    ArgList args{application};
    call("UpdateQuerytoolTable", args);
    EXPECT_EQ(sqlValue("SELECT group_concat(LayerName || ':' || LayerKind || ':' || "
                       "JoinTableName, ' ') FROM (SELECT * FROM hzQueryTool ORDER BY LayerIndex)"),
              "Joined:2:hzSchool Related:3:hzSchool");
}

TEST_F(CustomMapFixture, MembersFailThroughTheirTraps)
{
    context::setCurrentMap(nullptr);
    const auto error = test::raisedBy([&] { call("RemoveScenariolayer", {}); });
    EXPECT_EQ(error.hex(), "0x8004060C");
    EXPECT_NE(errorLog().find(" RemoveScenariolayer"), std::string::npos);
    context::setCurrentMap(m_map);
    fs::remove(m_scenarios);
    ArgList args{Variant(int16_t{3}), Variant("W")};
    const auto scenarioError = test::raisedBy([&] { call("MapScenario", args); });
    EXPECT_EQ(scenarioError.hex(), "0x80040608");
    EXPECT_NE(scenarioError.description().find(" for current scenario"), std::string::npos);
}

} // namespace
} // namespace brevant::layout
