// oracle/property_expr.h - expressions of the property language, each with its meaning.
// Here:      types, values, operators put together of operands, variables and their scopes.
// Not here:  which operators are chosen (oracle/random_property.h).
// Text and meaning of an expression are made side by side; nothing reads the text, and nothing is
// simplified.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "oracle/property_model.h"
#include "oracle/random.h"

namespace vorel::oracle {

// Nodes have the number of their kind as base.
constexpr std::uint8_t number_base = 5, text_base = 6, bool_base = 7;

struct PropertyType {
  std::uint8_t base = bool_base;
  int depth = 0;  // how often "set of" stands before
  bool operator==(const PropertyType&) const = default;
};
constexpr PropertyType a_bool{bool_base, 0}, a_number{number_base, 0}, a_text{text_base, 0};
inline PropertyType set_of(PropertyType element) { return {element.base, element.depth + 1}; }
inline PropertyType element_of(PropertyType set) { return {set.base, set.depth - 1}; }

struct PropertyValue {
  std::int64_t number = 0;  // also of a node; 0 or 1 of a bool
  std::string text = {};
  std::vector<PropertyValue> elements = {};  // of a set, sorted
  bool operator==(const PropertyValue&) const = default;
  bool operator<(const PropertyValue& other) const;
};
using PropertyValues = std::vector<PropertyValue>;

PropertyValue set_value(PropertyValues elements);
PropertyValue set_value(const Nodes& nodes);
bool is_in(const PropertyValue& element, const PropertyValue& set);

// What an expression is evaluated in.
struct Frame {
  const PropertyState& state;
  PropertyValues bound;  // by position in the scope
};

// How tightly an expression holds together, as the language orders its operators.
enum Level {
  choice_level = 2,
  compare_level = 8,
  in_level,
  sum_level,
  product_level,
  prefix_level,
  postfix_level,
  primary_level
};

struct PropertyExpr {
  PropertyType type;
  std::string text;
  int level = primary_level;
  std::function<PropertyValue(Frame&)> meaning = {};
  bool is_dynamic = false;
  std::size_t outermost = ~std::size_t{0};  // position in the scope of the first variable used
};
using PropertyExprs = std::vector<PropertyExpr>;

// A text as the language writes it.
std::string quoted(const std::string& bytes);

class PropertyBuilder {
 public:
  using Type = PropertyType;
  using Value = PropertyValue;
  using Values = PropertyValues;
  using Expr = PropertyExpr;
  using Exprs = PropertyExprs;

  explicit PropertyBuilder(std::uint64_t seed) : random_{seed} {}

 protected:
  // An operator that evaluates all its operands. What stays the same is worked out once.
  Expr combine(Type type, std::string text, int level, const Exprs& operands,
               std::function<Value(const Values&)> function) const;
  Expr prefix(const std::string& op, const Expr& operand, Type type,
              std::function<Value(const Value&)> function);
  Expr binary(const Expr& a, const std::string& op, const Expr& b, int level, Type type,
              std::function<Value(const Value&, const Value&)> function);
  Expr literal(Type type, const std::string& text, Value value) const;
  Expr literal(std::int64_t value) const;
  Expr choice(const Expr& chooser, const Expr& then, const Expr& otherwise);
  // In parentheses where the operator around it needs them, and sometimes where it does not.
  std::string at(int level, const Expr& expr);

  // The last one of this type that no later one hides; null if there is none.
  const Expr* find_variable(Type type, bool dynamic) const;
  // A new variable, by any name.
  const std::string& declare(Type type, bool is_dynamic);
  std::size_t scope_size() const { return scope_.size(); }

  // Operators that bind variables, from `outer` on, which leave the scope here. The last part is
  // the body.
  Expr let(std::size_t outer, const std::string& text, const Exprs& parts);
  // Over domains and perhaps a condition; `count` gets the values of the body.
  Expr binding(std::size_t outer, const std::string& text, const Exprs& parts, std::size_t domains,
               Type type, std::function<Value(const Values&)> count);

  Random random_;

 private:
  Expr remembering(Expr expr) const;
  Expr bound(Type type, const std::string& text, std::size_t outer, const Exprs& parts,
             std::function<Value(Frame&)> meaning);

  Exprs scope_;
};

}  // namespace vorel::oracle
