#include "resolution/core_computation.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "base/hashing.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/csc_check.h"
#include "conflicts/usc_check.h"

namespace vorel::resolution {
namespace {

using conflicts::Core;

constexpr std::int32_t new_cores_of_a_kind = 100;
constexpr int verbosity_of_dropped_cores = 3;

void set_search(configuration::SearchOptions& options) {
  options.method = 0;
  options.all_solutions = new_cores_of_a_kind;
  options.min_cost = false;
  options.output_configurations = true;
  options.inclusion = configuration::InclusionConstraints::by_net;
  options.encoding.formula.store_cnf_formula = false;
}

// With dummy cut-offs, two configurations of one marking may seem to enable different signals.
void note_dropped_core() {
  if (base::verbosity() >= verbosity_of_dropped_cores)
    base::print_formatted(std::cerr, "\nIgnoring an incorrect due to dummy cut-offs CSC core");
}

}  // namespace

bool compute_cores(const net::StgPrefix& prefix, configuration::SearchOptions options,
                   conflicts::Notes notes, std::vector<Core>& cores) {
  set_search(options);
  conflicts::CscCheck csc(prefix, options, notes);
  const auto others = std::ranges::stable_partition(
      cores, [&csc](const Core& core) { return csc.is_conflict(core.first, core.second); });
  for (auto core = cores.begin(); core != others.begin(); ++core) csc.seed(*core);
  csc.run();
  if (base::run_failed()) return false;
  if (csc.seen_pairs().empty()) {
    cores.clear();
    return true;
  }

  conflicts::UscCheck usc(prefix, options, conflicts::Notes::left_out);
  const auto seed = [&usc](const Core& core) {
    if (usc.is_conflict(core.first, core.second))
      usc.seed(core);
    else
      note_dropped_core();
  };
  std::ranges::for_each(csc.seen_pairs(), seed);
  std::ranges::for_each(others, seed);  // one that the check has found by now is seeded once
  usc.run();
  if (base::run_failed()) return false;
  cores.assign(usc.seen_pairs().begin(), usc.seen_pairs().end());
  for (Core& core : cores) core.seeded = false;
  return true;
}

}  // namespace vorel::resolution
