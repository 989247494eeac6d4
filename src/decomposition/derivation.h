// decomposition/derivation.h - the equations of an STG, as its decomposition starts from them.
// Here:      all signals as complex gates and, for latches, by SET and RESET.
// Not here:  deriving equations (synthesis/equation_search.h).
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/params.h"
#include "configuration/search_options.h"
#include "net/process.h"
#include "results/report.h"
#include "synthesis/signal_solution.h"

namespace vorel::decomposition {

// What has been derived of a signal.
struct SignalFunctions {
  const synthesis::SignalSolution* solution = nullptr;  // keeps the four sets
  // Of a latch that drives it; null if no latches are used.
  const synthesis::SignalSolution* set = nullptr;
  const synthesis::SignalSolution* reset = nullptr;

  const std::string& name() const { return solution->name(); }
};

class Derivation {
 public:
  // What was derived before the signal of this name was inserted; with an empty one, of the same
  // STG.
  struct Before {
    const Derivation& derivation;
    std::string inserted;
  };
  // Nothing if there is nothing to derive, and after a reported failure. Refers to the prefix, and
  // to what was before, no more when it is done.
  static std::optional<Derivation> of(const net::StgPrefix& prefix, const base::Params& params,
                                      configuration::Notes notes, const Before* before = nullptr);

  // By output and internal signal.
  const std::vector<SignalFunctions>& functions() const { return functions_; }
  // A newline and the size of the last formula.
  const std::string& statistics() const { return statistics_; }

 private:
  using Implementations = std::vector<synthesis::SignalImplementation>;

  Derivation() = default;
  const synthesis::SignalImplementation* find(const std::string& solution,
                                              const std::vector<std::string>& context) const;

  results::Report whole_, latches_;
  std::vector<SignalFunctions> functions_;
  std::map<std::string, Implementations> all_;  // by solution, those on all supports
  std::string statistics_;
};

}  // namespace vorel::decomposition
