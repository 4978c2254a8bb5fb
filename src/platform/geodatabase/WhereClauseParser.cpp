#include "platform/geodatabase/WhereClauseParser.h"

#include "platform/automation/CaseInsensitive.h"
#include "platform/geodatabase/WhereClauseLexer.h"

#include <algorithm>
#include <limits>

namespace brevant::platform::geodatabase::whereclause {

using automation::equalsIgnoreCase;

namespace {

// Far beyond what procedures and users write, well within what the stack and SQLite take.
constexpr int kMaxDepth = 32;
constexpr int kMaxNesting = 100;

// Recursive descent, loosest binding first: Or, And, Not, predicates, &, + -, * /, unary.
class Parser {
public:
    explicit Parser(std::string_view clause) : m_clause(clause), m_tokens(tokenize(clause)) {}

    NodePtr parseClause()
    {
        NodePtr root = parseOr();
        if (peek().kind != TokenKind::End) {
            fail("unexpected " + describe(peek()), peek());
        }
        return root;
    }

private:
    [[noreturn]] void fail(const std::string& what, const Token& token) const
    {
        throwSyntaxError(m_clause, what, token.position);
    }
    [[noreturn]] void failNesting(int levels) const
    {
        fail("the clause nests deeper than " + std::to_string(levels) + " levels", peek());
    }

    /// Keeps the tree shallow enough for the recursive translators and evaluator, and for
    /// SQLite's parser, which gives up on deeply parenthesised SQL.
    template <class T> NodePtr make(T expression) const
    {
        auto node = std::make_unique<Node>(Node{std::move(expression)});
        forEachOperand(*node, [&](const Node& operand) {
            node->depth = std::max(node->depth, operand.depth + 1);
        });
        if (node->depth > kMaxDepth) {
            failNesting(kMaxDepth);
        }
        return node;
    }

    /// Counts the parser's own recursion, which parentheses and signs drive without adding
    /// nodes.
    class Nesting {
    public:
        explicit Nesting(const Parser& parser) : m_parser(parser)
        {
            if (++m_parser.m_nesting > kMaxNesting) {
                m_parser.failNesting(kMaxNesting);
            }
        }
        ~Nesting() { --m_parser.m_nesting; }
        Nesting(const Nesting&) = delete;
        Nesting& operator=(const Nesting&) = delete;

    private:
        const Parser& m_parser;
    };

    static std::string describe(const Token& token)
    {
        switch (token.kind) {
        case TokenKind::End:
            return "end of clause";
        case TokenKind::String:
            return "text '" + token.text + "'";
        default:
            return "'" + token.text + "'";
        }
    }

    const Token& peek(std::size_t ahead = 0) const
    {
        return m_tokens[std::min(m_index + ahead, m_tokens.size() - 1)];
    }
    const Token& next() { return m_tokens[std::min(m_index++, m_tokens.size() - 1)]; }

