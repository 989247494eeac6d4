// configuration/search_options.h - the options of a search, as its engine reads them once.
#pragma once

#include <cstdint>

#include "base/params.h"
#include "configuration/state_structure.h"
#include "sat/cnf_formula.h"

namespace vorel::configuration {

// What makes a model a configuration of the kind that is looked for.
struct EncodingOptions {
  sat::CnfParams formula;
  bool no_max_dummies = true;  // no configuration ends in a dummy; STGs only
  Enabledness enabledness = Enabledness::via_dummies;
  // Merged processes only: redundant clauses on producers, and cycles excluded only when met.
  bool backward_conflicts = true;
  bool incremental_acyclicity = false;

  // For a process whose dummies are transitions like any other.
  EncodingOptions without_dummy_rules() const;
};

// What is told about the input besides the answer: who searches one prefix many times leaves it out
// after the first.
enum class Notes : std::uint8_t { given, left_out };

enum class InclusionConstraints : std::int8_t { by_net = -1, none = 0, added = 1 };

struct SearchOptions {
  EncodingOptions encoding;
  std::int32_t all_solutions = 0;  // 0 one, -1 all, N at most about N
  bool min_cost = false;           // not with all_solutions
  bool output_configurations = false;
  std::int32_t method = 0;  // 0: the engine's own default
  InclusionConstraints inclusion = InclusionConstraints::by_net;
  // A question about a pair is first asked of a part of the prefix, of at most so many times fewer
  // events, or of so many times fewer candidates: where that is not much smaller than the whole,
  // nothing is won.
  std::uint32_t local_share = 8;

  static SearchOptions of(const base::Params& params);

  // -1 stands for all: as an unsigned number, the highest limit.
  std::uint32_t limit() const { return static_cast<std::uint32_t>(all_solutions); }
};

}  // namespace vorel::configuration
