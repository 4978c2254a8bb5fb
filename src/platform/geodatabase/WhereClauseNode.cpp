#include "platform/geodatabase/WhereClauseNode.h"

#include <algorithm>

namespace brevant::platform::geodatabase::whereclause {

namespace {

bool contains(const std::vector<double>& values, double v)
{
    return std::binary_search(values.begin(), values.end(), v);
}

} // namespace

Truth LiteralSet::test(const Value& v) const
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

bool isLiteral(const Node& node)
{
    return std::holds_alternative<Literal>(node.expression);
}

bool isTextLiteral(const Node& node)
{
    const auto* literal = std::get_if<Literal>(&node.expression);
    return literal && std::holds_alternative<std::string>(literal->value);
}

StaticType staticType(const Node& node)
{
    return std::visit(Overloaded{
                          [](const Literal& literal) {
                              if (isNull(literal.value)) {
                                  return StaticType::Unknown;
                              }
                              return std::holds_alternative<std::string>(literal.value)
                                         ? StaticType::Text
                                         : StaticType::Number;
                          },
                          [](const Field&) { return StaticType::Unknown; },
                          [](const Concat&) { return StaticType::Text; },
                          [](const Call& call) {
                              return call.function == Function::Len ? StaticType::Number
                                                                    : StaticType::Text;
                          },
                          [](const auto&) { return StaticType::Number; },
                      },
                      node.expression);
}

void forEachOperand(const Node& node, const std::function<void(const Node&)>& f)
{
    const auto each = [&](const std::vector<NodePtr>& nodes) {
        for (const NodePtr& n : nodes) {
            f(*n);
        }
    };
    std::visit(Overloaded{
                   [](const Literal&) {},
                   [](const Field&) {},
                   [&](const Call& n) { each(n.args); },
                   [&](const In& n) {
                       f(*n.operand);
                       each(n.items);
                   },
                   [&](const Between& n) {
                       f(*n.operand);
                       f(*n.low);
                       f(*n.high);
                   },
                   [&](const Like& n) {
                       f(*n.text);
                       f(*n.pattern);
                   },
                   [&](const And& n) { each(n.operands); },
                   [&](const Or& n) { each(n.operands); },
                   [&](const auto& n) {
                       if constexpr (requires { n.operand; }) {
                           f(*n.operand);
                       } else {
                           f(*n.left);
                           f(*n.right);
                       }
                   },
               },
               node.expression);
}

const char* operatorText(CompareOp op)
{
    constexpr const char* kText[] = {"=", "<>", "<", "<=", ">", ">="};
    return kText[static_cast<int>(op)];
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

} // namespace brevant::platform::geodatabase::whereclause
