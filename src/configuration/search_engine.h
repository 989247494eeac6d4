// configuration/search_engine.h - the frame in which every property of a process is checked.
// Here:      encode once, then find one solution, all, or one of least cost; keep and report them.
// Not here:  loops over models (sat/enumeration.h, sat/core_guided.h); what a single property
//            encodes (subclasses).
// An engine is made for one run: run() once, then report() once. Every step that can fail is
// followed by a test of the severity; a search that stopped has reported why.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "configuration/search_instance.h"
#include "results/report.h"

namespace vorel::configuration {

template <net::Process P>
class SearchEngine {
 public:
  virtual ~SearchEngine() = default;
  SearchEngine(const SearchEngine&) = delete;
  SearchEngine& operator=(const SearchEngine&) = delete;

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

  // Keeps a reference to the process.
  SearchEngine(const P& process, const SearchOptions& options, results::VerdictMessages messages);

  // Fills the solution from the current model, one trace per encoded configuration.
  virtual void decode(results::Solution& solution) const;
  // Replays a stored solution by means that do not depend on the formula.
  virtual bool validate(const results::Solution& solution) const;
  // Stores what the current model says.
  virtual void record_solution();
  // Outside a search for all solutions the new one replaces the last.
  void add_solution(std::unique_ptr<results::Solution> solution);
  virtual std::unique_ptr<results::Solution> new_solution() const;
  // Builds the instance. Called once in each search.
  virtual void encode(sat::ClauseGroup group) = 0;
  // The literals that tell one solution from another: those of all events in all configurations.
  virtual sat::Lits solution_literals() const { return instance_.event_literals(); }

  // True when a solution was found.
  virtual bool search_one();
  virtual bool search_all();
  // The cost is the number of events in all configurations.
  virtual bool search_least_cost();

  const P& process() const { return structure_.process(); }
  const StateStructure<P>& structure() const { return structure_; }
  const SearchOptions& options() const { return options_; }
  SearchInstance<P>& instance() { return instance_; }
  const SearchInstance<P>& instance() const { return instance_; }
  sat::CnfFormula& formula() { return instance_.formula(); }
  const results::Report& found() const { return report_; }

 private:
  const StateStructure<P> structure_;
  const SearchOptions options_;
  const results::VerdictMessages messages_;
  SearchInstance<P> instance_;
  results::Report report_;
};

}  // namespace vorel::configuration
