#include "oracle/random_property.h"

#include <algorithm>
#include <cassert>
#include <cctype>
#include <memory>
#include <span>

#include "oracle/property_expr.h"

namespace vorel::oracle {
namespace {

using Fact = bool (*)(const NodeFacts&);

template <net::SignalKind kind>
bool is_kind(const NodeFacts& f) {
  return f.kind == kind;
}
bool is_dummy(const NodeFacts& f) { return f.kind == net::SignalKind::dummy; }
bool is_local(const NodeFacts& f) {
  return f.kind == net::SignalKind::output || f.kind == net::SignalKind::internal;
}

// What is told of the nodes of a kind: by an operator, and by a set that holds those that have it;
// some by one of them only.
struct FactRow {
  const char *word, *set;
  NodeKind kind;
  Fact holds;
};
bool is_any(const NodeFacts&) { return true; }
bool is_init(const NodeFacts& f) { return f.is_init; }
bool is_plus(const NodeFacts& f) { return f.sign == net::Sign::plus; }
bool is_minus(const NodeFacts& f) { return f.sign == net::Sign::minus; }
constexpr FactRow fact_rows[] = {
    {"is_init", nullptr, condition, is_init},
    {"is_init", nullptr, event, is_init},
    {"is_init", nullptr, place, is_init},
    {"is_init", nullptr, transition, is_init},
    {"is_init", nullptr, signal, is_init},
    {"is_cutoff", "CUTOFFS", event, [](const NodeFacts& f) { return f.is_cutoff; }},
    {"is_plus", nullptr, event, is_plus},
    {"is_plus", nullptr, transition, is_plus},
    {"is_minus", nullptr, event, is_minus},
    {"is_minus", nullptr, transition, is_minus},
    {"is_input", "INPUTS", signal, is_kind<net::SignalKind::input>},
    {"is_output", "OUTPUTS", signal, is_kind<net::SignalKind::output>},
    {"is_internal", "INTERNAL", signal, is_kind<net::SignalKind::internal>},
    {"is_dummy", "DUMMY", signal, is_dummy},
    {"is_local", "LOCAL", signal, is_local},
    {nullptr, "CONDITIONS", condition, is_any},
    {nullptr, "EVENTS", event, is_any},
    {nullptr, "PLACES", place, is_any},
    {nullptr, "TRANSITIONS", transition, is_any},
    {nullptr, "SIGNALS", signal, [](const NodeFacts& f) { return !is_dummy(f); }}};

// From a node to others. To one node: the set forms only lead to sets.
struct StepRow {
  const char* word;
  NodeKind from, to;
  enum { to_set, to_node, of_node_only } form = to_set;
};
constexpr StepRow steps[] = {{"pre", condition, event},
                             {"pre", event, condition},
                             {"pre", place, transition},
                             {"pre", transition, place},
                             {"post", condition, event},
                             {"post", event, condition},
                             {"post", place, transition},
                             {"post", transition, place},
                             {"cond", place, condition},
                             {"ev", transition, event},
                             {"ev", signal, event},
                             {"pls", condition, place, StepRow::to_node},
                             {"tran", event, transition, StepRow::to_node},
                             {"tran", signal, transition},
                             {"sig", event, signal, StepRow::to_node},
                             {"sig", transition, signal, StepRow::to_node},
                             {"trig", event, event, StepRow::of_node_only},
                             {"downclose", event, event}};

// Of numbers, or of truth values as 0 and 1.
struct NumberRow {
  using Int = std::int64_t;
  const char* op;
  int level;
  Int (*function)(Int, Int);
};
using Int = NumberRow::Int;
constexpr NumberRow number_rows[] = {{"+", sum_level, [](Int x, Int y) { return x + y; }},
                                     {"-", sum_level, [](Int x, Int y) { return x - y; }},
                                     {"*", product_level, [](Int x, Int y) { return x * y; }},
                                     {"/", product_level, [](Int x, Int y) { return x / y; }},
                                     {"%", product_level, [](Int x, Int y) { return x % y; }}};
constexpr const NumberRow &sum = number_rows[0], &remainder = number_rows[4];
constexpr NumberRow truth_rows[] = {{"<->", 3, [](Int x, Int y) -> Int { return x == y; }},
                                    {"->", 4, [](Int x, Int y) -> Int { return x <= y; }},
                                    {"|", 5, [](Int x, Int y) { return x | y; }},
                                    {"^", 6, [](Int x, Int y) { return x ^ y; }},
                                    {"&", 7, [](Int x, Int y) { return x & y; }}};

class Generator : PropertyBuilder {
 public:
  Generator(std::uint64_t seed, const ProcessModel& model, bool tells_instances)
      : PropertyBuilder{seed}, model_{model}, tells_instances_{tells_instances} {
    for (const NodeKind kind : {condition, event, place, transition, signal}) {
      if (model.count(kind) > 0) kinds_.push_back(kind);
    }
    has_dummies_ = std::ranges::any_of(model.nodes[signal], is_dummy);
  }

