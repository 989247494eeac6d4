// decomposition/decomposition_driver.h - the engine of -T: an STG into the gates of a library.
// Here:      the loop: equations, a decomposition for each signal that no gate implements, the best
//            of them put into the STG as a new signal, until there is a gate for everything.
// Not here:  where decompositions come from (decomposition/signal_decomposer.h), where edges of a
//            new signal can go (decomposition/subfunction_inserter.h), the result as text
//            (decomposition/mapped_circuit.h).
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/params.h"
#include "decomposition/deco.h"
#include "decomposition/gate_library.h"
#include "decomposition/mapped_circuit.h"
#include "decomposition/signal_decomposer.h"
#include "decomposition/signal_variables.h"
#include "decomposition/subfunction_inserter.h"
#include "net/process.h"
#include "synthesis/equation_search.h"

namespace vorel::decomposition {

struct DriverStats {
  std::uint32_t rounds = 0;
  std::uint64_t reused = 0;  // decompositions that still held in a later round
  double derivation_seconds = 0, decomposition_seconds = 0, insertion_seconds = 0;
};

class DecompositionDriver {
 public:
  // run() changes the prefix: its numbers at least, and it gets the inserted signals. Without a
  // name the built-in library is taken.
  DecompositionDriver(net::StgPrefix& prefix, const base::Params& params, std::string library_name);
  ~DecompositionDriver();
  DecompositionDriver(const DecompositionDriver&) = delete;
  DecompositionDriver& operator=(const DecompositionDriver&) = delete;

  // The loop. Once. If it fails there is no circuit, and an error has been reported.
  void run();
  // The verdict and the circuit, to where the name of the output selects.
  void report(const std::string& output) const;
  // A newline and the size of the SAT instance of the last equations.
  void print_statistics(std::ostream& stream) const;

  const MappedCircuit* circuit() const { return circuit_.get(); }  // null without one
  // By name, as they came.
  const std::vector<std::string>& inserted() const { return inserted_; }
  const DriverStats& stats() const { return stats_; }
  // Of what a run has done that has got as far as a library.
  const SignalDecomposer::Stats& decomposer_stats() const;
  const GateMatcher::Stats& matcher_stats() const;
  const InserterStats& inserter_stats() const;

 private:
  struct Tools;  // that live as long as the library

  bool prepare();
  // True once each signal has its gate, false after a failure.
  bool decompose_all();
  bool derive();
  void tell_equations() const;
  void reuse_decompositions();
  // The signal whose decomposition is carried out next.
  std::optional<std::size_t> choose();
  bool apply(std::size_t signal);
  void build_circuit();

  net::StgPrefix& prefix_;
  const base::Params params_;
  const std::string library_name_;
  std::unique_ptr<Tools> tools_;
  std::optional<synthesis::EquationSearch> whole_, latches_;  // of the round
  std::vector<SignalFunctions> functions_;                    // by output or internal signal
  std::map<std::string, Deco> decos_;                         // by signal, those that there are
  std::vector<std::string> inserted_;
  std::unique_ptr<MappedCircuit> circuit_;
  DriverStats stats_;
};

}  // namespace vorel::decomposition
