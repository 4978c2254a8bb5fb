#include "platform/tabular/Recordset.h"

#include "TabularFixture.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/tabular/TabularErrors.h"

namespace brevant::platform::tabular::test {
namespace {

using automation::Variant;
using automation::VariantType;
using automation::ErrorNumber::SqliteBase;
using LockType = Recordset::LockType;
using RecordStatus = Recordset::RecordStatus;

class RecordsetReading : public TabularFixture {};

TEST_F(RecordsetReading, FloodStudyCaseQueryListsCasesWithAnnualResults)
{
    auto connection = connect();
    auto rs = connection->open(
        std::string("Select A.StudyCaseId,A.StudyCasename from flFRGBSEcLossBySOccup B, "
                    "flStudyCase A ") +
        " Where A.StudyCaseId = B.StudyCaseId and B.ReturnPeriodId = " + "'" + "Annual" + "'" +
        " And  B.AnalysisOptId = 0 " +
        " and A.StudyCaseId = B.StudyCaseId   group by A.StudyCaseId,A.StudyCasename ");
    ASSERT_EQ(rs->recordCount(), 2);
    rs->moveFirst();
    std::vector<std::pair<Variant, std::string>> cases;
    for (int i = 0; i < rs->recordCount(); ++i) {
        cases.emplace_back(rs->value("StudyCaseId"), rs->value("StudyCasename").toString());
        rs->moveNext();
    }
    EXPECT_TRUE(rs->eof());
    EXPECT_EQ(cases,
              (std::vector<std::pair<Variant, std::string>>{{Variant(int32_t{3}), "Levee breach"},
                                                            {Variant(int32_t{7}), "River Crest"}}));
    rs->close();
    EXPECT_EQ(errorOf([&] { rs->recordCount(); }).number(), TabularError::ObjectClosed);
}

TEST_F(RecordsetReading, NoCurrentRecordAtTheEnds)
{
    auto connection = connect();
    auto none = connection->open("SELECT * FROM hztract WHERE Tract = 'none'");
    EXPECT_EQ(none->recordCount(), 0);
    EXPECT_TRUE(none->eof());
    EXPECT_TRUE(none->bof());
    // An empty result has no first row to move to.
    EXPECT_EQ(errorOf([&] { none->moveFirst(); }).number(), TabularError::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { none->value(0); }).number(), TabularError::NoCurrentRecord);
    EXPECT_EQ(none->fieldCount(), 5) << "fields are known without rows";

    auto tracts = connection->open("SELECT Tract FROM hztract ORDER BY Tract");
    tracts->moveLast();
    EXPECT_EQ(tracts->value(0), Variant("06001400200"));
    tracts->moveNext();
    EXPECT_TRUE(tracts->eof());
    EXPECT_EQ(errorOf([&] { tracts->value(0); }).number(), TabularError::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { tracts->moveNext(); }).number(), TabularError::NoCurrentRecord);
    tracts->movePrevious();
    tracts->movePrevious();
    EXPECT_EQ(tracts->value(0), Variant("06001400100"));
    tracts->movePrevious();
    EXPECT_TRUE(tracts->bof());
    EXPECT_EQ(errorOf([&] { tracts->movePrevious(); }).number(), TabularError::NoCurrentRecord);
}

TEST_F(RecordsetReading, FieldsByPositionAndByNameWithoutRegardToCase)
{
    auto rs = connect()->open("hztract");
    EXPECT_EQ(rs->fieldNames(),
              (std::vector<std::string>{"Tract", "CenLat", "CenLongit", "Population", "Surveyed"}));
    EXPECT_EQ(rs->fieldIndex("CENLONGIT"), 2);
    EXPECT_EQ(rs->value("cenlongit"), rs->value(2));
    EXPECT_EQ(rs->field(0).type, FieldType::Text);
    EXPECT_EQ(rs->field(0).declaredType, "CHAR(11)");
    EXPECT_FALSE(rs->fieldIndex("Latitude"));

    const auto byName = errorOf([&] { rs->value("Latitude"); });
    EXPECT_EQ(byName.number(), TabularError::FieldNotFound);
    EXPECT_TRUE(mentions(byName, "Latitude"));
    EXPECT_EQ(errorOf([&] { rs->field(5); }).number(), TabularError::FieldNotFound);
    EXPECT_EQ(errorOf([&] { rs->value(-1); }).number(), TabularError::FieldNotFound);

    EXPECT_EQ(connect()->open("[HzTract]")->recordCount(), 2) << "bracketed, any case";
}

