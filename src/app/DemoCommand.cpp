#include "app/DemoCommand.h"

#include "BrevantClasses.h"
#include "analysis/EqProbabilistic.h"
#include "analysis/EqUserDefined.h"
#include "app/AdminCommands.h"
#include "app/CommandOptions.h"
#include "host/GisDataService.h"
#include "host/HostServices.h"
#include "host/RegionContextService.h"
#include "host/RegionSettingsStore.h"
#include "host/local/LocalApplication.h"
#include "host/local/LocalHostServices.h"
#include "samplehost/SampleHost.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/Collection.h"
#include "platform/automation/MemberTable.h"
#include "platform/automation/VariantArray.h"
#include "platform/carto/FeatureLayer.h"
#include "platform/carto/Map.h"
#include "platform/carto/MapFrame.h"
#include "platform/carto/MapSurroundFrame.h"
#include "platform/carto/PageLayout.h"
#include "platform/carto/TextElement.h"
#include "platform/display/GuiApplication.h"
#include "platform/display/LayoutRenderer.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/ui/ConsolePrompts.h"

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>

namespace brevant::app {

const char* const kDemoUsage =
    R"(Usage: brevant demo [--out DIR] [--size small|medium|large]

Builds a sample host root in DIR/host (default DIR: brevant-demo) and runs one typical session
on it through the library's classes, as the desktop host does: EqDataMaps clips the soil,
liquefaction, landslide and ground-water maps to the study region and draws each; EqPolyGon adds
the region's boundary and tracts; the user-defined (shake maps) and probabilistic (500-year)
analyses fill the tract table, and EqPolyGon draws tract pga after each; EqPoint and EqPolyLine
import a user's file of schools and roads, run the analyses by record set, and EqPoint draws
school pga; EqCustomMap shows the region's first scenario fault and lays out the printable page
of that map (DIR/layout.pdf and DIR/layout.png). Every map is written to
DIR as a PNG page with its legend; DIR/demo.json lists them. DIR must be missing, empty or an
earlier demo's folder (whose files are replaced). small (the default) takes seconds.
)";

namespace {
namespace fs = std::filesystem;
namespace carto = platform::carto;
using json = nlohmann::ordered_json;
using platform::automation::ArgList;
using platform::automation::AutomationObject;
using platform::automation::Collection;
using platform::automation::Variant;
using platform::automation::VariantArray;
using platform::geometry::Envelope;

// A landscape letter page in inches (origin lower left): the map, its legend beside it, a
// title above.
const Envelope kMapRect{0.3, 0.3, 8.3, 7.7};
const Envelope kLegendRect{8.5, 0.3, 10.7, 7.7};
constexpr double kTitleX = 0.3;
constexpr double kTitleY = 8.05;
constexpr double kDotsPerInch = 100.0;
constexpr int16_t kReturnPeriod = 500;
// The inventory database of schools (ef.mdb) among the host's five.
constexpr int16_t kSchoolDatabase = 2;
constexpr int kSites = 240;
constexpr const char* kBoundaryLayer = "Study Region Boundary";

/// One map the demo draws.
struct Page {
    std::string title;
    std::string file;
    std::shared_ptr<carto::Layer> layer;
    json details;
};

/// The files an earlier demo wrote into `dir`, from its demo.json.
std::vector<fs::path> earlierDemoFiles(const fs::path& dir)
{
    std::vector<fs::path> files{dir / "demo.json", dir / "host", dir / "layout.png",
                                dir / "layout.pdf"};
    std::ifstream in(dir / "demo.json");
    const json earlier = json::parse(in, nullptr, false);
    if (earlier.is_object() && earlier.contains("maps") && earlier.at("maps").is_array()) {
        for (const auto& map : earlier.at("maps")) {
            if (map.contains("png") && map.at("png").is_string()) {
                // Only plain names: a crafted demo.json must not reach outside the folder.
                const fs::path name = map.at("png").get<std::string>();
                if (name.has_filename() && name == name.filename()) {
                    files.push_back(dir / name);
                }
            }
        }
    }
    return files;
}

/// Makes `dir` ready for a new demo without touching anything the demo did not write.
void prepareFolder(const fs::path& dir)
{
    if (!fs::exists(dir)) {
        fs::create_directories(dir);
        return;
    }
    if (!fs::is_directory(dir)) {
        throw InputError(dir.string() + " is not a folder");
    }
    if (fs::is_empty(dir)) {
        return;
    }
    if (!fs::exists(dir / "demo.json")) {
        throw InputError(dir.string() +
                         " holds files of its own; the demo writes only into a missing or empty "
                         "folder, or over an earlier demo's folder");
    }
    for (const auto& file : earlierDemoFiles(dir)) {
        fs::remove_all(file);
    }
}

class Demo {
public:
    Demo(fs::path dir, std::ostream& out, std::ostream& err)
        : m_dir(std::move(dir)), m_out(out), m_err(err)
    {
    }

