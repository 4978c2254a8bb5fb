#include "platform/geodatabase/WhereClauseValue.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace brevant::platform::geodatabase::whereclause {

using automation::Variant;
using automation::VariantType;

bool isNull(const Value& v)
{
    return std::holds_alternative<Null>(v);
}

bool isNumber(const Value& v)
{
    return std::holds_alternative<int64_t>(v) || std::holds_alternative<double>(v);
}

double asDouble(const Value& v)
{
    if (const auto* i = std::get_if<int64_t>(&v)) {
        return static_cast<double>(*i);
    }
    return std::get<double>(v);
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

namespace {

// ASCII only, as SQLite's NOCASE and lower() fold. Not automation::toLower, whose std::tolower
// follows the process locale (which Qt sets from the environment) for bytes above 127.
char foldCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

std::string folded(std::string_view text)
{
    std::string out(text);
    std::transform(out.begin(), out.end(), out.begin(), foldCase);
    return out;
}

std::string upperCased(std::string_view text)
{
    std::string out(text);
    for (char& c : out) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return out;
}

namespace {

// SQLite's NOCASE collation: ASCII letters folded, then bytes compared.
int compareNoCase(std::string_view a, std::string_view b)
{
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
        const auto x = static_cast<unsigned char>(foldCase(a[i]));
        const auto y = static_cast<unsigned char>(foldCase(b[i]));
        if (x != y) {
            return x < y ? -1 : 1;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

} // namespace

// The longest number at the start of `text` (after blanks): its length, and whether it has a
// fraction or an exponent. Zero length when there is none.
std::size_t numberPrefix(std::string_view text, std::size_t start, bool& real)
{
    std::size_t i = start;
    real = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        ++i;
    }
    std::size_t digits = 0;
    while (i < text.size() && isDigit(text[i])) {
        ++i;
        ++digits;
    }
    if (i < text.size() && text[i] == '.') {
        std::size_t j = i + 1;
        std::size_t fraction = 0;
        while (j < text.size() && isDigit(text[j])) {
            ++j;
            ++fraction;
        }
        if (digits + fraction > 0) {
            real = true;
            i = j;
            digits += fraction;
        }
    }
    if (digits == 0) {
        return 0;
    }
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        std::size_t j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) {
            ++j;
        }
        if (j < text.size() && isDigit(text[j])) {
            while (j < text.size() && isDigit(text[j])) {
                ++j;
            }
            real = true;
            i = j;
        }
    }
    return i - start;
}

Value numberFrom(std::string_view digits, bool real)
{
    const std::string copy(digits);
    if (!real) {
        errno = 0;
        char* end = nullptr;
        const long long value = std::strtoll(copy.c_str(), &end, 10);
        if (errno == 0) {
            return static_cast<int64_t>(value);
        }
    }
    return std::strtod(copy.c_str(), nullptr);
}

// A text that SQLite's numeric affinity turns into a number: one number with optional blanks
// around it ("06", " 5", "1e2"; not "0x10", "5a" or "").
std::optional<Value> numericText(std::string_view text)
{
    std::size_t start = 0;
    while (start < text.size() && isSpace(text[start])) {
        ++start;
    }
    bool real = false;
    const std::size_t length = numberPrefix(text, start, real);
    if (length == 0) {
        return std::nullopt;
    }
    for (std::size_t i = start + length; i < text.size(); ++i) {
        if (!isSpace(text[i])) {
            return std::nullopt;
        }
    }
    return numberFrom(text.substr(start, length), real);
}

namespace {

// A text used in arithmetic or as a truth value: its leading number, 0 when there is none.
// Not automation::leadingNumber: that reads as the host's Val does (a D exponent, always a
// double, Overflow raised), while SQLite keeps integers integral and never fails here.
Value leadingNumber(std::string_view text)
{
    std::size_t start = 0;
    while (start < text.size() && isSpace(text[start])) {
        ++start;
    }
    bool real = false;
    const std::size_t length = numberPrefix(text, start, real);
    if (length == 0) {
        return int64_t{0};
    }
    return numberFrom(text.substr(start, length), real);
}

} // namespace

// SQLite's text of a real: 15 significant digits and always a decimal point ("5.0",
// "1.0e+20").
std::string realText(double value)
{
    if (std::isinf(value)) {
        return value > 0 ? "Inf" : "-Inf";
    }
    if (value == 0.0) {
        return "0.0";
    }
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.15g", value);
    std::string text = buffer;
    const std::size_t exponent = text.find('e');
    const std::size_t point = text.find('.');
    if (exponent == std::string::npos) {
        if (point == std::string::npos) {
            text += ".0";
        }
    } else if (point == std::string::npos) {
        text.insert(exponent, ".0");
    }
    return text;
}

std::string textOf(const Value& v)
{
    if (const auto* i = std::get_if<int64_t>(&v)) {
        return std::to_string(*i);
    }
    if (const auto* r = std::get_if<double>(&v)) {
        return realText(*r);
    }
    return std::get<std::string>(v);
}

Value numberOf(const Value& v)
{
    if (const auto* s = std::get_if<std::string>(&v)) {
        return leadingNumber(*s);
    }
    return v;
}

// An integer argument of a text function, as SQLite reads it (reals truncated, texts by their
// leading digits).
int64_t integerOf(const Value& v)
{
    if (const auto* i = std::get_if<int64_t>(&v)) {
        return *i;
    }
    if (const auto* r = std::get_if<double>(&v)) {
        constexpr double limit = 9.0e18;
        return static_cast<int64_t>(std::clamp(*r, -limit, limit));
    }
    const auto& s = std::get<std::string>(v);
    std::size_t i = 0;
    while (i < s.size() && isSpace(s[i])) {
        ++i;
    }
    const std::size_t start = i;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) {
        ++i;
    }
    while (i < s.size() && isDigit(s[i]) && i - start < 18) {
        ++i;
    }
    const std::string digits = s.substr(start, i - start);
    return digits.empty() ? 0 : std::strtoll(digits.c_str(), nullptr, 10);
}

