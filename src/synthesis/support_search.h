// synthesis/support_search.h - on which signals a function can depend.
// Here:      the pairs of states that a function must tell apart, what follows for its supports.
// Not here:  the function on a support (synthesis/state_sets.h).
#pragma once

#include <cstdint>
#include <vector>

#include "configuration/state_formula.h"
#include "synthesis/function_phase.h"

namespace vorel::synthesis {

// A set of signals is a support exactly if no two reachable states agree on it and differ in the
// function. So each pair of states that differ in the function gives a set of signals, those whose
// values differ, of which every support must have one. Supports that meet all such sets are found
// without a state graph.
class SupportSearch {
 public:
  SupportSearch(const configuration::StateStructure<net::StgPrefix>& structure,
                const configuration::EncodingOptions& options, SynthesisStyle style);

  // The supports of the function of the signal that hold all triggers: the smallest ones, and those
  // with one signal more, smallest first. None after a reported error; a signal without any support
  // has a conflict of codes, which is reported.
  std::vector<SignalList> supports(SignalFunction function, const SignalList& triggers);

  // Of its SAT instance.
  void print_size(std::ostream& stream) const { states_.formula().print_size(stream); }
  std::uint64_t solve_calls() const { return solve_calls_; }

 private:
  // All least sets of signals in which a pair differs; false if one is empty.
  bool find_differences(SignalFunction function, const SignalList& triggers,
                        std::vector<SignalList>& differences);
  void add_difference_in_function(SignalFunction function, sat::ClauseGroup group);
  SignalList difference_in_model();
  SignalList least_difference(sat::ClauseGroup group);

  configuration::StateFormula states_;
  const SynthesisStyle style_;
  base::IndexedBy<net::Signal, sat::Lit> same_;  // if true, the values in the two states are equal
  std::uint64_t solve_calls_ = 0;
};

}  // namespace vorel::synthesis
