#include "decomposition/easy_cost.h"

#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {

double easy_cost(std::span<const bdd::Bdd> functions) {
  double cost = 0;
  for (const bdd::Bdd& function : functions)
    if (!is_literal(function)) cost += static_cast<double>(node_count(function));
  if (base::verbosity() > 5) {
    std::cerr << "\n EASY_COST:";
    for (const bdd::Bdd& function : functions)
      std::cerr << ' ' << toolkit::to_string(expression_of(function));
    base::print_formatted(std::cerr, "\neasy cost=%.2f", cost);
  }
  return cost;
}

}  // namespace vorel::decomposition
