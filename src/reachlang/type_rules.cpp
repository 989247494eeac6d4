#include "reachlang/type_rules.h"

#include <algorithm>
#include <cassert>
#include <iterator>

namespace vorel::reachlang {
namespace {

using enum BaseType;

constexpr const char* constant_expected = "Constant expression expected";

constexpr BaseTypes types_of(std::initializer_list<BaseType> bases) {
  BaseTypes types = 0;
  for (const BaseType base : bases) types = static_cast<BaseTypes>(types | one_type(base));
  return types;
}

enum class Depth : std::uint8_t {
  plain,
  plain_or_set,
  any_but_fail,  // of any type, except fail
  any_set,
};

struct PrefixRule {
  ReachOp op;
  BaseTypes accepted;
  Depth depth;
  ReachType result;             // where it is the same for all operands
  std::string_view other_name;  // in the message, where it is not the operator's spelling
};

constexpr BaseTypes no_types = 0;
constexpr BaseTypes nodes = types_of({condition, event, place, transition, signal});
constexpr BaseTypes linked_nodes = types_of({condition, event, place, transition});
constexpr BaseTypes numbers_or_texts = types_of({numerical, string});
constexpr ReachType a_number{numerical, 0};
constexpr ReachType a_text{string, 0};
constexpr ReachType events{event, 1};
constexpr ReachType depends{};  // on the operand

constexpr PrefixRule prefix_rules[] = {
    {ReachOp::fail, one_type(string), Depth::plain, {fail, 0}, ""},
    {ReachOp::state, types_of({condition, event, place, signal}), Depth::plain, a_bool, ""},
    {ReachOp::enabled, types_of({event, transition, signal}), Depth::plain, a_bool, ""},
    {ReachOp::next_state, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::condition, one_type(numerical), Depth::plain, {condition, 0}, ""},
    {ReachOp::event, one_type(numerical), Depth::plain, {event, 0}, ""},
    {ReachOp::place, numbers_or_texts, Depth::plain, {place, 0}, ""},
    {ReachOp::transition, numbers_or_texts, Depth::plain, {transition, 0}, ""},
    {ReachOp::signal, numbers_or_texts, Depth::plain, {signal, 0}, ""},
    {ReachOp::places, one_type(string), Depth::plain, {place, 1}, ""},
    {ReachOp::transitions, one_type(string), Depth::plain, {transition, 1}, ""},
    {ReachOp::signals, one_type(string), Depth::plain, {signal, 1}, ""},
    {ReachOp::number, nodes, Depth::plain, a_number, ""},
    {ReachOp::name, types_of({place, transition, signal}), Depth::plain, a_text, ""},
    {ReachOp::string, no_types, Depth::any_but_fail, a_text, ""},
    {ReachOp::length, one_type(string), Depth::plain, a_number, ""},
    {ReachOp::downclose, one_type(event), Depth::plain_or_set, events, ""},
    {ReachOp::triggers, one_type(event), Depth::plain, events, ""},
    {ReachOp::is_init, nodes, Depth::plain, a_bool, ""},
    {ReachOp::is_cutoff, one_type(event), Depth::plain, a_bool, ""},
    {ReachOp::is_input, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::is_output, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::is_internal, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::is_dummy, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::is_local, one_type(signal), Depth::plain, a_bool, ""},
    {ReachOp::is_plus, types_of({event, transition}), Depth::plain, a_bool, ""},
    {ReachOp::is_minus, types_of({event, transition}), Depth::plain, a_bool, ""},
    {ReachOp::not_, one_type(boolean), Depth::plain, a_bool, ""},
    {ReachOp::negative, one_type(numerical), Depth::plain, a_number, "unary -"},
    {ReachOp::pre, linked_nodes, Depth::plain_or_set, depends, ""},
    {ReachOp::post, linked_nodes, Depth::plain_or_set, depends, ""},
    {ReachOp::conditions_of, one_type(place), Depth::plain_or_set, {condition, 1}, ""},
    {ReachOp::events_of, types_of({transition, signal}), Depth::plain_or_set, events, ""},
    {ReachOp::places_of, one_type(condition), Depth::plain_or_set, depends, "places"},
    {ReachOp::transitions_of, types_of({event, signal}), Depth::plain_or_set, depends, ""},
    {ReachOp::signals_of, types_of({event, transition}), Depth::plain_or_set, depends, ""},
    {ReachOp::cardinality, no_types, Depth::any_set, a_number, ""},
};

bool is_accepted(const PrefixRule& rule, ReachType type) {
  switch (rule.depth) {
    case Depth::plain:
      return type.depth == 0 && contains(rule.accepted, type.base);
    case Depth::plain_or_set:
      return type.depth <= 1 && contains(rule.accepted, type.base);
    case Depth::any_but_fail:
      return !type.is_fail();
    default:
      return type.is_set();
  }
}

std::string phrase_of(const PrefixRule& rule) {
  if (rule.depth == Depth::any_but_fail) return "other than fail";
  if (rule.depth == Depth::any_set) return "set";
  return list_of(rule.accepted, rule.depth == Depth::plain_or_set);
}

std::string quoted_name(const PrefixRule& rule, std::uint32_t repeats) {
  const std::string_view spelling = spelling_of(rule.op);
  const bool is_atom = rule.op == ReachOp::state || rule.op == ReachOp::enabled;
  if (rule.op == ReachOp::next_state) return '"' + std::string(repeats, '\'') + '"';
  if (is_atom) return '\'' + std::string(repeats, spelling.front()) + '\'';
  return '\'' + std::string(rule.other_name.empty() ? spelling : rule.other_name) + '\'';
}

BaseType neighbour_of(BaseType base) {
  switch (base) {
    case condition:
      return event;
    case event:
      return condition;
    case place:
      return transition;
    default:
      return place;
  }
}

ReachType result_of(const PrefixRule& rule, ReachType type) {
  switch (rule.op) {
    case ReachOp::pre:
    case ReachOp::post:
      return {neighbour_of(type.base), 1};
    case ReachOp::places_of:
      return {place, type.depth};
    case ReachOp::transitions_of:
      return {transition, type.base == signal ? 1 : type.depth};
    case ReachOp::signals_of:
      return {signal, type.depth};
    default:
      return rule.result;
  }
}

TypeVerdict wrong(std::string message, std::size_t culprit = TypeVerdict::the_operator) {
  return {.message = std::move(message), .culprit = culprit, .result = {}};
}

TypeVerdict right(ReachType type, bool is_dynamic = false) {
  return {.message = {}, .culprit = TypeVerdict::the_operator, .result = {type, is_dynamic}};
}

std::size_t first_dynamic(std::span<const TypedOperand> operands) {
  const auto found = std::ranges::find(operands, true, &TypedOperand::is_dynamic);
  return static_cast<std::size_t>(found - operands.begin());
}

bool any_is_dynamic(std::span<const TypedOperand> operands) {
  return first_dynamic(operands) < operands.size();
}

TypeVerdict check_prefix(const PrefixRule& rule, const TypedOperand& operand,
                         std::uint32_t repeats) {
  const bool is_not = rule.op == ReachOp::not_;
  if (operand.is_dynamic && !is_not) return wrong(constant_expected, 0);
  if (!is_accepted(rule, operand.type)) {
    return wrong("Type mismatch in the operand of " + quoted_name(rule, repeats) +
                     ": expression of type " + phrase_of(rule) + " is expected",
                 0);
  }
  const bool is_atom =
      rule.op == ReachOp::state || rule.op == ReachOp::enabled || rule.op == ReachOp::next_state;
  return right(result_of(rule, operand.type), is_atom || operand.is_dynamic);
}

std::string in_operands_of(std::string_view spelling) {
  return "Type mismatch in the operands of '" + std::string(spelling) + "'";
}

TypeVerdict check_connective(std::string_view spelling, std::span<const TypedOperand> operands) {
  for (std::size_t i = 0; i < operands.size(); ++i) {
    if (!operands[i].type.is_boolean()) {
      return wrong(in_operands_of(spelling) + ": expression of type bool is expected", i);
    }
  }
  return right(a_bool, any_is_dynamic(operands));
}

struct ArithmeticRule {
  ReachOp op;
  BaseTypes accepted;  // plain
  bool accepts_sets;
  std::string_view phrase;
};
constexpr ArithmeticRule arithmetic_rules[] = {
    {ReachOp::plus, numbers_or_texts, true, "numerical, string or set"},
    {ReachOp::minus, one_type(numerical), false, "numerical"},
    {ReachOp::times, one_type(numerical), true, "numerical or set"},
    {ReachOp::divided, one_type(numerical), false, "numerical"},
    {ReachOp::modulo, one_type(numerical), false, "numerical"},
    {ReachOp::without, no_types, true, "set"},
};

// Constant operands of one type.
TypeVerdict check_equal_types(std::string_view spelling, std::span<const TypedOperand> operands) {
  if (any_is_dynamic(operands)) return wrong(constant_expected, first_dynamic(operands));
  const ReachType type = operands.front().type;
  const auto is_other = [type](const TypedOperand& operand) { return operand.type != type; };
  if (std::ranges::any_of(operands, is_other)) return wrong(in_operands_of(spelling));
  return right(type);
}

TypeVerdict check_arithmetic(const ArithmeticRule& rule, std::span<const TypedOperand> operands) {
  TypeVerdict verdict = check_equal_types(spelling_of(rule.op), operands);
  if (!verdict.is_right()) return verdict;
  const ReachType type = verdict.result.type;
  if (type.is_set() ? rule.accepts_sets : contains(rule.accepted, type.base)) return verdict;
  return wrong(in_operands_of(spelling_of(rule.op)) + ": expressions of type " +
                   std::string(rule.phrase) + " are expected",
               0);
}

TypeVerdict check_membership(std::span<const TypedOperand> operands) {
  if (any_is_dynamic(operands)) return wrong(constant_expected, first_dynamic(operands));
  if (!operands[1].type.is_set()) return wrong("The second operand of 'in' is not a set", 1);
  const bool fits = operands[0].type == element_of(operands[1].type);
  return fits ? right(a_bool) : wrong(in_operands_of("in"), 0);
}

TypeVerdict check_substring(ReachOp op, std::span<const TypedOperand> operands) {
  const std::string_view form = op == ReachOp::substring        ? "[m..n]"
                                : op == ReachOp::substring_from ? "[m..]"
                                                                : "[..n]";
  const std::string quoted_form = '\'' + std::string(form) + "': ";
  if (any_is_dynamic(operands)) return wrong(constant_expected, first_dynamic(operands));
  if (!operands[0].type.is_plain(string)) {
    return wrong(
        "Type mismatch in the operand of " + quoted_form + "expression of type string is expected",
        0);
  }
  for (std::size_t i = 1; i < operands.size(); ++i) {
    if (operands[i].type.is_plain(numerical)) continue;
    return operands.size() > 2 ? wrong("Type mismatch in an index of " + quoted_form +
                                           "expressions of type numerical are expected",
                                       i)
                               : wrong("Type mismatch in the index of " + quoted_form +
                                           "expression of type numerical is expected",
                                       i);
  }
  return right(a_text);
}

TypeVerdict check_choice(std::span<const TypedOperand> operands) {
  const TypedOperand& chooser = operands[0];
  const TypedOperand& then = operands[1];
  const TypedOperand& otherwise = operands[2];
  if (!chooser.type.is_boolean()) {
    return wrong("Type mismatch in '?:': the condition must be Boolean", 0);
  }
  const bool is_dynamic = any_is_dynamic(operands);
  if (then.type.is_fail() || otherwise.type.is_fail()) {
    if (chooser.is_dynamic) {
      return wrong(
          "The condition of '?:' must be constant if the 'then' or 'else' expressions are of type "
          "fail",
          0);
    }
    return right(then.type.is_fail() ? otherwise.type : then.type, is_dynamic);
  }
  if (then.type != otherwise.type) {
    return wrong(
        "Type mismatch in '?:': the 'then' and 'else' expressions must be of the same type", 2);
  }
  if (is_dynamic && !then.type.is_boolean()) {
    return wrong("The operands of '?:' must be either Boolean or constant", 0);
  }
  return right(then.type, is_dynamic);
}

TypeVerdict check_set(std::span<const TypedOperand> operands) {
  if (any_is_dynamic(operands)) return wrong(constant_expected, first_dynamic(operands));
  const ReachType type = operands.front().type;
  const auto other = std::ranges::find_if(
      operands, [type](const TypedOperand& operand) { return operand.type != type; });
  if (other == operands.end()) return right(set_of(type));
  return wrong("Type mismatch: all expressions in the list must be of the same type",
               static_cast<std::size_t>(other - operands.begin()));
}

TypeVerdict check_threshold_list(std::span<const TypedOperand> operands) {
  const auto other =
      std::ranges::find_if_not(operands.subspan(1), &ReachType::is_boolean, &TypedOperand::type);
  if (other != operands.end()) {
    return wrong("Type mismatch in the operands of 'threshold[*]': the operands must be Boolean",
                 static_cast<std::size_t>(other - operands.begin()));
  }
  return right(a_bool, any_is_dynamic(operands.subspan(1)));
}

TypeVerdict check_others(ReachOp op, std::span<const TypedOperand> operands) {
  switch (op) {
    case ReachOp::in:
      return check_membership(operands);
    case ReachOp::substring:
    case ReachOp::substring_from:
    case ReachOp::substring_to:
      return check_substring(op, operands);
    case ReachOp::choice:
      return check_choice(operands);
    case ReachOp::set:
      return check_set(operands);
    default:
      assert(op == ReachOp::threshold_list);
      return check_threshold_list(operands);
  }
}

}  // namespace

ReachType result_type(ReachOp op, ReachType operand) {
  const auto* rule = std::ranges::find(prefix_rules, op, &PrefixRule::op);
  assert(rule != std::end(prefix_rules));
  return result_of(*rule, operand);
}

TypeVerdict check_operands(ReachOp op, std::span<const TypedOperand> operands,
                           std::uint32_t repeats) {
  const auto* prefix = std::ranges::find(prefix_rules, op, &PrefixRule::op);
  if (prefix != std::end(prefix_rules)) return check_prefix(*prefix, operands.front(), repeats);
  const auto* arithmetic = std::ranges::find(arithmetic_rules, op, &ArithmeticRule::op);
  if (arithmetic != std::end(arithmetic_rules)) return check_arithmetic(*arithmetic, operands);
  if (op >= ReachOp::implies && op <= ReachOp::xor_) {
    return check_connective(spelling_of(op), operands);
  }
  if (op >= ReachOp::equal && op <= ReachOp::at_least) {
    TypeVerdict verdict = check_equal_types(spelling_of(op), operands);
    return verdict.is_right() ? right(a_bool) : verdict;
  }
  return check_others(op, operands);
}

std::string check_domain(const TypedOperand& domain, std::string_view variable) {
  if (domain.type.is_set()) return {};
  return "Type mismatch: the domain of the variable " + std::string(variable) + " must be a set";
}

std::string check_condition(const TypedOperand& condition) {
  if (!condition.type.is_boolean()) {
    return "Type mismatch in 's.t.': the condition must be a Boolean expression";
  }
  return condition.is_dynamic ? constant_expected : "";
}

std::string check_threshold(const TypedOperand& threshold) {
  if (threshold.is_dynamic) return constant_expected;
  if (threshold.type.is_plain(numerical)) return {};
  return "Type mismatch in 'threshold[*]': the threshold must be numerical";
}

std::string check_body(ReachOp op, const TypedOperand& body) {
  if (op == ReachOp::gather) return body.is_dynamic ? constant_expected : "";
  if (op == ReachOp::let || body.type.is_boolean()) return {};
  return "Type mismatch in '" + std::string(spelling_of(op)) +
         "': the body must be a Boolean expression";
}

std::string check_property(const TypedOperand& root) {
  if (root.type.is_boolean()) return {};
  return "Type mismatch in the overall specification: a Boolean expression is expected";
}

TypedOperand type_of_binding(ReachOp op, const TypedOperand& body) {
  assert(check_body(op, body).empty());
  return op == ReachOp::gather ? TypedOperand{set_of(body.type), false} : body;
}

}  // namespace vorel::reachlang
