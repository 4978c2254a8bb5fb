#include "host/local/Schemas.h"

#include "host/local/HostErrors.h"
#include "platform/geodatabase/SqlQuote.h"

#include <algorithm>
#include <cctype>

namespace brevant::host::local {

using platform::geodatabase::Field;
using platform::geodatabase::FieldType;
using platform::geometry::ShapeType;

namespace {

std::string lowerCase(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

bool sameName(std::string_view a, std::string_view b)
{
    return a.size() == b.size() && lowerCase(a) == lowerCase(b);
}

Field text(std::string name, int length)
{
    return Field{std::move(name), FieldType::String, length, {}};
}

Field smallInteger(std::string name)
{
    return Field{std::move(name), FieldType::SmallInteger, 0, {}};
}

Field integer(std::string name)
{
    return Field{std::move(name), FieldType::Integer, 0, {}};
}

Field real(std::string name)
{
    return Field{std::move(name), FieldType::Double, 0, {}};
}

std::vector<Field> joined(std::vector<Field> head, const std::vector<Field>& tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

// Unit codes: each level's code begins with its parent's.
Field stateFips()
{
    return text("StateFips", 2);
}

Field countyFips()
{
    return text("CountyFips", 5);
}

Field tract()
{
    return text("Tract", 11);
}

Field censusBlock()
{
    return text("CensusBlock", 15);
}

// The map dialogs read a unit's code at field index level + 2, and the candidate layer
// RegionSelection receives copies of every level's units, matched by field name: so every
// unit class lists the codes in level order, with the level's own code last.
std::vector<Field> unitCodes(int level)
{
    std::vector<Field> codes{stateFips(), countyFips(), tract(), censusBlock()};
    codes.resize(static_cast<std::size_t>(level) + 1);
    return codes;
}

char upperKind(std::string_view name, char kind)
{
    const char upper = static_cast<char>(std::toupper(static_cast<unsigned char>(kind)));
    if (upper != 'P' && upper != 'L') {
        hostError(HostError::UnknownKey, "inventory class " + std::string(name) + ": kind '" +
                                             std::string(1, kind) + "' is neither P nor L");
    }
    return upper;
}

std::vector<ClassSchema> regionBoundaryClasses()
{
    return {
        {"hzboundary", ShapeType::Polygon, {text("RegionName", 40)}},
        {"hztract", ShapeType::Polygon, {tract()}},
        {"hzCounty", ShapeType::Polygon, {stateFips(), countyFips(), text("CountyName", 40)}},
        // Wider than one letter: an invalid class such as "BC" cut to one letter would read
        // as the valid "B" and escape the repair.
        {"eqsrsoil", ShapeType::Polygon, {text("Type", 5)}},
        {"eqsrlqf", ShapeType::Polygon, {smallInteger("Type")}},
        {"eqsrlnd", ShapeType::Polygon, {smallInteger("Type")}},
        {"eqsrwdepth", ShapeType::Polygon, {real("Type")}},
        {"eqTract", ShapeType::Point,
         joined({tract(), real("Longitude"), real("Latitude")}, siteConditionFields())},
        {"eqGrid", ShapeType::Point, joined({integer("EqGridId")}, siteConditionFields())},
    };
}

std::vector<ClassSchema> inundationClasses()
{
    // The intersection with the tracts carries the map's type and the tract.
    std::vector<ClassSchema> classes;
    for (const char* name : {"srdamind", "srtsuind", "srseiind", "srlevind"}) {
        classes.push_back({name, ShapeType::Polygon, {text("type", 20), tract()}});
    }
    return classes;
}

std::vector<ClassSchema> scenarioFaultClasses()
{
    std::vector<ClassSchema> classes;
    for (const char* name : {"eqSrEastFault", "eqSrWestFault", "eqEastFault", "eqWestFault"}) {
        classes.push_back({name, ShapeType::Polyline, {integer("eqScenarioId")}});
    }
    return classes;
}

std::vector<Field> probabilisticMapFields()
{
    std::vector<Field> fields;
    for (int period : probabilisticReturnPeriods()) {
        const std::string suffix = std::to_string(period);
        for (const char* quantity : {"pga", "pgv", "sa03", "sa10"}) {
            fields.push_back(real(quantity + suffix));
        }
    }
    return fields;
}

std::vector<ClassSchema> pipelineClasses()
{
    std::vector<ClassSchema> classes;
    for (int index = 0; index < 3; ++index) {
        classes.push_back({"hzPipeline" + std::to_string(index),
                           ShapeType::Polyline,
                           {text("PipelineId", 8), countyFips()}});
    }
    return classes;
}

bool isRegionTable(const InventoryClass& entry)
{
    return sameName(entry.database, "RegionBndry.mdb");
}

std::vector<DatabaseSchema> buildHostDatabases()
{
    using F = HostFolder;
    std::vector<DatabaseSchema> databases{
        {F::State,
         "syboundary.mdb",
         {{"syState", ShapeType::Polygon,
           joined(unitCodes(0), {text("StateName", 40), text("StateAbbr", 2)})},
          {"syCounty", ShapeType::Polygon, joined(unitCodes(1), {text("CountyName", 40)})},
          {"sytract", ShapeType::Polygon, unitCodes(2)}}},
        {F::State,
         "bndrygbs.mdb",
         {{"hzCensusBlock", ShapeType::Polygon, unitCodes(3)}},
         DatabaseSchema::Storage::GeoPackage,
         true},
        {F::System,
         "temp.mdb",
         {{"RegionSelection", ShapeType::Polygon, unitCodes(3)},
          {"hzCensusBlock", ShapeType::Polygon, unitCodes(3)},
          {"HazardSelection", ShapeType::Point, {}},
          {"eqGrid", ShapeType::Point, joined({integer("EqGridId")}, siteConditionFields())}}},
        // Templates: a failed clip re-creates its target from the class of the same name here.
        {F::System, "RegionBndry.mdb", regionBoundaryClasses()},
        {F::System, "Inundation.mdb", inundationClasses()},
        {F::System,
         "HU/WindField/huStormTrack.mdb",
         {{"DeterministicStormTracks", ShapeType::Polyline, {text("huscenarioName", 50)}}}},
        {F::Scenario,
         "SCENARIO.mdb",
         {{"eqEpicenter", ShapeType::Point, {text("eqEpicenterId", 10), real("Magnitude")}},
          {"eqFault", ShapeType::Polyline, {text("eqFaultId", 10), text("FaultName", 60)}}}},
        {F::Scenario, "SrScenario.mdb", scenarioFaultClasses()},
        {F::Region, "RegionBndry.mdb", regionBoundaryClasses()},
        {F::Region, "Inundation.mdb", inundationClasses()},
        {F::Region, "USGS.mdb", {{"USGS", ShapeType::Polygon, probabilisticMapFields()}}},
        {F::Region, "3rdParty.mdb", {{"MarPlot", ShapeType::Polygon, {text("Name", 60)}}}},
    };
    for (const char* file : {"trn.mdb", "util.mdb", "ef.mdb", "hplf.mdb", "uds.mdb"}) {
        DatabaseSchema inventory{F::Region, file, {}};
        for (const auto& entry : inventoryClasses()) {
            if (entry.database == file) {
                for (auto& schema : inventoryClassSchemas(entry.name, entry.kind)) {
                    inventory.classes.push_back(std::move(schema));
                }
            }
        }
        databases.push_back(std::move(inventory));
    }
    databases.push_back({F::Region, "Pipeline.mdb", pipelineClasses()});
    return databases;
}

std::string sqliteType(FieldType type)
{
    switch (type) {
    case FieldType::SmallInteger:
    case FieldType::Integer:
    case FieldType::OID:
        return "INTEGER";
    case FieldType::Single:
    case FieldType::Double:
        return "REAL";
    default:
        return "TEXT";
    }
}

ServerTableSchema serverTable(std::string name, const std::vector<Field>& fields,
                              std::vector<std::string> key)
{
    ServerTableSchema table{std::move(name), {}, std::move(key)};
    for (const auto& field : fields) {
        table.columns.emplace_back(field.name, sqliteType(field.type));
    }
    return table;
}

std::vector<ServerTableSchema> buildRegionServerTables()
{
    std::vector<ServerTableSchema> tables{
        serverTable("hztract", {tract(), real("CenLat"), real("CenLongit")}, {"Tract"}),
        // Also "Eq" + "tract", the second relate of the tract layer.
        serverTable("eqTract",
                    joined(joined({tract()}, siteConditionFields()), scenarioResultFields()),
                    {"Tract"}),
        serverTable(
            "eqGrid",
            joined(joined({integer("EqGridId")}, siteConditionFields()), scenarioResultFields()),
            {"EqGridId"}),
    };
    for (const auto& entry : inventoryClasses()) {
        if (!isRegionTable(entry)) {
            for (auto& table : inventoryServerTables(entry.name, entry.kind)) {
                tables.push_back(std::move(table));
            }
        }
    }
    tables.push_back(serverTable("flStudyCase", {integer("StudyCaseId"), text("StudyCasename", 60)},
                                 {"StudyCaseId"}));
    tables.push_back(
        serverTable("flFRGBSEcLossBySOccup",
                    {integer("StudyCaseId"), text("ReturnPeriodId", 10), integer("AnalysisOptId"),
                     censusBlock(), text("SOccup", 5), real("TotalLoss")},
                    {"StudyCaseId", "ReturnPeriodId", "AnalysisOptId", "CensusBlock", "SOccup"}));
    tables.push_back(
        serverTable("hzQueryTool",
                    {integer("LayerIndex"), text("LayerName", 255), integer("LayerKind"),
                     text("TableName", 255), text("DatabaseName", 255), text("JoinTableName", 255),
                     text("JoinDatabaseName", 255)},
                    {"LayerIndex"}));
    return tables;
}

ClassSchema userMap(std::string name, Field value)
{
    return {std::move(name), ShapeType::Polygon, {std::move(value)}};
}

} // namespace

int ClassSchema::fieldIndex(std::string_view fieldName) const
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (sameName(fields[i].name, fieldName)) {
            return static_cast<int>(i) + (hasShape() ? 2 : 1);
        }
    }
    return -1;
}

const std::vector<DatabaseSchema>& hostDatabases()
{
    static const std::vector<DatabaseSchema> databases = buildHostDatabases();
    return databases;
}

const DatabaseSchema* findDatabase(HostFolder folder, std::string_view fileName)
{
    for (const auto& database : hostDatabases()) {
        if (database.folder == folder && sameName(database.fileName, fileName)) {
            return &database;
        }
    }
    return nullptr;
}

const ClassSchema* findClass(const DatabaseSchema& database, std::string_view name)
{
    for (const auto& schema : database.classes) {
        if (sameName(schema.name, name)) {
            return &schema;
        }
    }
    return nullptr;
}

const ClassSchema* findClass(std::string_view name)
{
    for (const auto& database : hostDatabases()) {
        if (const ClassSchema* schema = findClass(database, name)) {
            return schema;
        }
    }
    return nullptr;
}

const std::vector<Field>& siteConditionFields()
{
    static const std::vector<Field> fields{text("stype", 1), smallInteger("lqfsuscat"),
                                           smallInteger("lndsuscat"), real("w_depth")};
    return fields;
}

const std::vector<Field>& scenarioResultFields()
{
    static const std::vector<Field> fields{
        real("pgv"),         real("pga"),           real("sa03"),           real("sa10"),
        real("LqfSettlPGD"), real("LqfSprPGD"),     real("LqfProb"),        real("LndPGD"),
        real("LndProb"),     real("SufFltRuptPGD"), real("SurfFltRuptProb")};
    return fields;
}

const std::vector<int>& probabilisticReturnPeriods()
{
    static const std::vector<int> periods{100, 250, 500, 750, 1000, 1500, 2000, 2500};
    return periods;
}

const std::vector<InventoryClass>& inventoryClasses()
{
    static const std::vector<InventoryClass> classes{
        {"hzHighwayBridge", "trn.mdb", 'P'},
        {"hzHighwaySegment", "trn.mdb", 'L'},
        {"hzRailwaySegment", "trn.mdb", 'L'},
        {"hzLightRailSegment", "trn.mdb", 'L'},
        {"hzPotableWaterFlty", "util.mdb", 'P'},
        {"hzElectricPowerFlty", "util.mdb", 'P'},
        {"hzSchool", "ef.mdb", 'P'},
        {"hzFireStation", "ef.mdb", 'P'},
        {"hzPoliceStation", "ef.mdb", 'P'},
        {"hzCareFlty", "ef.mdb", 'P'},
        {"hzDams", "hplf.mdb", 'P'},
        {"hzLevees", "hplf.mdb", 'L'},
        {"hzHazmat", "hplf.mdb", 'P'},
        {"hzUserDefinedFlty", "uds.mdb", 'P'},
        {"eqAebm", "uds.mdb", 'P'},
        {"eqTract", "RegionBndry.mdb", 'P'},
        {"eqGrid", "RegionBndry.mdb", 'P'},
    };
    return classes;
}

std::string inventorySuffix(std::string_view name)
{
    if (name.size() <= 2) {
        hostError(HostError::UnknownKey, "\"" + std::string(name) +
                                             "\" is no inventory class name: it needs a "
                                             "two-letter prefix and a name after it");
    }
    return std::string(name.substr(2));
}

std::string identifierPrefix(std::string_view name)
{
    std::string prefix = inventorySuffix(name).substr(0, 2);
    std::transform(prefix.begin(), prefix.end(), prefix.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return prefix;
}

std::string identifierFieldName(std::string_view name)
{
    return inventorySuffix(name) + "Id";
}

std::string hazardTableName(std::string_view name)
{
    return "Eq" + inventorySuffix(name) + "hft";
}

bool hasHazardTable(std::string_view name, char kind)
{
    return upperKind(name, kind) == 'L' && !sameName(name, "hzLevees");
}

std::vector<Field> inventoryFields(std::string_view name, char kind)
{
    // The identifier is the third field (after OBJECTID and Shape) of every inventory class.
    std::vector<Field> fields{text(identifierFieldName(name), 8), text("Name", 40)};
    if (upperKind(name, kind) == 'P') {
        fields.push_back(tract());
        fields.push_back(real("Latitude"));
        fields.push_back(real("Longitude"));
        return joined(std::move(fields), siteConditionFields());
    }
    fields.push_back(countyFips());
    return fields;
}

std::vector<Field> hazardTableFields(std::string_view name)
{
    return joined({text(identifierFieldName(name), 8), tract()}, siteConditionFields());
}

std::vector<ClassSchema> inventoryClassSchemas(std::string_view name, char kind)
{
    const ShapeType shape = upperKind(name, kind) == 'P' ? ShapeType::Point : ShapeType::Polyline;
    std::vector<ClassSchema> schemas{{std::string(name), shape, inventoryFields(name, kind)}};
    if (hasHazardTable(name, kind)) {
        schemas.push_back({hazardTableName(name), ShapeType::Polyline, hazardTableFields(name)});
    }
    return schemas;
}

std::vector<ServerTableSchema> inventoryServerTables(std::string_view name, char kind)
{
    const std::string suffix = inventorySuffix(name);
    const std::string id = identifierFieldName(name);
    const bool point = upperKind(name, kind) == 'P';
    std::vector<ServerTableSchema> tables;

    // The attribute table mirrors the class without its site conditions, which the analysis
    // table carries.
    std::vector<Field> attributes;
    for (const auto& field : inventoryFields(name, kind)) {
        const bool site = std::any_of(siteConditionFields().begin(), siteConditionFields().end(),
                                      [&](const Field& s) { return s.name == field.name; });
        if (!site) {
            attributes.push_back(field);
        }
    }
    const bool aebm = sameName(name, "eqAebm");
    if (!aebm) {
        tables.push_back(serverTable("hz" + suffix, attributes, {id}));
    }
    std::vector<Field> analysis{text(id, 8)};
    if (point) {
        analysis = joined(std::move(analysis), siteConditionFields());
    }
    tables.push_back(serverTable("Eq" + suffix, joined(analysis, scenarioResultFields()), {id}));
    if (hasHazardTable(name, kind)) {
        tables.push_back(serverTable(hazardTableName(name), hazardTableFields(name), {id}));
    }
    if (aebm) {
        // Its results are drawn from eqAebmRes on the class eqAebm itself.
        tables.push_back(
            serverTable("eqAebmRes", joined({text(id, 8)}, scenarioResultFields()), {id}));
    }
    return tables;
}

const std::vector<ServerTableSchema>& regionServerTables()
{
    static const std::vector<ServerTableSchema> tables = buildRegionServerTables();
    return tables;
}

const ServerTableSchema* findServerTable(std::string_view name)
{
    for (const auto& table : regionServerTables()) {
        if (sameName(table.name, name)) {
            return &table;
        }
    }
    return nullptr;
}

std::string createTableStatement(const ServerTableSchema& table)
{
    using platform::geodatabase::sqlQuoted;
    std::string sql = "CREATE TABLE " + sqlQuoted(table.name, '"') + " (";
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
        sql += (i ? ", " : "") + sqlQuoted(table.columns[i].first, '"') + " " +
               table.columns[i].second;
    }
    // A UNIQUE constraint, not a primary key: a lone INTEGER PRIMARY KEY becomes the row
    // identifier, which reads back as the table's object identifier instead of an attribute.
    if (!table.key.empty()) {
        sql += ", UNIQUE (";
        for (std::size_t i = 0; i < table.key.size(); ++i) {
            sql += (i ? ", " : "") + sqlQuoted(table.key[i], '"');
        }
        sql += ")";
    }
    return sql + ")";
}

const std::vector<UserMapSchema>& userMaps()
{
    static const std::vector<UserMapSchema> maps{
        {"SOIL", userMap("SoilMap", text("Type", 5))},
        {"LIQF", userMap("LiquefactionMap", smallInteger("Type"))},
        {"LAND", userMap("LandslideMap", smallInteger("Type"))},
        {"WATR", userMap("WaterDepthMap", real("Type"))},
        {"DAMF", userMap("DamFailureMap", text("type", 20))},
        {"TSUN", userMap("TsunamiMap", text("type", 20))},
        {"SEIC", userMap("SeicheMap", text("type", 20))},
        {"LEVF", userMap("LeveeFailureMap", text("type", 20))},
        {"PGAM", userMap("PgaMap", real("paramvalue"))},
        {"PGVM", userMap("PgvMap", real("paramvalue"))},
        {"SA03", userMap("Sa03Map", real("paramvalue"))},
        {"SA10", userMap("Sa10Map", real("paramvalue"))},
        {"STGD", userMap("SettlementPgdMap", real("paramvalue"))},
        {"LSGD", userMap("LateralSpreadPgdMap", real("paramvalue"))},
        {"LFPR", userMap("LiquefactionProbMap", real("paramvalue"))},
        {"LDGD", userMap("LandslidePgdMap", real("paramvalue"))},
        {"LDPR", userMap("LandslideProbMap", real("paramvalue"))},
        {"SRGD", userMap("RupturePgdMap", real("paramvalue"))},
        {"SRPR", userMap("RuptureProbMap", real("paramvalue"))},
    };
    return maps;
}

const UserMapSchema* findUserMap(std::string_view code)
{
    for (const auto& map : userMaps()) {
        if (map.code == code) {
            return &map;
        }
    }
    return nullptr;
}

const ClassSchema& floodViewClass()
{
    static const ClassSchema schema{"FloodView", ShapeType::Polygon, {real("Depth")}};
    return schema;
}

} // namespace brevant::host::local
