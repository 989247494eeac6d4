// reachlang/exclusive_parts.h - parts of a property of which at most one is true at a time.
// Here:      what tokens a part needs, lists of parts whose tokens exclude each other.
// Not here:  which places exclude each other (configuration/place_concurrency.h), counting
//            (sat/integer_circuit.h).
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "configuration/place_concurrency.h"
#include "configuration/state_structure.h"
#include "reachlang/reach_expr.h"

namespace vorel::reachlang {

// A count of literals that exclude each other pairwise, such as the states of one process, costs a
// solver a search that grows like that for pigeons in holes; a count of lists of them does not.
template <net::Process P>
class ExclusiveParts {
 public:
  // A property in normal form; both must outlive it.
  ExclusiveParts(const ReachExpr& expr, const P& process, configuration::Enabledness enabledness)
      : expr_{expr}, process_{process}, enabledness_{enabledness} {}

  // The nodes in few lists; at most one node of a list is true in a state that a configuration ends
  // in. The relation of places is made at the first call. What would cost more than it saves is not
  // tried, and leaves nodes alone: nets of many places, many lists for one node, many pairs of
  // tokens in all calls.
  std::vector<std::vector<ReachNodeId>> divide(std::span<const ReachNodeId> nodes);

 private:
  // In the place; in this condition, if it has a number.
  struct Token {
    std::uint32_t place, condition;
  };
  using Tokens = std::vector<Token>;
  using Lists = std::vector<std::vector<std::size_t>>;  // of positions

  Tokens needs_of(ReachNodeId id) const;
  Tokens needs_of_atom(const ReachNode& atom) const;
  bool exclude(const Tokens& some, const Tokens& others) const;
  Lists first_fit(std::span<const std::size_t> order);

  const ReachExpr& expr_;
  const P& process_;
  const configuration::Enabledness enabledness_;
  std::optional<configuration::PlaceConcurrency> concurrency_;
  std::vector<Tokens> needs_;  // scratch: of the nodes at hand
  std::uint64_t steps_ = 0;
};

}  // namespace vorel::reachlang
