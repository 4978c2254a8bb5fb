#pragma once

#include "platform/geodatabase/WhereClause.h"
#include "platform/geodatabase/WhereClauseValue.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

// The parsed where clause: one node type per construct of the dialect, held in a variant so
// that each pass (translators, evaluator) is a visitor the compiler checks for completeness.
namespace brevant::platform::geodatabase::whereclause {

inline constexpr const char* kSource = "WhereClause";

using Node = WhereClause::Node;
using NodePtr = std::unique_ptr<Node>;

enum class CompareOp { Eq, Ne, Lt, Le, Gt, Ge };
enum class Function { Left, Right, Mid, Len, UCase, LCase, Trim };

/// A number, a text, True/False (as 1/0) or Null.
struct Literal {
    Value value;
    std::string sqlText; // numbers as written, True/False as 1/0
};
/// A field, by the name written after the last '.'.
struct Field {
    std::string name;
};
/// Unary minus of anything but a number literal (those fold into the literal).
struct Negate {
    NodePtr operand;
};
struct Arithmetic {
    char op = '+'; // + - * /
    NodePtr left;
    NodePtr right;
};
/// The & operator.
struct Concat {
    NodePtr left;
    NodePtr right;
};
struct Call {
    Function function = Function::Left;
    std::vector<NodePtr> args;
};
struct Compare {
    CompareOp op = CompareOp::Eq;
    NodePtr left;
    NodePtr right;
};
struct Like {
    NodePtr text;
    NodePtr pattern;
    bool negated = false;
};

/// The items of an In list when all are literals, sorted, so that a long list of identifiers
/// costs a search per row rather than a scan.
struct LiteralSet {
    std::vector<double> numbers;
    std::vector<double> numericTexts;
    std::vector<std::string> foldedTexts;
    bool hasNull = false;

    /// Whether `v` equals an item, by the rules of compareValues.
    Truth test(const Value& v) const;
};

struct In {
    NodePtr operand;
    std::vector<NodePtr> items;
    bool negated = false;
    std::unique_ptr<const LiteralSet> literals; // only when every item is a literal
};
struct IsNull {
    NodePtr operand;
    bool negated = false;
};
struct Between {
    NodePtr operand;
    NodePtr low;
    NodePtr high;
    bool negated = false;
};
// And and Or chains are one node each, so a long list of alternatives stays one level deep.
struct And {
    std::vector<NodePtr> operands; // two or more
};
struct Or {
    std::vector<NodePtr> operands; // two or more
};
struct Not {
    NodePtr operand;
};

using Expression = std::variant<Literal, Field, Negate, Arithmetic, Concat, Call, Compare, Like, In,
                                IsNull, Between, And, Or, Not>;

/// What SQLite knows of an expression's type before it runs: numbers and texts that the
/// expression always yields, or a field (whose column affinity decides) or Null.
enum class StaticType { Number, Text, Unknown };

StaticType staticType(const Node& node);
bool isTextLiteral(const Node& node);
bool isLiteral(const Node& node);

/// The symbol of `op`, as SQL writes it.
const char* operatorText(CompareOp op);
/// Whether an order (negative, zero, positive) satisfies `op`.
bool holds(CompareOp op, int order);

/// Calls `f` on each operand of `node`, in the order the clause writes them.
void forEachOperand(const Node& node, const std::function<void(const Node&)>& f);

/// Helper for std::visit with lambdas.
template <class... Ts> struct Overloaded : Ts... {
    using Ts::operator()...;
};
// Clang before 17 does not deduce an aggregate's template arguments without a guide.
template <class... Ts> Overloaded(Ts...) -> Overloaded<Ts...>;

} // namespace brevant::platform::geodatabase::whereclause

namespace brevant::platform::geodatabase {

struct WhereClause::Node {
    whereclause::Expression expression;
    int depth = 1; // levels of this node and its operands
};

} // namespace brevant::platform::geodatabase
