// tests/support/default_params.h - option values for tests that run an engine without the program.
#pragma once

#include <utility>
#include <vector>

#include "base/params.h"

namespace vorel::support {

using Options = std::vector<std::pair<const char*, int>>;

// What an engine may ask for, and what the given options say instead.
inline base::Params default_params(const Options& options) {
  base::Params params;
  for (const char* key : {"restrict_branching", "store_cnf_formula", "output_configurations",
                          "all_solutions", "method", "min_cost", "incremental_acyclic_constraint"})
    params.set(key, 0);
  for (const char* key :
       {"solver", "no_max_dummies", "enable_via_dummies", "backward_conflict_constraints"})
    params.set(key, 1);
  params.set("inclusion_constraints", -1);
  for (const auto& [key, value] : options) params.set(key, value);
  return params;
}

}  // namespace vorel::support
