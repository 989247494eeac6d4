// decomposition/direct_candidates.h - candidates that need no decomposition of a function.
// Here:      one gate for one of a signal's alternatives, a latch for its SET and RESET.
// Not here:  gates of sub-functions (decomposition/alg_decomposer.h,
//            decomposition/boolean_decomposer.h), insertions, costs.
//
// Names are those of BDD variables: variable v is called names[v], and all signals of the solutions
// are among them. From verbosity 4 what is tried is told on the standard error stream.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd_cover.h"
#include "decomposition/deco.h"
#include "decomposition/gate_matcher.h"
#include "synthesis/signal_solution.h"

namespace vorel::decomposition {

// Of an alternative that keeps its four covers.
bdd::BDDCover covers_of(const synthesis::SignalImplementation& alternative,
                        std::span<const std::string> names);

// For each alternative that has one the gate with literals on its pins.
std::vector<Deco> matched_candidates(const synthesis::SignalSolution& solution,
                                     GateMatcher& matcher, std::span<const std::string> names,
                                     OutputInverter inverter);

// Whether SET and RESET together have fewer literals than the gate that they stand for. Costly ones
// are for signals that cannot do without.
enum class LatchCost : std::uint8_t { below_gate, any };

// A latch for each pair of alternatives in turn; of those below the cost of the gate, up to the
// first pair with as many literals as given: the signal's complex gate. None if no latch takes such
// pairs. The candidates have their equations and the gates of SET and RESET, if there are such;
// insertions and judgement are missing.
std::vector<Deco> monotonic_candidates(const std::string& signal, std::uint32_t variable,
                                       const synthesis::SignalSolution& set,
                                       const synthesis::SignalSolution& reset,
                                       std::uint64_t literals, GateMatcher& matcher,
                                       std::span<const std::string> names, LatchCost most,
                                       OutputInverter inverter);

}  // namespace vorel::decomposition
