// decomposition/decomposition_driver.h - the engine of -T: an STG into the gates of a library.
// Here:      the loop: equations, a decomposition for each signal that no gate implements, the best
//            of them put into the STG as a new signal, until there is a gate for everything.
// Not here:  where candidates come from (decomposition/signal_decomposer.h), what they cost
//            (decomposition/deco_cost.h), where edges of a new signal can go
//            (decomposition/subfunction_inserter.h), the result as text
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
#include "net/process.h"

namespace vorel::decomposition {

struct DriverStats {
  std::uint32_t rounds = 0;
  std::uint64_t candidates = 0;  // decompositions that were rated
  std::uint64_t matcher_queries = 0, relations = 0;
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

  // The loop. Once. Without a mapped circuit an error has been reported.
  void run();
  // The verdict and the circuit, to where the name of the output selects.
  void report(const std::string& output) const;
  // A newline and the size of the last formula.
  void print_statistics(std::ostream& stream) const;

  // Null without one.
  const MappedCircuit* circuit() const { return circuit_.get(); }
  const std::vector<std::string>& inserted() const { return inserted_; }  // names, as they came
  const DriverStats& stats() const { return stats_; }

 private:
  net::StgPrefix& prefix_;
  std::unique_ptr<MappedCircuit> circuit_;
  std::vector<std::string> inserted_;
  DriverStats stats_;
};

}  // namespace vorel::decomposition