  // With `dynamic` a Boolean expression may depend on the state.
  PropertyExpr make(PropertyType type, int depth, bool dynamic = false) {
    depth = std::max(depth, 0);
    const Expr* variable = random_.chance(40) ? find_variable(type, dynamic) : nullptr;
    if (variable != nullptr) return *variable;
    if (depth > 0 && random_.chance(5)) return let_any(type, depth, dynamic);
    if (depth > 0 && random_.chance(5)) return choose(type, depth, dynamic);
    if (type.depth > 0) return set(type, depth);
    if (type == a_bool) return truth(depth, dynamic);
    if (type == a_number) return integer(depth);
    if (type == a_text) return text(depth);
    return node(static_cast<NodeKind>(type.base), depth);
  }

 private:
  // --- What everything is made of

  template <class Row, std::size_t size>
  const Row& one_of(const Row (&rows)[size]) {
    return rows[random_.below(size)];
  }
  // One of the rows that fit; there is one.
  template <class Row, std::size_t size, class Fits>
  const Row& one_of(const Row (&rows)[size], Fits fits) {
    while (true) {
      const Row& row = one_of(rows);
      if (fits(row)) return row;
    }
  }

  NodeKind some_kind() { return kinds_[random_.below(kinds_.size())]; }
  bool has(NodeKind kind) const { return model_.count(kind) > 0; }

  NodeKind some_named_kind() {
    const NodeKind kind = some_kind();
    return kind == condition ? place : kind == event ? transition : kind;
  }

  const std::string& some_name(NodeKind kind) {
    return model_.nodes[kind][random_.below(model_.nodes[kind].size())].name;
  }

  Type some_type() {
    const int depth = random_.chance(60) ? 0 : random_.chance(80) ? 1 : 2;
    if (random_.chance(60)) return {some_kind(), depth};
    return {static_cast<std::uint8_t>(random_.between(number_base, bool_base)), depth};
  }

  std::string list(Exprs& operands, Type type, int depth, bool dynamic) {
    const std::size_t size = random_.between(1, 3);
    std::string joined;
    for (std::size_t i = 0; i < size; ++i) {
      operands.push_back(make(type, depth - 1, dynamic));
      joined += (i == 0 ? "" : ", ") + operands.back().text;
    }
    return joined;
  }

  Expr let_any(Type type, int depth, bool dynamic) {
    const std::size_t outer = scope_size();
    Exprs parts;
    std::string head = "let ";
    for (std::uint32_t i = random_.between(1, 2); i > 0; --i) {
      const Type defined = random_.chance(40) ? a_bool : some_type();
      parts.push_back(make(defined, depth - 1, dynamic || random_.chance(10)));
      head += declare(defined, parts.back().is_dynamic) + " = " + parts.back().text;
      head += i > 1 ? ", " : " { ";
    }
    parts.push_back(make(type, depth - 1, dynamic));
    return let(outer, head + parts.back().text + " }", parts);
  }

  Expr choose(Type type, int depth, bool dynamic) {
    const Expr then = make(type, depth - 1, dynamic), otherwise = make(type, depth - 1, dynamic);
    if (random_.chance(30)) {
      return combine(type, "1 > len \"ab\" ? fail \"no\" : " + at(choice_level, then), choice_level,
                     {then}, [](const Values& v) { return v[0]; });
    }
    return choice(make(a_bool, depth - 1, dynamic && type == a_bool), then, otherwise);
  }

