#include "platform/geodatabase/WhereClause.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/automation/ErrorNumbers.h"
#include "platform/automation/PlatformError.h"
#include "platform/geodatabase/SqlQuote.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <span>
#include <variant>

namespace brevant::platform::geodatabase {

using automation::equalsIgnoreCase;
using automation::PlatformError;
using automation::Variant;
using automation::VariantType;

namespace {

constexpr const char* kSource = "WhereClause";
// Far beyond what procedures and users write, well within what the stack and SQLite take.
constexpr int kMaxDepth = 32;
constexpr int kMaxNesting = 100;
constexpr std::size_t kMaxSqlSize = 1 << 20;

enum class Kind {
    Literal,
    Field,
    Negate,
    Arithmetic,
    Concat,
    Call,
    Compare,
    Like,
    In,
    IsNull,
    Between,
    And,
    Or,
    Not
};
enum class CompareOp { Eq, Ne, Lt, Le, Gt, Ge };
enum class Function { Left, Right, Mid, Len, UCase, LCase, Trim };

// What SQLite knows of an expression's type before it runs: numbers and texts that the
// expression always yields, or a field (whose column affinity decides) or Null.
enum class StaticType { Number, Text, Unknown };

// ---------------------------------------------------------------------------------------------
// Values as the evaluator sees them: SQLite's storage classes, so that evaluation in process
// and the SQL that SQLite runs agree.

struct Null {};
using Value = std::variant<Null, int64_t, double, std::string>;

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

char foldCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

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

// A text used in arithmetic or as a truth value: its leading number, 0 when there is none.
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

enum class Truth { False, True, Unknown };

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

std::string quoteText(std::string_view text)
{
    return sqlQuoted(text, '\'');
}

std::string quoteName(std::string_view name)
{
    return sqlQuoted(name, '"');
}

} // namespace

// ---------------------------------------------------------------------------------------------
// The parsed clause.

namespace {
// Lookup of a list of literals, so that long identifier lists cost a search, not a scan.
struct LiteralSet {
    std::vector<double> numbers;
    std::vector<double> numericTexts;
    std::vector<std::string> foldedTexts;
    bool hasNull = false;

    static bool contains(const std::vector<double>& values, double v)
    {
        return std::binary_search(values.begin(), values.end(), v);
    }

    Truth test(const Value& v) const
    {
        if (isNull(v)) {
            return Truth::Unknown;
        }
        bool found = false;
        if (const auto* text = std::get_if<std::string>(&v)) {
            found = std::binary_search(foldedTexts.begin(), foldedTexts.end(), folded(*text));
            if (!found) {
                const auto number = numericText(*text);
                found = number && contains(numbers, asDouble(*number));
            }
        } else {
            const double number = asDouble(v);
            found = contains(numbers, number) || contains(numericTexts, number);
        }
        if (found) {
            return Truth::True;
        }
        return hasNull ? Truth::Unknown : Truth::False;
    }
};
} // namespace

struct WhereClause::Node {
    Kind kind = Kind::Literal;
    Value value;         // Literal
    std::string sqlText; // Literal numbers as written, True/False as 1/0
    std::string name;    // Field
    char arithmetic = 0; // Arithmetic: + - * /
    CompareOp compare = CompareOp::Eq;
    Function function = Function::Left;
    bool negated = false;                        // Not Like, Not In, Is Not Null, Not Between
    std::vector<std::unique_ptr<Node>> operands; // And, Or: two or more
    std::unique_ptr<LiteralSet> literals;        // In over literals only
    int depth = 1;                               // levels of this node and its operands

    bool isLiteral() const { return kind == Kind::Literal; }
    bool isTextLiteral() const { return isLiteral() && std::holds_alternative<std::string>(value); }
};

using Node = WhereClause::Node;
using NodePtr = std::unique_ptr<Node>;

namespace {

StaticType staticType(const Node& node)
{
    switch (node.kind) {
    case Kind::Literal:
        if (isNull(node.value)) {
            return StaticType::Unknown;
        }
        return node.isTextLiteral() ? StaticType::Text : StaticType::Number;
    case Kind::Field:
        return StaticType::Unknown;
    case Kind::Concat:
        return StaticType::Text;
    case Kind::Call:
        return node.function == Function::Len ? StaticType::Number : StaticType::Text;
    default:
        return StaticType::Number;
    }
}

// ---------------------------------------------------------------------------------------------
// Lexer and parser.

enum class Tok { End, Number, String, Name, Symbol };

struct Token {
    Tok kind = Tok::End;
    std::string text;
    bool bracketed = false;
    std::size_t position = 0;
};

bool isNameChar(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text) { tokenize(); }

    NodePtr parseClause()
    {
        NodePtr root = parseOr();
        if (peek().kind != Tok::End) {
            fail("unexpected " + describe(peek()), peek());
        }
        return root;
    }

private:
    [[noreturn]] void fail(const std::string& what, std::size_t position) const
    {
        const std::string where = position >= m_text.size()
                                      ? "at the end"
                                      : "at character " + std::to_string(position + 1);
        // A NUL is shown as \0, or it would end the message's text where it stands.
        std::string shown;
        for (const char c : m_text) {
            shown += c == '\0' ? std::string("\\0") : std::string(1, c);
        }
        throw PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                            "invalid where clause \"" + shown + "\": " + what + " " + where);
    }
    [[noreturn]] void fail(const std::string& what, const Token& token) const
    {
        fail(what, token.position);
    }