    int run(samplehost::SampleSize size)
    {
        const auto start = std::chrono::steady_clock::now();
        // Marks the folder as the demo's at once, so that a run that fails half way can be
        // run again over it.
        m_report["maps"] = json::array();
        writeReport();
        const fs::path root = m_dir / "host";
        samplehost::SampleHostReport sample;
        timed("sample host", [&] {
            sample = samplehost::writeSampleHost(root, size, 1, [this](const std::string& s) {
                m_err << "demo: " << s << '\n';
            });
        });
        m_report["host"] = fs::absolute(root).string();
        m_report["region"] = sample.region;

        host::installHostServices(std::make_shared<host::local::LocalHostServices>(root.string()));
        m_prompts = std::make_shared<platform::ui::ConsolePrompts>();
        platform::ui::installUserPrompts(m_prompts);
        platform::display::ensureGuiApplication();
        m_regionFolder = host::hostServices().createRegionContextService()->GetRegionFolder();

        // The host hands its map to the library through any class that has m_pMap.
        m_map = std::make_shared<carto::Map>();
        auto dataMaps = classes().create("Brevant.EqDataMaps");
        auto polygons = classes().create("Brevant.EqPolyGon");
        platform::automation::setProperty(*polygons, "m_pMap", Variant(m_map));
        const auto boundary = openRegionClass("hzboundary");
        m_map->setSpatialReference(boundary->spatialReference());
        m_map->setExtent(pageExtent(boundary->extent()));

        if (!clipSiteMaps(*dataMaps)) {
            return 1;
        }
        timed("default maps", [&] { call(*polygons, "AddDefaultMaps", {}); });
        // The boundary comes in on top with a fill; as a user would in the layer list, put it
        // underneath so that it frames the thematic maps instead of hiding them.
        for (const auto& layer : m_map->layers()) {
            if (layer->name() == kBoundaryLayer) {
                m_map->moveLayer(layer, m_map->layerCount() - 1);
                break;
            }
        }
        timed("pages of the clipped maps", [&] {
            for (auto& page : m_pages) {
                renderPage(page);
            }
        });
        analyseTracts(*polygons);
        const auto schools = importAndAnalyseInventory();
        layoutPage(schools);
        m_report["seconds"] = secondsSince(start);
        writeReport();
        printSummary(sample, secondsSince(start));
        return 0;
    }

private:
    template <class Body> void timed(const std::string& what, Body&& body)
    {
        const auto start = std::chrono::steady_clock::now();
        m_err << "demo: " << what << '\n';
        body();
        m_report["steps"].push_back({{"step", what}, {"seconds", secondsSince(start)}});
    }

    static ArgList call(AutomationObject& object, const std::string& member, ArgList args)
    {
        platform::automation::call(object, member, args);
        return args;
    }

    std::shared_ptr<platform::geodatabase::FeatureClass> openRegionClass(const std::string& name)
    {
        return host::hostServices()
            .createGisDataService()
            ->OpenFeatureClass(name, m_regionFolder + "RegionBndry.mdb")
            .objectAs<platform::geodatabase::FeatureClass>();
    }

