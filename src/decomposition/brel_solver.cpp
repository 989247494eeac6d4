#include "decomposition/brel_solver.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include "decomposition/brel_search.h"

namespace vorel::decomposition {
namespace {

using bdd::Bdd;

// The variables that the relation depends on.
BrelRelation needed_part(const BrelRelation& whole) {
  const std::vector<std::uint32_t> support = whole.relation.support();
  const auto is_needed = [&support](const Bdd& variable) {
    return std::ranges::binary_search(support, variable.variable());
  };
  BrelRelation part{whole.relation, {}, {}};
  std::ranges::copy_if(whole.inputs, std::back_inserter(part.inputs), is_needed);
  std::ranges::copy_if(whole.outputs, std::back_inserter(part.outputs), is_needed);
  assert(part.inputs.size() + part.outputs.size() == support.size() &&
         "a relation between its inputs and its outputs");
  return part;
}

}  // namespace

BrelSolver::BrelSolver(BrelRelation relation, const BrelOptions& options, BrelCallbacks callbacks)
    : relation_{std::move(relation)}, options_{options}, callbacks_{std::move(callbacks)} {}

BrelResult BrelSolver::solve() && {
  BrelRelation needed = needed_part(relation_);
  if (needed.inputs.size() + needed.outputs.size() <= options_.most_table_variables)
    return BrelSearch<BrelTables>(relation_, std::move(needed), options_, callbacks_).run();
  return BrelSearch<BrelAlgebra>(relation_, std::move(needed), options_, callbacks_).run();
}

BrelResult brel_solve(const Bdd& relation, std::vector<Bdd> inputs, std::vector<Bdd> outputs,
                      const BrelOptions& options, BrelCallbacks callbacks) {
  BrelRelation whole{relation, std::move(inputs), std::move(outputs)};
  return BrelSolver(std::move(whole), options, std::move(callbacks)).solve();
}

}  // namespace vorel::decomposition