    static std::string describe(const Token& token)
    {
        switch (token.kind) {
        case Tok::End:
            return "end of clause";
        case Tok::String:
            return "text '" + token.text + "'";
        default:
            return "'" + token.text + "'";
        }
    }

    void tokenize()
    {
        std::size_t i = 0;
        const std::string_view s = m_text;
        // The translation goes on to SQLite and GDAL as C text, which a NUL would cut short.
        if (const auto nul = s.find('\0'); nul != std::string_view::npos) {
            fail("a NUL character is not allowed", nul);
        }
        while (true) {
            while (i < s.size() && isSpace(s[i])) {
                ++i;
            }
            Token token;
            token.position = i;
            if (i >= s.size()) {
                m_tokens.push_back(token);
                return;
            }
            const char c = s[i];
            if (isDigit(c) || (c == '.' && i + 1 < s.size() && isDigit(s[i + 1]))) {
                bool real = false;
                const std::size_t length = numberPrefix(s, i, real);
                token.kind = Tok::Number;
                token.text = std::string(s.substr(i, length));
                i += length;
                if (i < s.size() && (isNameChar(s[i]) || s[i] == '.')) {
                    fail("malformed number", token.position);
                }
            } else if (c == '\'' || c == '"') {
                token.kind = Tok::String;
                ++i;
                while (true) {
                    if (i >= s.size()) {
                        fail("unterminated text", token.position);
                    }
                    if (s[i] == c) {
                        if (i + 1 < s.size() && s[i + 1] == c) {
                            token.text += c;
                            i += 2;
                            continue;
                        }
                        ++i;
                        break;
                    }
                    token.text += s[i++];
                }
            } else if (c == '[') {
                const std::size_t close = s.find(']', i + 1);
                if (close == std::string_view::npos) {
                    fail("unterminated [name]", token.position);
                }
                token.kind = Tok::Name;
                token.bracketed = true;
                token.text = std::string(s.substr(i + 1, close - i - 1));
                if (token.text.empty()) {
                    fail("empty []", token.position);
                }
                i = close + 1;
            } else if (isNameChar(c)) {
                token.kind = Tok::Name;
                while (i < s.size() && isNameChar(s[i])) {
                    token.text += s[i++];
                }
            } else {
                token.kind = Tok::Symbol;
                const std::string_view two = s.substr(i, 2);
                if (two == "<>" || two == "<=" || two == ">=" || two == "!=") {
                    token.text = std::string(two);
                    i += 2;
                } else if (std::string_view("=<>+-*/&(),.").find(c) != std::string_view::npos) {
                    token.text = std::string(1, c);
                    ++i;
                } else {
                    fail("unexpected '" + std::string(1, c) + "'", token.position);
                }
            }
            m_tokens.push_back(std::move(token));
        }
    }

    const Token& peek(std::size_t ahead = 0) const
    {
        return m_tokens[std::min(m_index + ahead, m_tokens.size() - 1)];
    }
    const Token& next() { return m_tokens[std::min(m_index++, m_tokens.size() - 1)]; }

    bool isKeyword(const Token& token, std::string_view keyword) const
    {
        return token.kind == Tok::Name && !token.bracketed && equalsIgnoreCase(token.text, keyword);
    }
    bool acceptKeyword(std::string_view keyword)
    {
        if (isKeyword(peek(), keyword)) {
            ++m_index;
            return true;
        }
        return false;
    }
    void expectKeyword(std::string_view keyword)
    {
        if (!acceptKeyword(keyword)) {
            fail("expected " + std::string(keyword) + " but found " + describe(peek()), peek());
        }
    }
    bool isSymbol(const Token& token, std::string_view symbol) const
    {
        return token.kind == Tok::Symbol && token.text == symbol;
    }
    bool acceptSymbol(std::string_view symbol)
    {
        if (isSymbol(peek(), symbol)) {
            ++m_index;
            return true;
        }
        return false;
    }
    void expectSymbol(std::string_view symbol)
    {
        if (!acceptSymbol(symbol)) {
            fail("expected '" + std::string(symbol) + "' but found " + describe(peek()), peek());
        }
    }

    static NodePtr make(Kind kind)
    {
        auto node = std::make_unique<Node>();
        node->kind = kind;
        return node;
    }
    NodePtr make(Kind kind, NodePtr a, NodePtr b = nullptr) const
    {
        auto node = make(kind);
        add(*node, std::move(a));
        if (b) {
            add(*node, std::move(b));
        }
        return node;
    }
    /// Adds an operand, keeping the tree shallow enough for the recursive translators and
    /// evaluator, and for SQLite's parser, which gives up on deeply parenthesised SQL.
    void add(Node& node, NodePtr operand) const
    {
        node.depth = std::max(node.depth, operand->depth + 1);
        node.operands.push_back(std::move(operand));
        if (node.depth > kMaxDepth) {
            fail("the clause nests deeper than " + std::to_string(kMaxDepth) + " levels",
                 peek().position);
        }
    }