    static bool isKeyword(const Token& token, std::string_view keyword)
    {
        return token.kind == TokenKind::Name && !token.bracketed &&
               equalsIgnoreCase(token.text, keyword);
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
    static bool isSymbol(const Token& token, std::string_view symbol)
    {
        return token.kind == TokenKind::Symbol && token.text == symbol;
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

    NodePtr parseOr()
    {
        const Nesting nesting(*this);
        NodePtr first = parseAnd();
        if (!isKeyword(peek(), "Or")) {
            return first;
        }
        Or chain;
        chain.operands.push_back(std::move(first));
        while (acceptKeyword("Or")) {
            chain.operands.push_back(parseAnd());
        }
        return make(std::move(chain));
    }

    NodePtr parseAnd()
    {
        NodePtr first = parseNot();
        if (!isKeyword(peek(), "And")) {
            return first;
        }
        And chain;
        chain.operands.push_back(std::move(first));
        while (acceptKeyword("And")) {
            chain.operands.push_back(parseNot());
        }
        return make(std::move(chain));
    }

    NodePtr parseNot()
    {
        const Nesting nesting(*this);
        if (acceptKeyword("Not")) {
            return make(Not{parseNot()});
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
                return make(Compare{op, std::move(left), parseConcat()});
            }
        }
        if (acceptKeyword("Is")) {
            const bool negated = acceptKeyword("Not");
            expectKeyword("Null");
            return make(IsNull{std::move(left), negated});
        }
        const bool negated =
            isKeyword(peek(), "Not") && (isKeyword(peek(1), "Like") || isKeyword(peek(1), "In") ||
                                         isKeyword(peek(1), "Between"));
        if (negated) {
            ++m_index;
        }
        if (acceptKeyword("Like")) {
            return make(Like{std::move(left), parseConcat(), negated});
        }
        if (acceptKeyword("In")) {
            In in{std::move(left), {}, negated, nullptr};
            expectSymbol("(");
            do {
                in.items.push_back(parseConcat());
            } while (acceptSymbol(","));
            expectSymbol(")");
            in.literals = literalSet(in.items);
            return make(std::move(in));
        }
        if (acceptKeyword("Between")) {
            NodePtr low = parseConcat();
            expectKeyword("And");
            return make(Between{std::move(left), std::move(low), parseConcat(), negated});
        }
        return left;
    }

    // Null when an item is not a literal.
    static std::unique_ptr<const LiteralSet> literalSet(const std::vector<NodePtr>& items)
    {
        auto set = std::make_unique<LiteralSet>();
        for (const NodePtr& item : items) {
            const auto* literal = std::get_if<Literal>(&item->expression);
            if (!literal) {
                return nullptr;
            }
            if (isNull(literal->value)) {
                set->hasNull = true;
            } else if (const auto* text = std::get_if<std::string>(&literal->value)) {
                set->foldedTexts.push_back(folded(*text));
                if (const auto number = numericText(*text)) {
                    set->numericTexts.push_back(asDouble(*number));
                }
            } else {
                set->numbers.push_back(asDouble(literal->value));
            }
        }
        std::sort(set->numbers.begin(), set->numbers.end());
        std::sort(set->numericTexts.begin(), set->numericTexts.end());
        std::sort(set->foldedTexts.begin(), set->foldedTexts.end());
        return set;
    }

    NodePtr parseConcat()
    {
        NodePtr left = parseAdditive();
        while (acceptSymbol("&")) {
            left = make(Concat{std::move(left), parseAdditive()});
        }
        return left;
    }

    NodePtr parseAdditive()
    {
        NodePtr left = parseMultiplicative();
        while (isSymbol(peek(), "+") || isSymbol(peek(), "-")) {
            const char op = next().text[0];
            left = make(Arithmetic{op, std::move(left), parseMultiplicative()});
        }
        return left;
    }

    NodePtr parseMultiplicative()
    {
        NodePtr left = parseUnary();
        while (isSymbol(peek(), "*") || isSymbol(peek(), "/")) {
            const char op = next().text[0];
            left = make(Arithmetic{op, std::move(left), parseUnary()});
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
            auto* literal = std::get_if<Literal>(&operand->expression);
            if (literal && isNumber(literal->value)) {
                if (const auto* i = std::get_if<int64_t>(&literal->value);
                    i && *i != std::numeric_limits<int64_t>::min()) {
                    literal->value = -*i;
                } else {
                    literal->value = -asDouble(literal->value);
                }
                literal->sqlText = literal->sqlText.starts_with('-') ? literal->sqlText.substr(1)
                                                                     : "-" + literal->sqlText;
                return operand;
            }
            return make(Negate{std::move(operand)});
        }
        return parsePrimary();
    }

    NodePtr parsePrimary()
    {
        const Token& token = next();
        switch (token.kind) {
        case TokenKind::Number: {
            bool real = false;
            numberPrefix(token.text, 0, real);
            return make(Literal{numberFrom(token.text, real), token.text});
        }
        case TokenKind::String:
            return make(Literal{token.text, {}});
        case TokenKind::Symbol:
            if (token.text == "(") {
                NodePtr inner = parseOr();
                expectSymbol(")");
                return inner;
            }
            fail("unexpected " + describe(token), token);
        case TokenKind::End:
            fail("unexpected end of clause", token);
        case TokenKind::Name:
            break;
        }
        if (!token.bracketed) {
            if (equalsIgnoreCase(token.text, "True") || equalsIgnoreCase(token.text, "False")) {
                const bool value = equalsIgnoreCase(token.text, "True");
                return make(Literal{int64_t{value ? 1 : 0}, value ? "1" : "0"});
            }
            if (equalsIgnoreCase(token.text, "Null")) {
                return make(Literal{});
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
        Field field{token.text};
        // table.field names the field.
        while (isSymbol(peek(), ".")) {
            ++m_index;
            const Token& part = next();
            if (part.kind != TokenKind::Name) {
                fail("expected a field name after '.' but found " + describe(part), part);
            }
            field.name = part.text;
        }
        return make(std::move(field));
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
        Call call{signature->function, {}};
        if (!isSymbol(peek(), ")")) {
            do {
                call.args.push_back(parseConcat());
            } while (acceptSymbol(","));
        }
        const Token& close = peek();
        expectSymbol(")");
        if (call.args.size() < signature->minArgs || call.args.size() > signature->maxArgs) {
            fail(std::string(signature->name) + " takes " + std::to_string(signature->minArgs) +
                     (signature->maxArgs > signature->minArgs ? " or 3" : "") + " argument" +
                     (signature->maxArgs > 1 ? "s" : ""),
                 close);
        }
        return make(std::move(call));
    }

    std::string_view m_clause;
    std::vector<Token> m_tokens;
    std::size_t m_index = 0;
    mutable int m_nesting = 0;
};

} // namespace

NodePtr parseClause(std::string_view clause)
{
    return Parser(clause).parseClause();
}

} // namespace brevant::platform::geodatabase::whereclause