    /// The boundary with a margin, widened to the map frame's shape so that the frame shows it
    /// undistorted and every pixel maps linearly to the ground.
    static Envelope pageExtent(const Envelope& boundary)
    {
        const double margin = 0.04 * std::max(boundary.width(), boundary.height());
        Envelope extent(boundary.xmin() - margin, boundary.ymin() - margin,
                        boundary.xmax() + margin, boundary.ymax() + margin);
        const double frameAspect = kMapRect.width() / kMapRect.height();
        if (extent.width() / extent.height() < frameAspect) {
            const double grow = (extent.height() * frameAspect - extent.width()) / 2;
            extent = Envelope(extent.xmin() - grow, extent.ymin(), extent.xmax() + grow,
                              extent.ymax());
        } else {
            const double grow = (extent.width() / frameAspect - extent.height()) / 2;
            extent = Envelope(extent.xmin(), extent.ymin() - grow, extent.xmax(),
                              extent.ymax() + grow);
        }
        return extent;
    }

    /// The layer that a call added to the map (or put in place of one of the same name).
    template <class Body> std::shared_ptr<carto::Layer> newLayer(Body&& body)
    {
        const std::vector<std::shared_ptr<carto::Layer>> before = m_map->layers();
        body();
        for (const auto& layer : m_map->layers()) {
            if (std::find(before.begin(), before.end(), layer) == before.end()) {
                return layer;
            }
        }
        return nullptr;
    }

    bool clipSiteMaps(AutomationObject& dataMaps)
    {
        static const std::array<std::pair<const char*, const char*>, 4> kMaps{
            {{"SOIL", "eqsrsoil"},
             {"LIQF", "eqsrlqf"},
             {"LAND", "eqsrlnd"},
             {"WATR", "eqsrwdepth"}}};
        std::vector<Variant> codes;
        for (const auto& map : kMaps) {
            codes.emplace_back(map.first);
        }
        timed("clipping the site-condition maps", [&] {
            call(dataMaps, "ClipHazardDataMaps", {Variant(Collection::of(codes))});
        });
        // The batch goes on past a failed map and says so once, in a message box.
        const auto messages = m_prompts->takeMessages();
        if (!messages.empty()) {
            m_err << "demo: clipping reported a failure; see " << m_regionFolder
                  << "DataMapsLog.txt and " << m_regionFolder << "EqErrorLog.txt\n";
            return false;
        }
        timed("drawing the clipped maps", [&] {
            for (const auto& [code, table] : kMaps) {
                ArgList args;
                const auto layer = newLayer([&] {
                    args = call(dataMaps, "GenerateThematicMap",
                                {Variant(code), Variant(int16_t{0}), Variant(0.0), Variant(0.0)});
                });
                const auto features = openRegionClass(table)->rowCount();
                Page page{std::string("Clipped map ") + code + ": " + layer->name(),
                          platform::automation::toLower(code) + ".png", layer, json::object()};
                page.details = {{"code", code},
                                {"class", table},
                                {"type", args[1].toInt32()},
                                {"features", features}};
                m_pages.push_back(std::move(page));
            }
        });
        return true;
    }

    void analyseTracts(AutomationObject& polygons)
    {
        std::string tracts = "eqTract";
        const auto drawPga = [&](const std::string& title, const std::string& file) {
            double minimum = 0.0;
            double maximum = 0.0;
            host::hostServices().createGisDataService()->GetFieldRange(
                "RegionBndry.mdb", tracts, "pga", minimum, maximum);
            ArgList args;
            const auto layer = newLayer([&] {
                args = call(polygons, "GenerateThematicMap",
                            {Variant(tracts), Variant(int16_t{0}), Variant(int16_t{2}),
                             Variant("pga"), Variant(minimum), Variant(maximum)});
            });
            // Drawn at once: the next tract map of the same name takes this layer's place.
            Page page{title + ": " + layer->name(), file, layer,
                      {{"class", tracts},
                       {"field", "pga"},
                       {"type", args[2].toInt32()},
                       {"features", openRegionClass(tracts)->rowCount()},
                       {"minimum", minimum},
                       {"maximum", maximum}}};
            renderPage(page);
        };
        timed("user-defined analysis of the tracts", [&] {
            std::vector<Variant> codes;
            for (const char* code : {"PGAM", "PGVM", "SA03", "SA10"}) {
                codes.emplace_back(code);
            }
            analysis::AnalyzeInvtUserDefinedScenario(
                tracts, Variant(VariantArray::of(codes)), Variant(), true);
            drawPga("Tract pga, user-defined scenario", "tract_pga_user.png");
        });
        timed("probabilistic analysis of the tracts", [&] {
            analysis::AnalyzeProbDefinedScenario(tracts, kReturnPeriod, Variant(), true);
            drawPga("Tract pga, " + std::to_string(kReturnPeriod) + "-year return period",
                    "tract_pga_" + std::to_string(kReturnPeriod) + ".png");
        });
    }