    /// Counts the parser's own recursion, which parentheses and signs drive without adding
    /// nodes.
    class Nesting {
    public:
        explicit Nesting(const Parser& parser) : m_parser(parser)
        {
            if (++m_parser.m_nesting > kMaxNesting) {
                m_parser.fail("the clause nests deeper than " + std::to_string(kMaxNesting) +
                                  " levels",
                              m_parser.peek().position);
            }
        }
        ~Nesting() { --m_parser.m_nesting; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

    private:
        const Parser& m_parser;
    };

    // And and Or chains are one node each, so a long list of alternatives stays one level.
    NodePtr parseOr()
    {
        const Nesting nesting(*this);
        NodePtr first = parseAnd();
        if (!acceptKeyword("Or")) {
            return first;
        }
        NodePtr node = make(Kind::Or, std::move(first), parseAnd());
        while (acceptKeyword("Or")) {
            add(*node, parseAnd());
        }
        return node;
    }

    NodePtr parseAnd()
    {
        NodePtr first = parseNot();
        if (!acceptKeyword("And")) {
            return first;
        }
        NodePtr node = make(Kind::And, std::move(first), parseNot());
        while (acceptKeyword("And")) {
            add(*node, parseNot());
        }
        return node;
    }

    NodePtr parseNot()
    {
        const Nesting nesting(*this);
        if (acceptKeyword("Not")) {
            return make(Kind::Not, parseNot());
        }
        return parsePredicate();
    }

    NodePtr parsePredicate()
    {
        NodePtr left = parseConcat();
        static const std::pair<std::string_view, CompareOp> kOperators[] = {
            {"=", CompareOp::Eq}, {"<>", CompareOp::Ne}, {"!=", CompareOp::Ne},
            {"<", CompareOp::Lt}, {"<=", CompareOp::Le}, {">", CompareOp::Gt},
            {">=", CompareOp::Ge}};
        for (const auto& [symbol, op] : kOperators) {
            if (acceptSymbol(symbol)) {
                NodePtr node = make(Kind::Compare, std::move(left), parseConcat());
                node->compare = op;
                return node;
            }
        }
        if (acceptKeyword("Is")) {
            NodePtr node = make(Kind::IsNull, std::move(left));
            node->negated = acceptKeyword("Not");
            expectKeyword("Null");
            return node;
        }
        const bool negated =
            isKeyword(peek(), "Not") && (isKeyword(peek(1), "Like") || isKeyword(peek(1), "In") ||
                                         isKeyword(peek(1), "Between"));
        if (negated) {
            ++m_index;
        }
        NodePtr node;
        if (acceptKeyword("Like")) {
            node = make(Kind::Like, std::move(left), parseConcat());
        } else if (acceptKeyword("In")) {
            node = make(Kind::In, std::move(left));
            expectSymbol("(");
            do {
                add(*node, parseConcat());
            } while (acceptSymbol(","));
            expectSymbol(")");
            buildLiteralSet(*node);
        } else if (acceptKeyword("Between")) {
            node = make(Kind::Between, std::move(left), parseConcat());
            expectKeyword("And");
            add(*node, parseConcat());
        } else {
            return left;
        }
        node->negated = negated;
        return node;
    }

    static void buildLiteralSet(Node& in)
    {
        auto set = std::make_unique<LiteralSet>();
        for (std::size_t i = 1; i < in.operands.size(); ++i) {
            const Node& item = *in.operands[i];
            if (!item.isLiteral()) {
                return;
            }
            if (isNull(item.value)) {
                set->hasNull = true;
            } else if (const auto* text = std::get_if<std::string>(&item.value)) {
                set->foldedTexts.push_back(folded(*text));
                if (const auto number = numericText(*text)) {
                    set->numericTexts.push_back(asDouble(*number));
                }
            } else {
                set->numbers.push_back(asDouble(item.value));
            }
        }
        std::sort(set->numbers.begin(), set->numbers.end());
        std::sort(set->numericTexts.begin(), set->numericTexts.end());
        std::sort(set->foldedTexts.begin(), set->foldedTexts.end());
        in.literals = std::move(set);
    }

    NodePtr parseConcat()
    {
        NodePtr left = parseAdditive();
        while (acceptSymbol("&")) {
            left = make(Kind::Concat, std::move(left), parseAdditive());
        }
        return left;
    }

    NodePtr parseAdditive()
    {
        NodePtr left = parseMultiplicative();
        while (isSymbol(peek(), "+") || isSymbol(peek(), "-")) {
            const char op = next().text[0];
            left = make(Kind::Arithmetic, std::move(left), parseMultiplicative());
            left->arithmetic = op;
        }
        return left;
    }

    NodePtr parseMultiplicative()
    {
        NodePtr left = parseUnary();
        while (isSymbol(peek(), "*") || isSymbol(peek(), "/")) {
            const char op = next().text[0];
            left = make(Kind::Arithmetic, std::move(left), parseUnary());
            left->arithmetic = op;
        }
        return left;
    }

