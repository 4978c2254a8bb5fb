#pragma once

#include "platform/automation/Variant.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// Values as the where-clause evaluator sees them: SQLite's storage classes, so that evaluation in
// process and the SQL that SQLite runs agree. Shared by the lexer, the parser, the SQLite
// translator and the evaluator.
namespace brevant::platform::geodatabase::whereclause {

struct Null {};
using Value = std::variant<Null, int64_t, double, std::string>;

/// Three-valued logic: a comparison with Null is unknown.
enum class Truth { False, True, Unknown };

bool isNull(const Value& v);
bool isNumber(const Value& v);
/// The number as a double; `v` must hold a number.
double asDouble(const Value& v);

/// The blanks SQLite skips around numeric text.
bool isSpace(char c);
bool isDigit(char c);
/// ASCII lower case, as SQLite's lower() and NOCASE fold.
std::string folded(std::string_view text);
/// ASCII upper case, as SQLite's upper().
std::string upperCased(std::string_view text);

/// The length of the longest number at text[start...] (sign, digits, fraction, exponent), 0
/// when there is none; `real` tells whether it has a fraction or an exponent.
std::size_t numberPrefix(std::string_view text, std::size_t start, bool& real);
/// The number `digits` spells: an integer unless `real` or beyond 64 bits.
Value numberFrom(std::string_view digits, bool real);
/// The number a text holds when SQLite's numeric affinity would convert it, else nullopt.
std::optional<Value> numericText(std::string_view text);
/// A real as SQLite writes it ("5.0", "1.0e+20").
std::string realText(double value);
/// A value as text, numbers written as SQLite writes them. `v` must not be Null.
std::string textOf(const Value& v);
/// A value used in arithmetic: texts read by their leading number (0 when none).
Value numberOf(const Value& v);
/// An integer argument of a text function, as SQLite reads it. `v` must not be Null.
int64_t integerOf(const Value& v);
/// A field's value in the evaluator's terms (True is 1, dates are text, empty is Null).
Value fromVariant(const automation::Variant& v);

/// The order of two values (negative, zero, positive) by the dialect's comparison rules:
/// texts without case, numbers as numbers, numeric text as a number, other texts after every
/// number. Nullopt when a side is Null.
std::optional<int> compareValues(const Value& a, const Value& b);

Truth truthOf(const Value& v);
Value fromTruth(Truth t);
Truth negate(Truth t);

/// Byte offsets of the UTF-8 characters of `text`.
std::vector<std::size_t> characterStarts(std::string_view text);
/// SQLite's substr(X, Y[, Z]) counted in characters.
std::string substring(std::string_view text, int64_t start, std::optional<int64_t> count);
/// SQLite's LIKE on folded texts: % any run of characters, _ one character.
bool likeMatch(std::string_view text, std::string_view pattern);
/// The dialect's wildcards * and ? as SQL's % and _.
std::string sqlPattern(std::string_view pattern);

} // namespace brevant::platform::geodatabase::whereclause
