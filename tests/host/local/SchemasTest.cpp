#include "host/local/Schemas.h"

#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/Workspace.h"
#include "platform/tabular/SqliteDatabase.h"
#include "support/HostFixture.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace brevant::host::local {
namespace {

namespace geodatabase = platform::geodatabase;
using geodatabase::Field;
using geodatabase::FieldType;
using platform::geometry::ShapeType;

std::string lower(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

bool isNumeric(FieldType type)
{
    return type == FieldType::SmallInteger || type == FieldType::Integer ||
           type == FieldType::Single || type == FieldType::Double;
}

/// The attribute of a class by name; fails the test when it is missing.
const Field& field(const ClassSchema& schema, std::string_view name)
{
    const int index = schema.fieldIndex(name);
    static const Field missing{"<missing>", FieldType::Geometry, 0, {}};
    if (index < 0) {
        ADD_FAILURE() << schema.name << " has no field " << name;
        return missing;
    }
    return schema.fields.at(static_cast<std::size_t>(index - (schema.hasShape() ? 2 : 1)));
}

const ClassSchema& classIn(HostFolder folder, std::string_view file, std::string_view name)
{
    const DatabaseSchema* database = findDatabase(folder, file);
    if (!database) {
        throw std::runtime_error("no database " + std::string(file));
    }
    const ClassSchema* schema = findClass(*database, name);
    if (!schema) {
        throw std::runtime_error("no class " + std::string(name) + " in " + std::string(file));
    }
    return *schema;
}

bool sameFields(const ClassSchema& a, const ClassSchema& b)
{
    if (a.shape != b.shape || a.fields.size() != b.fields.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.fields.size(); ++i) {
        const Field& x = a.fields[i];
        const Field& y = b.fields[i];
        if (x.name != y.name || x.type != y.type || x.length != y.length) {
            return false;
        }
    }
    return true;
}

bool isRegionTable(const InventoryClass& entry)
{
    return lower(entry.database) == "regionbndry.mdb";
}

// --- The catalogue as a whole -------------------------------------------------------------

TEST(SchemaCatalogue, NamesAreUniqueAndASharedNameMeansOneSchema)
{
    std::set<std::pair<HostFolder, std::string>> files;
    std::map<std::string, const ClassSchema*> byName;
    for (const auto& database : hostDatabases()) {
        EXPECT_TRUE(files.emplace(database.folder, lower(database.fileName)).second)
            << database.fileName << " is listed twice";
        std::set<std::string> names;
        for (const auto& schema : database.classes) {
            EXPECT_TRUE(names.insert(lower(schema.name)).second)
                << schema.name << " twice in " << database.fileName;
            // findClass answers with the first; every other holder must agree with it.
            const auto [it, first] = byName.emplace(lower(schema.name), &schema);
            EXPECT_TRUE(first || sameFields(*it->second, schema))
                << schema.name << " in " << database.fileName << " differs from its namesake";
        }
    }
    for (const auto& [name, schema] : byName) {
        EXPECT_EQ(findClass(name), schema) << name;
    }
}

TEST(SchemaCatalogue, FieldsAreWellFormed)
{
    std::vector<const ClassSchema*> all{&floodViewClass()};
    for (const auto& database : hostDatabases()) {
        for (const auto& schema : database.classes) {
            all.push_back(&schema);
        }
    }
    for (const auto& map : userMaps()) {
        all.push_back(&map.map);
    }
    for (const ClassSchema* schema : all) {
        std::set<std::string> names;
        for (const auto& f : schema->fields) {
            const std::string where = f.name + " of " + schema->name;
            EXPECT_TRUE(names.insert(lower(f.name)).second) << where << " twice";
            // The storage adds these itself.
            EXPECT_NE(lower(f.name), "objectid") << where;
            EXPECT_NE(lower(f.name), "shape") << where;
            EXPECT_TRUE(f.type != FieldType::OID && f.type != FieldType::Geometry) << where;
            EXPECT_TRUE(f.type != FieldType::String || f.length > 0) << where << " has no length";
        }
    }
    for (const auto& f : floodViewClass().fields) {
        EXPECT_LE(f.name.size(), 10u) << f.name << ": dBASE cuts names after ten characters";
    }
}

TEST(SchemaCatalogue, LookupIgnoresCase)
{
    const ClassSchema* tracts = findClass("hztract");
    ASSERT_NE(tracts, nullptr);
    EXPECT_EQ(findClass("HzTRACT"), tracts);
    EXPECT_EQ(findClass("hztracts"), nullptr);
    EXPECT_EQ(tracts->fieldIndex("TRACT"), 2);
    EXPECT_EQ(tracts->fieldIndex("Tracts"), -1);
    const ClassSchema table{"t", ShapeType::Null, {{"a", FieldType::Integer, 0, {}}}};
    EXPECT_EQ(table.fieldIndex("A"), 1) << "a table has no shape field before its attributes";

    const DatabaseSchema* boundary = findDatabase(HostFolder::Region, "regionbndry.MDB");
    ASSERT_NE(boundary, nullptr);
    EXPECT_EQ(findDatabase(HostFolder::Scenario, "RegionBndry.mdb"), nullptr);
    EXPECT_NE(findClass(*boundary, "EQSRSOIL"), nullptr);
    EXPECT_EQ(findClass(*boundary, "eqEpicenter"), nullptr);
}

// --- Inventory ------------------------------------------------------------------------------

TEST(InventorySchema, EveryClassHasItsIdentifierAtIndexTwo)
{
    for (const auto& entry : inventoryClasses()) {
        SCOPED_TRACE(entry.name);
        const DatabaseSchema* database = findDatabase(HostFolder::Region, entry.database);
        ASSERT_NE(database, nullptr);
        const ClassSchema* schema = findClass(*database, entry.name);
        ASSERT_NE(schema, nullptr);
        EXPECT_EQ(schema->shape, entry.kind == 'P' ? ShapeType::Point : ShapeType::Polyline);
        if (isRegionTable(entry)) {
            continue; // eqTract and eqGrid, see RegionTablesCarryWhatIsRead
        }
        const Field& id = schema->fields.at(0);
        EXPECT_EQ(id.name, identifierFieldName(entry.name));
        EXPECT_EQ(schema->fieldIndex(id.name), 2);
        EXPECT_EQ(id.type, FieldType::String);
        EXPECT_EQ(id.length, 8);
        if (entry.kind == 'P') {
            EXPECT_EQ(field(*schema, "Tract").length, 11);
            EXPECT_EQ(field(*schema, "Latitude").type, FieldType::Double);
            EXPECT_EQ(field(*schema, "Longitude").type, FieldType::Double);
            for (const auto& site : siteConditionFields()) {
                EXPECT_EQ(field(*schema, site.name).type, site.type) << site.name;
            }
        } else {
            EXPECT_EQ(field(*schema, "CountyFips").length, 5);
        }

        const ClassSchema* hazard =
            findClass(*database, "Eq" + inventorySuffix(entry.name) + "hft");
        if (entry.kind == 'L' && entry.name != "hzLevees") {
            ASSERT_NE(hazard, nullptr) << "the hazard table lies beside its class";
            EXPECT_EQ(hazard->shape, ShapeType::Polyline);
            EXPECT_EQ(hazard->fieldIndex(id.name), 2);
            EXPECT_EQ(field(*hazard, "Tract").length, 11);
            for (const auto& site : siteConditionFields()) {
                EXPECT_GE(hazard->fieldIndex(site.name), 0) << site.name;
            }
        } else {
            EXPECT_EQ(hazard, nullptr);
        }
    }
}

TEST(InventorySchema, NewClassesFollowTheNamingRules)
{
    EXPECT_EQ(inventoryFields("hzBusStation", 'p').at(0).name, "BusStationId");
    EXPECT_EQ(hazardTableName("hzRailwaySegment"), "EqRailwaySegmenthft");
    const auto line = inventoryClassSchemas("hzFerrySegment", 'L');
    ASSERT_EQ(line.size(), 2u);
    EXPECT_EQ(line[1].name, "EqFerrySegmenthft");
    EXPECT_EQ(line[1].fieldIndex("FerrySegmentId"), 2);
    EXPECT_EQ(inventoryClassSchemas("HZLEVEES", 'l').size(), 1u) << "levees have no hazard table";
    EXPECT_EQ(inventoryClassSchemas("hzBusStation", 'P').size(), 1u);
    EXPECT_THROW(inventoryFields("hzBusStation", 'A'), platform::automation::PlatformError);
    EXPECT_THROW(inventoryFields("hz", 'P'), platform::automation::PlatformError);
}

// --- Data maps and the region tables --------------------------------------------------------

TEST(DataMapSchema, ClippedTargetsCarryTheValuesTheirMapsDeliver)
{
    struct Target {
        const char* code;
        const char* file;
        const char* name;
        const char* valueField;
        bool text;
    };
    const Target targets[] = {
        {"SOIL", "RegionBndry.mdb", "eqsrsoil", "Type", true},
        {"LIQF", "RegionBndry.mdb", "eqsrlqf", "Type", false},
        {"LAND", "RegionBndry.mdb", "eqsrlnd", "Type", false},
        {"WATR", "RegionBndry.mdb", "eqsrwdepth", "Type", false},
        {"DAMF", "Inundation.mdb", "srdamind", "type", true},
        {"TSUN", "Inundation.mdb", "srtsuind", "type", true},
        {"SEIC", "Inundation.mdb", "srseiind", "type", true},
        {"LEVF", "Inundation.mdb", "srlevind", "type", true},
    };
    for (const auto& t : targets) {
        SCOPED_TRACE(t.code);
        const ClassSchema& target = classIn(HostFolder::Region, t.file, t.name);
        EXPECT_EQ(target.shape, ShapeType::Polygon);
        const Field& value = field(target, t.valueField);
        EXPECT_EQ(value.name, t.valueField) << "names are kept exactly";
        EXPECT_TRUE(t.text ? value.type == FieldType::String : isNumeric(value.type));
        if (std::string(t.file) == "Inundation.mdb") {
            EXPECT_EQ(field(target, "Tract").length, 11) << "the intersection adds the tract";
        }
        // A failed clip re-creates the target from the template of the same name.
        EXPECT_TRUE(sameFields(classIn(HostFolder::System, t.file, t.name), target));

        const UserMapSchema* map = findUserMap(t.code);
        ASSERT_NE(map, nullptr);
        const Field& delivered = field(map->map, t.valueField);
        EXPECT_EQ(delivered.type == FieldType::String, t.text);
        EXPECT_LE(delivered.length, value.length) << "the target holds every value";
    }
    // Maps of the other codes are read where they lie, by their paramvalue.
    EXPECT_EQ(userMaps().size(), 19u);
    for (const auto& map : userMaps()) {
        if (map.map.fieldIndex("type") < 0) {
            EXPECT_TRUE(isNumeric(field(map.map, "paramvalue").type)) << map.code;
        }
    }
    EXPECT_EQ(findUserMap("soil"), nullptr) << "codes are compared exactly";
}

TEST(DataMapSchema, RegionTablesCarryWhatIsRead)
{
    const ClassSchema& usgs = classIn(HostFolder::Region, "USGS.mdb", "USGS");
    EXPECT_EQ(usgs.fields.size(), 4 * probabilisticReturnPeriods().size());
    for (const char* name : {"pga500", "pgv500", "sa03500", "sa10500"}) {
        EXPECT_EQ(field(usgs, name).type, FieldType::Double) << name;
    }
    const ClassSchema& tracts = classIn(HostFolder::Region, "RegionBndry.mdb", "eqTract");
    for (const char* name :
         {"Latitude", "Longitude", "stype", "lqfsuscat", "lndsuscat", "w_depth"}) {
        EXPECT_GE(tracts.fieldIndex(name), 0) << name;
    }
    const ClassSchema& grid = classIn(HostFolder::Region, "RegionBndry.mdb", "eqGrid");
    EXPECT_TRUE(isNumeric(field(grid, "EqGridId").type));
    EXPECT_TRUE(sameFields(classIn(HostFolder::System, "temp.mdb", "eqGrid"), grid))
        << "the work copy is transferred into the region's grid";
    // Imported lines take their county from region map 8.
    EXPECT_EQ(
        field(classIn(HostFolder::Region, "RegionBndry.mdb", "hzCounty"), "CountyFips").length, 5);
}

// --- Selection and scenarios ------------------------------------------------------------------

TEST(SelectionSchema, UnitCodeSitsAtLevelPlusTwo)
{
    struct Level {
        const ClassSchema& units;
        const char* code;
        int length;
    };
    const Level levels[] = {
        {classIn(HostFolder::State, "syboundary.mdb", "syState"), "StateFips", 2},
        {classIn(HostFolder::State, "syboundary.mdb", "syCounty"), "CountyFips", 5},
        {classIn(HostFolder::State, "syboundary.mdb", "sytract"), "Tract", 11},
        {classIn(HostFolder::System, "temp.mdb", "hzCensusBlock"), "CensusBlock", 15},
    };
    const ClassSchema& candidates = classIn(HostFolder::System, "temp.mdb", "RegionSelection");
    for (int level = 0; level < 4; ++level) {
        SCOPED_TRACE(level);
        const Level& l = levels[level];
        EXPECT_EQ(l.units.fieldIndex(l.code), level + 2);
        EXPECT_EQ(field(l.units, l.code).length, l.length);
        if (level > 0) {
            // Candidates are copied by field name, then read by field position.
            EXPECT_EQ(candidates.fieldIndex(l.code), level + 2);
            // The level's candidates are chosen by its parent's code.
            EXPECT_GE(l.units.fieldIndex(levels[level - 1].code), 0);
        }
    }
    EXPECT_TRUE(
        sameFields(classIn(HostFolder::State, "bndrygbs.mdb", "hzCensusBlock"), levels[3].units));
    EXPECT_TRUE(findDatabase(HostFolder::State, "bndrygbs.mdb")->perState);

    // Picked epicentres and faults are read at field position 2.
    EXPECT_EQ(
        classIn(HostFolder::Scenario, "SCENARIO.mdb", "eqEpicenter").fieldIndex("eqEpicenterId"),
        2);
    EXPECT_EQ(classIn(HostFolder::Scenario, "SCENARIO.mdb", "eqFault").fieldIndex("eqFaultId"), 2);
    for (const char* name : {"eqSrEastFault", "eqSrWestFault", "eqEastFault", "eqWestFault"}) {
        // "eqScenarioId = 5" compares a number.
        EXPECT_TRUE(isNumeric(
            field(classIn(HostFolder::Scenario, "SrScenario.mdb", name), "eqScenarioId").type))
            << name;
    }
}

// --- Server tables ----------------------------------------------------------------------------

bool hasColumn(const ServerTableSchema& table, std::string_view name)
{
    return std::any_of(table.columns.begin(), table.columns.end(),
                       [&](const auto& column) { return lower(column.first) == lower(name); });
}

TEST(ServerTableSchemaTest, LayersFindTheTablesTheyAreRelatedOrJoinedTo)
{
    // Layer class -> server tables it is related or joined to, on the name of its field 2.
    std::vector<std::pair<std::string, std::vector<std::string>>> layers{
        {"hztract", {"hztract", "Eqtract"}},
        {"eqTract", {"eqTract"}},
        {"eqGrid", {"eqGrid"}},
        {"eqAebm", {"EqAebm", "eqAebmRes"}},
    };
    for (const auto& entry : inventoryClasses()) {
        if (isRegionTable(entry) || entry.name == "eqAebm") {
            continue;
        }
        const std::string suffix = inventorySuffix(entry.name);
        layers.push_back({entry.name, {"hz" + suffix, "Eq" + suffix}});
        if (hasHazardTable(entry.name, entry.kind)) {
            layers.back().second.push_back(hazardTableName(entry.name));
        }
    }
    for (const auto& [layer, tables] : layers) {
        const ClassSchema* schema = findClass(layer);
        ASSERT_NE(schema, nullptr) << layer;
        const std::string key = schema->fields.at(0).name;
        for (const auto& name : tables) {
            const ServerTableSchema* table = findServerTable(name);
            ASSERT_NE(table, nullptr) << name << " of " << layer;
            EXPECT_TRUE(hasColumn(*table, key)) << name << " lacks " << key;
        }
    }
    EXPECT_EQ(findServerTable("hzAebm"), nullptr) << "eqAebm has no attribute table";
    EXPECT_TRUE(hasColumn(*findServerTable("eqTract"), "pga"));
}

TEST(ServerTableSchemaTest, NamedTablesCarryTheColumnsThatAreRead)
{
    const std::map<std::string, std::vector<std::string>> read{
        {"hztract", {"Tract", "CenLat", "CenLongit"}},
        {"flStudyCase", {"StudyCaseId", "StudyCasename"}},
        {"flFRGBSEcLossBySOccup", {"StudyCaseId", "ReturnPeriodId", "AnalysisOptId"}},
    };
    for (const auto& [name, columns] : read) {
        const ServerTableSchema* table = findServerTable(name);
        ASSERT_NE(table, nullptr) << name;
        EXPECT_EQ(table->name, name);
        for (const auto& column : columns) {
            EXPECT_TRUE(hasColumn(*table, column)) << name << "." << column;
        }
    }
    // RegionDatabase keeps these tables of its own in the same file.
    std::set<std::string> names{"settings", "usermaps", "inventoryclasses"};
    for (const auto& table : regionServerTables()) {
        EXPECT_TRUE(names.insert(lower(table.name)).second) << table.name;
        EXPECT_FALSE(table.key.empty()) << table.name;
        for (const auto& key : table.key) {
            EXPECT_TRUE(hasColumn(table, key)) << table.name << " key " << key;
        }
    }
}

// --- Built on the platform ----------------------------------------------------------------

class BuiltSchema : public ::testing::Test {
protected:
    test::TempDir m_dir;
};

TEST_F(BuiltSchema, EveryDatabaseReadsBackInCatalogueOrder)
{
    int number = 0;
    for (const auto& database : hostDatabases()) {
        SCOPED_TRACE(database.fileName);
        const auto path = m_dir.path() / (std::to_string(number++) + ".mdb");
        {
            auto workspace = geodatabase::Workspace::createGeoPackage(path);
            for (const auto& schema : database.classes) {
                ASSERT_TRUE(schema.hasShape());
                workspace.createFeatureClass(schema.name, geodatabase::Fields(schema.fields),
                                             schema.shape);
            }
        }
        const auto workspace = geodatabase::Workspace::open(path);
        for (const auto& schema : database.classes) {
            SCOPED_TRACE(schema.name);
            const auto stored = workspace.openFeatureClass(schema.name);
            EXPECT_EQ(stored->shapeType(), schema.shape);
            ASSERT_EQ(stored->fields().count(), static_cast<int>(schema.fields.size()) + 2);
            for (const auto& f : schema.fields) {
                const Field& read = stored->fields().field(schema.fieldIndex(f.name));
                EXPECT_EQ(read.name, f.name);
                EXPECT_EQ(read.type, f.type) << f.name;
            }
        }
    }
}

TEST_F(BuiltSchema, ServerTablesShowEveryColumnAsAnAttribute)
{
    const auto path = m_dir.path() / "region.sqlite";
    {
        using platform::tabular::SqliteDatabase;
        SqliteDatabase db(path.string(), SqliteDatabase::Mode::Create);
        for (const auto& table : regionServerTables()) {
            db.execute(createTableStatement(table));
        }
        db.execute("INSERT INTO flStudyCase (StudyCaseId, StudyCasename) VALUES (7, 'Levee')");
        EXPECT_THROW(
            db.execute("INSERT INTO flStudyCase (StudyCaseId, StudyCasename) VALUES (7, 'x')"),
            platform::automation::PlatformError)
            << "the key is unique";
    }
    const auto workspace = geodatabase::Workspace::open(path);
    for (const auto& table : regionServerTables()) {
        SCOPED_TRACE(table.name);
        const auto stored = workspace.openTable(table.name);
        for (const auto& [column, type] : table.columns) {
            // Index 0 is the table's object identifier, never a key of joins or copies.
            const int index = stored->findField(column);
            ASSERT_GE(index, 1) << column << " is not an attribute";
            const FieldType read = stored->fields().field(index).type;
            if (type == "TEXT") {
                EXPECT_EQ(read, FieldType::String) << column;
            } else if (type == "REAL") {
                EXPECT_EQ(read, FieldType::Double) << column;
            } else {
                EXPECT_EQ(type, "INTEGER") << column;
                EXPECT_TRUE(read == FieldType::Integer || read == FieldType::SmallInteger)
                    << column;
            }
        }
    }
    EXPECT_EQ(workspace.openTable("flStudyCase")->rowCount(), 1);
}

} // namespace
} // namespace brevant::host::local
