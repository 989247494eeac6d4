// Plain recursion over the tree, whose depth is bounded. A fail is a value that every operator
// hands on as soon as it meets it, so that the first one from left to right is told. Operands that
// the value does not depend on are not looked at by &, |, -> and ?:, nor by quantifiers once they
// are decided: this is how a property can ask whether a node is there before it names it. Variables
// are found by number: the parser has counted the bindings that are open where they stand.
#include "reachlang/evaluator.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include "reachlang/builtin_sets.h"

namespace vorel::reachlang {
namespace {

ReachValue complaint(std::string_view fault, ReachOp op, std::span<const ReachValue> values) {
  return ReachValue::failure(std::string(fault) + ": " + applied(op, values));
}

ReachValue calculate(ReachOp op, const ReachValue& a, const ReachValue& b) {
  const ReachValue values[] = {a, b};
  const std::int64_t x = a.number(), y = b.number();
  std::int64_t result = 0;
  bool overflows = false;
  const bool divides = op == ReachOp::divided || op == ReachOp::modulo;
  if (divides && y == 0) return complaint("Division by 0", op, values);
  if (op == ReachOp::plus) {
    overflows = __builtin_add_overflow(x, y, &result);
  } else if (op == ReachOp::minus) {
    overflows = __builtin_sub_overflow(x, y, &result);
  } else if (op == ReachOp::times) {
    overflows = __builtin_mul_overflow(x, y, &result);
  } else if (y == -1) {
    // The only quotient that does not fit, and a remainder that the processor refuses.
    overflows = op == ReachOp::divided && __builtin_sub_overflow(std::int64_t{0}, x, &result);
  } else {
    result = op == ReachOp::divided ? x / y : x % y;
  }
  return overflows ? complaint("Arithmetic overflow", op, values) : ReachValue(result);
}

// An operator of a run, on what has come of the run so far and its next operand.
ReachValue combine(ReachOp op, const ReachValue& a, const ReachValue& b) {
  if (a.is_number()) return calculate(op, a, b);
  assert(op == ReachOp::times || op == ReachOp::without);
  return op == ReachOp::times ? intersect(a, b) : subtract(a, b);
}

// The operator + on texts or sets, all at once: what each step would copy grows with the run.
ReachValue join(std::span<const ReachValue> operands) {
  if (operands.front().is_text()) {
    std::string result;
    for (const ReachValue& operand : operands) result += operand.text();
    return ReachValue(std::move(result));
  }
  ReachElements result;
  for (const ReachValue& operand : operands) {
    result.insert(result.end(), operand.elements().begin(), operand.elements().end());
  }
  return ReachValue::set_of(std::move(result));
}

bool compares(ReachOp op, const ReachValue& a, const ReachValue& b) {
  switch (op) {
    case ReachOp::equal:
      return compare(a, b) == 0;
    case ReachOp::not_equal:
      return compare(a, b) != 0;
    case ReachOp::at_most:
      return is_at_most(a, b);
    case ReachOp::at_least:
      return is_at_most(b, a);
    case ReachOp::less:
      return is_at_most(a, b) && compare(a, b) != 0;
    default:
      assert(op == ReachOp::greater);
      return is_at_most(b, a) && compare(a, b) != 0;
  }
}

}  // namespace

template <net::Process P>
Evaluator<P>::Evaluator(const ReachExpr& expr, const P& process)
    : expr_{expr}, operators_{process} {
  environment_.resize(std::size(builtin_sets));
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate(const ReachNode& node) {
  assert(!node.is_dynamic);
  switch (node.op) {
    case ReachOp::constant:
      return expr_.value(node);
    case ReachOp::variable:
      return value_of(node.detail);
    case ReachOp::implies:
    case ReachOp::iff:
    case ReachOp::and_:
    case ReachOp::or_:
    case ReachOp::xor_:
      return evaluate_connective(node);
    case ReachOp::plus:
    case ReachOp::minus:
    case ReachOp::times:
    case ReachOp::divided:
    case ReachOp::modulo:
    case ReachOp::without:
      return evaluate_run(node);
    case ReachOp::substring:
    case ReachOp::substring_from:
    case ReachOp::substring_to:
      return evaluate_substring(node);
    case ReachOp::choice: {
      const ReachValue chooser = evaluate(expr_.operand(node, 0));
      if (chooser.is_fail()) return chooser;
      return evaluate(expr_.operand(node, chooser.boolean() ? 1 : 2));
    }
    case ReachOp::set:
      return evaluate_set(node);
    case ReachOp::threshold_list:
      return evaluate_threshold_list(node);
    case ReachOp::forall:
    case ReachOp::exists:
    case ReachOp::xorsum:
    case ReachOp::threshold:
      return evaluate_quantifier(node);
    case ReachOp::gather:
      return evaluate_gather(node);
    case ReachOp::let:
      return evaluate_let(node);
    default:
      return node.operand_count == 1 ? evaluate_prefix(node) : evaluate_pair(node);
  }
}

// Built-in sets are made when they are first named.
template <net::Process P>
const ReachValue& Evaluator<P>::value_of(std::uint32_t binding) {
  ReachValue& value = environment_[binding].value;
  const bool is_missing = value.is_fail() && value.fail().message == nullptr;
  if (is_missing) value = operators_.builtin_set(builtin_sets[binding].set);
  return value;
}

template <net::Process P>
auto Evaluator<P>::for_each_binding(const ReachNode& node, const Body& body)
    -> std::optional<ReachValue> {
  std::optional<ReachValue> fault;
  bind_from(node, 0, body, fault);
  return fault;
}

// Binds the variables from this one on; the domains of later ones may speak of it.
template <net::Process P>
auto Evaluator<P>::bind_from(const ReachNode& node, std::size_t variable, const Body& body,
                             std::optional<ReachValue>& fault) -> Flow {
  if (variable == expr_.declared_count(node)) {
    if (node.has_condition) {
      const ReachValue condition = evaluate(expr_.operand(node, node.operand_count - 2));
      if (condition.is_fail()) fault = condition;
      if (condition.is_fail() || !condition.boolean()) return fault ? Flow::stopped : Flow::on;
    }
    return body() ? Flow::on : Flow::stopped;
  }
  const std::size_t first_domain = node.op == ReachOp::threshold ? 1 : 0;
  const ReachValue domain = evaluate(expr_.operand(node, first_domain + variable));
  if (domain.is_fail()) {
    fault = domain;
    return Flow::stopped;
  }
  Flow flow = Flow::on;
  environment_.emplace_back();
  for (const ReachValue& element : domain.elements()) {
    environment_.back().value = element;
    flow = bind_from(node, variable + 1, body, fault);
    if (flow == Flow::stopped) break;
  }
  environment_.pop_back();
  return flow;
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_prefix(const ReachNode& node) {
  const ReachValue operand = evaluate(expr_.operand(node, 0));
  if (operand.is_fail()) return operand;
  switch (node.op) {
    case ReachOp::fail:
      return ReachValue(
          ReachFail{std::make_shared<const std::string>(operand.text()), /*is_written=*/true});
    case ReachOp::not_:
      return ReachValue(!operand.boolean());
    case ReachOp::negative:
      return calculate(ReachOp::minus, ReachValue(std::int64_t{0}), operand);
    case ReachOp::string:
      return operand.is_text() ? operand : ReachValue(to_string(operand));
    case ReachOp::length:
      return ReachValue(static_cast<std::int64_t>(operand.text().size()));
    case ReachOp::cardinality:
      return ReachValue(static_cast<std::int64_t>(operand.elements().size()));
    default:
      return operators_.apply(node.op, operand, node.position);
  }
}

// From left to right, and no further than the value needs: what is left out may fail.
template <net::Process P>
ReachValue Evaluator<P>::evaluate_connective(const ReachNode& node) {
  ReachValue value;
  bool parity = false;
  for (std::size_t i = 0; i < node.operand_count; ++i) {
    value = evaluate(expr_.operand(node, i));
    if (value.is_fail()) return value;
    if (node.op == ReachOp::and_ && !value.boolean()) return value;
    if (node.op == ReachOp::or_ && value.boolean()) return value;
    const bool is_condition = node.op == ReachOp::implies && i + 1 < node.operand_count;
    if (is_condition && !value.boolean()) return ReachValue(true);
    parity ^= value.boolean();
  }
  if (node.op == ReachOp::xor_) return ReachValue(parity);
  return node.op == ReachOp::iff ? ReachValue(parity != inverts_parity(node)) : value;
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_run(const ReachNode& node) {
  ReachValue result = evaluate(expr_.operand(node, 0));
  const bool joins = node.op == ReachOp::plus && !result.is_fail() && !result.is_number();
  if (joins) return evaluate_join(node, std::move(result));
  for (std::size_t i = 1; i < node.operand_count && !result.is_fail(); ++i) {
    const ReachValue next = evaluate(expr_.operand(node, i));
    result = next.is_fail() ? next : combine(node.op, result, next);
  }
  return result;
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_join(const ReachNode& node, ReachValue first) {
  std::vector<ReachValue> operands;
  operands.reserve(node.operand_count);
  operands.push_back(std::move(first));
  for (const ReachNodeId operand : expr_.operands(node).subspan(1)) {
    operands.push_back(evaluate(operand));
    if (operands.back().is_fail()) return operands.back();
  }
  return join(operands);
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_pair(const ReachNode& node) {
  const ReachValue a = evaluate(expr_.operand(node, 0));
  if (a.is_fail()) return a;
  const ReachValue b = evaluate(expr_.operand(node, 1));
  if (b.is_fail()) return b;
  return ReachValue(node.op == ReachOp::in ? contains(b, a) : compares(node.op, a, b));
}

// Indices count from 0, and the last one is included. The empty text before an index counts as in
// range: s[0..-1], s[len s..].
template <net::Process P>
ReachValue Evaluator<P>::evaluate_substring(const ReachNode& node) {
  std::vector<ReachValue> operands;
  for (const ReachNodeId operand : expr_.operands(node)) {
    operands.push_back(evaluate(operand));
    if (operands.back().is_fail()) return operands.back();
  }
  const std::string& text = operands.front().text();
  const auto size = static_cast<std::int64_t>(text.size());
  const bool has_first = node.op != ReachOp::substring_to;
  const bool has_last = node.op != ReachOp::substring_from;
  const std::int64_t first = has_first ? operands[1].number() : 0;
  const std::int64_t last = has_last ? operands.back().number() : size - 1;
  if (first < 0 || last >= size || last < first - 1) {
    return complaint("Index out of range", node.op, operands);
  }
  return ReachValue(
      text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first + 1)));
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_set(const ReachNode& node) {
  ReachElements elements;
  for (const ReachNodeId operand : expr_.operands(node)) {
    elements.push_back(evaluate(operand));
    if (elements.back().is_fail()) return elements.back();
  }
  return ReachValue::set_of(std::move(elements));
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_threshold_list(const ReachNode& node) {
  const ReachValue least = evaluate(expr_.operand(node, 0));
  if (least.is_fail()) return least;
  std::int64_t trues = 0;
  for (std::size_t i = 1; i < node.operand_count; ++i) {
    const ReachValue operand = evaluate(expr_.operand(node, i));
    if (operand.is_fail()) return operand;
    trues += operand.boolean() ? 1 : 0;
  }
  return ReachValue(trues >= least.number());
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_quantifier(const ReachNode& node) {
  const bool is_threshold = node.op == ReachOp::threshold;
  const ReachValue least =
      is_threshold ? evaluate(expr_.operand(node, 0)) : ReachValue(std::int64_t{1});
  if (least.is_fail()) return least;
  const bool counts_false = node.op == ReachOp::forall;
  std::int64_t counted = 0;  // bodies that are true; for forall, those that are false
  ReachValue value;
  const auto fault = for_each_binding(node, [&] {
    value = evaluate(expr_.operand(node, node.operand_count - 1));
    if (value.is_fail()) return false;
    counted += value.boolean() != counts_false ? 1 : 0;
    return node.op == ReachOp::xorsum || counted < least.number();
  });
  if (fault) return *fault;
  if (value.is_fail() && value.fail().message != nullptr) return value;
  if (node.op == ReachOp::xorsum) return ReachValue(counted % 2 != 0);
  return ReachValue((counted >= least.number()) != counts_false);
}

template <net::Process P>
ReachValue Evaluator<P>::evaluate_gather(const ReachNode& node) {
  ReachElements elements;
  const auto fault = for_each_binding(node, [&] {
    elements.push_back(evaluate(expr_.operand(node, node.operand_count - 1)));
    return !elements.back().is_fail();
  });
  if (fault) return *fault;
  if (!elements.empty() && elements.back().is_fail()) return elements.back();
  return ReachValue::set_of(std::move(elements));
}

// A definition that depends on the state is of no use to a body that does not, and has no value.
template <net::Process P>
ReachValue Evaluator<P>::evaluate_let(const ReachNode& node) {
  const std::size_t outer = environment_.size();
  ReachValue value;
  for (const ReachNodeId operand : expr_.operands(node)) {
    const ReachNode& part = expr_.node(operand);
    value = part.is_dynamic ? ReachValue(false) : evaluate(part);
    if (value.is_fail()) break;
    environment_.push_back({value, 0});
  }
  environment_.resize(outer);
  return value;
}

#define INSTANTIATE(P) template class Evaluator<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reachlang
