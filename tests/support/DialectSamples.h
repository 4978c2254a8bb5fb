#pragma once

// The where clauses the library's procedures write, verbatim (identifiers and codes filled in
// where a procedure builds the clause from pieces), and one table on which each of them
// selects some rows but not all. Tests run every clause on every storage and compare the rows
// with WhereClause::matches on the values read back: shapefiles read an empty text as null
// and cut field names to ten characters (CensusBloc, eqEpicente, eqScenario, huscenario), so
// resolve names to the stored ones and compare with what was stored, not with these values.

#include "platform/automation/Variant.h"

#include <string>
#include <vector>

namespace brevant::test {

enum class DialectFieldKind { Text, Integer, Double };

struct DialectField {
    std::string name;
    DialectFieldKind kind;
};

inline const std::vector<std::string> kDialectClauses = {
    // Validity rules of the clipped site-condition maps.
    "Type Not in ('A','B','C','D','E')",
    "Type < 0 or Type > 5",
    "Type < 0 or Type > 10",
    "Type < 0.0 ",
    // Point inventory: records awaiting a tract, and records outside the region.
    "Tract = 'IMPORT'",
    "Tract = \"\"",
    // Moved records, by the identifier field (two blanks before the parenthesis).
    "SchoolId In  ('a','b','c')",
    // Line inventory: records outside the region after clipping.
    "CountyFips Is Null",
    // Region units chosen on the selection map, one head per level.
    "StateFips In ('06','32')",
    "CountyFips In ('06001','06003')",
    "Tract In ('06001400100','06003400100')",
    "CensusBlock In ('060014001001000','060014001001001')",
    // Census blocks of the chosen counties.
    "Left(Tract,5) In ('06001','06003')",
    // Preselected historical epicentre and source fault.
    "eqEpicenterId = 'E0012'",
    "eqFaultId = 'F0003'",
    // States shown on the state selection map.
    "[StateFips]  <> '02' AND [StateFips] <> '15'  AND [StateFips]  <> '60' AND [StateFips]  "
    "<> '74' AND [StateFips] <> '78'  AND [StateFips]  <> '66'  AND [StateFips]  <> '69'",
    // Attribute query results applied as a selection.
    "OBJECTID In (2,5,7,11)",
    // Scenario faults and storm tracks.
    "eqScenarioId = 3",
    "huscenarioName = 'Andrew'",
};

/// Texts stored for a selection whose clause is not settled. Neither runs on the sample table:
/// the first is unterminated text, the second names a field IMPORT.
inline const std::vector<std::string> kDialectFailingClauses = {
    "Tract = \"",
    "Tract = IMPORT",
};

inline const std::vector<DialectField> kDialectFields = {
    {"OBJECTID", DialectFieldKind::Integer},    {"SchoolId", DialectFieldKind::Text},
    {"Tract", DialectFieldKind::Text},          {"CountyFips", DialectFieldKind::Text},
    {"StateFips", DialectFieldKind::Text},      {"CensusBlock", DialectFieldKind::Text},
    {"Type", DialectFieldKind::Text},           {"eqEpicenterId", DialectFieldKind::Text},
    {"eqFaultId", DialectFieldKind::Text},      {"eqScenarioId", DialectFieldKind::Integer},
    {"huscenarioName", DialectFieldKind::Text},
};

// Type is text: the soil rule compares it with letters, the others with numbers, and
// non-numeric texts sort after every number.
inline const std::vector<std::vector<platform::automation::Variant>> kDialectRows = [] {
    const platform::automation::Variant null = platform::automation::Variant::null();
    return std::vector<std::vector<platform::automation::Variant>>{
        {1, "a", "06001400100", "06001", "06", "060014001001000", "A", "E0012", "F0003", 3,
         "Andrew"},
        {2, "B", "IMPORT", null, "02", "060014001001001", "F", "e0012", "f0003", 1, "ANDREW"},
        {3, "c", "", "06003", "15", "060034001002000", "7", "E0013", "F0004", 3, "andrew"},
        {4, "d", "import", "06075", "32", "060750101001000", "-1.5", null, "F0005", null, "Hugo"},
        {5, "ab", "06003400100", "06003", "60", null, "10", "E0001", null, 2, null},
        {6, null, null, null, null, "060034001001000", null, "E0020", "F0003", 3, "Katrina"},
        {7, "C", "06075010100", "06075", "06", "060014001001000", "12", "E0030", "F0010", 4,
         "Katrina"},
        {8, "b", "Import", "06001", "78", "060034001001001", "5", "E0012", "F0001", 3, ""},
        {9, "x", "06001400200", "06001", "66", "060014002001000", "0", "e0012", "F0003", 30,
         "Andrew"},
        {10, "", "06003400200", "06003", "69", "060014001001001", "c", "E0100", "F0030", 0,
         "Andrews"},
        {11, "A", "0600140010", "06001", "74", "060750101001001", "", "E00120", "F00030", -3,
         "Andrew"},
        {12, "bb", "06075010200", "06075", "32", "060014001002000", "0.0", "E0012", "F0003", 13,
         "Hugo"},
    };
}();

} // namespace brevant::test