    NodePtr parseUnary()
    {
        const Nesting nesting(*this);
        if (acceptSymbol("+")) {
            return parseUnary();
        }
        if (acceptSymbol("-")) {
            NodePtr operand = parseUnary();
            // A negative number stays a literal, so that it compares as a number in SQL too.
            if (operand->isLiteral() && isNumber(operand->value)) {
                if (const auto* i = std::get_if<int64_t>(&operand->value);
                    i && *i != std::numeric_limits<int64_t>::min()) {
                    operand->value = -*i;
                } else {
                    operand->value = -asDouble(operand->value);
                }
                operand->sqlText = operand->sqlText.starts_with('-') ? operand->sqlText.substr(1)
                                                                     : "-" + operand->sqlText;
                return operand;
            }
            return make(Kind::Negate, std::move(operand));
        }
        return parsePrimary();
    }

    NodePtr parsePrimary()
    {
        const Token& token = next();
        switch (token.kind) {
        case Tok::Number: {
            NodePtr node = make(Kind::Literal);
            bool real = false;
            numberPrefix(token.text, 0, real);
            node->value = numberFrom(token.text, real);
            node->sqlText = token.text;
            return node;
        }
        case Tok::String: {
            NodePtr node = make(Kind::Literal);
            node->value = token.text;
            return node;
        }
        case Tok::Symbol:
            if (token.text == "(") {
                NodePtr inner = parseOr();
                expectSymbol(")");
                return inner;
            }
            fail("unexpected " + describe(token), token);
        case Tok::End:
            fail("unexpected end of clause", token);
        case Tok::Name:
            break;
        }
        if (!token.bracketed) {
            if (equalsIgnoreCase(token.text, "True") || equalsIgnoreCase(token.text, "False")) {
                NodePtr node = make(Kind::Literal);
                const bool value = equalsIgnoreCase(token.text, "True");
                node->value = int64_t{value ? 1 : 0};
                node->sqlText = value ? "1" : "0";
                return node;
            }
            if (equalsIgnoreCase(token.text, "Null")) {
                return make(Kind::Literal);
            }
            static const std::string_view kReserved[] = {"And", "Or",      "Not", "Like",
                                                         "In",  "Between", "Is"};
            for (std::string_view word : kReserved) {
                if (equalsIgnoreCase(token.text, word)) {
                    fail("unexpected " + describe(token), token);
                }
            }
            if (isSymbol(peek(), "(")) {
                return parseCall(token);
            }
        }
        NodePtr node = make(Kind::Field);
        node->name = token.text;
        // table.field names the field.
        while (isSymbol(peek(), ".")) {
            ++m_index;
            const Token& part = next();
            if (part.kind != Tok::Name) {
                fail("expected a field name after '.' but found " + describe(part), part);
            }
            node->name = part.text;
        }
        return node;
    }

    NodePtr parseCall(const Token& nameToken)
    {
        struct Signature {
            std::string_view name;
            Function function;
            std::size_t minArgs;
            std::size_t maxArgs;
        };
        static const Signature kFunctions[] = {
            {"Left", Function::Left, 2, 2},   {"Right", Function::Right, 2, 2},
            {"Mid", Function::Mid, 2, 3},     {"Len", Function::Len, 1, 1},
            {"UCase", Function::UCase, 1, 1}, {"LCase", Function::LCase, 1, 1},
            {"Trim", Function::Trim, 1, 1}};
        const Signature* signature = nullptr;
        for (const auto& candidate : kFunctions) {
            if (equalsIgnoreCase(candidate.name, nameToken.text)) {
                signature = &candidate;
            }
        }
        if (!signature) {
            fail("unknown function " + nameToken.text, nameToken);
        }
        expectSymbol("(");
        NodePtr node = make(Kind::Call);
        node->function = signature->function;
        if (!isSymbol(peek(), ")")) {
            do {
                add(*node, parseConcat());
            } while (acceptSymbol(","));
        }
        const Token& close = peek();
        expectSymbol(")");
        if (node->operands.size() < signature->minArgs ||
            node->operands.size() > signature->maxArgs) {
            fail(std::string(signature->name) + " takes " + std::to_string(signature->minArgs) +
                     (signature->maxArgs > signature->minArgs ? " or 3" : "") + " argument" +
                     (signature->maxArgs > 1 ? "s" : ""),
                 close);
        }
        return node;
    }

