#include "platform/tabular/Connection.h"

#include "TabularFixture.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/tabular/TabularErrors.h"

#include <filesystem>

namespace brevant::platform::tabular::test {
namespace {

using automation::Variant;
using automation::ErrorNumber::SqliteBase;

class TabularConnection : public TabularFixture {};

TEST_F(TabularConnection, ConnectionStringChoosesTheDriver)
{
    auto connection = Connection::connect(connectionString(), "", "");
    EXPECT_EQ(connection->databaseName(), databasePath());
    EXPECT_EQ(connection->className(), "Connection");

    EXPECT_NO_THROW(Connection::connect("SQLite:" + databasePath())) << "schemes ignore case";

    const auto server = errorOf([] { Connection::connect("mssql://regions/Testville"); });
    EXPECT_EQ(server.number(), TabularError::UnknownProvider);
    EXPECT_TRUE(mentions(server, "mssql://regions/Testville"));
    EXPECT_TRUE(mentions(server, "\"mssql\""));

    // A drive letter is not a scheme, and a bare path has none.
    const auto bare = errorOf([] { Connection::connect("C:\\regions\\region.sqlite"); });
    EXPECT_EQ(bare.number(), TabularError::UnknownProvider);
    EXPECT_TRUE(mentions(bare, "C:\\regions\\region.sqlite"));

    EXPECT_EQ(errorOf([] { Connection::connect("sqlite:"); }).number(),
              automation::ErrorNumber::InvalidArgument);
}

TEST_F(TabularConnection, MissingDatabaseIsAnErrorNamingItAndIsNotCreated)
{
    const auto missing = m_dir / "Elsewhere" / "region.sqlite";
    const auto sibling = m_dir / "absent.sqlite";
    for (const auto& path : {missing, sibling}) {
        const auto error = errorOf([&] { Connection::connect("sqlite:" + path.string()); });
        EXPECT_EQ(error.number() & ~0xff, SqliteBase);
        EXPECT_TRUE(mentions(error, path.string())) << error.what();
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST_F(TabularConnection, ExecuteCountsRowsAndKeepsStatementsBeforeAFailure)
{
    auto connection = connect();
    EXPECT_EQ(connection->execute("UPDATE hztract SET Population = Population + 1"), 2);
    EXPECT_EQ(connection->execute("SELECT * FROM hztract"), 0);
    EXPECT_EQ(connection->execute("DELETE FROM RegionUnits; "
                                  "INSERT INTO RegionUnits VALUES ('06003', 'CA', 0), "
                                  "('06005', 'CA', 1)"),
              3);

    const std::string bad = "INSERT INTO RegionUnits VALUES ('06007', 'CA', 0); "
                            "INSERT INTO NoSuchTable VALUES (1)";
    const auto error = errorOf([&] { connection->execute(bad); });
    EXPECT_EQ(error.number(), SqliteBase + 1);
    EXPECT_TRUE(mentions(error, "NoSuchTable"));
    EXPECT_TRUE(mentions(error, databasePath()));
    EXPECT_EQ(stored("SELECT count(*) FROM RegionUnits"), Variant(int32_t{3}));
}

TEST_F(TabularConnection, BadSqlNamesTheStatementAndTheDatabase)
{
    auto connection = connect();
    const std::string sql = "Select Tract, from hztract";
    const auto error = errorOf([&] { connection->open(sql); });
    EXPECT_EQ(error.number(), SqliteBase + 1);
    EXPECT_TRUE(mentions(error, sql));
    EXPECT_TRUE(mentions(error, databasePath()));

    const auto missing = errorOf([&] { connection->open("hzTracts"); });
    EXPECT_EQ(missing.number(), TabularError::TableNotFound);
    EXPECT_TRUE(mentions(missing, "hzTracts"));
}

TEST_F(TabularConnection, TableMetadataDescribesServerTables)
{
    auto connection = connect();
    EXPECT_FALSE(connection->tableInfo("hzBridge"));

    const auto tract = connection->tableInfo("HZTRACT");
    ASSERT_TRUE(tract);
    EXPECT_EQ(tract->name, "hztract") << "the database's spelling";
    EXPECT_EQ(tract->kind, TableInfo::Kind::Table);
    ASSERT_EQ(tract->columns.size(), 5u);
    EXPECT_EQ(tract->columns[0].name, "Tract");
    EXPECT_EQ(tract->columns[0].declaredType, "CHAR(11)");
    EXPECT_EQ(tract->columns[0].type, FieldType::Text);
    EXPECT_EQ(tract->columns[1].type, FieldType::Double);
    EXPECT_EQ(tract->columns[3].type, FieldType::Integer);
    EXPECT_TRUE(tract->columns[3].notNull);
    EXPECT_EQ(tract->columns[4].type, FieldType::Date);
    EXPECT_EQ(tract->primaryKey, std::vector<std::string>{"Tract"});
    EXPECT_FALSE(tract->columns[0].rowIdAlias) << "a text key is not the row identifier";
    ASSERT_NE(tract->column("cenlat"), nullptr);

    const auto cases = connection->tableInfo("flStudyCase");
    EXPECT_TRUE(cases->column("StudyCaseId")->rowIdAlias);

    const auto units = connection->tableInfo("regionunits");
    EXPECT_TRUE(units->primaryKey.empty());
    EXPECT_FALSE(units->rowIdColumn.empty());

    EXPECT_EQ(connection->tableInfo("AnnualLoss")->kind, TableInfo::Kind::View);
    EXPECT_EQ(connection->tableNames(),
              (std::vector<std::string>{"flStudyCase", "flFRGBSEcLossBySOccup", "hztract",
                                        "RegionUnits", "AnnualLoss"}));
}

TEST_F(TabularConnection, EditableRecordsetsNeedOneKeyedTable)
{
    auto connection = connect();
    const auto batch = Recordset::LockType::BatchOptimistic;
    const std::vector<std::string> refused = {
        "SELECT A.StudyCaseId, B.Loss FROM flStudyCase A, flFRGBSEcLossBySOccup B "
        "WHERE A.StudyCaseId = B.StudyCaseId",
        "SELECT Tract, CenLat * 2 FROM hztract",
        "SELECT CenLat FROM hztract",
        "SELECT Code FROM RegionUnits",
        "AnnualLoss",
    };
    for (const auto& source : refused) {
        const auto error = errorOf([&] { connection->open(source, batch); });
        EXPECT_EQ(error.number(), TabularError::NotUpdatable) << source;
        EXPECT_TRUE(mentions(error, source)) << error.what();
    }
    EXPECT_EQ(
        connection->open("SELECT CenLat, tract FROM hztract WHERE CenLat > 0", batch)->tableName(),
        "hztract");
    EXPECT_EQ(connection->open("RegionUnits", batch)->fieldCount(), 3)
        << "the row identifier keys it but is not a field";
    EXPECT_EQ(connection->open("AnnualLoss")->recordCount(), 3) << "views open read-only";
}

TEST_F(TabularConnection, ClosedConnectionRefusesWork)
{
    auto connection = connect();
    auto units = connection->open("RegionUnits", Recordset::LockType::BatchOptimistic);
    connection->close();
    EXPECT_FALSE(connection->isOpen());
    EXPECT_EQ(errorOf([&] { connection->execute("DELETE FROM RegionUnits"); }).number(),
              TabularError::ObjectClosed);

    // Records already read stay readable; writing them back needs an open connection.
    units->moveFirst();
    EXPECT_EQ(units->value("Code"), Variant("06001"));
    units->setValue("Flag", Variant(int32_t{1}));
    EXPECT_EQ(errorOf([&] { units->updateBatch(); }).number(), TabularError::ObjectClosed);
    units->updateBatch(*connect());
    EXPECT_EQ(stored("SELECT Flag FROM RegionUnits"), Variant(int32_t{1}));
}

} // namespace
} // namespace brevant::platform::tabular::test
