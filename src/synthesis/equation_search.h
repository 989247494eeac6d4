// synthesis/equation_search.h - the engine of -E, -G and -S.
// Here:      equations for all outputs and internal signals, their way to the user.
// Not here:  supports (synthesis/support_search.h), states (synthesis/state_sets.h), texts
//            (synthesis/signal_solution.h, synthesis/verilog_writer.h).
//
// For each function: the candidate supports, on each of them the function's ON-set and OFF-set, of
// these two minimised covers, and the cheaper of their factored forms [KKY-2004].
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "results/report.h"
#include "synthesis/signal_solution.h"
#include "synthesis/state_sets.h"
#include "synthesis/support_search.h"
#include "synthesis/trigger_table.h"

namespace vorel::synthesis {

// What has been derived of an STG before one signal was inserted, which leaves the states as they
// were but for its own value. A signal none of whose transitions shares a place with one of the new
// signal is excited where it was. So on a support without the new signal its functions can stay.
struct KnownEquations {
  std::string inserted;  // empty: the STG is the same
  // By the name of a solution and a context; null if there is none.
  std::function<const SignalImplementation*(const std::string& name,
                                            const std::vector<std::string>& context)>
      find;
};

class EquationSearch {
 public:
  // Refers to the prefix; warns of dummy cut-offs. Functions of more codes than allowed are found
  // as cubes (StateSetSearch).
  EquationSearch(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
                 SynthesisStyle style, configuration::Notes notes = configuration::Notes::given,
                 std::size_t max_codes = StateSetSearch::usual_max_codes);

  // Before run().
  void use(KnownEquations known);

  // Without a conflict of codes that stands in the way every signal gets its solutions; else the
  // conflict is reported, and there are none. At verbosity 1 the notes tell before what the
  // equations take for granted and is not so.
  void run();
  // Delivers the solutions, to a Verilog module if the output is named *.v.
  void report(const std::string& output) const;
  void print_statistics(std::ostream& stream) const;

  // By signal; SET before RESET.
  const results::Report& found() const { return report_; }
  results::Report take() && { return std::move(report_); }
  std::uint64_t solve_calls() const {
    return support_search_.solve_calls() + state_search_.solve_calls();
  }

 private:
  bool derive(SignalFunction function);
  SignalImplementation implementation(const ProjectedFunction& projected);
  // On the support; null if nothing is known.
  const SignalImplementation* known_implementation(const SignalSolution& solution,
                                                   const ProjectedFunction& projected) const;
  toolkit::Cover minimised(const toolkit::Cover& on, const toolkit::Cover& off,
                           const std::vector<CodeArc>& arcs) const;
  std::vector<std::string> names_of(const SignalList& signals) const;
  results::VerdictMessages messages() const;

  const net::StgPrefix& prefix_;
  const SynthesisStyle style_;
  const configuration::Notes notes_;
  const bool output_configurations_;
  const configuration::EncodingOptions encoding_;
  const configuration::StateStructure<net::StgPrefix> structure_;
  const TriggerTable triggers_;
  SupportSearch support_search_;
  StateSetSearch state_search_;
  KnownEquations known_;                         // `find` is null without any
  base::IndexedBy<net::Signal, bool> can_stay_;  // where known equations are used
  results::Report report_;
  std::vector<const SignalSolution*> solutions_;  // those of the report
};

}  // namespace vorel::synthesis
