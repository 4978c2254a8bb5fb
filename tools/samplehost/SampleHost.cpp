#include "samplehost/SampleHost.h"

#include "host/local/HostBuilder.h"
#include "host/local/HostRoot.h"
#include "host/local/InventoryBuilder.h"
#include "host/local/LocalScenarioService.h"
#include "host/local/MapRegistration.h"
#include "host/local/RegionBuilder.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/geometry/PreparedGeometry.h"
#include "platform/tabular/SqliteDatabase.h"

#include <map>
#include <set>

namespace brevant::samplehost {

namespace fs = std::filesystem;
using namespace host::local;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Table;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::tabular::SqliteDatabase;

namespace {

// The size of a MARPLOT footprint around its point, in degrees.
constexpr double kFootprintRadius = 0.004;

const Variant& field(const Row& row, std::string_view name)
{
    static const Variant missing = Variant::null();
    const int index = row.fields().findField(name);
    return index < 0 ? missing : row.value(index);
}

std::string text(const Row& row, std::string_view name)
{
    const Variant& value = field(row, name);
    return value.isNull() || value.isEmpty() ? std::string() : value.toString();
}

/// Copies the rows of a source layer into a class of the system, with the values `valuesOf`
/// gives (nullopt skips the row) and the shape `shapeOf` makes of the source's.
int64_t copyRows(const SourceLayer& from, Table& target,
                 const std::function<std::optional<NamedValues>(const Row&)>& valuesOf,
                 const std::function<Geometry(const Geometry&)>& shapeOf = {})
{
    auto source = Workspace::open(from.path, true).openTable(from.name);
    const bool shapes = target.findField("Shape") >= 0 &&
                        target.fields().field(1).type == platform::geodatabase::FieldType::Geometry;
    InsertCursor insert = target.insert();
    Cursor cursor = source->search();
    Row row;
    int64_t count = 0;
    while (cursor.next(row)) {
        const auto values = valuesOf(row);
        if (!values) {
            continue;
        }
        Row out = target.createRow();
        setNamedValues(out, *values);
        if (shapes) {
            out.setShape(shapeOf ? shapeOf(row.shape()) : row.shape());
        }
        insert.insertRow(out);
        ++count;
    }
    insert.flush();
    return count;
}

struct InventoryMapping {
    std::string layer;
    std::string className;
};

// Which system class each of the user's facility lists becomes.
const std::vector<InventoryMapping> kInventory{
    {"schools", "hzSchool"},
    {"hospitals", "hzCareFlty"},
    {"fire_stations", "hzFireStation"},
    {"police_stations", "hzPoliceStation"},
    {"emergency_centers", "hzUserDefinedFlty"},
    {"highway_bridges", "hzHighwayBridge"},
    {"buildings", "eqAebm"},
    {"highways", "hzHighwaySegment"},
    {"railways", "hzRailwaySegment"},
};

// The host's analysis record sets: one per kind of inventory, so that a script can start the
// analyses of a point and a line class by record set, and the buildings, the largest class.
const std::vector<std::pair<std::string, std::string>> kAnalysisRecordSets{
    {"SCHOOLS", "hzSchool"},
    {"HIGHWAYS", "hzHighwaySegment"},
    {"BUILDINGS", "eqAebm"},
};

void writeAnalysisRecordSets(const HostRoot& host, const std::string& region)
{
    SqliteDatabase db(host.regionDatabasePath(region).string(), SqliteDatabase::Mode::ReadWrite);
    db.execute("CREATE TABLE IF NOT EXISTS AnalysisRecordSets (RecordSetId TEXT PRIMARY KEY, "
               "TableName TEXT NOT NULL)");
    SqliteDatabase::Statement insert(
        db, "INSERT OR REPLACE INTO AnalysisRecordSets (RecordSetId, TableName) VALUES (?1, ?2)");
    for (const auto& [id, table] : kAnalysisRecordSets) {
        insert.reset();
        insert.bind(1, id).bind(2, table);
        insert.step();
    }
}

void writeStateData(const HostRoot& host, const SampleSources& sources)
{
    const fs::path folder(host.stateDataFolder());
    Workspace boundaries = Workspace::open(folder / "syboundary.mdb");
    std::map<std::string, std::string> abbreviations;
    for (const auto& state : sources.states) {
        abbreviations[state.code] = state.abbreviation;
    }
    copyRows(sources.stateBoundaries.source, *boundaries.openTable("syState"), [&](const Row& row) {
        const std::string code = text(row, sources.stateBoundaries.codeField);
        return NamedValues{{"StateFips", Variant(code)},
                           {"StateName", field(row, sources.stateBoundaries.nameField)},
                           {"StateAbbr", Variant(abbreviations[code])}};
    });
    copyRows(sources.counties.source, *boundaries.openTable("syCounty"), [&](const Row& row) {
        const std::string code = text(row, sources.counties.codeField);
        return NamedValues{{"StateFips", Variant(code.substr(0, 2))},
                           {"CountyFips", Variant(code)},
                           {"CountyName", field(row, sources.counties.nameField)}};
    });
    copyRows(sources.tracts.source, *boundaries.openTable("sytract"), [&](const Row& row) {
        const std::string code = text(row, sources.tracts.codeField);
        return NamedValues{{"StateFips", Variant(code.substr(0, 2))},
                           {"CountyFips", Variant(code.substr(0, 5))},
                           {"Tract", Variant(code)}};
    });
    const DatabaseSchema* blocks = findDatabase(HostFolder::State, "bndrygbs.mdb");
    for (const auto& state : sources.blocks) {
        const fs::path file = folder / abbreviations[state.stateCode] / blocks->fileName;
        fs::create_directories(file.parent_path());
        Workspace db = createDatabase(*blocks, file);
        copyRows(state.layer.source, *db.openTable("hzCensusBlock"), [&](const Row& row) {
            const std::string code = text(row, state.layer.codeField);
            return NamedValues{{"StateFips", Variant(code.substr(0, 2))},
                               {"CountyFips", Variant(code.substr(0, 5))},
                               {"Tract", Variant(code.substr(0, 11))},
                               {"CensusBlock", Variant(code)}};
        });
    }
}

void writeScenarioData(const HostRoot& host, const SampleSources& sources, const std::string& half)
{
    const fs::path folder(host.scenarioFolder());
    Workspace scenarios = Workspace::open(folder / "SCENARIO.mdb");
    copyRows(sources.epicentres.source, *scenarios.openTable("eqEpicenter"), [&](const Row& row) {
        return NamedValues{{"eqEpicenterId", field(row, sources.epicentres.idField)},
                           {"Magnitude", field(row, sources.epicentres.magnitudeField)}};
    });
    copyRows(sources.faults.source, *scenarios.openTable("eqFault"), [&](const Row& row) {
        return NamedValues{{"eqFaultId", Variant(text(row, sources.faults.idField))},
                           {"FaultName", field(row, sources.faults.nameField)}};
    });
    // The region's scenario faults, in the half of the country the region lies in.
    Workspace regionFaults = Workspace::open(folder / "SrScenario.mdb");
    const auto faults = regionFaults.openTable(half == "E" ? "eqSrEastFault" : "eqSrWestFault");
    copyRows(sources.scenarioFaults.source, *faults, [&](const Row& row) {
        return NamedValues{{"eqScenarioId", field(row, sources.scenarioFaults.idField)}};
    });
    // Each fault is a source scenario the host knows, so a scenario can be carried by number.
    const int idField = faults->findField("eqScenarioId");
    Cursor cursor = faults->search();
    Row row;
    while (cursor.next(row)) {
        const auto id = static_cast<int16_t>(row.value(idField).toInt32());
        LocalScenarioService::putScenario(host.root(), id, "S", "Scenario " + std::to_string(id));
    }
}

void writeRegionExtras(const HostRoot& host, const std::string& region,
                       const SampleSources& sources)
{
    const fs::path folder(host.regionFolder(region));
    Workspace usgs = Workspace::open(folder / "USGS.mdb");
    copyRows(sources.probabilisticMap.source, *usgs.openTable("USGS"), [](const Row& row) {
        NamedValues values;
        for (int i = 0; i < row.fields().count(); ++i) {
            const auto type = row.fields().field(i).type;
            if (type != platform::geodatabase::FieldType::OID &&
                type != platform::geodatabase::FieldType::Geometry) {
                values[row.fields().field(i).name] = row.value(i);
            }
        }
        return values;
    });

    Workspace outside = Workspace::open(folder / "3rdParty.mdb");
    copyRows(
        sources.marPlot, *outside.openTable("MarPlot"),
        [](const Row& row) {
            return NamedValues{
                {"Name", Variant(text(row, "OBJ_NAME") + " (" + text(row, "CHEMICAL") + ")")}};
        },
        [](const Geometry& point) { return point.buffer(kFootprintRadius); });

    const ClassSchema& floodView = floodViewClass();
    const fs::path viewFolder = folder / "FloodView";
    {
        Workspace shapes = Workspace::openShapefileFolder(viewFolder);
        auto view = createClass(shapes, floodView);
        copyRows(sources.floodView, *view, [](const Row& row) {
            return NamedValues{{"Depth", field(row, "DEPTH_FT")}};
        });
    }
    RegionDatabase settings(host.regionDatabasePath(region));
    settings.write("General", "FLOODVIEWFILE", (viewFolder / (floodView.name + ".shp")).string());
    settings.write("General", "FLDVIEWPATH", host.regionFolder(region) + "FloodView/");

    // Flood study cases and their losses by census block of the region.
    std::vector<std::string> blocks;
    {
        std::set<std::string> tracts;
        const Workspace bounds = Workspace::open(folder / "RegionBndry.mdb", true);
        Cursor cursor = bounds.openTable("hztract")->search();
        Row row;
        while (cursor.next(row)) {
            tracts.insert(text(row, "Tract"));
        }
        for (const auto& state : sources.blocks) {
            auto table =
                Workspace::open(state.layer.source.path, true).openTable(state.layer.source.name);
            Cursor blockCursor = table->search();
            while (blockCursor.next(row)) {
                const std::string code = text(row, state.layer.codeField);
                if (tracts.count(code.substr(0, 11))) {
                    blocks.push_back(code);
                }
            }
        }
    }
    SqliteDatabase db(host.regionDatabasePath(region).string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Transaction transaction(db);
    {
        SqliteDatabase::Statement insert(
            db, "INSERT INTO flStudyCase (StudyCaseId, StudyCasename) VALUES (?1, ?2)");
        auto cases = Workspace::open(sources.floodStudyCases.path, true)
                         .openTable(sources.floodStudyCases.name);
        Cursor cursor = cases->search();
        Row row;
        while (cursor.next(row)) {
            insert.reset();
            insert.bind(1, static_cast<int64_t>(field(row, "CASE_ID").toInt32()))
                .bind(2, text(row, "CASE_NAME"));
            insert.step();
        }
    }
    {
        SqliteDatabase::Statement insert(
            db, "INSERT OR IGNORE INTO flFRGBSEcLossBySOccup (StudyCaseId, ReturnPeriodId, "
                "AnalysisOptId, CensusBlock, SOccup, TotalLoss) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
        auto losses =
            Workspace::open(sources.floodLosses.path, true).openTable(sources.floodLosses.name);
        Cursor cursor = losses->search();
        Row row;
        std::size_t next = 0;
        while (cursor.next(row) && !blocks.empty()) {
            // Losses are spread over the region's blocks in turn.
            insert.reset();
            insert.bind(1, static_cast<int64_t>(field(row, "CASE_ID").toInt32()))
                .bind(2, text(row, "RET_PERIOD"))
                .bind(3, static_cast<int64_t>(field(row, "ANALYSIS_OPT").toInt32()))
                .bind(4, blocks[next++ % blocks.size()])
                .bind(5, text(row, "OCCUPANCY"))
                .bind(6, field(row, "BLDG_LOSS").toDouble() + field(row, "CONT_LOSS").toDouble());
            insert.step();
        }
    }
    transaction.commit();
}

} // namespace

SampleHostReport writeSampleHost(const fs::path& root, SampleSize size, std::uint64_t seed,
                                 const std::function<void(const std::string&)>& progress)
{
    const auto step = [&](const std::string& what) {
        if (progress) {
            progress(what);
        }
    };
    initHost(root);
    // The user's files live beside the host while it is built, and go when it is done.
    const fs::path scratch = root / ".sources";
    fs::remove_all(scratch);
    SampleHostReport report;
    try {
        const SampleSources sources = writeSampleSources(scratch, size, seed, progress);

        step("building the region");
        RegionRequest region;
        region.name = sources.regionName;
        region.boundary = {sources.regionBoundary.path, sources.regionBoundary.name};
        region.tracts = {sources.tracts.source.path, sources.tracts.source.name};
        region.tractField = sources.tracts.codeField;
        region.counties = VectorSource{sources.counties.source.path, sources.counties.source.name};
        region.countyField = sources.counties.codeField;
        region.makeCurrent = true;
        const RegionReport built = createRegion(root, region, progress);
        report.region = built.name;
        report.tracts = built.tracts;
        report.repaired += built.repaired;

        step("registering the maps");
        const auto registerOne = [&](const std::string& code, const SourceLayer& source,
                                     const std::string& valueField) {
            const MapReport map =
                registerMap(root, {"", code, {source.path, source.name}, valueField, std::nullopt});
            report.repaired += map.repaired;
            ++report.maps;
        };
        for (const auto& map : sources.siteMaps) {
            registerOne(map.code, map.source, map.valueField);
        }
        for (const auto& map : sources.inundationMaps) {
            registerOne(map.code, map.source, map.classField);
        }
        for (const auto& map : sources.groundMotionMaps) {
            registerOne(map.code, map.source, map.valueField);
        }

        step("loading the inventory");
        std::set<std::string> loaded;
        const auto layers = [&] {
            std::vector<InventoryLayer> all = sources.pointInventory;
            all.insert(all.end(), sources.lineInventory.begin(), sources.lineInventory.end());
            return all;
        }();
        for (const auto& mapping : kInventory) {
            const auto layer = std::find_if(layers.begin(), layers.end(), [&](const auto& l) {
                return l.source.name == mapping.layer;
            });
            if (layer == layers.end()) {
                continue;
            }
            InventoryRequest request;
            request.className = mapping.className;
            request.kind = layer->shapeType == platform::geometry::ShapeType::Polyline ? 'L' : 'P';
            request.from = VectorSource{layer->source.path, layer->source.name};
            request.idField = layer->idField;
            request.nameField = layer->nameField;
            const InventoryReport added = addInventory(root, request);
            report.inventoryFeatures += added.loaded;
            report.repaired += added.repaired;
            loaded.insert(platform::automation::toLower(mapping.className));
        }
        // The system's other classes exist too, empty, as a region without such facilities.
        for (const auto& entry : inventoryClasses()) {
            if (entry.database == "RegionBndry.mdb" ||
                loaded.count(platform::automation::toLower(entry.name))) {
                continue;
            }
            addInventory(root, {"", entry.name, entry.kind, entry.database, std::nullopt, "", ""});
        }
        report.inventoryClasses = static_cast<int64_t>(inventoryClasses().size()) - 2;

        step("writing state, scenario and outside-program data");
        const HostRoot host = HostRoot::load(root);
        writeAnalysisRecordSets(host, report.region);
        writeStateData(host, sources);
        writeScenarioData(
            host, sources,
            RegionDatabase(host.regionDatabasePath(report.region)).readString("GENERAL", "EorW"));
        writeRegionExtras(host, report.region, sources);
    } catch (...) {
        std::error_code ec;
        fs::remove_all(scratch, ec);
        throw;
    }
    fs::remove_all(scratch);
    return report;
}

} // namespace brevant::samplehost
