// configuration/search_engine.h - the frame in which every property of a process is checked.
// Here:      encode once, then find one solution, all, or one of least cost; keep and report them.
// Not here:  loops over models (sat/enumeration.h, sat/least_cost.h); what a single property
//            encodes (subclasses).
// An engine is made for one run: run() once, then report() once. Every step that can fail is
// followed by a test of the severity; a search that stopped has reported why.
// On a merged process a model may still have causal cycles (configuration/acyclicity.h): whoever
// needs a model asks solve(), not the formula.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "base/params.h"
#include "configuration/acyclicity.h"
#include "configuration/configuration_vars.h"
#include "results/report.h"

namespace vorel::configuration {

template <net::Process P>
class SearchEngine {
 public:
  virtual ~SearchEngine() = default;

  // The search that the options `all_solutions` and `min_cost` choose.
  virtual void run();
  // Replays every solution, then delivers the verdict and the solutions; after a failed replay only
  // that error is told. The name of the output selects the form (results::deliver).
  virtual void report(const std::string& output) const;
  // A newline and the size of the SAT instance.
  virtual void print_statistics(std::ostream& stream) const;
  // A hook for subclasses, called after the search.
  virtual void finish() {}

 protected:
  using Event = typename P::Event;

  // Keeps a reference to the process and a copy of the options.
  SearchEngine(const P& process, const base::Params& params, results::VerdictMessages messages);

  // Fills the solution from the current model, one trace per encoded configuration.
  virtual void decode(results::Solution& solution) const;
  // Replays a stored solution by means that do not depend on the formula.
  virtual bool validate(const results::Solution& solution) const;
  // Stores what the current model says.
  virtual void record_solution();
  // Outside a search for all solutions the new one replaces the last.
  void add_solution(std::unique_ptr<results::Solution> solution);
  virtual std::unique_ptr<results::Solution> new_solution() const;
  // The cost as a binary number, least significant bit first: by default the number of events.
  virtual sat::Lits cost_bits(sat::Polarity polarity);
  // Builds the instance. Called once in each search.
  virtual void encode(sat::ClauseGroup group) = 0;
  // The literals that tell one solution from another: those of all events in all configurations.
  virtual sat::Lits solution_literals() const;

  // Solves until the model is one of configurations; tells the size of the instance of a merged
  // process whenever it has grown. False when there is none, and after a reported failure.
  bool solve();

  // True when a solution was found.
  virtual bool search_one();
  virtual bool search_all();
  virtual bool search_least_cost();

  // The i-th configuration; it and those before it are made on demand.
  ConfigurationVars<P>& configuration(std::uint32_t i);
  // Causality, conflicts and, where the options ask for it, the rule on maximal dummies; on merged
  // processes also what only they need. Once for each of the engine's own configurations.
  void encode_configuration(ConfigurationVars<P>& vars, sat::ClauseGroup group);
  const P& process() const { return process_; }
  base::Params& params() { return params_; }
  sat::CnfFormula& formula() { return formula_; }
  const results::Report& found() const { return report_; }

 private:
  // The first solution, its cost bits and their values in its own model.
  bool start_least_cost(sat::Lits& bits, std::vector<bool>& values);
  void encode_merged_rules(ConfigurationVars<P>& vars, sat::ClauseGroup group);
  // True when the model had a cycle, and clauses were added.
  bool refine();
  void print_instance_size() const;

  const P& process_;
  base::Params params_;
  std::int32_t all_solutions_;  // 0 one, -1 all, N at most about N
  results::VerdictMessages messages_;
  sat::CnfFormula formula_;
  std::vector<std::unique_ptr<ConfigurationVars<P>>> configurations_;
  std::vector<std::unique_ptr<Acyclicity<P>>> acyclicity_;  // on merged processes: of each of them
  bool has_grown_ = true;  // the instance, since it was last solved
  results::Report report_;
};

}  // namespace vorel::configuration
