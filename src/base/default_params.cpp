#include "base/default_params.h"

#include <limits>

namespace vorel::base {
namespace {

struct DefaultRow {
  std::string_view key;
  std::int32_t value;
};

// In the order of insertion.
constexpr DefaultRow defaults[] = {
    {"mode", 0},
    {"solver", -1},
    {"store_cnf_formula", 0},
    {"restrict_branching", 0},
    {"output_configurations", 0},
    {"all_solutions", 0},
    {"method", 0},
    {"min_cost", 0},
    {"wait_mode", 0},
    {"no_max_dummies", 1},
    {"enable_via_dummies", 1},
    {"inclusion_constraints", -1},
    {"backward_conflict_constraints", 1},
    {"incremental_acyclic_constraint", 0},
    {"concurrent_insertions", 0},
    {"pwr_of_2", 0},
    {"use_concurrency_reduction", 0},
    {"decompose_down_to_trivial", 0},
    {"use_latches", 1},
    {"max_gate_inputs", std::numeric_limits<std::int32_t>::max()},
    {"verbosity", 0},
    {"coeff_CSC_cores", 8},
    {"coeff_USC_cores", 4},
    {"coeff_delay", 2},
    {"coeff_logic", 1},
    {"coeff_seq_insertions", 4},
    {"coeff_conc_insertions", 4},
    {"coeff_non_locked_signals", 50},
};

}  // namespace

Params default_params() {
  Params params;
  for (const DefaultRow& row : defaults) params.set(row.key, row.value);
  return params;
}

}  // namespace vorel::base
