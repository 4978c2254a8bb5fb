#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/Cursor.h"
#include "platform/geodatabase/FeatureClass.h"
#include "platform/geodatabase/WhereClause.h"
#include "platform/geodatabase/Workspace.h"
#include "support/DialectSamples.h"
#include "support/HostFixture.h"

#include <gtest/gtest.h>

namespace brevant::platform::geodatabase {
namespace {

using automation::Variant;
using test::DialectFieldKind;

FieldType typeOf(DialectFieldKind kind)
{
    switch (kind) {
    case DialectFieldKind::Integer:
        return FieldType::Integer;
    case DialectFieldKind::Double:
        return FieldType::Double;
    case DialectFieldKind::Text:
        break;
    }
    return FieldType::String;
}

// Every clause the library writes selects, on each storage, exactly the rows that the
// in-process evaluation selects on the values read back.
class DialectOnStorage : public ::testing::TestWithParam<Workspace::Kind> {
protected:
    void SetUp() override
    {
        const bool shapefile = GetParam() == Workspace::Kind::ShapefileFolder;
        Workspace workspace = shapefile ? Workspace::openShapefileFolder(m_dir.path() / "shapes")
                                        : Workspace::createGeoPackage(m_dir.path() / "samples.mdb");
        Fields fields;
        for (const auto& field : test::kDialectFields) {
            if (field.name != "OBJECTID") {
                fields.append({field.name, typeOf(field.kind), 20, {}});
            }
        }
        m_table = workspace.createFeatureClass("samples", fields, geometry::ShapeType::Point);
        InsertCursor insert = m_table->insert();
        for (const auto& values : test::kDialectRows) {
            Row row = m_table->createRow();
            for (std::size_t i = 1; i < values.size(); ++i) {
                row.setValue(static_cast<int>(i) + 1, values[i]);
            }
            row.setShape(geometry::Geometry::point({values[0].toDouble(), 0.0}));
            insert.insertRow(row);
        }
    }

    /// The clause with names as this storage keeps them: a shapefile cuts them to ten
    /// characters and calls its identifier FID.
    std::string stored(std::string clause) const
    {
        if (GetParam() != Workspace::Kind::ShapefileFolder) {
            return clause;
        }
        const std::vector<std::pair<std::string, std::string>> names{
            {"OBJECTID", "FID"},          {"CensusBlock", "CensusBloc"},
            {"eqEpicenterId", "eqEpicente"}, {"eqScenarioId", "eqScenario"},
            {"huscenarioName", "huscenario"}};
        for (const auto& [from, to] : names) {
            if (const auto at = clause.find(from); at != std::string::npos) {
                clause.replace(at, from.size(), to);
            }
        }
        return clause;
    }

    test::TempDir m_dir;
    std::shared_ptr<FeatureClass> m_table;
};

TEST_P(DialectOnStorage, EveryClauseSelectsWhatEvaluationSelects)
{
    for (const auto& written : test::kDialectClauses) {
        const std::string clause = stored(written);
        SCOPED_TRACE(clause);
        const WhereClause parsed = WhereClause::parse(clause);
        std::vector<int64_t> expected;
        {
            Cursor all = m_table->search();
            Row row;
            while (all.next(row)) {
                const bool selected = parsed.matches([&row](std::string_view name) {
                    return row.value(row.fields().findField(name));
                });
                if (selected) {
                    expected.push_back(row.oid());
                }
            }
        }
        std::vector<int64_t> found;
        Cursor cursor = m_table->search(QueryFilter::where(clause));
        Row row;
        while (cursor.next(row)) {
            found.push_back(row.oid());
        }
        EXPECT_EQ(found, expected);
        // dBASE text has no null, so a shapefile holds no row that "Is Null" could select.
        const bool blankIsNull = GetParam() == Workspace::Kind::ShapefileFolder &&
                                 clause.find("Is Null") != std::string::npos;
        EXPECT_NE(expected.empty(), !blankIsNull);
        EXPECT_LT(expected.size(), test::kDialectRows.size());
        EXPECT_EQ(m_table->rowCount(QueryFilter::where(clause)),
                  static_cast<int64_t>(expected.size()));
    }
    for (const auto& clause : test::kDialectFailingClauses) {
        EXPECT_THROW(m_table->rowCount(QueryFilter::where(clause)), automation::PlatformError)
            << clause;
    }
}

INSTANTIATE_TEST_SUITE_P(GeoPackageAndShapefile, DialectOnStorage,
                         ::testing::Values(Workspace::Kind::GeoPackage,
                                           Workspace::Kind::ShapefileFolder),
                         [](const auto& kind) {
                             return kind.param == Workspace::Kind::GeoPackage ? "GeoPackage"
                                                                              : "Shapefile";
                         });

} // namespace
} // namespace brevant::platform::geodatabase
