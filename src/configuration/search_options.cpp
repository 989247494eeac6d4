#include "configuration/search_options.h"

namespace vorel::configuration {

EncodingOptions EncodingOptions::without_dummy_rules() const {
  EncodingOptions options = *this;
  options.no_max_dummies = false;
  options.enabledness = Enabledness::direct;
  return options;
}

SearchOptions SearchOptions::of(const base::Params& params) {
  const bool via_dummies = params.get("enable_via_dummies") != 0;
  return {
      .encoding = {.formula = sat::CnfParams::of(params),
                   .no_max_dummies = params.get("no_max_dummies") != 0,
                   .enabledness = via_dummies ? Enabledness::via_dummies : Enabledness::direct,
                   .backward_conflicts = params.get("backward_conflict_constraints") != 0,
                   .incremental_acyclicity = params.get("incremental_acyclic_constraint") != 0},
      .all_solutions = params.get("all_solutions"),
      .min_cost = params.get("min_cost") != 0,
      .output_configurations = params.get("output_configurations") != 0,
      .method = params.get("method"),
      .inclusion = static_cast<InclusionConstraints>(params.get("inclusion_constraints")),
  };
}

}  // namespace vorel::configuration
