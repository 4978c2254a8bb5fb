#include "host/local/RegionBuilder.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "host/local/SchemaWriter.h"
#include "host/local/Schemas.h"
#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geometry/PreparedGeometry.h"
#include "platform/tabular/SqliteDatabase.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>

namespace brevant::host::local {

namespace fs = std::filesystem;
using platform::automation::Variant;
using platform::geodatabase::Cursor;
using platform::geodatabase::FeatureClass;
using platform::geodatabase::InsertCursor;
using platform::geodatabase::Row;
using platform::geodatabase::Workspace;
using platform::geometry::Geometry;
using platform::geometry::Point;
using platform::geometry::ShapeType;

namespace {

constexpr std::size_t kTractWidth = 11;
constexpr std::size_t kCountyWidth = 5;
// The country is split into an east and a west half for the scenario faults.
constexpr double kEastWestMeridian = -100.0;

struct Unit {
    std::string code;
    std::string name;
    Geometry shape;
    Point inside;
};

void report(const std::function<void(const std::string&)>& progress, const std::string& step)
{
    if (progress) {
        progress(step);
    }
}

void checkName(const HostRoot& host, const std::string& name)
{
    const bool allowed = !name.empty() && name.front() != '.' &&
                         std::all_of(name.begin(), name.end(), [](unsigned char c) {
                             return std::isalnum(c) || c == ' ' || c == '_' || c == '-' || c == '.';
                         });
    if (!allowed) {
        hostError(HostError::InvalidInput,
                  "\"" + name +
                      "\" cannot name a region: use letters, digits, spaces, '_', '-' "
                      "and '.', not first");
    }
    for (const auto& region : host.regions()) {
        if (platform::automation::equalsIgnoreCase(region.name, name)) {
            hostError(HostError::InvalidInput, "the host already has a region " + region.name);
        }
    }
    std::error_code ec;
    if (fs::exists(fs::path(host.regionsFolder()) / name, ec)) {
        hostError(HostError::InvalidInput, "the folder " +
                                               (fs::path(host.regionsFolder()) / name).string() +
                                               " already exists");
    }
}

std::shared_ptr<FeatureClass> openPolygons(const VectorSource& source, const std::string& role)
{
    auto table = openVectorSource(source);
    if (table->shapeType() != ShapeType::Polygon) {
        hostError(HostError::InvalidInput,
                  "the " + role + " " + source.describe() + " must hold polygons");
    }
    return table;
}

Geometry readBoundary(const VectorSource& source, int64_t& repaired, int64_t& dropped)
{
    auto table = openPolygons(source, "boundary");
    ShapeImporter import(table->spatialReference(), ShapeType::Polygon);
    std::vector<Geometry> parts;
    Cursor cursor = table->search();
    Row row;
    while (cursor.next(row)) {
        if (Geometry shape = import(row.shape()); !shape.isNull()) {
            parts.push_back(std::move(shape));
        }
    }
    repaired += import.repaired();
    dropped += import.dropped();
    const Geometry boundary = Geometry::unionAll(parts).asShapeOf(ShapeType::Polygon);
    if (boundary.isNull() || boundary.isEmpty() || boundary.area() <= 0.0) {
        hostError(HostError::InvalidInput,
                  "the boundary " + source.describe() + " holds no usable polygon");
    }
    return boundary;
}

/// Reads coded units (tracts or counties), merging the parts of one code.
std::vector<Unit> readUnits(const VectorSource& source, const std::string& role,
                            const std::string& codeField,
                            std::initializer_list<std::string_view> candidates, std::size_t width,
                            int64_t& repaired, int64_t& dropped)
{
    auto table = openPolygons(source, role);
    const int codeIndex = requireField(*table, source, codeField, candidates, role + " code");
    const int nameIndex = table->findField("NAME");
    ShapeImporter import(table->spatialReference(), ShapeType::Polygon);
    std::map<std::string, Unit> units;
    std::map<std::string, std::vector<Geometry>> parts;
    Cursor cursor = table->search();
    Row row;
    while (cursor.next(row)) {
        const Variant& value = row.value(codeIndex);
        const auto code = normaliseCode(value, width);
        if (!code) {
            hostError(HostError::InvalidInput,
                      "the " + role + " code \"" + value.toString() + "\" of feature " +
                          std::to_string(row.oid()) + " in field " +
                          table->fields().field(codeIndex).name + " of " + source.describe() +
                          " is not a " + std::to_string(width) + "-digit code");
        }
        Geometry shape = import(row.shape());
        if (shape.isNull()) {
            continue;
        }
        parts[*code].push_back(std::move(shape));
        Unit& unit = units[*code];
        unit.code = *code;
        if (nameIndex >= 0 && unit.name.empty() && !row.value(nameIndex).isNull()) {
            unit.name = row.value(nameIndex).toString();
        }
    }
    repaired += import.repaired();
    dropped += import.dropped();
    std::vector<Unit> result;
    for (auto& [code, unit] : units) {
        auto& shapes = parts[code];
        unit.shape = shapes.size() == 1 ? shapes.front()
                                        : Geometry::unionAll(shapes).asShapeOf(ShapeType::Polygon);
        unit.inside = unit.shape.interiorPoint();
        result.push_back(std::move(unit));
    }
    return result;
}

std::vector<Unit> countiesFromTracts(const std::vector<Unit>& tracts)
{
    std::map<std::string, std::vector<Geometry>> byCounty;
    for (const auto& tract : tracts) {
        byCounty[tract.code.substr(0, kCountyWidth)].push_back(tract.shape);
    }
    std::vector<Unit> counties;
    for (const auto& [code, shapes] : byCounty) {
        Unit county;
        county.code = code;
        county.shape = Geometry::unionAll(shapes).asShapeOf(ShapeType::Polygon);
        county.inside = county.shape.interiorPoint();
        counties.push_back(std::move(county));
    }
    return counties;
}

void insertUnits(FeatureClass& table, const std::vector<Unit>& units,
                 const std::function<NamedValues(const Unit&)>& valuesOf, bool asPoints)
{
    InsertCursor insert = table.insert();
    for (const auto& unit : units) {
        Row row = table.createRow();
        setNamedValues(row, valuesOf(unit));
        row.setShape(asPoints ? Geometry::point(unit.inside) : unit.shape);
        insert.insertRow(row);
    }
    insert.flush();
}

const DatabaseSchema& regionDatabase(std::string_view fileName)
{
    const DatabaseSchema* schema = findDatabase(HostFolder::Region, fileName);
    if (!schema) {
        hostError(HostError::UnknownKey,
                  std::string("the host has no schema of ") + std::string(fileName));
    }
    return *schema;
}

/// Names of the classes and server tables that `inventory add` creates: a region starts
/// without them, so that every inventory class is made, catalogued and loaded one way.
bool isInventoryData(std::string_view name)
{
    for (const auto& entry : inventoryClasses()) {
        if (findClass(regionDatabase("RegionBndry.mdb"), entry.name)) {
            continue;
        }
        for (const auto& schema : inventoryClassSchemas(entry.name, entry.kind)) {
            if (platform::automation::equalsIgnoreCase(schema.name, name)) {
                return true;
            }
        }
        for (const auto& table : inventoryServerTables(entry.name, entry.kind)) {
            if (platform::automation::equalsIgnoreCase(table.name, name)) {
                return true;
            }
        }
    }
    return false;
}

/// Writes the region into `folder`, which does not exist yet.
void writeRegion(const fs::path& folder, const std::string& finalFolder, const std::string& name,
                 int32_t number, const RegionRequest& request, const Geometry& boundary,
                 const std::vector<Unit>& tracts, const std::vector<Unit>& counties,
                 const std::function<void(const std::string&)>& progress)
{
    fs::create_directories(folder);
    report(progress, "creating the region's databases");
    for (DatabaseSchema schema : hostDatabases()) {
        if (schema.folder == HostFolder::Region) {
            std::erase_if(schema.classes,
                          [](const ClassSchema& c) { return isInventoryData(c.name); });
            createDatabase(schema, folder / schema.fileName);
        }
    }

    report(progress, "writing boundary, tracts and counties");
    Workspace bounds = Workspace::open(folder / regionDatabase("RegionBndry.mdb").fileName);
    {
        auto table = bounds.openFeatureClass("hzboundary");
        Unit region{name, name, boundary, boundary.interiorPoint()};
        insertUnits(
            *table, {region},
            [&](const Unit&) {
                return NamedValues{{"RegionName", Variant(name)},
                                   {"Name", Variant(name)},
                                   {"RegionID", Variant(number)}};
            },
            false);
    }
    const auto tractValues = [](const Unit& tract) {
        return NamedValues{{"Tract", Variant(tract.code)},
                           {"CountyFips", Variant(tract.code.substr(0, kCountyWidth))},
                           {"CenLat", Variant(tract.inside.y)},
                           {"CenLongit", Variant(tract.inside.x)},
                           {"Latitude", Variant(tract.inside.y)},
                           {"Longitude", Variant(tract.inside.x)}};
    };
    insertUnits(*bounds.openFeatureClass("hztract"), tracts, tractValues, false);
    insertUnits(*bounds.openFeatureClass("eqTract"), tracts, tractValues, true);
    insertUnits(
        *bounds.openFeatureClass("hzCounty"), counties,
        [](const Unit& county) {
            return NamedValues{{"CountyFips", Variant(county.code)},
                               {"CountyName", Variant(county.name)},
                               {"Name", Variant(county.name)},
                               {"StateFips", Variant(county.code.substr(0, 2))}};
        },
        false);

    report(progress, "writing the tabular database");
    const fs::path tabular = folder / "region.sqlite";
    RegionDatabase::create(tabular);
    {
        platform::tabular::SqliteDatabase db(tabular.string(),
                                             platform::tabular::SqliteDatabase::Mode::ReadWrite);
        platform::tabular::SqliteDatabase::Transaction transaction(db);
        std::vector<ServerTableSchema> tables = regionServerTables();
        std::erase_if(tables, [](const ServerTableSchema& t) { return isInventoryData(t.name); });
        createServerTables(db, tables);
        platform::tabular::SqliteDatabase::Statement insert(
            db, "INSERT INTO hztract (Tract, CenLat, CenLongit) VALUES (?1, ?2, ?3)");
        for (const auto& tract : tracts) {
            insert.reset();
            insert.bind(1, tract.code).bind(2, tract.inside.y).bind(3, tract.inside.x);
            insert.step();
        }
        transaction.commit();
    }
    RegionDatabase settings(tabular);
    settings.write("General", "AggLevel", std::to_string(request.aggLevel));
    settings.write("General", "CurrentRegionID", std::to_string(number));
    settings.write("GENERAL", "EorW", boundary.interiorPoint().x < kEastWestMeridian ? "W" : "E");
    settings.write("PESH", "ScenarioID", "0");
    // No flood-view output yet; its file dialog opens in the region folder.
    settings.write("General", "FLOODVIEWFILE", "NONE_");
    settings.write("General", "FLDVIEWPATH", finalFolder);
    for (const auto& entry : inventoryClasses()) {
        // The region's own tables are catalogued from the start; inventory arrives with
        // `inventory add`.
        if (findClass(regionDatabase("RegionBndry.mdb"), entry.name)) {
            settings.putInventoryClass(
                {entry.name, entry.database, std::string(1, entry.kind), ""});
        }
    }
}

} // namespace

std::optional<std::string> normaliseCode(const Variant& value, std::size_t width)
{
    if (value.isNull() || value.isEmpty()) {
        return std::nullopt;
    }
    std::string text;
    if (value.isNumeric()) {
        const double number = value.toDouble();
        if (number < 0 || number != std::floor(number) || number >= std::pow(10.0, width)) {
            return std::nullopt;
        }
        text = std::to_string(static_cast<long long>(number));
        text.insert(0, width - std::min(width, text.size()), '0');
    } else {
        text = value.toString();
        const auto first = text.find_first_not_of(' ');
        const auto last = text.find_last_not_of(' ');
        text = first == std::string::npos ? "" : text.substr(first, last - first + 1);
    }
    if (text.size() != width ||
        !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); })) {
        return std::nullopt;
    }
    return text;
}