    /// A user's files as the demo brings them: sites spread over the box of the region (those
    /// outside its tracts are left out by the import) and east-west roads across all of it
    /// (cut at the boundary). Fixed numbers, so every run imports the same records.
    std::string writeUserFiles()
    {
        namespace geodatabase = platform::geodatabase;
        using geodatabase::FieldType;
        using platform::geometry::Geometry;
        const auto boundary = openRegionClass("hzboundary");
        const Envelope box = boundary->extent();
        const fs::path file = m_dir / "host" / "UserData" / "user_inventory.gpkg";
        fs::create_directories(file.parent_path());
        fs::remove(file);
        auto workspace = geodatabase::Workspace::createGeoPackage(file);
        const auto sites = workspace.createFeatureClass(
            "user_sites", geodatabase::Fields({{"Name", FieldType::String, 40, {}}}),
            platform::geometry::ShapeType::Point, boundary->spatialReference());
        {
            geodatabase::InsertCursor insert = sites->insert();
            // A low-discrepancy spread covers the box evenly without a random generator.
            for (int i = 0; i < kSites; ++i) {
                const double u = std::fmod(0.5 + i * 0.6180339887498949, 1.0);
                const double v = (i + 0.5) / kSites;
                geodatabase::Row row = sites->createRow();
                row.setValue(2, "Demo school " + std::to_string(i + 1));
                row.setShape(Geometry::point(
                    {box.xmin() + u * box.width(), box.ymin() + v * box.height()}));
                insert.insertRow(row);
            }
        }
        const auto roads = workspace.createFeatureClass(
            "user_roads", geodatabase::Fields({{"Name", FieldType::String, 40, {}}}),
            platform::geometry::ShapeType::Polyline, boundary->spatialReference());
        geodatabase::InsertCursor insert = roads->insert();
        constexpr int kRoads = 6;
        for (int i = 0; i < kRoads; ++i) {
            const double y = box.ymin() + (i + 0.5) / kRoads * box.height();
            geodatabase::Row row = roads->createRow();
            row.setValue(2, "Demo road " + std::to_string(i + 1));
            row.setShape(Geometry::polyline({{{box.xmin() - 0.05, y}, {box.xmax() + 0.05, y}}}));
            insert.insertRow(row);
        }
        insert.flush();
        return fs::absolute(file).string();
    }

