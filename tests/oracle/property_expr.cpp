#include "oracle/property_expr.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <tuple>

namespace vorel::oracle {

bool PropertyValue::operator<(const PropertyValue& other) const {
  return std::tie(number, text, elements) < std::tie(other.number, other.text, other.elements);
}

PropertyValue set_value(PropertyValues elements) {
  std::sort(elements.begin(), elements.end());
  elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
  return {.elements = std::move(elements)};
}

PropertyValue set_value(const Nodes& nodes) {
  PropertyValue set;
  for (const std::int64_t node : nodes) set.elements.push_back({.number = node});
  return set;
}

bool is_in(const PropertyValue& element, const PropertyValue& set) {
  return std::ranges::find(set.elements, element) != set.elements.end();
}

std::string quoted(const std::string& bytes) {
  std::string result = "\"";
  for (const char c : bytes) result.append(c == '"' || c == '\\' ? 1 : 0, '\\').push_back(c);
  return result + '"';
}

PropertyExpr PropertyBuilder::combine(Type type, std::string text, int level, const Exprs& operands,
                                      std::function<Value(const Values&)> function) const {
  Expr result{.type = type, .text = std::move(text), .level = level};
  for (const Expr& operand : operands) {
    result.is_dynamic = result.is_dynamic || operand.is_dynamic;
    result.outermost = std::min(result.outermost, operand.outermost);
  }
  result.meaning = [operands, function = std::move(function)](Frame& frame) {
    Values values;
    for (const Expr& operand : operands) values.push_back(operand.meaning(frame));
    return function(values);
  };
  return remembering(std::move(result));
}

PropertyExpr PropertyBuilder::remembering(Expr expr) const {
  if (expr.is_dynamic || expr.outermost < scope_.size()) return expr;
  expr.meaning = [meaning = expr.meaning,
                  known = std::make_shared<std::optional<Value>>()](Frame& frame) {
    if (!*known) *known = meaning(frame);
    return **known;
  };
  return expr;
}

std::string PropertyBuilder::at(int level, const Expr& expr) {
  return expr.level >= level && !random_.chance(10) ? expr.text : "(" + expr.text + ")";
}

PropertyExpr PropertyBuilder::prefix(const std::string& op, const Expr& operand, Type type,
                                     std::function<Value(const Value&)> function) {
  const std::string inner = at(prefix_level, operand);
  const char c = inner.front();
  const bool is_apart = c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
  return combine(type, op + (is_apart || random_.chance(50) ? " " : "") + inner, prefix_level,
                 {operand}, [function](const Values& v) { return function(v[0]); });
}

PropertyExpr PropertyBuilder::binary(const Expr& a, const std::string& op, const Expr& b, int level,
                                     Type type,
                                     std::function<Value(const Value&, const Value&)> function) {
  const bool is_right = op == "->";
  const bool is_left = !is_right && level != compare_level && level != in_level;
  const std::string left = at(is_left ? level : level + 1, a);
  const std::string right = at(is_right ? level : level + 1, b);
  return combine(type, left + ' ' + op + ' ' + right, level, {a, b},
                 [function](const Values& v) { return function(v[0], v[1]); });
}

PropertyExpr PropertyBuilder::literal(Type type, const std::string& text, Value value) const {
  return combine(type, text, primary_level, {}, [value](const Values&) { return value; });
}

PropertyExpr PropertyBuilder::literal(std::int64_t value) const {
  return literal(a_number, std::to_string(value), {.number = value});
}

PropertyExpr PropertyBuilder::choice(const Expr& chooser, const Expr& then, const Expr& otherwise) {
  const std::string text = at(choice_level + 1, chooser) + " ? " + then.text + " : ";
  return combine(then.type, text + at(choice_level, otherwise), choice_level,
                 {chooser, then, otherwise},
                 [](const Values& v) { return v[0].number != 0 ? v[1] : v[2]; });
}

const PropertyExpr* PropertyBuilder::find_variable(Type type, bool dynamic) const {
  for (std::size_t i = scope_.size(); i-- > 0;) {
    const Expr& variable = scope_[i];
    const bool is_hidden =
        std::any_of(scope_.begin() + static_cast<std::ptrdiff_t>(i) + 1, scope_.end(),
                    [&](const Expr& later) { return later.text == variable.text; });
    const bool fits = variable.type == type && (dynamic || !variable.is_dynamic);
    if (fits && !is_hidden) return &variable;
  }
  return nullptr;
}

const std::string& PropertyBuilder::declare(Type type, bool is_dynamic) {
  constexpr const char* names[] = {"x", "y", "s", "T1", "_e", "Cut", "is_in"};
  const std::size_t position = scope_.size();
  Expr variable{.type = type, .text = names[random_.below(std::size(names))]};
  variable.meaning = [position](Frame& frame) { return frame.bound.at(position); };
  variable.is_dynamic = is_dynamic;
  variable.outermost = position;
  return scope_.emplace_back(std::move(variable)).text;
}

PropertyExpr PropertyBuilder::bound(Type type, const std::string& text, std::size_t outer,
                                    const Exprs& parts, std::function<Value(Frame&)> meaning) {
  Expr result{.type = type, .text = text};
  result.meaning = std::move(meaning);
  for (const Expr& part : parts) {
    if (part.outermost < outer) result.outermost = std::min(result.outermost, part.outermost);
  }
  result.is_dynamic = parts.back().is_dynamic;
  scope_.resize(outer);
  return remembering(std::move(result));
}

PropertyExpr PropertyBuilder::let(std::size_t outer, const std::string& text, const Exprs& parts) {
  return bound(parts.back().type, text, outer, parts, [parts](Frame& frame) {
    const std::size_t size = frame.bound.size();
    for (const Expr& part : parts) frame.bound.push_back(part.meaning(frame));
    const Value value = frame.bound.back();
    frame.bound.resize(size);
    return value;
  });
}

PropertyExpr PropertyBuilder::binding(std::size_t outer, const std::string& text,
                                      const Exprs& parts, std::size_t domains, Type type,
                                      std::function<Value(const Values&)> count) {
  return bound(type, text, outer, parts, [parts, domains, count](Frame& frame) {
    const bool has_condition = parts.size() > domains + 1;
    Values bodies;
    const std::function<void(std::size_t)> walk = [&](std::size_t i) {
      if (i == domains) {
        const bool counts = !has_condition || parts[i].meaning(frame).number != 0;
        if (counts) bodies.push_back(parts.back().meaning(frame));
        return;
      }
      for (const Value& element : parts[i].meaning(frame).elements) {
        frame.bound.push_back(element);
        walk(i + 1);
        frame.bound.pop_back();
      }
    };
    walk(0);
    return count(bodies);
  });
}

}  // namespace vorel::oracle
