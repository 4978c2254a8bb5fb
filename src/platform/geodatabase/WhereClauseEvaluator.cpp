#include "platform/geodatabase/WhereClauseEvaluator.h"

#include <algorithm>
#include <limits>

namespace brevant::platform::geodatabase::whereclause {

namespace {

Truth compareTruth(const Value& a, CompareOp op, const Value& b)
{
    const auto order = compareValues(a, b);
    if (!order) {
        return Truth::Unknown;
    }
    return holds(op, *order) ? Truth::True : Truth::False;
}

Value arithmetic(char op, const Value& left, const Value& right)
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
        // SQLite goes over to reals when integers overflow.
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

Value function(Function function, const std::vector<Value>& args)
{
    const std::string text = textOf(args[0]);
    switch (function) {
    case Function::Left:
        return substring(text, 1, integerOf(args[1]));
    case Function::Right: {
        const auto length = static_cast<int64_t>(characterStarts(text).size());
        return substring(text, std::max<int64_t>(length - integerOf(args[1]) + 1, 1), std::nullopt);
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

// Two visitors over one tree: predicates yield a truth, expressions a value, and each falls
// back on the other where SQLite converts (a comparison used as a number is 1 or 0; a number
// used as a condition is true when not 0).
class Evaluator {
public:
    explicit Evaluator(const WhereClause::ValueOf& valueOf) : m_valueOf(valueOf) {}

    Truth truth(const Node& node) const
    {
        return std::visit(Overloaded{
                              [&](const And& n) { return junction(n.operands, Truth::False); },
                              [&](const Or& n) { return junction(n.operands, Truth::True); },
                              [&](const Not& n) { return negate(truth(*n.operand)); },
                              [&](const Compare& n) {
                                  return compareTruth(value(*n.left), n.op, value(*n.right));
                              },
                              [&](const Like& n) {
                                  const Truth t = like(n);
                                  return n.negated ? negate(t) : t;
                              },
                              [&](const In& n) {
                                  const Truth t = in(n);
                                  return n.negated ? negate(t) : t;
                              },
                              [&](const IsNull& n) {
                                  const bool null = isNull(value(*n.operand));
                                  return null != n.negated ? Truth::True : Truth::False;
                              },
                              [&](const Between& n) {
                                  const Truth t = between(n);
                                  return n.negated ? negate(t) : t;
                              },
                              [&](const auto&) { return truthOf(value(node)); },
                          },
                          node.expression);
    }

    Value value(const Node& node) const
    {
        return std::visit(Overloaded{
                              [](const Literal& n) { return n.value; },
                              [&](const Field& n) { return fromVariant(m_valueOf(n.name)); },
                              [&](const Negate& n) -> Value {
                                  const Value v = numberOf(value(*n.operand));
                                  if (isNull(v)) {
                                      return v;
                                  }
                                  if (const auto* i = std::get_if<int64_t>(&v);
                                      i && *i != std::numeric_limits<int64_t>::min()) {
                                      return -*i;
                                  }
                                  return -asDouble(v);
                              },
                              [&](const Arithmetic& n) {
                                  return arithmetic(n.op, value(*n.left), value(*n.right));
                              },
                              [&](const Concat& n) -> Value {
                                  const Value a = value(*n.left);
                                  const Value b = value(*n.right);
                                  if (isNull(a) && isNull(b)) {
                                      return Null{};
                                  }
                                  return (isNull(a) ? std::string() : textOf(a)) +
                                         (isNull(b) ? std::string() : textOf(b));
                              },
                              [&](const Call& n) -> Value {
                                  std::vector<Value> args;
                                  for (const NodePtr& arg : n.args) {
                                      args.push_back(value(*arg));
                                      if (isNull(args.back())) {
                                          return Null{};
                                      }
                                  }
                                  return function(n.function, args);
                              },
                              [&](const auto&) { return fromTruth(truth(node)); },
                          },
                          node.expression);
    }

private:
    // `decisive` (False for And, True for Or) settles the chain at once; else one unknown
    // operand makes it unknown.
    Truth junction(const std::vector<NodePtr>& operands, Truth decisive) const
    {
        Truth result = negate(decisive);
        for (const NodePtr& operand : operands) {
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

    Truth like(const Like& n) const
    {
        const Value text = value(*n.text);
        const Value pattern = value(*n.pattern);
        if (isNull(text) || isNull(pattern)) {
            return Truth::Unknown;
        }
        return likeMatch(folded(textOf(text)), folded(sqlPattern(textOf(pattern)))) ? Truth::True
                                                                                    : Truth::False;
    }

    Truth in(const In& n) const
    {
        const Value x = value(*n.operand);
        if (n.literals) {
            return n.literals->test(x);
        }
        bool unknown = false;
        for (const NodePtr& item : n.items) {
            const Truth t = compareTruth(x, CompareOp::Eq, value(*item));
            if (t == Truth::True) {
                return t;
            }
            unknown = unknown || t == Truth::Unknown;
        }
        return unknown ? Truth::Unknown : Truth::False;
    }

    Truth between(const Between& n) const
    {
        const Value x = value(*n.operand);
        const Truth low = compareTruth(x, CompareOp::Ge, value(*n.low));
        const Truth high =
            low == Truth::False ? Truth::False : compareTruth(x, CompareOp::Le, value(*n.high));
        if (low == Truth::False || high == Truth::False) {
            return Truth::False;
        }
        if (low == Truth::True && high == Truth::True) {
            return Truth::True;
        }
        return Truth::Unknown;
    }

    const WhereClause::ValueOf& m_valueOf;
};

} // namespace

Truth evaluate(const Node& root, const WhereClause::ValueOf& valueOf)
{
    return Evaluator(valueOf).truth(root);
}

} // namespace brevant::platform::geodatabase::whereclause