RegionReport createRegion(const fs::path& root, const RegionRequest& request,
                          const std::function<void(const std::string&)>& progress)
{
    HostRoot host = HostRoot::load(root);
    checkName(host, request.name);

    RegionReport result;
    result.name = request.name;
    report(progress, "reading the boundary");
    const Geometry boundary = readBoundary(request.boundary, result.repaired, result.dropped);
    const platform::geometry::PreparedGeometry inside(boundary);

    report(progress, "reading the tracts");
    std::vector<Unit> tracts;
    for (auto& tract : readUnits(request.tracts, "tracts", request.tractField,
                                 {"Tract", "GEOID", "GEOID10", "GEOID20"}, kTractWidth,
                                 result.repaired, result.dropped)) {
        if (inside.covers(Geometry::point(tract.inside))) {
            tracts.push_back(std::move(tract));
        } else {
            ++result.tractsOutside;
        }
    }
    if (tracts.empty()) {
        hostError(HostError::InvalidInput, "no tract of " + request.tracts.describe() +
                                               " lies inside the boundary " +
                                               request.boundary.describe());
    }

    std::vector<Unit> counties;
    if (request.counties) {
        report(progress, "reading the counties");
        for (auto& county : readUnits(*request.counties, "counties", request.countyField,
                                      {"CountyFips", "GEOID", "FIPS", "id"}, kCountyWidth,
                                      result.repaired, result.dropped)) {
            const bool hasTracts = std::any_of(tracts.begin(), tracts.end(), [&](const Unit& t) {
                return t.code.compare(0, kCountyWidth, county.code) == 0;
            });
            if (hasTracts) {
                counties.push_back(std::move(county));
            }
        }
        if (counties.empty()) {
            hostError(HostError::InvalidInput,
                      "no county of " + request.counties->describe() +
                          " has a code that begins the region's tract codes");
        }
    } else {
        counties = countiesFromTracts(tracts);
    }

    int32_t number = 1;
    for (const auto& region : host.regions()) {
        number = std::max(number, region.number + 1);
    }
    const fs::path regions(host.regionsFolder());
    const fs::path staging = regions / ("." + request.name + ".partial");
    const fs::path folder = regions / request.name;
    fs::remove_all(staging);
    try {
        writeRegion(staging, host.regionFolder(request.name), request.name, number, request,
                    boundary, tracts, counties, progress);
        fs::rename(staging, folder);
    } catch (...) {
        std::error_code ec;
        fs::remove_all(staging, ec);
        throw;
    }
    host.putRegion({request.name, number, {true, true, true}});
    result.current = request.makeCurrent || host.regions().size() == 1;
    if (result.current) {
        host.setCurrentRegion(request.name);
    }
    host.save();

    result.number = number;
    result.folder = folder;
    result.tracts = static_cast<int64_t>(tracts.size());
    result.counties = static_cast<int64_t>(counties.size());
    return result;
}

} // namespace brevant::host::local
