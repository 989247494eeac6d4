// decomposition/gate_matcher.h - is a function implemented by a single gate, and how cheaply?
// Here:      the search over gates, all assignments of inputs to their pins at once; what a matched
//            gate does.
// Not here:  the library (decomposition/gate_library.h), how choices are told by BDD variables
//            (decomposition/pin_choices.h).
//
// A query is the function of a signal as four sets of codes. A match puts on each pin a variable of
// the query, its complement or a constant, and may invert the output; a variable may stand on
// several pins, or on none. With it the gate is excited to rise on all of ER+, keeps its 1 on QR+,
// falls on ER- and keeps its 0 on QR-; elsewhere it may do anything. A latch with an inverted
// output also keeps its new value while the inverter follows.
//
// Of all matches the one with the least area is taken, then that with the fewest inverters, then
// that of the first gate. A query that a constant implements matches gates without inputs only: a
// constant needs a driver, however cheap a wire is.
//
// Of choices that differ in the order of pins that the gate does not tell apart one is tried, and
// of those that differ in the order of inputs that the query does not tell apart.
//
// The choices that make the gate right at one code of the query are a BDD without the variables of
// the query, and a small one. All choices must be right at one edge for each input that is needed;
// then at a code where the cheapest that is left is wrong, until it is right everywhere: so it is
// the cheapest of all, without a look at all codes [STBSS-2006].
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "bdd/bdd_cover.h"
#include "decomposition/gate_library.h"
#include "decomposition/gate_match.h"

namespace vorel::decomposition {

class PinChoices;

// Whether a match may have an inverter behind the gate.
enum class OutputInverter : std::uint8_t { admitted, refused };

class GateMatcher {
 public:
  struct Stats {
    std::uint64_t queries = 0;  // calls of match
    std::uint64_t gates = 0;    // that were tried
    std::uint64_t codes = 0;    // where the cheapest choice left was wrong
  };

  // The gates are of the library, in the order of GateLibrary::gate_list. The library outlives
  // this.
  GateMatcher(const GateLibrary& library, const std::vector<std::string>& gates);

  // The match does not exist if no gate implements the query. No query is searched for twice.
  // `names` are those of the query's variables, for the diagnostics that go to the standard error
  // stream from verbosity 5.
  GateMatch match(const bdd::BDDCover& query, std::span<const std::string> names = {},
                  OutputInverter inverter = OutputInverter::admitted);

  // What a signal does whose gate is that of a match, with these inputs and inverters.
  bdd::BDDCover covers_of_match(const GateMatch& match);
  // True if the match, which exists, is one for the query.
  bool implements(const bdd::BDDCover& query, const GateMatch& match);

  // Of a gate of this matcher, over variables that are numbered like its pins.
  const bdd::BDDCover& covers(const std::string& gate);

  const Stats& stats() const { return stats_; }

 private:
  class Query;
  struct Demand;

  struct Gate {
    const toolkit::LibraryGate* description;
    // Computed at first use:
    std::optional<bdd::BDDCover> covers;
    std::vector<std::uint32_t> earlier_twin;                       // by pin, see PinChoices::valid
    std::map<std::vector<std::uint32_t>, bdd::Bdd> valid_choices;  // by earlier_alike of the query
  };

  const bdd::BDDCover& covers(Gate& gate);
  const bdd::Bdd& valid_choices(Gate& gate, const Query& query);
  bool is_admitted(const Gate& gate, const Query& query) const;
  GateMatch found_match(const bdd::BDDCover& cover, OutputInverter inverter);
  struct SetsHash {
    std::size_t operator()(const std::vector<bdd::Bdd>& sets) const;
  };
  using KnownMatches = std::unordered_map<std::vector<bdd::Bdd>, GateMatch, SetsHash>;
  GateMatch best_match(Query& query);
  std::optional<GateMatch> cheapest_match(Gate& gate, Query& query);
  bdd::Bdd right_choices(Gate& gate, const PinChoices& choices, const Demand& demand);
  void tell_all_matches(Gate& gate, const Query& query, bdd::Bdd matches);

  const GateLibrary& library_;
  std::vector<Gate> gates_;
  std::map<std::string, std::size_t, std::less<>> number_of_;  // of a gate, by name
  KnownMatches known_;            // by the four sets and whether inverters are admitted
  KnownMatches known_renamed_;    // of queries over inputs that are numbered from 0
  std::uint32_t max_inputs_ = 1;  // of a gate
  Stats stats_;
};

// Whether the gate does what the query asks for, in each of its four sets.
bool does(const bdd::BDDCover& gate, const bdd::BDDCover& query);

// The function of a signal that `set` makes rise and `reset` makes fall: it keeps its value where
// they are equal. This is a C-element with one inverted input; a latch that decides about set and
// reset at a time implements another function.
bdd::BDDCover monotonic_shape(const bdd::Bdd& set, const bdd::Bdd& reset);

}  // namespace vorel::decomposition
