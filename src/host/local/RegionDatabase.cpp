#include "host/local/RegionDatabase.h"

#include "host/local/HostErrors.h"
#include "platform/automation/AutomationError.h"
#include "platform/automation/Variant.h"
#include "platform/tabular/SqliteDatabase.h"

#include <cerrno>
#include <cstdlib>

namespace brevant::host::local {

using platform::tabular::SqliteDatabase;

namespace {
constexpr const char* kSchema = R"(
CREATE TABLE IF NOT EXISTS Settings (
    Section TEXT NOT NULL COLLATE NOCASE,
    Key TEXT NOT NULL COLLATE NOCASE,
    Value TEXT,
    PRIMARY KEY (Section, Key)
);
)";
} // namespace

void RegionDatabase::create(const std::filesystem::path& path)
{
    std::filesystem::create_directories(path.parent_path());
    SqliteDatabase db(path.string(), SqliteDatabase::Mode::Create);
    db.execute(kSchema);
}

RegionDatabase::RegionDatabase(std::filesystem::path path) : m_path(std::move(path))
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(m_path, ec)) {
        hostError(HostError::MissingFile,
                  "the region database " + m_path.string() + " does not exist");
    }
}

std::string RegionDatabase::readString(const std::string& section, const std::string& key) const
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadOnly);
    SqliteDatabase::Statement query(db,
                                    "SELECT Value FROM Settings WHERE Section = ?1 AND Key = ?2");
    query.bind(1, section).bind(2, key);
    if (!query.step() || query.isNull(0)) {
        hostError(HostError::UnknownKey,
                  "setting " + section + "/" + key + " is not set in " + m_path.string());
    }
    return query.text(0);
}

int32_t RegionDatabase::readInt32(const std::string& section, const std::string& key) const
{
    const std::string text = readString(section, key);
    const platform::automation::Variant value(text);
    if (!value.isNumeric()) {
        throw platform::automation::AutomationError(
            platform::automation::ErrorNumber::TypeMismatch, kHostSource,
            "Type mismatch: setting " + section + "/" + key + " in " + m_path.string() + " is \"" +
                text + "\", not a whole number");
    }
    return value.toInt32();
}

void RegionDatabase::write(const std::string& section, const std::string& key,
                           const std::string& value)
{
    SqliteDatabase db(m_path.string(), SqliteDatabase::Mode::ReadWrite);
    SqliteDatabase::Statement upsert(
        db, "INSERT INTO Settings (Section, Key, Value) VALUES (?1, ?2, ?3) "
            "ON CONFLICT (Section, Key) DO UPDATE SET Value = excluded.Value");
    upsert.bind(1, section).bind(2, key).bind(3, value);
    upsert.step();
}

} // namespace brevant::host::local