    std::string_view m_text;
    std::vector<Token> m_tokens;
    std::size_t m_index = 0;
    mutable int m_nesting = 0;
};

// ---------------------------------------------------------------------------------------------
// Which clauses OGR SQL evaluates as we do. Field types are unknown here, and OGR SQL rejects
// a number compared with a text field or a non-numeric text with a numeric field, so the only
// safe operands are a field and quoted plain decimals. OGR SQL compares such a text with a
// text field as text and with a numeric field as a number, as we do.

bool isPlainDecimal(std::string_view text)
{
    std::size_t i = text.starts_with('-') ? 1 : 0;
    const std::size_t digitsStart = i;
    while (i < text.size() && isDigit(text[i])) {
        ++i;
    }
    if (i == digitsStart) {
        return false;
    }
    if (i < text.size() && text[i] == '.') {
        const std::size_t fraction = ++i;
        while (i < text.size() && isDigit(text[i])) {
            ++i;
        }
        if (i == fraction) {
            return false;
        }
    }
    return i == text.size();
}

bool isOgrOperand(const Node& node)
{
    return node.isTextLiteral() && isPlainDecimal(std::get<std::string>(node.value));
}

bool ogrCanExpress(const Node& node)
{
    const auto isField = [](const NodePtr& n) { return n->kind == Kind::Field; };
    switch (node.kind) {
    case Kind::And:
    case Kind::Or:
    case Kind::Not:
        return std::all_of(node.operands.begin(), node.operands.end(),
                           [](const NodePtr& n) { return ogrCanExpress(*n); });
    case Kind::IsNull:
        return isField(node.operands[0]);
    case Kind::Compare: {
        const Node& a = *node.operands[0];
        const Node& b = *node.operands[1];
        return (a.kind == Kind::Field && isOgrOperand(b)) ||
               (b.kind == Kind::Field && isOgrOperand(a));
    }
    case Kind::In:
    case Kind::Between:
        return isField(node.operands[0]) &&
               std::all_of(node.operands.begin() + 1, node.operands.end(),
                           [](const NodePtr& n) { return isOgrOperand(*n); });
    default:
        return false;
    }
}

void collectFields(const Node& node, std::vector<std::string>& names)
{
    if (node.kind == Kind::Field) {
        const bool known = std::any_of(names.begin(), names.end(), [&](const std::string& n) {
            return equalsIgnoreCase(n, node.name);
        });
        if (!known) {
            names.push_back(node.name);
        }
    }
    for (const auto& operand : node.operands) {
        collectFields(*operand, names);
    }
}

// Indexed by CompareOp: the symbol, the negation and the operator with operands swapped.
constexpr const char* kOperatorText[] = {"=", "<>", "<", "<=", ">", ">="};
constexpr CompareOp kNegated[] = {CompareOp::Ne, CompareOp::Eq, CompareOp::Ge,
                                  CompareOp::Gt, CompareOp::Le, CompareOp::Lt};
constexpr CompareOp kMirrored[] = {CompareOp::Eq, CompareOp::Ne, CompareOp::Gt,
                                   CompareOp::Ge, CompareOp::Lt, CompareOp::Le};

const char* operatorText(CompareOp op)
{
    return kOperatorText[static_cast<int>(op)];
}

bool holds(CompareOp op, int order)
{
    switch (op) {
    case CompareOp::Eq:
        return order == 0;
    case CompareOp::Ne:
        return order != 0;
    case CompareOp::Lt:
        return order < 0;
    case CompareOp::Le:
        return order <= 0;
    case CompareOp::Gt:
        return order > 0;
    case CompareOp::Ge:
        return order >= 0;
    }
    return false;
}

// ---------------------------------------------------------------------------------------------
// Translation. Both translators resolve every field through the caller's resolver.

class Translator {
public:
    Translator(const WhereClause::FieldResolver& resolve, const std::string& clause)
        : m_resolve(resolve), m_clause(clause)
    {
    }

    std::string field(const Node& node) const
    {
        std::optional<std::string> stored = m_resolve ? m_resolve(node.name) : std::nullopt;
        if (!stored) {
            throw PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                                "where clause \"" + m_clause + "\" names field " + node.name +
                                    ", which the table does not have");
        }
        return quoteName(*stored);
    }

    /// Fails when the SQL grows past kMaxSqlSize: some forms repeat an operand, so nesting
    /// them doubles the text at each level.
    std::string sqlite(const Node& node) const
    {
        std::string sql = sqliteOf(node);
        if (sql.size() > kMaxSqlSize) {
            throw PlatformError(automation::ErrorNumber::InvalidArgument, kSource,
                                "where clause \"" + m_clause + "\" is too complex to translate");
        }
        return sql;
    }