TEST_F(RecordsetReading, ValuesBecomeAutomationVariants)
{
    auto connection = connect();
    connection->execute("INSERT INTO hztract VALUES ('06001400300', 37.8, -122.2, 5000000000, "
                        "'not surveyed')");
    auto rs = connection->open("SELECT *, CenLat > 37.85 AS North, NULL AS Blank "
                               "FROM hztract ORDER BY Tract");
    EXPECT_EQ(rs->value("Tract").type(), VariantType::String);
    EXPECT_EQ(rs->value("CenLat"), Variant(37.86));
    EXPECT_EQ(rs->value("Population"), Variant(int32_t{2937}));
    EXPECT_EQ(rs->value("Surveyed"), Variant(automation::Date::fromParts(2020, 4, 1)));
    EXPECT_EQ(rs->field(rs->fieldIndex("North").value()).type, FieldType::Integer)
        << "expressions take the type of their values";
    EXPECT_EQ(rs->field(rs->fieldIndex("Blank").value()).type, FieldType::Variant);
    rs->moveNext();
    EXPECT_TRUE(rs->value("Surveyed").isNull());
    EXPECT_TRUE(rs->value("blank").isNull());
    rs->moveNext();
    EXPECT_EQ(rs->value("Population"), Variant(5e9)) << "beyond 32 bits";
    EXPECT_EQ(rs->value("Surveyed"), Variant("not surveyed")) << "text that is no date stays";
}

TEST_F(RecordsetReading, TravelsInAVariant)
{
    auto rs = connect()->open("RegionUnits");
    const Variant held(rs);
    EXPECT_EQ(held.typeName(), "Recordset");
    EXPECT_EQ(held.objectAs<Recordset>(), rs);
}

class RecordsetEditing : public TabularFixture {};

TEST_F(RecordsetEditing, ReadOnlyRecordsetsRefuseChanges)
{
    auto rs = connect()->open("hztract");
    EXPECT_EQ(errorOf([&] { rs->setValue("CenLat", Variant(1.0)); }).number(),
              TabularError::NotUpdatable);
    EXPECT_EQ(errorOf([&] { rs->addNew(); }).number(), TabularError::NotUpdatable);
    EXPECT_EQ(rs->recordCount(), 2);
}

TEST_F(RecordsetEditing, UpdateWritesTheCurrentRecordAtOnce)
{
    auto rs = connect()->open("flStudyCase", LockType::Optimistic);
    rs->addNew();
    rs->setValue("studycasename", Variant("Dam failure"));
    EXPECT_EQ(rs->status(), RecordStatus::New);
    rs->update();
    EXPECT_EQ(rs->status(), RecordStatus::Unmodified);
    EXPECT_EQ(rs->value("StudyCaseId"), Variant(int32_t{12})) << "the generated key is read back";
    EXPECT_EQ(stored("SELECT StudyCasename FROM flStudyCase WHERE StudyCaseId = 12"),
              Variant("Dam failure"));

    // Moving away completes an edit as update() would.
    rs->moveFirst();
    rs->setValue(1, Variant("Levee breach, north"));
    rs->moveNext();
    EXPECT_EQ(stored("SELECT StudyCasename FROM flStudyCase WHERE StudyCaseId = 3"),
              Variant("Levee breach, north"));
}

TEST_F(RecordsetEditing, ValuesTakeTheFieldType)
{
    auto rs = connect()->open("SELECT Tract, Population FROM hztract", LockType::Optimistic);
    rs->setValue("Population", Variant("3001"));
    EXPECT_EQ(rs->value("Population"), Variant(int32_t{3001}));
    rs->setValue("Population", Variant(2.5));
    EXPECT_EQ(rs->value("Population"), Variant(int32_t{2})) << "half to even";

    const auto error = errorOf([&] { rs->setValue("Population", Variant("many")); });
    EXPECT_EQ(error.number(), automation::ErrorNumber::TypeMismatch);
    EXPECT_TRUE(mentions(error, "Population"));
    rs->update();
    EXPECT_EQ(stored("SELECT Population FROM hztract WHERE Tract = '06001400100'"),
              Variant(int32_t{2}));
}

TEST_F(RecordsetEditing, FailedWriteKeepsTheEditUntilCancelled)
{
    auto rs = connect()->open("hztract", LockType::Optimistic);
    rs->setValue("Population", Variant());
    const auto error = errorOf([&] { rs->update(); });
    EXPECT_EQ(error.number(), SqliteBase + 19) << "NOT NULL constraint";
    EXPECT_TRUE(mentions(error, "hztract"));
    EXPECT_TRUE(rs->value("Population").isNull());
    rs->cancelUpdate();
    EXPECT_EQ(rs->value("Population"), Variant(int32_t{2937}));

    rs->moveLast();
    rs->addNew();
    rs->setValue("Tract", Variant("06001400900"));
    rs->cancelUpdate();
    EXPECT_EQ(rs->recordCount(), 2);
    EXPECT_EQ(rs->value("Tract"), Variant("06001400200")) << "back where it was";
    rs->moveFirst();
    EXPECT_EQ(stored("SELECT count(*) FROM hztract"), Variant(int32_t{2}));
}

