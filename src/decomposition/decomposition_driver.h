// decomposition/decomposition_driver.h - the engine of -T: an STG into the gates of a library.
// Here:      the loop: equations, a decomposition for each signal that no gate implements, the best
//            of them put into the STG as a new signal, until there is a gate for everything.
// Not here:  where decompositions come from (decomposition/signal_decomposer.h), where edges of a
//            new signal can go (decomposition/subfunction_inserter.h), the result as text
//            (decomposition/mapped_circuit.h).
//
// What is known of a new signal before it is there is an estimate: others that wait for it get
// larger functions, and what its edges do not quite fit is a function of its own. So each insertion
// is tried on a copy, and taken if the signals without a gate have come closer to one: the literals
// of their functions, the largest first, are compared in the order of sequences, which cannot
// descend for ever. Where that ends, latches are admitted whatever they cost.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/deadline.h"
#include "base/params.h"
#include "decomposition/deco.h"
#include "decomposition/deco_queue.h"
#include "decomposition/derivation.h"
#include "decomposition/gate_library.h"
#include "decomposition/mapped_circuit.h"
#include "decomposition/signal_decomposer.h"
#include "decomposition/subfunction_inserter.h"
#include "net/process.h"

namespace vorel::decomposition {

struct DriverStats {
  std::uint32_t rounds = 0;
  std::uint64_t tried = 0;   // insertions on a copy
  std::uint64_t reused = 0;  // gates that still did in a later STG
  double derivation_seconds = 0, decomposition_seconds = 0;
};

class DecompositionDriver {
 public:
  // run() changes the prefix: its numbers at least, and it gets the inserted signals. Without a
  // name the built-in library is taken. The STG that the circuit implements is saved as "NAME.g"
  // and "NAME.mci", with `file_name` as NAME, and nowhere if that is empty.
  DecompositionDriver(net::StgPrefix& prefix, const base::Params& params, std::string library_name,
                      std::string file_name = "");
  ~DecompositionDriver();
  DecompositionDriver(const DecompositionDriver&) = delete;
  DecompositionDriver& operator=(const DecompositionDriver&) = delete;

  // Beyond it run() fails, with an error. Before run().
  void set_deadline(const base::Deadline& deadline) { deadline_ = deadline; }
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
  // Of a run that has got as far as a library.
  const SignalDecomposer::Stats& decomposer_stats() const;
  const GateMatcher::Stats& matcher_stats() const;
  const InserterStats& inserter_stats() const;

 private:
  struct Tools;  // that live as long as the library
  // By signal.
  using Implementations = std::map<std::string, Deco>;
  // Literals of the functions without a gate, descending.
  using Complexity = std::vector<std::uint64_t>;

  // What is known of an STG as a whole.
  struct State {
    Derivation equations;
    Implementations implementations;  // of those that have one
    Complexity complexity;
  };
  // An STG with one more signal.
  struct Trial {
    net::StgPrefix prefix;
    std::string signal;  // that is new
    Deco deco;           // that it is for
    State state;
  };
  bool prepare();
  // True once each signal has its gate, false after a failure or if none can be found.
  bool decompose_all();
  // Goes on with the first insertion that brings progress, or else with the one that does least
  // harm.
  bool insert_a_signal();
  // What is done when nothing leads on: true if that has given a signal other ways, which it does
  // once.
  bool admit_costly_latches();
  // The prefix is that of the present state, if there is one, with the signal inserted; without a
  // name, as it is.
  std::optional<State> state_of(const net::StgPrefix& prefix, const Implementations& known,
                                const std::string& inserted);
  // The decomposition that is carried out next; null if there is none.
  const Deco* choose();
  const Deco* best_of(const SignalFunctions& functions);
  // The STG with the signal for it. Nothing if the insertion is not the best any more, as it makes
  // an encoding conflict.
  std::optional<resolution::InsertedSignal> inserted_for(const Deco& deco);
  std::optional<Trial> attempt(const Deco& deco, resolution::InsertedSignal inserted);
  bool adopt(Trial trial);
  void build_circuit();
  bool save(const std::string& base_name) const;
  void tell_statistics() const;

  net::StgPrefix& prefix_;
  const base::Params params_;
  const std::string library_name_, file_name_;
  base::Deadline deadline_{0};
  std::unique_ptr<Tools> tools_;
  std::optional<State> state_;
  // Of the round: decompositions of signals that have been looked at, and functions whose insertion
  // brings no progress.
  std::map<std::string, DecoQueue> decos_;
  std::unordered_set<bdd::Bdd> rejected_;
  std::set<Complexity> seen_;  // what the STG has been like
  int detours_ = 0;
  std::vector<std::string> inserted_;
  std::unique_ptr<MappedCircuit> circuit_;
  DriverStats stats_;
};

}  // namespace vorel::decomposition