    std::string sqliteOf(const Node& node) const
    {
        switch (node.kind) {
        case Kind::Literal:
            if (isNull(node.value)) {
                return "NULL";
            }
            return node.isTextLiteral() ? quoteText(std::get<std::string>(node.value))
                                        : node.sqlText;
        case Kind::Field:
            return field(node);
        case Kind::Negate:
            return "(-" + sqlite(*node.operands[0]) + ")";
        case Kind::Arithmetic: {
            const std::string a = sqlite(*node.operands[0]);
            const std::string b = sqlite(*node.operands[1]);
            if (node.arithmetic == '/') {
                // SQLite divides integers as integers.
                return "(" + a + " * 1.0 / " + b + ")";
            }
            return "(" + a + " " + node.arithmetic + " " + b + ")";
        }
        case Kind::Concat: {
            const std::string a = sqlite(*node.operands[0]);
            const std::string b = sqlite(*node.operands[1]);
            return "(CASE WHEN " + a + " IS NULL AND " + b + " IS NULL THEN NULL ELSE ifnull(" + a +
                   ", '') || ifnull(" + b + ", '') END)";
        }
        case Kind::Call:
            return call(node);
        case Kind::Compare:
            return compare(*node.operands[0], node.compare, *node.operands[1]);
        case Kind::Like: {
            const Node& pattern = *node.operands[1];
            const std::string patternSql =
                pattern.isTextLiteral()
                    ? quoteText(folded(sqlPattern(std::get<std::string>(pattern.value))))
                    : "lower(replace(replace(" + sqlite(pattern) + ", '*', '%'), '?', '_'))";
            // Lower-casing both sides keeps the match independent of PRAGMA case_sensitive_like.
            const std::string like =
                "(lower(" + sqlite(*node.operands[0]) + ") LIKE " + patternSql + ")";
            return node.negated ? "(NOT " + like + ")" : like;
        }
        case Kind::In: {
            const std::string in = inList(node);
            return node.negated ? "(NOT " + in + ")" : in;
        }
        case Kind::IsNull:
            return "(" + sqlite(*node.operands[0]) + (node.negated ? " IS NOT NULL)" : " IS NULL)");
        case Kind::Between: {
            const Node& x = *node.operands[0];
            const std::string between = "(" + compare(x, CompareOp::Ge, *node.operands[1]) +
                                        " AND " + compare(x, CompareOp::Le, *node.operands[2]) +
                                        ")";
            return node.negated ? "(NOT " + between + ")" : between;
        }
        case Kind::And:
        case Kind::Or: {
            std::string chain;
            for (const auto& operand : node.operands) {
                chain += (chain.empty()            ? "("
                          : node.kind == Kind::And ? " AND "
                                                   : " OR ") +
                         sqlite(*operand);
            }
            return chain + ")";
        }
        case Kind::Not:
            return "(NOT " + sqlite(*node.operands[0]) + ")";
        }
        return "NULL";
    }

    // The condition under which `node` is true (positive) or false (not positive): OGR SQL
    // treats a comparison with Null as false, so Not cannot simply be passed on.
    std::string ogr(const Node& node, bool positive) const
    {
        switch (node.kind) {
        case Kind::And:
        case Kind::Or: {
            const bool conjunction = (node.kind == Kind::And) == positive;
            std::string chain;
            for (const auto& operand : node.operands) {
                chain += (chain.empty() ? "("
                          : conjunction ? " AND "
                                        : " OR ") +
                         ogr(*operand, positive);
            }
            return chain + ")";
        }
        case Kind::Not:
            return ogr(*node.operands[0], !positive);
        case Kind::IsNull:
            return field(*node.operands[0]) +
                   (node.negated == positive ? " IS NOT NULL" : " IS NULL");
        case Kind::Compare: {
            const bool fieldFirst = node.operands[0]->kind == Kind::Field;
            const Node& f = fieldFirst ? *node.operands[0] : *node.operands[1];
            const Node& v = fieldFirst ? *node.operands[1] : *node.operands[0];
            CompareOp op = fieldFirst ? node.compare : kMirrored[static_cast<int>(node.compare)];
            if (!positive) {
                op = kNegated[static_cast<int>(op)];
            }
            return field(f) + " " + operatorText(op) + " " +
                   quoteText(std::get<std::string>(v.value));
        }
        case Kind::In: {
            const std::string f = field(*node.operands[0]);
            std::string items;
            for (std::size_t i = 1; i < node.operands.size(); ++i) {
                items +=
                    (i > 1 ? ", " : "") + quoteText(std::get<std::string>(node.operands[i]->value));
            }
            if (node.negated != positive) {
                return f + " IN (" + items + ")";
            }
            return "(" + f + " IS NOT NULL AND " + f + " NOT IN (" + items + "))";
        }
        case Kind::Between: {
            const std::string f = field(*node.operands[0]);
            const std::string low = quoteText(std::get<std::string>(node.operands[1]->value));
            const std::string high = quoteText(std::get<std::string>(node.operands[2]->value));
            if (node.negated != positive) {
                return "(" + f + " >= " + low + " AND " + f + " <= " + high + ")";
            }
            return "(" + f + " < " + low + " OR " + f + " > " + high + ")";
        }
        default:
            throw PlatformError(automation::ErrorNumber::InvalidProcedureCall, kSource,
                                "where clause \"" + m_clause +
                                    "\" cannot be run as OGR SQL; evaluate it row by row");
        }
    }

private:
    // A side that must compare as a number: a text that reads as a number becomes one, other
    // texts stay texts (and sort after numbers).
    std::string numeric(const Node& node) const
    {
        if (staticType(node) == StaticType::Number) {
            return sqlite(node);
        }
        if (node.isTextLiteral()) {
            const auto& text = std::get<std::string>(node.value);
            if (const auto number = numericText(text)) {
                return std::holds_alternative<int64_t>(*number) ? textOf(*number)
                                                                : realText(asDouble(*number));
            }
            return quoteText(text);
        }
        if (node.isLiteral()) {
            return "NULL";
        }
        const std::string x = sqlite(node);
        return "(CASE WHEN CAST(" + x + " AS REAL) = " + x + " THEN CAST(" + x + " AS REAL) ELSE " +
               x + " END)";
    }

