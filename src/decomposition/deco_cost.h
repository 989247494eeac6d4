// decomposition/deco_cost.h - which candidate is the better one.
// Here:      what the cost of a decomposition is made of, and its order among those of others.
// Not here:  finding gates and insertions for sub-functions (decomposition/subfunction.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <span>
#include <string>

#include "bdd/bdd_cover.h"
#include "bdd/cover_bdd.h"
#include "decomposition/deco.h"
#include "decomposition/gate_library.h"

namespace vorel::decomposition {

// Of a decomposition that cannot be carried out: above every other.
inline constexpr double useless_cost = std::numeric_limits<double>::max();

// From the most significant on. Areas are those of the library.
struct DecoCost {
  bool not_directly_implementable = false;
  bool chosen_not_expected = false;  // the chosen sub-function is not settled
  bool not_reduced_literals = false;
  bool not_local = false;
  double non_splittable_area = 0;    // of what must be decomposed still
  std::uint64_t extra_acks = 0;      // of the chosen sub-function
  double non_mappable_area = 0;      // of what has no gate
  std::uint64_t insertion_cost = 0;  // of the chosen sub-function, for each signal
  double total_area = 0;

  // Compares field by field, as long as the areas are small: a large one carries into the fields
  // above it, so that then it outweighs them. An inverter without area counts as one of area 1.
  double value(double inverter_area) const;
  bool operator==(const DecoCost&) const = default;
};

// What a rating depends on beside the candidate.
struct DecoSetting {
  const GateLibrary& library;
  std::uint32_t signal_count = 0;                      // of the STG
  std::uint32_t first_free_variable = 0;               // from here on variables mean no signal
  std::function<bool(const bdd::BDDCover&)> has_gate;  // whether one gate implements the function
  std::span<const std::string> names = {};             // of variables, for diagnostics
  std::function<std::size_t(const bdd::Bdd&)> literal_count = bdd::literal_count;
};

// Of a useful candidate that has been judged.
DecoCost cost_of(const Deco& deco, const DecoSetting& setting);

// Whether a bound counts what is left of the signal's function.
enum class LiteralsLeft : std::uint8_t { ignored, counted };

// No more than the candidate can cost, whatever insertions there are. Its sub-functions have the
// gates that there are for them.
double least_cost(const Deco& deco, const DecoSetting& setting, LiteralsLeft literals);

// Judges the candidate, then sets its cost and whether it is degraded. At verbosity 3 both are told
// on the standard error stream.
void rate(Deco& deco, const DecoSetting& setting);

// A candidate of a signal, with the literals of the signal's first complex gate.
struct RatedDeco {
  const Deco* deco;
  std::uint64_t gate_literals;
};

// Whether to carry out the one before the other; both have a chosen sub-function. First one that
// leaves nothing of it to be decomposed; then that of the larger signal, the local one, the one
// with fewer additional acknowledgements, the cheaper one.
bool is_preferred(const RatedDeco& candidate, const RatedDeco& best);

}  // namespace vorel::decomposition
