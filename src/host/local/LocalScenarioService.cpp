#include "host/local/LocalScenarioService.h"

#include "host/local/HostErrors.h"
#include "host/local/HostRoot.h"
#include "host/local/RegionDatabase.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/tabular/SqliteDatabase.h"

#include <limits>

namespace brevant::host::local {

using platform::tabular::SqliteDatabase;

namespace {
constexpr const char* kScenarioSchema = R"(
CREATE TABLE IF NOT EXISTS eqScenario (
    ScenarioId INTEGER PRIMARY KEY,
    Type TEXT NOT NULL,
    Name TEXT NOT NULL DEFAULT ''
);
)";
constexpr const char* kCarriedSchema = R"(
CREATE TABLE IF NOT EXISTS CarriedScenario (
    Type TEXT NOT NULL,
    Name TEXT NOT NULL DEFAULT ''
);
)";

SqliteDatabase openScenarios(const std::filesystem::path& root)
{
    const std::string path = HostRoot::load(root).scenarioFolder() + "scenarios.sqlite";
    SqliteDatabase db(path, SqliteDatabase::Mode::Create);
    db.execute(kScenarioSchema);
    return db;
}

struct ScenarioRecord {
    std::string type;
    std::string name;
};

ScenarioRecord recordOf(const std::filesystem::path& root, int16_t scenarioId)
{
    SqliteDatabase db = openScenarios(root);
    SqliteDatabase::Statement query(db, "SELECT Type, Name FROM eqScenario WHERE ScenarioId = ?1");
    query.bind(1, int64_t{scenarioId});
    if (!query.step()) {
        hostError(HostError::UnknownKey,
                  "scenario " + std::to_string(scenarioId) + " is not in " + db.path());
    }
    return {query.text(0), query.text(1)};
}
} // namespace

void LocalScenarioService::putScenario(const std::filesystem::path& root, int16_t scenarioId,
                                       const std::string& type, const std::string& name)
{
    SqliteDatabase db = openScenarios(root);
    SqliteDatabase::Statement put(
        db, "INSERT OR REPLACE INTO eqScenario (ScenarioId, Type, Name) VALUES (?1, ?2, ?3)");
    put.bind(1, int64_t{scenarioId}).bind(2, type).bind(3, name);
    put.step();
}

std::string LocalScenarioService::GetScenarioType(int16_t scenarioId)
{
    return recordOf(m_root, scenarioId).type;
}

std::string LocalScenarioService::GetScenarioName(int16_t scenarioId)
{
    return recordOf(m_root, scenarioId).name;
}

void LocalScenarioService::ExportScenarioRecord(const std::string& regionName, int16_t scenarioId)
{
    const ScenarioRecord record = recordOf(m_root, scenarioId);
    const HostRoot host = HostRoot::load(m_root);
    SqliteDatabase db(host.regionDatabasePath(host.regionNamed(regionName).name).string(),
                      SqliteDatabase::Mode::ReadWrite);
    db.execute(kCarriedSchema);
    db.inTransaction([&] {
        db.execute("DELETE FROM CarriedScenario");
        SqliteDatabase::Statement put(db, "INSERT INTO CarriedScenario (Type, Name) VALUES (?1, ?2)");
        put.bind(1, record.type).bind(2, record.name);
        put.step();
    });
}

int16_t LocalScenarioService::ImportScenarioRecord(const std::string& regionName)
{
    const HostRoot host = HostRoot::load(m_root);
    const std::string regionDatabase =
        host.regionDatabasePath(host.regionNamed(regionName).name).string();
    ScenarioRecord record;
    {
        SqliteDatabase region(regionDatabase, SqliteDatabase::Mode::ReadWrite);
        region.execute(kCarriedSchema);
        SqliteDatabase::Statement carried(region, "SELECT Type, Name FROM CarriedScenario");
        if (!carried.step()) {
            hostError(HostError::UnknownKey,
                      "region " + regionName + " carries no scenario (" + regionDatabase + ")");
        }
        record = {carried.text(0), carried.text(1)};
    }
    SqliteDatabase db = openScenarios(m_root);
    int64_t next = 0;
    db.inTransaction([&] {
        SqliteDatabase::Statement highest(db, "SELECT COALESCE(MAX(ScenarioId), 0) FROM eqScenario");
        highest.step();
        next = highest.int64(0) + 1;
        if (next > std::numeric_limits<int16_t>::max()) {
            hostError(platform::automation::ErrorNumber::Overflow,
                      "no scenario number is left in " + db.path());
        }
        SqliteDatabase::Statement put(
            db, "INSERT INTO eqScenario (ScenarioId, Type, Name) VALUES (?1, ?2, ?3)");
        put.bind(1, next).bind(2, record.type).bind(3, record.name);
        put.step();
    });
    return static_cast<int16_t>(next);
}

std::string LocalScenarioService::GetHurricaneScenarioName(const std::string& regionName)
{
    const HostRoot host = HostRoot::load(m_root);
    return RegionDatabase(host.regionDatabasePath(host.regionNamed(regionName).name))
        .readOptional("HURRICANE", "ScenarioName")
        .value_or("");
}

} // namespace brevant::host::local