    std::string compare(const Node& a, CompareOp op, const Node& b) const
    {
        const StaticType ta = staticType(a);
        const StaticType tb = staticType(b);
        const std::string symbol = std::string(" ") + operatorText(op) + " ";
        if (ta == StaticType::Number || tb == StaticType::Number) {
            return "(" + numeric(a) + symbol + numeric(b) + ")";
        }
        // Texts and fields: column affinity turns numeric text into numbers where a side is
        // numeric, and NOCASE applies where both are texts.
        return "(" + sqlite(a) + symbol + sqlite(b) + " COLLATE NOCASE)";
    }

    std::string inList(const Node& node) const
    {
        const Node& x = *node.operands[0];
        const auto items = std::span(node.operands).subspan(1);
        const auto all = [&](auto predicate) {
            return std::all_of(items.begin(), items.end(),
                               [&](const NodePtr& n) { return predicate(*n); });
        };
        const bool texts = all([](const Node& n) { return n.isTextLiteral(); });
        const bool numbers = all([](const Node& n) { return n.isLiteral() && isNumber(n.value); });
        std::string list;
        for (const auto& item : items) {
            list += (list.empty() ? "" : ", ") + sqlite(*item);
        }
        if (numbers) {
            return "(" + numeric(x) + " IN (" + list + "))";
        }
        if (texts && staticType(x) != StaticType::Number) {
            return "(" + sqlite(x) + " COLLATE NOCASE IN (" + list + "))";
        }
        std::string any;
        for (const auto& item : items) {
            any += (any.empty() ? "" : " OR ") + compare(x, CompareOp::Eq, *item);
        }
        return "(" + any + ")";
    }

    std::string call(const Node& node) const
    {
        const auto arg = [&](std::size_t i) { return sqlite(*node.operands[i]); };
        switch (node.function) {
        case Function::Left:
            return "substr(" + arg(0) + ", 1, " + arg(1) + ")";
        case Function::Right: {
            const std::string s = arg(0);
            return "substr(" + s + ", max(length(" + s + ") - CAST(" + arg(1) +
                   " AS INTEGER) + 1, 1))";
        }
        case Function::Mid:
            return "substr(" + arg(0) + ", " + arg(1) +
                   (node.operands.size() > 2 ? ", " + arg(2) : std::string()) + ")";
        case Function::Len:
            return "length(" + arg(0) + ")";
        case Function::UCase:
            return "upper(" + arg(0) + ")";
        case Function::LCase:
            return "lower(" + arg(0) + ")";
        case Function::Trim:
            return "trim(" + arg(0) + ")";
        }
        return "NULL";
    }

    const WhereClause::FieldResolver& m_resolve;
    const std::string& m_clause;
};

// ---------------------------------------------------------------------------------------------
// Evaluation in process.

class Evaluator {
public:
    explicit Evaluator(const WhereClause::ValueOf& valueOf) : m_valueOf(valueOf) {}

    Truth truth(const Node& node) const
    {
        switch (node.kind) {
        case Kind::And:
        case Kind::Or: {
            // False decides an And, True an Or; else one unknown operand makes it unknown.
            const Truth decisive = node.kind == Kind::And ? Truth::False : Truth::True;
            Truth result = negate(decisive);
            for (const auto& operand : node.operands) {
                const Truth t = truth(*operand);
                if (t == decisive) {
                    return t;
                }
                if (t == Truth::Unknown) {
                    result = Truth::Unknown;
                }
            }
            return result;
        }
        case Kind::Not:
            return negate(truth(*node.operands[0]));
        case Kind::Compare:
            return compare(value(*node.operands[0]), node.compare, value(*node.operands[1]));
        case Kind::Like: {
            const Truth t = like(node);
            return node.negated ? negate(t) : t;
        }
        case Kind::In: {
            const Truth t = in(node);
            return node.negated ? negate(t) : t;
        }
        case Kind::IsNull: {
            const bool null = isNull(value(*node.operands[0]));
            return null != node.negated ? Truth::True : Truth::False;
        }
        case Kind::Between: {
            const Value x = value(*node.operands[0]);
            const Truth low = compare(x, CompareOp::Ge, value(*node.operands[1]));
            const Truth high = low == Truth::False
                                   ? Truth::False
                                   : compare(x, CompareOp::Le, value(*node.operands[2]));
            Truth t = Truth::Unknown;
            if (low == Truth::False || high == Truth::False) {
                t = Truth::False;
            } else if (low == Truth::True && high == Truth::True) {
                t = Truth::True;
            }
            return node.negated ? negate(t) : t;
        }
        default:
            return truthOf(value(node));
        }
    }

    Value value(const Node& node) const
    {
        switch (node.kind) {
        case Kind::Literal:
            return node.value;
        case Kind::Field:
            return fromVariant(m_valueOf(node.name));
        case Kind::Negate: {
            const Value v = numberOf(value(*node.operands[0]));
            if (isNull(v)) {
                return v;
            }
            if (const auto* i = std::get_if<int64_t>(&v);
                i && *i != std::numeric_limits<int64_t>::min()) {
                return -*i;
            }
            return -asDouble(v);
        }
        case Kind::Arithmetic:
            return arithmetic(node.arithmetic, value(*node.operands[0]), value(*node.operands[1]));
        case Kind::Concat: {
            const Value a = value(*node.operands[0]);
            const Value b = value(*node.operands[1]);
            if (isNull(a) && isNull(b)) {
                return Null{};
            }
            return (isNull(a) ? std::string() : textOf(a)) +
                   (isNull(b) ? std::string() : textOf(b));
        }
        case Kind::Call:
            return call(node);
        default:
            return fromTruth(truth(node));
        }
    }

private:
    static Truth compare(const Value& a, CompareOp op, const Value& b)
    {
        const auto order = compareValues(a, b);
        if (!order) {
            return Truth::Unknown;
        }
        return holds(op, *order) ? Truth::True : Truth::False;
    }