  // An operator over domains: `keyword` with what stands before them.
  Expr quantifier(const std::string& keyword, Type body_type, Type type, int depth, bool dynamic,
                  std::function<Value(const Values&)> count) {
    const std::size_t outer = scope_size(), weight = weight_;
    const bool takes_several = keyword.front() != 't' && keyword != "gather";
    const std::size_t domains = takes_several ? random_.between(1, 2) : 1;
    Exprs parts;
    std::string head = keyword;
    for (std::size_t i = 0; i < domains; ++i) {
      parts.push_back(domain(depth));
      head += (i == 0 ? " " : ", ") + declare(element_of(parts.back().type), false);
      head += " in " + parts.back().text;
    }
    if (random_.chance(40)) {
      parts.push_back(make(a_bool, depth - 1));
      head += " s.t. " + parts.back().text;
    }
    parts.push_back(make(body_type, depth - 1, dynamic));
    weight_ = weight;
    const std::string whole = head + " { " + parts.back().text + " }";
    return binding(outer, whole, parts, domains, type, std::move(count));
  }

  // Small where many quantifiers stand around it.
  Expr domain(int depth) {
    const Type element = random_.chance(80) ? Type{some_kind(), 0} : some_type();
    const bool is_of_nodes = element.base < number_base && element.depth == 0;
    const std::size_t size = is_of_nodes ? model_.nodes[element.base].size() + 1 : 0;
    const bool is_small = is_of_nodes && weight_ * size <= 200;
    weight_ *= is_small ? size : 3;
    return is_small ? make(set_of(element), depth - 1) : listed_set(element, depth - 1);
  }

  // --- Boolean expressions

  Expr truth(int depth, bool dynamic) {
    if (depth == 0) {
      if (dynamic) return atom(0);
      const bool value = random_.chance(50);
      return literal(a_bool, value ? "true" : "false", {.number = value});
    }
    const std::uint32_t way = random_.below(dynamic ? 16 : 21);
    if (way < 7) return connective(depth, dynamic);
    if (way < 11) return quantified(depth, dynamic);
    if (dynamic && way < 15) return atom(depth);
    if (way % 3 == 0) return comparison(depth);
    if (way % 3 == 1) return attribute(depth);
    const Type type = some_type();
    return binary(make(type, depth - 1), "in", make(set_of(type), depth - 1), in_level, a_bool,
                  [](const Value& x, const Value& y) { return Value{.number = is_in(x, y)}; });
  }

  Expr connective(int depth, bool dynamic) {
    const Expr a = make(a_bool, depth - 1, dynamic);
    if (random_.chance(15)) {
      return prefix("~", a, a_bool, [](const Value& v) { return Value{.number = 1 - v.number}; });
    }
    if (random_.chance(15)) return threshold_list(depth, dynamic);
    return operation(a, one_of(truth_rows), make(a_bool, depth - 1, dynamic));
  }

  static std::int64_t trues(std::span<const Value> values) {
    return std::ranges::count_if(values, [](const Value& v) { return v.number != 0; });
  }

  Expr threshold_list(int depth, bool dynamic) {
    const bool is_bare = random_.chance(30);
    const Expr least = is_bare              ? literal(2)
                       : random_.chance(60) ? literal(random_.below(5))
                                            : make(a_number, depth - 1);
    Exprs operands{least};
    std::string inner = list(operands, a_bool, depth, dynamic);
    if (random_.chance(50)) inner += ", " + list(operands, a_bool, depth, dynamic);
    const std::string head = is_bare ? "threshold(" : "threshold[" + least.text + "](";
    return combine(a_bool, head + inner + ")", primary_level, operands, [](const Values& v) {
      return Value{.number = trues(std::span(v).subspan(1)) >= v[0].number};
    });
  }