class RecordsetBatch : public TabularFixture {};

TEST_F(RecordsetBatch, DetachedChangesAreWrittenLaterThroughAnotherConnection)
{
    auto units = connect()->open("RegionUnits", LockType::BatchOptimistic);
    units->setActiveConnection(nullptr);
    units->moveFirst();
    units->setValue("Flag", Variant(true));
    // New records without update(): adding the next one and writing the batch complete them.
    for (const char* county : {"06003", "06005"}) {
        units->addNew();
        units->setValue(0, Variant(county));
        units->setValue(1, Variant("CA"));
    }
    EXPECT_EQ(stored("SELECT count(*) FROM RegionUnits"), Variant(int32_t{1}));
    EXPECT_EQ(stored("SELECT Flag FROM RegionUnits"), Variant(int32_t{0}));

    units->setMarshalOptions(Recordset::MarshalOptions::ModifiedOnly);
    auto sent = units->marshal();
    EXPECT_EQ(sent->recordCount(), 3);
    EXPECT_FALSE(sent->activeConnection());
    sent->updateBatch(*connect());
    EXPECT_EQ(stored("SELECT group_concat(Code || Parent || ifnull(Flag, 'Null'), ' ') "
                     "FROM RegionUnits"),
              Variant("06001CA-1 06003CANull 06005CANull"));

    // Written records are plain records again: a second change updates, not inserts.
    sent->moveLast();
    EXPECT_EQ(sent->status(), RecordStatus::Unmodified);
    sent->setValue("Flag", Variant(int32_t{1}));
    sent->updateBatch(*connect());
    EXPECT_EQ(stored("SELECT count(*) FROM RegionUnits"), Variant(int32_t{3}));
    EXPECT_EQ(stored("SELECT Flag FROM RegionUnits WHERE Code = '06005'"), Variant(int32_t{1}));
}

TEST_F(RecordsetBatch, FailureHalfWayKeepsTheRecordsWrittenBeforeIt)
{
    auto tracts = connect()->open("hztract", LockType::BatchOptimistic);
    for (const char* tract : {"06001400300", "06001400100", "06001400400"}) {
        tracts->addNew();
        tracts->setValue("Tract", Variant(tract));
    }
    const auto error = errorOf([&] { tracts->updateBatch(); });
    EXPECT_EQ(error.number(), SqliteBase + 19) << "the duplicate key";
    EXPECT_TRUE(mentions(error, "record 4"));
    EXPECT_TRUE(mentions(error, "hztract"));
    EXPECT_TRUE(mentions(error, "INSERT INTO")) << error.what();
    EXPECT_EQ(stored("SELECT group_concat(Tract, ' ') FROM hztract WHERE Tract > '06001400200'"),
              Variant("06001400300"));

    tracts->moveFirst();
    tracts->moveNext();
    tracts->moveNext();
    EXPECT_EQ(tracts->status(), RecordStatus::Unmodified);
    tracts->moveNext();
    EXPECT_EQ(tracts->status(), RecordStatus::New);
    tracts->setValue("Tract", Variant("06001400500"));
    tracts->updateBatch();
    EXPECT_EQ(stored("SELECT count(*) FROM hztract"), Variant(int32_t{5}));
}

TEST_F(RecordsetBatch, RecordsAreFoundByTheKeyTheyWereReadWith)
{
    auto tracts = connect()->open("SELECT Tract, CenLat FROM hztract ORDER BY Tract",
                                  LockType::BatchOptimistic);
    tracts->setValue("Tract", Variant("06001400101"));
    tracts->updateBatch();
    tracts->setValue("CenLat", Variant(37.9));
    tracts->updateBatch();
    EXPECT_EQ(stored("SELECT CenLat FROM hztract WHERE Tract = '06001400101'"), Variant(37.9));
    EXPECT_EQ(stored("SELECT count(*) FROM hztract"), Variant(int32_t{2}));

    // A record deleted since it was read cannot be written back.
    connect()->execute("DELETE FROM hztract WHERE Tract = '06001400200'");
    tracts->moveNext();
    tracts->setValue("CenLat", Variant(1.0));
    const auto error = errorOf([&] { tracts->updateBatch(); });
    EXPECT_EQ(error.number(), TabularError::RowNotFound);
    EXPECT_TRUE(mentions(error, "Tract = 06001400200"));
    EXPECT_EQ(tracts->status(), RecordStatus::Modified);
}

} // namespace
} // namespace brevant::platform::tabular::test