    static Value arithmetic(char op, const Value& left, const Value& right)
    {
        const Value a = numberOf(left);
        const Value b = numberOf(right);
        if (isNull(a) || isNull(b)) {
            return Null{};
        }
        if (op == '/') {
            const double divisor = asDouble(b);
            if (divisor == 0.0) {
                return Null{};
            }
            return asDouble(a) / divisor;
        }
        const auto* ia = std::get_if<int64_t>(&a);
        const auto* ib = std::get_if<int64_t>(&b);
        if (ia && ib) {
            int64_t result = 0;
            const bool overflow = op == '+'   ? __builtin_add_overflow(*ia, *ib, &result)
                                  : op == '-' ? __builtin_sub_overflow(*ia, *ib, &result)
                                              : __builtin_mul_overflow(*ia, *ib, &result);
            if (!overflow) {
                return result;
            }
        }
        const double x = asDouble(a);
        const double y = asDouble(b);
        return op == '+' ? x + y : (op == '-' ? x - y : x * y);
    }

    Truth like(const Node& node) const
    {
        const Value text = value(*node.operands[0]);
        const Value pattern = value(*node.operands[1]);
        if (isNull(text) || isNull(pattern)) {
            return Truth::Unknown;
        }
        return likeMatch(folded(textOf(text)), folded(sqlPattern(textOf(pattern)))) ? Truth::True
                                                                                    : Truth::False;
    }

    Truth in(const Node& node) const
    {
        const Value x = value(*node.operands[0]);
        if (node.literals) {
            return node.literals->test(x);
        }
        bool unknown = false;
        for (std::size_t i = 1; i < node.operands.size(); ++i) {
            const Truth t = compare(x, CompareOp::Eq, value(*node.operands[i]));
            if (t == Truth::True) {
                return t;
            }
            unknown = unknown || t == Truth::Unknown;
        }
        return unknown ? Truth::Unknown : Truth::False;
    }

    Value call(const Node& node) const
    {
        std::vector<Value> args;
        for (const auto& operand : node.operands) {
            args.push_back(value(*operand));
            if (isNull(args.back())) {
                return Null{};
            }
        }
        const std::string text = textOf(args[0]);
        switch (node.function) {
        case Function::Left:
            return substring(text, 1, integerOf(args[1]));
        case Function::Right: {
            const auto length = static_cast<int64_t>(characterStarts(text).size());
            return substring(text, std::max<int64_t>(length - integerOf(args[1]) + 1, 1),
                             std::nullopt);
        }
        case Function::Mid:
            return substring(text, integerOf(args[1]),
                             args.size() > 2 ? std::optional(integerOf(args[2])) : std::nullopt);
        case Function::Len:
            return static_cast<int64_t>(characterStarts(text).size());
        case Function::UCase:
            return upperCased(text);
        case Function::LCase:
            return folded(text);
        case Function::Trim: {
            const std::size_t first = text.find_first_not_of(' ');
            if (first == std::string::npos) {
                return std::string();
            }
            return text.substr(first, text.find_last_not_of(' ') - first + 1);
        }
        }
        return Null{};
    }

    const WhereClause::ValueOf& m_valueOf;
};

} // namespace

WhereClause WhereClause::parse(std::string_view text)
{
    WhereClause clause;
    clause.m_text = std::string(text);
    const bool blank = std::all_of(text.begin(), text.end(), isSpace);
    if (blank) {
        return clause;
    }
    Parser parser(text);
    std::shared_ptr<const Node> root = parser.parseClause();
    clause.m_needsEvaluation = !ogrCanExpress(*root);
    clause.m_root = std::move(root);
    return clause;
}

std::vector<std::string> WhereClause::fieldNames() const
{
    std::vector<std::string> names;
    if (m_root) {
        collectFields(*m_root, names);
    }
    return names;
}

std::string WhereClause::toSqlite(const FieldResolver& resolve) const
{
    if (!m_root) {
        return "1 = 1";
    }
    return Translator(resolve, m_text).sqlite(*m_root);
}

std::string WhereClause::toOgrSql(const FieldResolver& resolve) const
{
    if (!m_root) {
        return "1 = 1";
    }
    if (m_needsEvaluation) {
        throw PlatformError(automation::ErrorNumber::InvalidProcedureCall, kSource,
                            "where clause \"" + m_text +
                                "\" cannot be run as OGR SQL; evaluate it row by row");
    }
    return Translator(resolve, m_text).ogr(*m_root, true);
}

bool WhereClause::matches(const ValueOf& valueOf) const
{
    if (!m_root) {
        return true;
    }
    return Evaluator(valueOf).truth(*m_root) == Truth::True;
}

} // namespace brevant::platform::geodatabase