    /// Imports the user's schools and roads by name, runs the analyses on their record sets
    /// and draws school pga; returns the school layer.
    std::shared_ptr<carto::Layer> importAndAnalyseInventory()
    {
        auto points = classes().create("Brevant.EqPoint");
        auto lines = classes().create("Brevant.EqPolyLine");
        platform::automation::setProperty(*points, "m_pMap", Variant(m_map));
        const auto schoolCount = [&] {
            return host::hostServices()
                .createGisDataService()
                ->OpenFeatureClass("hzSchool", m_regionFolder + "ef.mdb")
                .objectAs<platform::geodatabase::FeatureClass>()
                ->rowCount();
        };
        m_report["schools before import"] = schoolCount();
        m_report["sites in the user's file"] = kSites;
        std::string file;
        timed("importing a user's schools and roads", [&] {
            file = writeUserFiles();
            call(*points, "ImportData", {Variant("hzSchool"), Variant(file), Variant("user_sites")});
            call(*lines, "ImportData",
                 {Variant("hzHighwaySegment"), Variant(file), Variant("user_roads")});
        });
        // The import says how many sites lay outside the region; the console has shown it.
        const auto told = m_prompts->takeMessages();
        m_report["import messages"] = json::array();
        for (const auto& message : told) {
            m_report["import messages"].push_back(message.text);
        }
        m_report["schools after import"] = schoolCount();
        timed("analyses of the inventory by record set", [&] {
            call(*points, "AnalyzeProbabilisticScenario",
                 {Variant("SCHOOLS"), Variant(kReturnPeriod), Variant()});
            std::vector<Variant> codes{Variant("PGAM"), Variant("SA10")};
            call(*lines, "AnalyzeUserDefinedScenario",
                 {Variant("HIGHWAYS"), Variant(VariantArray::of(codes)), Variant()});
        });
        std::shared_ptr<carto::Layer> schoolLayer;
        timed("drawing school pga", [&] {
            const std::string schools = "hzSchool";
            double minimum = 0.0;
            double maximum = 0.0;
            host::hostServices().createGisDataService()->GetFieldRange("ef.mdb", schools, "pga",
                                                                       minimum, maximum);
            ArgList args;
            const auto layer = newLayer([&] {
                args = call(*points, "GenerateThematicMap",
                            {Variant(schools), Variant(kSchoolDatabase), Variant(int16_t{2}),
                             Variant("pga"), Variant(minimum), Variant(maximum)});
            });
            if (!layer) {
                throw InputError("the school map was not drawn; see " + m_regionFolder +
                                 "EqErrorLog.txt");
            }
            const auto features = schoolCount();
            Page page{"School pga, " + std::to_string(kReturnPeriod) + "-year return period: " +
                          layer->name(),
                      "schools_pga_" + std::to_string(kReturnPeriod) + ".png", layer,
                      {{"class", schools},
                       {"field", "pga"},
                       {"type", args[2].toInt32()},
                       {"features", features},
                       {"imported from", file},
                       {"minimum", minimum},
                       {"maximum", maximum}}};
            renderPage(page);
            schoolLayer = layer;
        });
        return schoolLayer;
    }

    /// The printable page of the last map, as a user makes it: picks the region's first
    /// scenario, shows its fault, and has EqCustomMap lay out the page of the host's document.
    void layoutPage(const std::shared_ptr<carto::Layer>& schools)
    {
        timed("the printable page", [&] {
            const auto store = host::hostServices().createRegionSettingsStore();
            auto& settings = *store;
            std::string half = settings.ReadString("GENERAL", "EorW");
            const std::string scenarioDatabase =
                host::hostServices().createRegionContextService()->GetScenarioFolder() +
                "SrScenario.mdb";
            const auto faults = host::hostServices()
                                    .createGisDataService()
                                    ->OpenFeatureClass(half == "E" ? "eqSrEastFault"
                                                                   : "eqSrWestFault",
                                                       scenarioDatabase)
                                    .objectAs<platform::geodatabase::FeatureClass>();
            int16_t scenario = 0;
            {
                // Released before MapScenario writes into the same database.
                platform::geodatabase::Cursor cursor = faults->search();
                platform::geodatabase::Row first;
                if (!cursor.next(first)) {
                    throw InputError("the sample host holds no scenario fault in " +
                                     scenarioDatabase);
                }
                scenario = static_cast<int16_t>(
                    first.value(faults->findField("eqScenarioId")).toInt32());
            }
            settings.WriteInt32("PESH", "ScenarioID", scenario);

            auto customMap = classes().create("Brevant.EqCustomMap");
            call(*customMap, "MapScenario", {Variant(scenario), Variant(half)});
            for (const auto& layer : m_map->layers()) {
                layer->setVisible(layer == schools || layer->name() == kBoundaryLayer ||
                                  layer->name() == "Hazard Scenario Layer");
            }
            const auto layout = std::make_shared<carto::PageLayout>();
            const auto application = std::make_shared<host::local::LocalApplication>(m_map, layout);
            call(*customMap, "CreateLayoutView", {Variant(application)});

            const platform::display::LayoutRenderer renderer(*layout);
            renderer.exportPng(m_dir / "layout.png", kDotsPerInch);
            renderer.exportPdf(m_dir / "layout.pdf");
            m_report["layout"] = {{"png", "layout.png"},
                                  {"pdf", "layout.pdf"},
                                  {"scenario", scenario},
                                  {"elements", layout->graphicsContainer().elements().size()}};
        });
    }