  Expr quantified(int depth, bool dynamic) {
    struct Row {
      const char* keyword;
      bool (*function)(std::int64_t trues, std::int64_t all);
    };
    constexpr Row rows[] = {
        {"forall", [](std::int64_t n, std::int64_t all) { return n == all; }},
        {"exists", [](std::int64_t n, std::int64_t) { return n > 0; }},
        {"xorsum", [](std::int64_t n, std::int64_t) { return n % 2 == 1; }},
        {"threshold", [](std::int64_t n, std::int64_t) { return n > 1; }},
        {"threshold[3 % 2]", [](std::int64_t n, std::int64_t) { return n > 0; }},
        {"threshold[3]", [](std::int64_t n, std::int64_t) { return n > 2; }}};
    const Row& row = one_of(rows);
    return quantifier(row.keyword, a_bool, a_bool, depth, dynamic,
                      [f = row.function](const Values& v) {
                        return Value{.number = f(trues(v), static_cast<std::int64_t>(v.size()))};
                      });
  }

  Expr comparison(int depth) {
    struct Row {
      const char* op;
      bool (*function)(bool at_most, bool at_least);
    };
    constexpr Row rows[] = {{"=", [](bool x, bool y) { return x && y; }},
                            {"!=", [](bool x, bool y) { return !(x && y); }},
                            {"<=", [](bool x, bool) { return x; }},
                            {">=", [](bool, bool y) { return y; }},
                            {"<", [](bool x, bool y) { return x && !y; }},
                            {">", [](bool x, bool y) { return y && !x; }}};
    const Type type = some_type();
    const Expr a = make(type, depth - 1), b = random_.chance(15) ? a : make(type, depth - 1);
    // Sets by inclusion, all else by its natural order.
    const auto at_most = [type](const Value& x, const Value& y) {
      if (type.depth == 0) return !(y < x);
      return std::ranges::all_of(x.elements, [&](const Value& v) { return is_in(v, y); });
    };
    const Row& row = one_of(rows);
    return binary(a, row.op, b, compare_level, a_bool,
                  [at_most, f = row.function](const Value& x, const Value& y) {
                    return Value{.number = f(at_most(x, y), at_most(y, x))};
                  });
  }

  Expr attribute(int depth) {
    const FactRow& row = one_of(fact_rows, [this](const FactRow& one) {
      const bool needs_signals = one.holds == is_plus || one.holds == is_minus;
      return one.word != nullptr && has(one.kind) && (model_.has_signals || !needs_signals);
    });
    const Expr operand = node(row.kind, depth - 1);
    const Expr result = prefix(row.word, operand, a_bool, [this, row](const Value& v) {
      return Value{.number = row.holds(model_.at(row.kind, v.number))};
    });
    const bool fails_on_dummies = row.kind == signal && row.holds == is_init;
    return fails_on_dummies ? unless_dummy(operand, result) : result;
  }

  Expr atom(int depth) {
    std::vector<std::pair<char, NodeKind>> ways{{'$', place}, {'$', place}, {'@', transition}};
    if (model_.has_signals) {
      ways.insert(ways.end(), {{'$', signal}, {'@', signal}, {'\'', signal}});
    }
    if (tells_instances_) ways.insert(ways.end(), {{'$', condition}, {'$', event}, {'@', event}});
    const auto [sign, kind] = ways[random_.below(ways.size())];
    if (!has(kind)) return truth(0, false);
    const Expr operand = make({kind, 0}, depth - 1);
    Expr result{.type = a_bool, .text = std::string{sign} + at(prefix_level, operand)};
    if (sign == '\'') result.text = at(postfix_level, operand) + sign;
    result.level = sign == '\'' ? postfix_level : prefix_level;
    result.meaning = [sign, kind, operand](Frame& frame) {
      const auto i = static_cast<std::size_t>(operand.meaning(frame).number - 1);
      if (sign == '$') return Value{.number = frame.state.holds[kind].at(i)};
      if (sign == '@') return Value{.number = frame.state.enabled[kind].at(i)};
      return Value{.number = frame.state.holds[kind].at(i) != frame.state.enabled[kind].at(i)};
    };
    result.is_dynamic = true;
    result.outermost = operand.outermost;
    return kind == signal ? unless_dummy(operand, result) : result;
  }

  // Of a dummy it would be an error.
  Expr unless_dummy(const Expr& operand, const Expr& guarded) {
    if (!has_dummies_) return guarded;
    const Expr test = prefix("is_dummy", operand, a_bool, [this](const Value& v) {
      return Value{.number = is_dummy(model_.at(signal, v.number))};
    });
    return choice(test, literal(a_bool, "false", {}), guarded);
  }

