// zchaff/solver_types.h - the small value types of the solver core.
// Here:      variables, literals, truth values, groups and sets of groups.
// Not here:  clauses (zchaff/clause_arena.h).
#pragma once

#include <cassert>
#include <compare>
#include <cstdint>

namespace vorel::zchaff {

// Counted from 0, below max_variables.
enum class Variable : std::uint32_t {};
inline constexpr std::uint32_t max_variables = 1u << 30;  // a literal and a flag share 32 bits

constexpr std::uint32_t index_of(Variable variable) { return static_cast<std::uint32_t>(variable); }

// Twice the variable, plus 1 if negated.
class Literal {
 public:
  constexpr Literal() = default;
  constexpr Literal(Variable variable, bool negated)
      : code_{2 * index_of(variable) + (negated ? 1u : 0u)} {}
  static constexpr Literal from_code(std::uint32_t code) {
    return {Variable{code / 2}, (code & 1u) != 0};
  }

  constexpr std::uint32_t code() const { return code_; }
  constexpr Variable variable() const { return Variable{code_ / 2}; }
  constexpr bool negated() const { return (code_ & 1u) != 0; }
  constexpr Literal operator~() const { return from_code(code_ ^ 1u); }
  constexpr auto operator<=>(const Literal&) const = default;

 private:
  std::uint32_t code_ = 0;
};

enum class Truth : std::int8_t { no = -1, open = 0, yes = 1 };

// Number of a retractable set of clauses, 1 to max_groups; 0 is what is never retracted.
enum class Group : std::uint32_t {};
inline constexpr Group permanent{0};
inline constexpr std::uint32_t max_groups = 32;

constexpr std::uint32_t index_of(Group group) { return static_cast<std::uint32_t>(group); }

// The groups that something depends on; empty: it holds for ever.
class GroupSet {
 public:
  constexpr GroupSet() = default;
  explicit constexpr GroupSet(Group group)
      : bits_{group == permanent ? 0 : 1u << (index_of(group) - 1)} {
    assert(index_of(group) <= max_groups);
  }

  constexpr bool empty() const { return bits_ == 0; }
  constexpr bool contains(Group group) const { return (bits_ & GroupSet(group).bits_) != 0; }
  constexpr bool is_subset_of(GroupSet other) const { return (bits_ & ~other.bits_) == 0; }
  constexpr GroupSet& operator|=(GroupSet other) {
    bits_ |= other.bits_;
    return *this;
  }
  constexpr bool operator==(const GroupSet&) const = default;

 private:
  std::uint32_t bits_ = 0;  // bit g - 1 is group g
};

}  // namespace vorel::zchaff