    /// Draws the page's layer over nothing but the region boundary, with its legend, and
    /// lists it in the report.
    void renderPage(Page& page)
    {
        for (const auto& layer : m_map->layers()) {
            layer->setVisible(layer == page.layer || layer->name() == kBoundaryLayer);
        }
        carto::PageLayout layout;
        layout.setOrientation(carto::PageOrientation::Landscape);
        auto& graphics = layout.graphicsContainer();
        auto frame = std::make_shared<carto::MapFrame>(m_map);
        frame->setGeometry(carto::rectangleShape(kMapRect));
        graphics.addElement(frame);
        auto legend = frame->createSurroundFrame(carto::SurroundKind::Legend);
        legend->setGeometry(carto::rectangleShape(kLegendRect));
        graphics.addElement(legend);
        auto title = std::make_shared<carto::TextElement>();
        title->setText(page.title);
        title->setSymbol(carto::TextSymbol{.size = 16.0});
        title->setGeometry(platform::geometry::Geometry::point({kTitleX, kTitleY}));
        graphics.addElement(title);

        const platform::display::LayoutRenderer renderer(layout);
        renderer.exportPng(m_dir / page.file, kDotsPerInch);
        const QRectF pixels = renderer.toDevice(kMapRect, kDotsPerInch);
        const Envelope extent = m_map->extent();
        page.details["title"] = page.title;
        page.details["layer"] = page.layer->name();
        page.details["png"] = page.file;
        page.details["extent"] = {extent.xmin(), extent.ymin(), extent.xmax(), extent.ymax()};
        page.details["frame"] = {pixels.left(), pixels.top(), pixels.width(), pixels.height()};
        m_report["maps"].push_back(page.details);
    }

    void writeReport()
    {
        std::ofstream file(m_dir / "demo.json");
        file << m_report.dump(2) << '\n';
        if (!file) {
            throw InputError("cannot write " + (m_dir / "demo.json").string());
        }
    }

    void printSummary(const samplehost::SampleHostReport& sample, double seconds)
    {
        m_out << "demo: region " << sample.region << " (" << sample.tracts << " tracts, "
              << sample.inventoryFeatures << " inventory features in "
              << sample.inventoryClasses << " classes)\n";
        for (const auto& step : m_report.at("steps")) {
            m_out << "  " << step.at("step").get<std::string>() << ": "
                  << fixed(step.at("seconds").get<double>()) << " s\n";
        }
        for (const auto& map : m_report.at("maps")) {
            m_out << "  " << map.at("png").get<std::string>() << ": "
                  << map.at("layer").get<std::string>() << ", " << map.at("features")
                  << " features\n";
        }
        m_out << "  layout.pdf, layout.png: the printable page of the last map, scenario "
              << m_report.at("layout").at("scenario") << '\n';
        m_out << "demo: " << m_report.at("maps").size() << " maps in " << fs::absolute(m_dir)
              << ", logs in " << m_regionFolder << " (" << fixed(seconds) << " s)\n";
    }

    fs::path m_dir;
    std::ostream& m_out;
    std::ostream& m_err;
    std::shared_ptr<platform::ui::ConsolePrompts> m_prompts;
    std::shared_ptr<carto::Map> m_map;
    std::string m_regionFolder;
    std::vector<Page> m_pages;
    json m_report = json::object();
};

} // namespace

int runDemo(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    return guarded(args, "demo", kDemoUsage, out, err, [&]() -> int {
        const Options options = parseOptions(args, 1, {"out", "size"}, {});
        options.expectPositional(0, "");
        const auto size = sampleSizeNamed(options.optional("size", "small"));
        const fs::path dir = options.optional("out", "brevant-demo");
        prepareFolder(dir);
        return Demo(dir, out, err).run(size);
    });
}

} // namespace brevant::app
