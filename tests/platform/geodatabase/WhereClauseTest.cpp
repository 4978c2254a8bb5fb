#include "platform/geodatabase/WhereClause.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/PlatformError.h"
#include "support/DialectSamples.h"

#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>

namespace brevant::platform::geodatabase {
namespace {

using automation::PlatformError;
using automation::Variant;
using test::DialectField;
using test::DialectFieldKind;
using Rows = std::vector<std::vector<Variant>>;
using RowIds = std::vector<int>;

/// The rows of a table in an in-memory SQLite database, numbered from 1, and the same rows in
/// memory: SQLite is the oracle the in-process evaluation must agree with.
class SampleTable {
public:
    SampleTable(std::vector<DialectField> fields, Rows rows)
        : m_fields(std::move(fields)), m_rows(std::move(rows))
    {
        sqlite3* db = nullptr;
        sqlite3_open(":memory:", &db);
        m_db.reset(db);
        std::string create = "CREATE TABLE t (";
        std::string insert = "INSERT INTO t (rowid";
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            const char* type = m_fields[i].kind == DialectFieldKind::Text      ? "TEXT"
                               : m_fields[i].kind == DialectFieldKind::Integer ? "INTEGER"
                                                                               : "REAL";
            create += (i ? ", " : "") + quoted(m_fields[i].name) + " " + type;
            insert += ", " + quoted(m_fields[i].name);
        }
        execute(create + ")");
        insert += ") VALUES (?";
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            insert += ", ?";
        }
        insert += ")";
        for (std::size_t r = 0; r < m_rows.size(); ++r) {
            sqlite3_stmt* statement = nullptr;
            sqlite3_prepare_v2(m_db.get(), insert.c_str(), -1, &statement, nullptr);
            sqlite3_bind_int(statement, 1, static_cast<int>(r + 1));
            for (std::size_t c = 0; c < m_fields.size(); ++c) {
                bind(statement, static_cast<int>(c + 2), m_rows[r][c]);
            }
            EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(m_db.get());
            sqlite3_finalize(statement);
        }
    }

    WhereClause::FieldResolver resolver() const
    {
        return [this](std::string_view name) -> std::optional<std::string> {
            for (const auto& field : m_fields) {
                if (automation::equalsIgnoreCase(field.name, name)) {
                    return field.name;
                }
            }
            return std::nullopt;
        };
    }