  // --- Numbers and texts

  Expr integer(int depth) {
    const auto minus = [](const Value& v) { return Value{.number = -v.number}; };
    if (depth == 0 || random_.chance(60)) return natural(depth);
    const Expr a = make(a_number, depth - 1);
    if (random_.chance(15)) return prefix("-", a, a_number, minus);
    const NumberRow& row = one_of(number_rows);
    // No division by zero, no product that does not fit.
    Expr b = row.level == sum_level ? make(a_number, depth - 1) : literal(random_.between(1, 5));
    if (random_.chance(30)) b = prefix("-", b, a_number, minus);
    return operation(a, row, b);
  }

  Expr operation(const Expr& a, const NumberRow& row, const Expr& b) {
    return binary(a, row.op, b, row.level, a.type,
                  [f = row.function](const Value& x, const Value& y) {
                    return Value{.number = f(x.number, y.number)};
                  });
  }

  Expr natural(int depth) {
    const std::uint32_t way = random_.below(3);
    if (depth == 0) return literal(random_.below(10));
    if (way == 0) {
      return prefix("len", make(a_text, depth - 1), a_number, [](const Value& v) {
        return Value{.number = static_cast<std::int64_t>(v.text.size())};
      });
    }
    if (way == 1) {
      return prefix("card", make(set_of(some_type()), depth - 1), a_number, [](const Value& v) {
        return Value{.number = static_cast<std::int64_t>(v.elements.size())};
      });
    }
    return prefix("#", node(some_kind(), depth - 1), a_number, [](const Value& v) { return v; });
  }

  Expr text(int depth) {
    const std::uint32_t way = random_.below(4);
    if (depth == 0) {
      constexpr const char* texts[] = {"", "a", "ab \"c\"", "\\n\xc3\xa4", "p1"};
      const std::string bytes = way < 2 ? some_name(some_named_kind()) : one_of(texts);
      return literal(a_text, quoted(bytes), {.text = bytes});
    }
    if (way == 0) return name_of(some_named_kind(), depth - 1);
    if (way == 1) return substring(make(a_text, std::min(depth - 1, 1)));
    if (way == 2) {
      return binary(make(a_text, depth - 1), "+", make(a_text, depth - 1), sum_level, a_text,
                    [](const Value& x, const Value& y) { return Value{.text = x.text + y.text}; });
    }
    const Type type = some_type();
    return prefix("string", make(type, depth - 1), a_text, [this, type](const Value& v) {
      return Value{.text = type == a_text ? v.text : source_of(type, v)};
    });
  }

  Expr name_of(NodeKind kind, int depth) {
    return prefix("name", make({kind, 0}, depth), a_text, [this, kind](const Value& v) {
      return Value{.text = model_.at(kind, v.number).name};
    });
  }

  // From the start, the middle or the end up to one of them.
  Expr substring(const Expr& whole) {
    const std::string size = "len " + at(prefix_level, whole);
    const std::string places[] = {"0", size + " / 2", size};
    const std::uint32_t from = random_.below(3), to = random_.between(from, 2);
    const bool hides_first = from == 0 && random_.chance(50);
    const bool hides_last = to == 2 && !hides_first && random_.chance(50);
    const std::string range =
        (hides_first ? "" : places[from]) + " .. " + (hides_last ? "" : places[to] + " - 1");
    return combine(a_text, at(postfix_level, whole) + "[" + range + "]", postfix_level, {whole},
                   [from, to](const Values& v) {
                     const std::size_t ends[] = {0, v[0].text.size() / 2, v[0].text.size()};
                     return Value{.text = v[0].text.substr(ends[from], ends[to] - ends[from])};
                   });
  }

  // A value as the language would write it.
  std::string source_of(Type type, const Value& value) const {
    if (type.depth > 0) {
      std::string joined;
      for (const Value& element : value.elements) {
        joined += (joined.empty() ? "" : ", ") + source_of(element_of(type), element);
      }
      return "{" + joined + "}";
    }
    if (type == a_bool) return value.number != 0 ? "true" : "false";
    if (type == a_number) return std::to_string(value.number);
    if (type == a_text) return quoted(value.text);
    const std::string letter = letter_of(static_cast<NodeKind>(type.base));
    if (type.base <= event) return letter + ' ' + std::to_string(value.number);
    return letter + quoted(model_.at(static_cast<NodeKind>(type.base), value.number).name);
  }

