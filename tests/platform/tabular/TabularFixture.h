#pragma once

#include "platform/automation/PlatformError.h"
#include "platform/tabular/Connection.h"
#include "platform/tabular/SqliteDatabase.h"

#include "support/Raised.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace brevant::platform::tabular::test {

/// A region database in a temporary folder: flood study cases and their losses, census tracts
/// keyed by tract code, and a unit table without a primary key.
class TabularFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "tabularXXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_dir = pattern;
        SqliteDatabase db(databasePath(), SqliteDatabase::Mode::Create);
        db.execute(R"(
            CREATE TABLE flStudyCase (StudyCaseId INTEGER PRIMARY KEY, StudyCasename TEXT);
            CREATE TABLE flFRGBSEcLossBySOccup (StudyCaseId INTEGER, ReturnPeriodId VARCHAR(10),
                                                AnalysisOptId SMALLINT, Loss DOUBLE);
            INSERT INTO flStudyCase VALUES (3, 'Levee breach'), (7, 'River Crest'),
                                           (9, 'Other period'), (11, 'Other option');
            INSERT INTO flFRGBSEcLossBySOccup VALUES
                (3, 'Annual', 0, 10.5), (3, 'Annual', 0, 2.0), (7, 'Annual', 0, 1.0),
                (9, '100', 0, 4.0), (11, 'Annual', 1, 4.0);
            CREATE TABLE hztract (Tract CHAR(11) PRIMARY KEY, CenLat REAL, CenLongit REAL,
                                  Population INTEGER NOT NULL DEFAULT 0, Surveyed DATE);
            INSERT INTO hztract VALUES ('06001400100', 37.86, -122.23, 2937, '2020-04-01'),
                                       ('06001400200', 37.84, -122.25, 1974, NULL);
            CREATE TABLE RegionUnits (Code TEXT, Parent TEXT, Flag INTEGER);
            INSERT INTO RegionUnits VALUES ('06001', 'CA', 0);
            CREATE VIEW AnnualLoss AS SELECT StudyCaseId, sum(Loss) AS Total
                FROM flFRGBSEcLossBySOccup WHERE ReturnPeriodId = 'Annual' GROUP BY StudyCaseId;
        )");
    }

    void TearDown() override { std::filesystem::remove_all(m_dir); }

    std::string databasePath() const { return (m_dir / "region.sqlite").string(); }
    std::string connectionString() const { return "sqlite:" + databasePath(); }
    std::shared_ptr<Connection> connect() const { return Connection::connect(connectionString()); }

    /// One value read through a separate connection, to see what was really stored.
    automation::Variant stored(const std::string& sql) const
    {
        auto rs = connect()->open(sql);
        return rs->eof() ? automation::Variant() : rs->value(0);
    }

    std::filesystem::path m_dir;
};

using brevant::test::errorOf;
using brevant::test::mentions;

} // namespace brevant::platform::tabular::test
