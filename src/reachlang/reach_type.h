// reachlang/reach_type.h - the static types of the property language.
// Here:      base types, sets of them to any depth, their names in messages.
// Not here:  which operator takes which types (reachlang/type_rules.h).
#pragma once

#include <cstdint>
#include <string>

namespace vorel::reachlang {

enum class BaseType : std::uint8_t {
  fail = 0,
  condition = 1,
  event = 2,
  place = 3,
  transition = 4,
  signal = 5,
  numerical = 6,
  string = 7,
  boolean = 8,
};

struct ReachType {
  BaseType base = BaseType::fail;
  std::uint32_t depth = 0;  // how often "set of" stands before the base type

  bool is_set() const { return depth > 0; }
  bool is_plain(BaseType wanted) const { return base == wanted && depth == 0; }
  bool is_boolean() const { return is_plain(BaseType::boolean); }
  bool is_fail() const { return is_plain(BaseType::fail); }

  bool operator==(const ReachType&) const = default;
};

inline constexpr ReachType a_bool{BaseType::boolean, 0};
inline ReachType set_of(ReachType element) { return {element.base, element.depth + 1}; }

// The type of the elements of a set.
ReachType element_of(ReachType set);

// "place", "numerical", "bool"; without regard to the depth.
std::string name_of(BaseType base);

// A set of base types, to say what an operand may be.
using BaseTypes = std::uint16_t;
constexpr BaseTypes one_type(BaseType base) {
  return static_cast<BaseTypes>(1u << static_cast<unsigned>(base));
}
constexpr bool contains(BaseTypes types, BaseType base) { return (types & one_type(base)) != 0; }

// "condition, event or place"; with `and_sets`, "condition, event, place or set thereof".
std::string list_of(BaseTypes types, bool and_sets);

}  // namespace vorel::reachlang