  // --- Nodes and sets

  static std::string letter_of(NodeKind kind) { return std::string(1, "CEPTS"[kind]); }

  Expr node(NodeKind kind, int depth) {
    depth = std::max(depth, 0);
    const bool is_named = kind != condition && kind != event;
    const std::uint32_t way = random_.below(5);
    if (depth > 0 && is_named && way == 0 && has(event)) {
      const auto fits = [&](const StepRow& one) {
        return one.to == kind && one.form == StepRow::to_node;
      };
      const StepRow& row = one_of(steps, fits);
      return prefix(
          row.word, make({row.from, 0}, depth - 1), {kind, 0},
          [this, row](const Value& v) { return Value{.number = *reached(row, v.number).begin()}; });
    }
    if (is_named && way < 3) {
      const std::string& name = some_name(kind);
      const Expr known = depth > 0 && way == 1 ? name_of(kind, depth - 1)
                                               : literal(a_text, quoted(name), {.text = name});
      return prefix(letter_of(kind), known, {kind, 0}, [this, kind](const Value& v) {
        const auto found = std::ranges::find(model_.nodes[kind], v.text, &NodeFacts::name);
        return Value{.number = found - model_.nodes[kind].begin() + 1};
      });
    }
    return prefix(letter_of(kind), number_of(kind, depth), {kind, 0},
                  [](const Value& v) { return v; });
  }

  Expr number_of(NodeKind kind, int depth) {
    const std::int64_t count = model_.count(kind);
    if (depth == 0) return literal(1 + random_.below(static_cast<std::size_t>(count)));
    return operation(operation(natural(depth - 1), remainder, literal(count)), sum, literal(1));
  }

  Expr set(Type type, int depth) {
    const bool is_of_nodes = type.depth == 1 && type.base < number_base;
    const auto kind = static_cast<NodeKind>(type.base);
    if (is_of_nodes && (depth == 0 || random_.chance(25))) return builtin(kind);
    if (is_of_nodes && random_.chance(50)) return reached_set(kind, depth);
    if (depth > 0 && random_.chance(30)) return algebra(type, depth);
    if (depth > 0 && random_.chance(40)) {
      return quantifier("gather", element_of(type), type, depth, false,
                        [](const Values& v) { return set_value(v); });
    }
    return listed_set(element_of(type), depth);
  }

  Expr listed_set(Type element, int depth) {
    Exprs operands;
    const std::string inner = list(operands, element, depth, false);
    return combine(set_of(element), "{" + inner + "}", primary_level, operands,
                   [](const Values& v) { return set_value(v); });
  }

  Expr algebra(Type type, int depth) {
    const Expr a = make(type, depth - 1), b = make(type, depth - 1);
    if (random_.chance(33)) {
      return binary(a, "+", b, sum_level, type, [](const Value& x, const Value& y) {
        Values all = x.elements;
        all.insert(all.end(), y.elements.begin(), y.elements.end());
        return set_value(all);
      });
    }
    const bool meets = random_.chance(50);
    return binary(a, meets ? "*" : "\\", b, meets ? product_level : sum_level, type,
                  [meets](const Value& x, const Value& y) {
                    Value result;
                    for (const Value& v : x.elements) {
                      if (is_in(v, y) == meets) result.elements.push_back(v);
                    }
                    return result;
                  });
  }

  Expr nodes_where(const std::string& text, int level, NodeKind kind,
                   const std::function<bool(const NodeFacts&)>& holds) {
    Nodes found;
    for (std::int64_t i = 1; i <= model_.count(kind); ++i) {
      if (holds(model_.at(kind, i))) found.insert(i);
    }
    Expr result = literal({kind, 1}, text, set_value(found));
    result.level = level;
    return result;
  }

  Expr builtin(NodeKind kind) {
    const FactRow& row = one_of(
        fact_rows, [kind](const FactRow& one) { return one.kind == kind && one.set != nullptr; });
    return nodes_where(row.set, primary_level, kind, row.holds);
  }