Value fromVariant(const Variant& v)
{
    switch (v.type()) {
    case VariantType::Boolean:
        return int64_t{v.toBool() ? 1 : 0};
    case VariantType::Int16:
    case VariantType::Int32:
        return int64_t{v.toInt32()};
    case VariantType::Double:
        return v.toDouble();
    case VariantType::String:
    case VariantType::Date:
        return v.toString();
    default:
        return Null{};
    }
}

// Three-valued comparison; nullopt when a side is Null.
std::optional<int> compareValues(const Value& a, const Value& b)
{
    if (isNull(a) || isNull(b)) {
        return std::nullopt;
    }
    const auto* textA = std::get_if<std::string>(&a);
    const auto* textB = std::get_if<std::string>(&b);
    if (textA && textB) {
        return compareNoCase(*textA, *textB);
    }
    Value x = a;
    Value y = b;
    if (textA) {
        const auto number = numericText(*textA);
        if (!number) {
            return 1;
        }
        x = *number;
    }
    if (textB) {
        const auto number = numericText(*textB);
        if (!number) {
            return -1;
        }
        y = *number;
    }
    const auto* intX = std::get_if<int64_t>(&x);
    const auto* intY = std::get_if<int64_t>(&y);
    if (intX && intY) {
        return *intX < *intY ? -1 : (*intX > *intY ? 1 : 0);
    }
    const double dx = asDouble(x);
    const double dy = asDouble(y);
    return dx < dy ? -1 : (dx > dy ? 1 : 0);
}
Truth truthOf(const Value& v)
{
    if (isNull(v)) {
        return Truth::Unknown;
    }
    const Value number = numberOf(v);
    return asDouble(number) != 0.0 ? Truth::True : Truth::False;
}

Value fromTruth(Truth t)
{
    if (t == Truth::Unknown) {
        return Null{};
    }
    return int64_t{t == Truth::True ? 1 : 0};
}

Truth negate(Truth t)
{
    if (t == Truth::Unknown) {
        return t;
    }
    return t == Truth::True ? Truth::False : Truth::True;
}

// UTF-8 characters, as SQLite's text functions count them.
std::vector<std::size_t> characterStarts(std::string_view text)
{
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            starts.push_back(i);
        }
    }
    return starts;
}

// SQLite's substr(X, Y[, Z]), negative and zero positions included.
std::string substring(std::string_view text, int64_t start, std::optional<int64_t> count)
{
    const auto starts = characterStarts(text);
    const auto length = static_cast<int64_t>(starts.size());
    int64_t p1 = start;
    int64_t p2 = count.value_or(std::numeric_limits<int32_t>::max());
    bool negativeCount = false;
    if (p2 < 0) {
        p2 = -p2;
        negativeCount = true;
    }
    if (p1 < 0) {
        p1 += length;
        if (p1 < 0) {
            p2 = std::max<int64_t>(p2 + p1, 0);
            p1 = 0;
        }
    } else if (p1 > 0) {
        --p1;
    } else if (p2 > 0) {
        --p2;
    }
    if (negativeCount) {
        p1 -= p2;
        if (p1 < 0) {
            p2 += p1;
            p1 = 0;
        }
    }
    if (p1 >= length || p2 <= 0) {
        return {};
    }
    const int64_t last = std::min(length, p1 + p2);
    const std::size_t from = starts[static_cast<std::size_t>(p1)];
    const std::size_t to = last >= length ? text.size() : starts[static_cast<std::size_t>(last)];
    return std::string(text.substr(from, to - from));
}

// SQLite's LIKE on texts already folded: % any run of characters, _ one character.
bool likeMatch(std::string_view text, std::string_view pattern)
{
    std::size_t t = 0;
    std::size_t p = 0;
    std::optional<std::size_t> starP;
    std::size_t starT = 0;
    const auto nextChar = [](std::string_view s, std::size_t i) {
        ++i;
        while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80) {
            ++i;
        }
        return i;
    };
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '%') {
            starP = ++p;
            starT = t;
        } else if (p < pattern.size() && pattern[p] == '_') {
            p = nextChar(pattern, p);
            t = nextChar(text, t);
        } else if (p < pattern.size() && pattern[p] == text[t]) {
            ++p;
            ++t;
        } else if (starP) {
            p = *starP;
            starT = nextChar(text, starT);
            t = starT;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '%') {
        ++p;
    }
    return p == pattern.size();
}

// The dialect's wildcards * and ? become SQL's % and _.
std::string sqlPattern(std::string_view pattern)
{
    std::string out(pattern);
    for (char& c : out) {
        if (c == '*') {
            c = '%';
        } else if (c == '?') {
            c = '_';
        }
    }
    return out;
}

} // namespace brevant::platform::geodatabase::whereclause