    RowIds selectedBySqlite(const WhereClause& clause) const
    {
        const std::string sql =
            "SELECT rowid FROM t WHERE " + clause.toSqlite(resolver()) + " ORDER BY rowid";
        sqlite3_stmt* statement = nullptr;
        RowIds ids;
        if (sqlite3_prepare_v2(m_db.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            ADD_FAILURE() << sql << ": " << sqlite3_errmsg(m_db.get());
            return ids;
        }
        while (sqlite3_step(statement) == SQLITE_ROW) {
            ids.push_back(sqlite3_column_int(statement, 0));
        }
        sqlite3_finalize(statement);
        return ids;
    }

    RowIds selectedInProcess(const WhereClause& clause) const
    {
        RowIds ids;
        for (std::size_t r = 0; r < m_rows.size(); ++r) {
            const bool selected = clause.matches([&](std::string_view name) {
                for (std::size_t c = 0; c < m_fields.size(); ++c) {
                    if (automation::equalsIgnoreCase(m_fields[c].name, name)) {
                        return m_rows[r][c];
                    }
                }
                ADD_FAILURE() << "matches asked for unknown field " << name;
                return Variant();
            });
            if (selected) {
                ids.push_back(static_cast<int>(r + 1));
            }
        }
        return ids;
    }

    /// The rows both ways select, after checking that they agree.
    RowIds select(const std::string& text) const
    {
        const WhereClause clause = WhereClause::parse(text);
        const RowIds bySqlite = selectedBySqlite(clause);
        EXPECT_EQ(selectedInProcess(clause), bySqlite)
            << text << "\n  as SQLite: " << clause.toSqlite(resolver());
        return bySqlite;
    }

    std::size_t rowCount() const { return m_rows.size(); }

private:
    struct Closer {
        void operator()(sqlite3* db) const { sqlite3_close(db); }
    };

    static std::string quoted(const std::string& name) { return "\"" + name + "\""; }

    void execute(const std::string& sql)
    {
        ASSERT_EQ(sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sql << ": " << sqlite3_errmsg(m_db.get());
    }

    static void bind(sqlite3_stmt* statement, int index, const Variant& value)
    {
        switch (value.type()) {
        case automation::VariantType::Int16:
        case automation::VariantType::Int32:
            sqlite3_bind_int(statement, index, value.toInt32());
            break;
        case automation::VariantType::Double:
            sqlite3_bind_double(statement, index, value.toDouble());
            break;
        case automation::VariantType::String: {
            const std::string text = value.toString();
            sqlite3_bind_text(statement, index, text.c_str(), static_cast<int>(text.size()),
                              SQLITE_TRANSIENT);
            break;
        }
        default:
            sqlite3_bind_null(statement, index);
        }
    }

    std::vector<DialectField> m_fields;
    Rows m_rows;
    std::unique_ptr<sqlite3, Closer> m_db;
};

const SampleTable& dialectTable()
{
    static const SampleTable table(test::kDialectFields, test::kDialectRows);
    return table;
}

/// Texts, numbers and numeric texts side by side, with nulls, mixed case and odd spacing.
const SampleTable& mixedTable()
{
    const Variant null = Variant::null();
    static const SampleTable table(
        {{"Name", DialectFieldKind::Text},
         {"Code", DialectFieldKind::Text},
         {"Count", DialectFieldKind::Integer},
         {"Depth", DialectFieldKind::Double}},
        {
            {"Alpha", "10", 10, 1.5},              // 1
            {"alpha", "5", 5, -0.5},               // 2
            {"BETA", "06", 6, 0.0},                // 3
            {"O'Brien", "abc", -2, 10.25},         // 4
            {"", " 7 ", 0, 2.0},                   // 5
            {null, null, null, null},              // 6
            {"Gamma Ray", "1e2", 100, 100.0},      // 7
            {"\xC3\x9F\xC3\xA9", "-3.5", 3, 3.75}, // 8: two characters, four bytes
            {"  padded  ", "0x10", 16, 16.0},      // 9
            {"a_b%c", "", 1, 5.5},                 // 10
        });
    return table;
}

TEST(WhereClauseSamples, EveryClauseOfTheLibrarySelectsTheSameRowsInSqliteAndInProcess)
{
    const SampleTable& table = dialectTable();
    for (const auto& text : test::kDialectClauses) {
        const RowIds rows = table.select(text);
        // The samples must tell a working clause from one that selects all or nothing.
        EXPECT_FALSE(rows.empty()) << text;
        EXPECT_LT(rows.size(), table.rowCount()) << text;
    }
}

TEST(WhereClauseSamples, SelectsWhatTheProceduresExpect)
{
    const SampleTable& table = dialectTable();
    EXPECT_EQ(table.select("Tract = 'IMPORT'"), (RowIds{2, 4, 8}));
    EXPECT_EQ(table.select("Tract = \"\""), (RowIds{3}));
    EXPECT_EQ(table.select("Type Not in ('A','B','C','D','E')"),
              (RowIds{2, 3, 4, 5, 7, 8, 9, 11, 12}));
    EXPECT_EQ(table.select("Type < 0.0 "), (RowIds{4}));
    EXPECT_EQ(table.select("Left(Tract,5) In ('06001','06003')"), (RowIds{1, 5, 9, 10, 11}));
    EXPECT_EQ(table.select("OBJECTID In (2,5,7,11)"), (RowIds{2, 5, 7, 11}));
    EXPECT_EQ(table.select("eqScenarioId = 3"), (RowIds{1, 3, 6, 8}));
}

TEST(WhereClauseSamples, UnsettledClausesFailNamingTheClause)
{
    const SampleTable& table = dialectTable();
    try {
        WhereClause::parse(test::kDialectFailingClauses[0]);
        FAIL() << "an unterminated text parsed";
    } catch (const PlatformError& e) {
        EXPECT_STREQ(e.what(), "invalid where clause \"Tract = \"\": unterminated text at "
                               "character 9");
    }
    const WhereClause clause = WhereClause::parse(test::kDialectFailingClauses[1]);
    EXPECT_THROW(clause.toSqlite(table.resolver()), PlatformError);
}

TEST(WhereClauseSamples, OnlyFieldsComparedWithQuotedCodesGoToOgrSql)
{
    for (const char* text :
         {"CountyFips Is Null", "StateFips In ('06','32')", "Tract In ('06001400100')",
          "[StateFips]  <> '02' AND [StateFips] <> '15'", "Not (CountyFips In ('06001'))"}) {
        EXPECT_FALSE(WhereClause::parse(text).needsEvaluation()) << text;
    }
    // Functions, letters (case, and OGR's type check against numeric fields), numbers (OGR
    // rejects them against text fields), empty text and Like are evaluated in process.
    for (const char* text :
         {"Left(Tract,5) In ('06001')", "Tract = 'IMPORT'", "Tract = \"\"", "OBJECTID In (1,2,3)",
          "eqScenarioId = 3", "Type < 0.0", "Tract Like '06*'", "CountyFips In ('06001', Null)"}) {
        EXPECT_TRUE(WhereClause::parse(text).needsEvaluation()) << text;
    }
}

TEST(WhereClauseOgrSql, KeepsNullRowsOutOfNegatedConditions)
{
    const SampleTable& table = dialectTable();
    // OGR SQL's NOT turns a comparison with null into true; the translation must not.
    EXPECT_EQ(
        WhereClause::parse("Not (CountyFips In ('06001','06003'))").toOgrSql(table.resolver()),
        "(\"CountyFips\" IS NOT NULL AND \"CountyFips\" NOT IN ('06001', '06003'))");
    EXPECT_EQ(WhereClause::parse("Not (StateFips = '06' And Not CountyFips Is Null)")
                  .toOgrSql(table.resolver()),
              "(\"StateFips\" <> '06' OR \"CountyFips\" IS NULL)");
    EXPECT_EQ(WhereClause::parse("'10' > [t].[Type]").toOgrSql(table.resolver()),
              "\"Type\" < '10'");
    EXPECT_THROW(WhereClause::parse("Tract = 'IMPORT'").toOgrSql(table.resolver()), PlatformError);
}

TEST(WhereClauseParse, ErrorsQuoteTheClause)
{
    for (const char* text :
         {"Tract = 'abc", "Tract =", "Tract In ('a'", "Tract In ()", "Foo(Tract) = 1",
          "Left(Tract) = '0'", "Tract = 5 5", "[Tract = 1", "Type Between 1", "Tract Is 5",
          "Type = 1e", "Tract # 2", "(Tract = '1'", "And Tract = '1'", "t. = 1"}) {
        try {
            WhereClause::parse(text);
            ADD_FAILURE() << "parsed: " << text;
        } catch (const PlatformError& e) {
            EXPECT_NE(std::string(e.what()).find("\"" + std::string(text) + "\""),
                      std::string::npos)
                << e.what();
        }
    }
}

TEST(WhereClauseParse, ANulCharacterIsRefusedWhereverItIs)
{
    // SQL built from such a clause was cut short at the NUL on its way to SQLite.
    using namespace std::string_literals;
    for (const std::string& text : {"Tract = 'a\0' Or 1 = 1"s, "[Tr\0act] = 1"s, "Tract = 1 \0"s}) {
        try {
            WhereClause::parse(text);
            ADD_FAILURE() << "parsed a clause holding a NUL";
        } catch (const PlatformError& e) {
            EXPECT_NE(std::string(e.what()).find("a NUL character is not allowed"),
                      std::string::npos)
                << e.what();
        }
    }
    EXPECT_THROW(WhereClause::parse("[Tr\0act] = 1"s), PlatformError);
    try {
        WhereClause::parse("Tract = 'a\0'"s);
    } catch (const PlatformError& e) {
        EXPECT_STREQ(e.what(), "invalid where clause \"Tract = 'a\\0'\": a NUL character is "
                               "not allowed at character 11");
    }
}

TEST(WhereClauseParse, BlankTextSelectsEveryRow)
{
    for (const char* text : {"", "   ", "\t"}) {
        const WhereClause clause = WhereClause::parse(text);
        EXPECT_TRUE(clause.isEmpty());
        EXPECT_TRUE(clause.fieldNames().empty());
        EXPECT_TRUE(clause.matches([](std::string_view) { return Variant(); }));
        EXPECT_EQ(clause.text(), text);
    }
}

TEST(WhereClauseParse, FieldNamesAreListedOnceAsWritten)
{
    const WhereClause clause = WhereClause::parse(
        "[StateFips] <> '02' AND stateFIPS <> '15' Or t.Tract Is Null And Left(TRACT, 2) = '06'");
    EXPECT_EQ(clause.fieldNames(), (std::vector<std::string>{"StateFips", "Tract"}));
}

TEST(WhereClauseParse, FieldNamesAreFoundInsideEveryConstruct)
{
    // Cursors check these names against the table before running the clause; a field missed
    // in some construct would escape that check.
    const WhereClause clause =
        WhereClause::parse("Not (A Between B And -C) Or D Like E & 'x' Or F Not In (1, G * 2) "
                           "Or Mid(H, I + 1) = J Or K Is Not Null");
    EXPECT_EQ(clause.fieldNames(),
              (std::vector<std::string>{"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K"}));
}

TEST(WhereClauseParse, UnknownFieldNamesFieldAndClause)
{
    const WhereClause clause = WhereClause::parse("Tract = '1' And Tracts = '2'");
    const auto none = [](std::string_view name) -> std::optional<std::string> {
        if (name == "Tract") {
            return "Tract";
        }
        return std::nullopt;
    };
    for (const auto& translate : {&WhereClause::toSqlite, &WhereClause::toOgrSql}) {
        try {
            (clause.*translate)(none);
            ADD_FAILURE() << "translated with an unknown field";
        } catch (const PlatformError& e) {
            EXPECT_STREQ(e.what(), "where clause \"Tract = '1' And Tracts = '2'\" names field "
                                   "Tracts, which the table does not have");
        }
    }
}

TEST(WhereClauseSemantics, TextComparesIgnoringCaseAndQuotesEscape)
{
    const SampleTable& table = mixedTable();
    EXPECT_EQ(table.select("name = 'ALPHA'"), (RowIds{1, 2}));
    EXPECT_EQ(table.select("NAME <> 'alpha'"), (RowIds{3, 4, 5, 7, 8, 9, 10}));
    EXPECT_EQ(table.select("Name = ''"), (RowIds{5}));
    EXPECT_EQ(table.select("Name = \"\""), (RowIds{5}));
    EXPECT_EQ(table.select("Name = 'O''Brien'"), (RowIds{4}));
    EXPECT_EQ(table.select("Name = \"O'Brien\""), (RowIds{4}));
    EXPECT_EQ(table.select("[t].[Name] = \"beta\""), (RowIds{3}));
    EXPECT_EQ(table.select("name LIKE 'a*'"), (RowIds{1, 2, 10}));
    EXPECT_EQ(table.select("Name Like '?eta' Or Name Like '%RAY'"), (RowIds{3, 7}));
    EXPECT_EQ(table.select("Name Like '__'"), (RowIds{8}));
    EXPECT_EQ(table.select("Name Not Like '*a*'"), (RowIds{4, 5, 8}));
    for (const char* text : {"Name < 'b'", "Name >= 'Gamma'", "Name Between 'a' And 'beta'",
                             "Name Like 'a_b%'", "Name Like Code", "Name & Code = 'BETA06'"}) {
        table.select(text);
    }
}

TEST(WhereClauseSemantics, NullIsNeverAMatch)
{
    const SampleTable& table = mixedTable();
    EXPECT_EQ(table.select("Not (Count = 5)"), (RowIds{1, 3, 4, 5, 7, 8, 9, 10}));
    EXPECT_EQ(table.select("Count In (5, Null)"), (RowIds{2}));
    EXPECT_TRUE(table.select("Count Not In (5, Null)").empty());
    EXPECT_EQ(table.select("Count Not In (5, 6)").size(), 7U);
    EXPECT_EQ(table.select("Count Is Null"), (RowIds{6}));
    EXPECT_EQ(table.select("Count Is Not Null").size(), 9U);
    EXPECT_TRUE(table.select("Name = Null Or Name <> Null").empty());
    EXPECT_EQ(table.select("Not (Count > 5 Or Depth > 5)"), (RowIds{2, 5, 8}));
    EXPECT_EQ(table.select("Count Not Between 0 And 10"), (RowIds{4, 7, 9}));
    EXPECT_EQ(table.select("(Name & Code) Is Null"), (RowIds{6}));
}

TEST(WhereClauseSemantics, NumbersAndNumericTextsCompareAsNumbers)
{
    const SampleTable& table = mixedTable();
    // Texts that are not numbers sort after every number.
    EXPECT_EQ(table.select("Code > 5"), (RowIds{1, 3, 4, 5, 7, 9, 10}));
    EXPECT_EQ(table.select("Code = 6"), (RowIds{3}));
    EXPECT_EQ(table.select("Count = '05'"), (RowIds{2}));
    EXPECT_EQ(table.select("Depth = '1.50'"), (RowIds{1}));
    EXPECT_EQ(table.select("Code = '06'"), (RowIds{3}));
    EXPECT_EQ(table.select("Code In (10, 100)"), (RowIds{1, 7}));
    EXPECT_EQ(table.select("Left(Code, 1) = 1"), (RowIds{1, 7}));
    EXPECT_EQ(table.select("Count = True Or Count = False"), (RowIds{5, 10}));
    for (const char* text : {"Code < 0",
                             "Count > '5'",
                             "Code = Count",
                             "Depth < Count",
                             "Code Between 5 And 10",
                             "Depth Between '0' And '2'",
                             "Code In ('5', 'ABC', 10)",
                             "Code Not In ('abc')",
                             "Count",
                             "Not Count",
                             "Name",
                             "Code",
                             "Count != 5",
                             "Depth = 1.5e0",
                             "Depth > -.5",
                             "Count In (Len(Name), 100)",
                             "Code Like '1*'",
                             "Depth Like '1.5'",
                             "Count Like '1%'",
                             "Len(Depth) = 3",
                             "Depth & '' = '0.0'",
                             "-Count < -5",
                             "Count - -1 = 6"}) {
        table.select(text);
    }
}

TEST(WhereClauseSemantics, ArithmeticAndConcatenation)
{
    const SampleTable& table = mixedTable();
    EXPECT_EQ(table.select("Count * 2 = 10"), (RowIds{2}));
    EXPECT_EQ(table.select("Count / 4 = 2.5"), (RowIds{1}));
    EXPECT_EQ(table.select("Count / 0 Is Null").size(), 10U);
    EXPECT_EQ(table.select("Name & 'x' = 'alphax'"), (RowIds{1, 2}));
    EXPECT_EQ(table.select("Depth & '' = '1.5'"), (RowIds{1}));
    for (const char* text : {"Count + Depth > 10", "Count - 1 = 4", "Code + 0 = 10", "Code * 1 > 6",
                             "(Count + 1) * 2 - Depth / 2 > 5"}) {
        table.select(text);
    }
}

TEST(WhereClauseSemantics, TextFunctions)
{
    const SampleTable& table = mixedTable();
    EXPECT_EQ(table.select("Left(Name, 2) = 'al'"), (RowIds{1, 2}));
    EXPECT_EQ(table.select("Right(Name, 2) = 'HA'"), (RowIds{1, 2}));
    EXPECT_EQ(table.select("Mid(Name, 2, 3) = 'lph'"), (RowIds{1, 2}));
    EXPECT_EQ(table.select("Len(Name) = 2"), (RowIds{8}));
    EXPECT_EQ(table.select("Trim(Name) = 'padded'"), (RowIds{9}));
    EXPECT_EQ(table.select("UCase(Name) Like 'GAMMA*' And LCase(Name) Like 'gamma*'"), (RowIds{7}));
    for (const char* text :
         {"Right(Name, 0) = ''", "Right(Name, 20) = Name", "Right(Name, -1) = ''",
          "Mid(Name, 3) = 'ta'", "Mid(Name, 0, 2) = 'a'", "Mid(Name, -2, 1) = 'a'",
          "Mid(Name, 2, -1) = 'a'", "Left(Name, Count) = 'al'", "Left(Name, 2.9) = 'Al'",
          "Left(Name, '2') = 'be'", "Len(Trim(Name)) = 6", "Len(Code) > 2",
          "Right(Code, 1.5) = '0'", "Mid(Name, Count, 1) = 'a'"}) {
        table.select(text);
    }
}

TEST(WhereClauseSqlite, QuotesNamesAndTexts)
{
    const WhereClause clause = WhereClause::parse("[we\"ird] = 'it''s'");
    const std::string sql =
        clause.toSqlite([](std::string_view name) { return std::optional<std::string>(name); });
    EXPECT_EQ(sql, "(\"we\"\"ird\" = 'it''s' COLLATE NOCASE)");
}

std::string joined(const std::string& part, const std::string& separator, int count)
{
    std::string text = part;
    for (int i = 1; i < count; ++i) {
        text += separator + part;
    }
    return text;
}

TEST(WhereClauseLimits, LongAndOrChainsSelectTheSameRowsEverywhere)
{
    // Such chains were nested two by two, past the depth SQLite's parser takes.
    std::string alternatives = "Count = 0";
    for (int i = 1; i < 300; ++i) {
        alternatives += " Or Count = " + std::to_string(i);
    }
    EXPECT_EQ(mixedTable().select(alternatives), (RowIds{1, 2, 3, 5, 7, 8, 9, 10}));
    EXPECT_EQ(mixedTable().select("Not (" + alternatives + ")"), (RowIds{4}));
    EXPECT_EQ(mixedTable().select(joined("Count <> 1000", " And ", 300)),
              (RowIds{1, 2, 3, 4, 5, 7, 8, 9, 10}));
    EXPECT_EQ(mixedTable().select(std::string(30, '(') + "Count = 5" + std::string(30, ')')),
              (RowIds{2}));
}

TEST(WhereClauseLimits, DeepNestingIsAnErrorInsteadOfACrash)
{
    for (const std::string& text :
         {std::string(5000, '(') + "Count = 1" + std::string(5000, ')'),
          joined("-", " ", 5000) + " Count > 0", joined("Not", " ", 5000) + " Count = 1",
          joined("Count", " + ", 300) + " > 0",
          joined("Len(", "", 200) + "Name" + std::string(200, ')') + " > 0"}) {
        try {
            WhereClause::parse(text);
            ADD_FAILURE() << "parsed: " << text.substr(0, 40);
        } catch (const PlatformError& e) {
            EXPECT_NE(std::string(e.what()).find("nests deeper than"), std::string::npos)
                << std::string(e.what()).substr(0, 200);
        }
    }
}

TEST(WhereClauseLimits, SqlThatDoublesAtEveryLevelIsRefusedBeforeItFillsMemory)
{
    // Concatenation names each side twice in SQL, so nesting it doubled the text each time.
    const WhereClause clause = WhereClause::parse(joined("Name", " & ", 30) + " = 'a'");
    try {
        clause.toSqlite([](std::string_view name) { return std::string(name); });
        ADD_FAILURE() << "translated";
    } catch (const PlatformError& e) {
        EXPECT_NE(std::string(e.what()).find("is too complex to translate"), std::string::npos)
            << std::string(e.what()).substr(0, 200);
    }
}

} // namespace
} // namespace brevant::platform::geodatabase