  // A regular expression whose meaning is plain.
  Expr matching(NodeKind kind) {
    const auto escaped = [](const std::string& bytes) {
      std::string result;
      for (const char c : bytes) {
        result.append(std::isalnum(static_cast<unsigned char>(c)) == 0 ? 1 : 0, '\\').push_back(c);
      }
      return result;
    };
    const std::string name = some_name(kind), other = some_name(kind);
    const std::string first(1, name.front()), last(1, name.back());
    const std::pair<std::string, std::function<bool(const NodeFacts&)>> ways[] = {
        {escaped(name), [&](const NodeFacts& f) { return f.name == name; }},
        {escaped(first) + ".*", [&](const NodeFacts& f) { return f.name.starts_with(first); }},
        {".*" + escaped(last), [&](const NodeFacts& f) { return f.name.ends_with(last); }},
        {"(" + escaped(name) + "|" + escaped(other) + ")",
         [&](const NodeFacts& f) { return f.name == name || f.name == other; }},
        {"[^x]{2}", [](const NodeFacts& f) { return f.name.size() == 2 && f.name.find('x') > 1; }}};
    const auto& [pattern, holds] = one_of(ways);
    return nodes_where(letter_of(kind) + letter_of(kind) + quoted(pattern), prefix_level, kind,
                       holds);
  }

  Expr reached_set(NodeKind kind, int depth) {
    if (kind >= place && random_.chance(25)) return matching(kind);
    const StepRow& row = one_of(steps, [kind](const StepRow& one) { return one.to == kind; });
    if (!has(row.from)) return builtin(kind);
    const bool of_set =
        row.form == StepRow::to_node || (row.form == StepRow::to_set && random_.chance(50));
    const Expr operand = make({row.from, of_set ? 1 : 0}, depth - 1);
    return prefix(row.word, operand, {kind, 1}, [this, of_set, row](const Value& v) {
      if (!of_set) return set_value(reached(row, v.number));
      Nodes all;
      for (const Value& element : v.elements) all.merge(reached(row, element.number));
      return set_value(all);
    });
  }

  Nodes reached(const StepRow& row, std::int64_t number) const {
    const std::string word = row.word;
    const NodeFacts& facts = model_.at(row.from, number);
    if (word == "pre") return facts.pre;
    if (word == "post") return facts.post;
    if (word == "trig") return causes(number);
    if (word == "downclose") return past_of(number);
    if (row.form == StepRow::to_node) return {origin(row.from, row.to, number)};
    Nodes instances;
    for (std::int64_t i = 1; i <= model_.count(row.to); ++i) {
      if (origin(row.to, row.from, i) == number) instances.insert(i);
    }
    return instances;
  }

  std::int64_t origin(NodeKind from, NodeKind to, std::int64_t number) const {
    const std::int64_t first = model_.at(from, number).origin;
    return from == event && to == signal ? model_.at(transition, first).origin : first;
  }

  Nodes causes(std::int64_t number) const {
    Nodes result;
    for (const std::int64_t input : model_.at(event, number).pre) {
      result.merge(Nodes(model_.at(condition, input).pre));
    }
    return result;
  }

  Nodes past_of(std::int64_t number) const {
    Nodes result{number};
    for (const std::int64_t cause : causes(number)) result.merge(past_of(cause));
    return result;
  }

  const ProcessModel& model_;
  const bool tells_instances_;
  bool has_dummies_ = false;
  std::vector<NodeKind> kinds_;  // those with nodes
  std::size_t weight_ = 1;  // how often the body of the quantifiers around is evaluated, at most
};

}  // namespace

RandomProperty random_property(std::uint64_t seed, const ProcessModel& model,
                               const RandomPropertyParams& params) {
  // The meaning refers to the generator's tables.
  const auto generator = std::make_shared<Generator>(seed, model, params.tells_instances);
  const PropertyExpr whole = generator->make(a_bool, params.depth, /*dynamic=*/true);
  return {whole.text, [generator, meaning = whole.meaning](const PropertyState& state) {
            Frame frame{state, {}};
            const bool holds = meaning(frame).number != 0;
            assert(frame.bound.empty());
            return holds;
          }};
}

}  // namespace vorel::oracle
