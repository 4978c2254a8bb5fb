#include "layout/EqCustomMap.h"

#include "context/ContextObjects.h"
#include "context/EqShape.h"
#include "context/ErrorTrap.h"
#include "context/StudyRegionContext.h"
#include "host/GisDataService.h"
#include "host/GisUtilityService.h"
#include "host/HostApplication.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "host/RegionSettingsStore.h"
#include "host/ScenarioService.h"
#include "layout/IdentifierClauses.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
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
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/QueryFilter.h"
#include "platform/geodatabase/RelationshipClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/Envelope.h"
#include "platform/geometry/Point.h"
#include "platform/tabular/Recordset.h"
#include "platform/ui/UserPrompts.h"

#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>

namespace brevant::layout {

namespace carto = platform::carto;
namespace geodatabase = platform::geodatabase;
using platform::automation::Variant;
using platform::automation::LibraryCode::MapLayer;
using platform::automation::LibraryCode::Procedure;
using platform::geometry::Envelope;
using platform::geometry::Point;

namespace {
// Page positions, in inches on the landscape letter page.
const Envelope kMapFrameRect(0.25572, 1.180204, 10.72703, 7.218167);
const Envelope kLowerBorderRect(0.25572, 0.274436, 9.148418, 0.955942);
const Envelope kUpperBorderRect(0.25572, 7.356175, 10.72703, 8.253223);
constexpr Point kRegionTitleAt{0.427951, 7.905096};
constexpr Point kScenarioTitleAt{0.427951, 7.482587};
constexpr Point kDateAt{8.1, 1.335608};
const Envelope kLegendRect(8.4, 1.62, 10.358086, 2.180128);
const Envelope kNorthArrowRect(8.605166, 0.332259, 9.038293, 0.783432);
const Envelope kScaleBarRect(0.41984, 0.507418, 8.260148, 0.782565);
constexpr Point kCreditAt{9.312454, 0.283248};
const Envelope kLogoRect(9.577297, 0.516431, 10.372917, 0.914774);

constexpr double kTitleSize = 15.0;
constexpr double kDateSize = 12.0;
constexpr double kCreditSize = 8.0;
constexpr int kNorthArrowCharacter = 173;
constexpr double kNorthArrowSize = 36.0;
constexpr int kScaleBarDivisions = 10;
// Short enough to stay on the page from its point at size 8.
constexpr const char* kCreditLine = "Brevant loss estimation";

constexpr const char* kScenarioLayer = "Hazard Scenario Layer";
constexpr const char* kMessageTitle = "KORVAL";
constexpr const char* kNoRecords = "No records could be found for the query";
constexpr std::array<const char*, 5> kEditableDatabases = {"trn.mdb", "util.mdb", "ef.mdb",
                                                           "hplf.mdb", "uds.mdb"};

/// Today as the long date format writes it: "Tuesday, November 24, 2026".
std::string longDate()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%A, %B ", &local);
    return std::string(text.data()) + std::to_string(local.tm_mday) + ", " +
           std::to_string(1900 + local.tm_year);
}

std::string currentScenarioName()
{
    const int32_t id = context::contextSettingsStore().ReadInt32("PESH", "ScenarioID");
    return host::hostServices().createScenarioService()->GetScenarioName(static_cast<int16_t>(id));
}

std::shared_ptr<host::HostApplication> applicationOf(const Variant& value)
{
    auto application = value.objectAs<host::HostApplication>();
    if (!application) {
        context::throwObjectNotSet("vApplication");
    }
    return application;
}

std::shared_ptr<carto::FeatureLayer> featureLayerAt(int32_t position)
{
    auto layer =
        std::dynamic_pointer_cast<carto::FeatureLayer>(context::currentMapOrFail().layer(position));
    if (!layer) {
        context::throwObjectNotSet("feature layer");
    }
    return layer;
}

void showNoRecords()
{
    platform::ui::userPrompts().messageBox(kNoRecords, kMessageTitle,
                                           platform::ui::MessageButtons::Ok);
}

std::string lower(const std::string& text)
{
    return platform::automation::toLower(text);
}

std::string upper(std::string text)
{
    for (auto& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

/// The folder a workspace lies in, with a trailing separator.
std::string folderOf(const geodatabase::Workspace& workspace)
{
    return workspace.path().parent_path().string() +
           std::string(1, std::filesystem::path::preferred_separator);
}

/// "owner.table" names the table; the query tool wants the table alone.
std::string unqualified(const std::string& name)
{
    const auto dot = name.find('.');
    return dot == std::string::npos ? name : name.substr(dot + 1);
}

/// One record of the query-tool table.
struct QueryToolRecord {
    int16_t kind = 0;
    std::string table;
    std::string database;
    std::string joinTable;
    std::string joinDatabase;
};

// Kind codes of the query-tool table:
//  0  not a feature layer, or a feature layer neither joined nor related to a table
//  1  region data joined to a table of its own database
//  2  region data joined to a table of another database in the region folder (the server
//     tables of the region's tabular database, as a rule)
//  3  region data related to a table, without a join
//  4  data outside the region folder joined to a table of its own database
//  5  data outside the region folder related to a table, without a join
// -1  a join to a table in any other database: the query tool cannot reach it, so the
//     layer is not written.
QueryToolRecord queryToolRecord(const carto::Layer& layer, const std::string& regionFolder)
{
    QueryToolRecord record;
    const auto* featureLayer = dynamic_cast<const carto::FeatureLayer*>(&layer);
    if (!featureLayer || !featureLayer->featureClass()) {
        return record;
    }
    const auto& featureClass = *featureLayer->featureClass();
    const auto workspace = featureClass.workspace();
    record.table = unqualified(featureClass.name());
    record.database = workspace.path().string();
    const bool inRegion = upper(folderOf(workspace)) == upper(regionFolder);

    std::shared_ptr<geodatabase::Table> joined;
    const bool hasJoin = featureLayer->displayJoin() != nullptr;
    if (hasJoin) {
        joined = featureLayer->displayJoin()->relationship().definition().origin;
    } else if (!featureLayer->relationshipClasses().empty()) {
        joined = featureLayer->relationshipClasses().front()->definition().origin;
    }
    if (!joined) {
        return record;
    }
    const auto joinedWorkspace = joined->workspace();
    record.joinTable = joined->name();
    record.joinDatabase = joinedWorkspace.path().string();
    const bool sameDatabase = joinedWorkspace.path() == workspace.path();
    const bool joinedInRegion = upper(folderOf(joinedWorkspace)) == upper(regionFolder);
    if (!hasJoin) {
        record.kind = inRegion ? 3 : 5;
    } else if (sameDatabase) {
        record.kind = inRegion ? 1 : 4;
    } else if (inRegion && joinedInRegion) {
        record.kind = 2;
    } else {
        record.kind = -1;
    }
    return record;
}
} // namespace

EqCustomMap::EqCustomMap()
{
    context::runTrapped(" EqCustomMap", platform::automation::LibraryCode::ClassInit,
                        [] { context::openStudyRegion(true); });
}

const platform::automation::MemberTable* EqCustomMap::members() const
{
    static const platform::automation::MemberTable table = [] {
        platform::automation::MemberTable t("EqCustomMap");
        t.method("CreateLayoutView", &EqCustomMap::CreateLayoutView)
            .method("MapScenario", &EqCustomMap::MapScenario)
            .method("RemoveScenariolayer", &EqCustomMap::RemoveScenariolayer)
            .method("IsEditable", &EqCustomMap::IsEditable)
            .method("UpdateQuerytoolTable", &EqCustomMap::UpdateQuerytoolTable)
            .method("ApplySelection", &EqCustomMap::ApplySelection)
            .method("ApplySelectionForShapeFile", &EqCustomMap::ApplySelectionForShapeFile);
        return t;
    }();
    return &table;
}

void EqCustomMap::CreateLayoutView(Variant& vApplication)
{
    context::runTrapped(" CreateLayoutView", Procedure, [&] {
        const auto application = applicationOf(vApplication);
        const auto layout = application->pageLayout();
        if (!layout) {
            context::throwObjectNotSet("page layout");
        }
        carto::ActiveView& view = application->activeView();
        SetLayoutFrame(*layout);

        const std::string region =
            host::hostServices().createRegionContextService()->GetRegionName();
        AddLayoutText(kRegionTitleAt, "Study Region new   : " + region, *layout, kTitleSize);
        AddLayoutText(kScenarioTitleAt, "Hazard Scenario  : " + currentScenarioName(), *layout,
                      kTitleSize);
        AddLayoutText(kDateAt, longDate(), *layout, kDateSize);
        view.partialRefresh(carto::ViewPhase::Graphics);

        const auto map = application->focusMap();
        std::shared_ptr<carto::MapSurround> surround;
        AddLayoutSurround(carto::SurroundKind::Legend, kLegendRect, "Legend", map, *layout,
                          surround);
        AddLayoutSurround(carto::SurroundKind::MarkerNorthArrow, kNorthArrowRect, "North Arrow",
                          map, *layout, surround);
        const auto arrow = std::dynamic_pointer_cast<carto::MarkerNorthArrow>(surround);
        if (!arrow) {
            context::throwObjectNotSet("north arrow");
        }
        arrow->setMarkerSymbol(
            carto::CharacterMarkerSymbol{{}, kNorthArrowCharacter, kNorthArrowSize, 0.0, {}});
        AddLayoutSurround(carto::SurroundKind::ScaleLine, kScaleBarRect, "Scale Bar", map, *layout,
                          surround);
        const auto scaleBar = std::dynamic_pointer_cast<carto::ScaleLine>(surround);
        if (!scaleBar) {
            context::throwObjectNotSet("scale bar");
        }
        scaleBar->setDivisions(kScaleBarDivisions);

        AddLayoutText(kCreditAt, kCreditLine, *layout, kCreditSize);
        AddBitMapPicture(kLogoRect, *layout);
        layout->refresh();
        view.partialRefresh(carto::ViewPhase::Graphics);
    });
}

void EqCustomMap::SetLayoutFrame(carto::PageLayout& layout)
{
    context::runTrapped(" SetLayoutFrame", Procedure, [&] {
        layout.setOrientation(carto::PageOrientation::Landscape);
        auto& graphics = layout.graphicsContainer();
        std::vector<std::shared_ptr<carto::Element>> stale;
        for (const auto& element : graphics.elements()) {
            if (std::dynamic_pointer_cast<carto::MapFrame>(element)) {
                element->setGeometry(carto::rectangleShape(kMapFrameRect));
            } else {
                stale.push_back(element);
            }
        }
        // Deleting during the walk would skip the element after each one deleted.
        for (const auto& element : stale) {
            graphics.deleteElement(element);
        }
        AddFrame(kLowerBorderRect, layout);
        AddFrame(kUpperBorderRect, layout);
    });
}

void EqCustomMap::AddFrame(const Envelope& rectangle, carto::PageLayout& layout)
{
    context::runTrapped(" AddFrame", Procedure, [&] {
        auto frame = std::make_shared<carto::FrameElement>();
        frame->setBorder(carto::SimpleLineSymbol{.width = 1.0});
        frame->setGeometry(carto::rectangleShape(rectangle));
        layout.graphicsContainer().addElement(frame);
    });
}

void EqCustomMap::AddLayoutText(const Point& point, const std::string& text,
                                carto::PageLayout& layout, double size)
{
    context::runTrapped(" AddLayoutText", Procedure, [&] {
        auto element = std::make_shared<carto::TextElement>();
        element->setText(text);
        element->setSymbol(carto::TextSymbol{.size = size});
        element->setGeometry(platform::geometry::Geometry::point(point));
        layout.graphicsContainer().addElement(element);
    });
}

void EqCustomMap::AddLayoutSurround(carto::SurroundKind kind, const Envelope& rectangle,
                                    const std::string& name, const std::shared_ptr<carto::Map>& map,
                                    carto::PageLayout& layout,
                                    std::shared_ptr<carto::MapSurround>& surround)
{
    surround.reset();
    context::runTrapped(" AddLayoutSurround", Procedure, [&] {
        if (!map) {
            context::throwObjectNotSet("focus map");
        }
        const auto mapFrame = layout.graphicsContainer().findFrame(*map);
        if (!mapFrame) {
            context::throwObjectNotSet("map frame");
        }
        auto frame = mapFrame->createSurroundFrame(kind);
        frame->mapSurround()->setName(name);
        frame->setGeometry(carto::rectangleShape(rectangle));
        layout.graphicsContainer().addElement(frame);
        surround = frame->mapSurround();
    });
}

void EqCustomMap::AddBitMapPicture(const Envelope& rectangle, carto::PageLayout& layout)
{
    context::runTrapped(" AddBitMapPicture", Procedure, [&] {
        auto picture = std::make_shared<carto::PictureElement>();
        const std::string separator(1, std::filesystem::path::preferred_separator);
        picture->importPictureFromFile(context::studyRegionContext().SystemDataFolder + "Eq" +
                                       separator + "qelto.bmp");
        picture->setGeometry(carto::rectangleShape(rectangle));
        layout.graphicsContainer().addElement(picture);
    });
}

void EqCustomMap::MapScenario(int16_t& ImpScenId, std::string& EastWestRegion)
{
    context::runTrapped(" for current scenario", MapLayer, [&] {
        // The half is told exactly: "e" is no half.
        int16_t sourceCode = 0;
        std::string className;
        if (EastWestRegion == "E") {
            sourceCode = 2;
            className = "eqEastFault";
        } else if (EastWestRegion == "W") {
            sourceCode = 3;
            className = "eqWestFault";
        } else {
            return;
        }
        auto& data = context::contextGisDataService();
        // The host's region maps 2 and 3 are the source faults of the east and west halves.
        const Variant source = data.GetBoundaryClass(sourceCode, 0, "");
        const auto target = context::openFeatureClass(
            className, context::studyRegionContext().ScenarioFolder + "SrScenario.mdb");
        target->deleteSearchedRows();
        data.CopyFeatures(source, Variant(target), "eqScenarioId = " + std::to_string(ImpScenId));

        auto layer = std::make_shared<carto::FeatureLayer>(target);
        layer->setName(kScenarioLayer);
        layer->setSelectable(false);
        RemoveScenariolayer();
        context::currentMapOrFail().addLayer(layer);
    });
}

void EqCustomMap::RemoveScenariolayer()
{
    context::runTrapped(" RemoveScenariolayer", Procedure, [&] {
        auto& map = context::currentMapOrFail();
        for (int i = 0; i < map.layerCount(); ++i) {
            if (map.layer(i)->name() == kScenarioLayer) {
                map.deleteLayer(map.layer(i));
                map.activeView().partialRefresh(carto::ViewPhase::GeoSelection);
                return;
            }
        }
    });
}

bool EqCustomMap::IsEditable(Variant& vFeatureLayer)
{
    return context::runTrapped(" IsEditable", Procedure, [&] {
        const auto layer = vFeatureLayer.objectAs<carto::FeatureLayer>();
        if (!layer || !layer->featureClass()) {
            context::throwObjectNotSet("feature layer");
        }
        const std::string path = lower(layer->featureClass()->workspace().path().string());
        const std::string folder = context::studyRegionContext().RegionFolder;
        for (const char* database : kEditableDatabases) {
            if (path == lower(folder + database)) {
                return true;
            }
        }
        return false;
    });
}

void EqCustomMap::UpdateQuerytoolTable(const Variant& vApplication)
{
    context::runTrapped(" UpdateQuerytoolTable", Procedure, [&] {
        context::setCurrentMap(applicationOf(vApplication)->focusMap());
        CreateCustomQuerytool();
    });
}

void EqCustomMap::CreateCustomQuerytool()
{
    context::runTrapped(" CreateCustomQuerytool", Procedure, [&] {
        const auto utilities = host::hostServices().createGisUtilityService();
        utilities->EmptyTable("hzQueryTool");
        const auto& map = context::currentMapOrFail();
        const std::string& regionFolder = context::studyRegionContext().RegionFolder;
        for (int i = 0; i < map.layerCount(); ++i) {
            const auto& layer = map.layer(i);
            const QueryToolRecord record = queryToolRecord(*layer, regionFolder);
            if (record.kind == -1) {
                continue;
            }
            utilities->WriteQueryToolRecord(i, layer->name(), record.kind, record.table,
                                            record.database, record.joinTable, record.joinDatabase);
        }
    });
}

void EqCustomMap::ApplySelection(int32_t LayerPos, const std::string& /*layerName*/,
                                 int32_t /*LayerType*/, const Variant& selRst)
{
    context::runTrapped(" ApplySelection", Procedure, [&] {
        const auto layer = featureLayerAt(LayerPos);
        layer->setSelectable(true);
        const auto records = selRst.objectAs<platform::tabular::Recordset>();
        if (!records) {
            context::throwObjectNotSet("selRst");
        }
        if (records->recordCount() < 1) {
            showNoRecords();
            return;
        }
        auto how = carto::SelectionResult::New;
        forEachIdentifierClause(*records, [&](const std::string& clause) {
            layer->selectFeatures(geodatabase::QueryFilter::where(clause), how);
            how = carto::SelectionResult::Add;
        });
        layer->setVisible(true);
        context::RefreshView();
    });
}

void EqCustomMap::ApplySelectionForShapeFile(int32_t LayerPos, const std::string& /*layerName*/,
                                             int32_t /*LayerType*/, const std::string& whereClause)
{
    context::runTrapped(" ApplySelectionForShapeFile", Procedure, [&] {
        const auto layer = featureLayerAt(LayerPos);
        layer->setSelectable(true);
        layer->selectFeatures(geodatabase::QueryFilter::where(whereClause),
                              carto::SelectionResult::Add);
        if (layer->selectionSet().isEmpty()) {
            showNoRecords();
            return;
        }
        layer->setVisible(true);
        context::RefreshView();
    });
}

} // namespace brevant::layout
