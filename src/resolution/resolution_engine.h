// resolution/resolution_engine.h - the engine of -R: encoding conflicts resolved step by step.
// Here:      the cores of a step, the choice of a transformation, the loop.
// Not here:  what can be inserted (resolution/insertion_engine.h) or reduced
//            (resolution/reductions.h), what it costs (resolution/cost_formula.h).
//
// One step suggests a transformation, or all of them; the search of least cost takes the best of
// each step until no conflict is left, changing the STG and its prefix in place, and writes both if
// they are to be kept in files.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "base/deadline.h"
#include "base/params.h"
#include "configuration/search_options.h"
#include "conflicts/pair_search.h"
#include "resolution/core_conditions.h"
#include "resolution/insertion_engine.h"
#include "resolution/resolution_solution.h"
#include "resolution/transformation_cost.h"
#include "results/report.h"

namespace vorel::resolution {

// A transformation that has been carried out.
struct AppliedStep {
  TransformationText text;
  std::string signal;  // inserted, if any
};

class ResolutionEngine {
 public:
  // run() changes the prefix: its numbers at least, all of it when conflicts are resolved. What
  // comes of it is saved as "NAME.g" and "NAME.mci", with `file_name` as NAME, and nowhere if that
  // is empty.
  ResolutionEngine(net::StgPrefix& prefix, const base::Params& params, std::string file_name = "");
  ResolutionEngine(const ResolutionEngine&) = delete;
  ResolutionEngine& operator=(const ResolutionEngine&) = delete;

  // Beyond it the search of least cost takes no further step. Before run().
  void set_deadline(const base::Deadline& deadline) { deadline_ = deadline; }
  // The search that the options choose. Once.
  void run();
  // The verdict and the transformations suggested, to where the name of the output selects.
  void report(const std::string& output) const;
  // A newline and the size of the SAT instance of the last step.
  void print_statistics(std::ostream& stream) const;

  const net::StgPrefix& prefix() const { return prefix_; }
  bool has_conflicts() const { return !store_.cores.empty(); }
  // Of the last step.
  const CoreStore& cores() const { return store_; }
  const std::vector<AppliedStep>& applied() const { return applied_; }

 private:
  // What a search for the least cost has found.
  struct Best {
    ResolutionCost cost;
    std::optional<InsertedSignal> inserted;  // none: a reduction
  };

  struct RatedChoice {
    Choice choice;
    std::uint64_t total;  // by the formula
  };

  // Brings the cores up to date and tells their number. False when none is left, and after a
  // reported error.
  bool find_cores();
  void classify_cores();
  // The reductions that remove some core, the cheapest first.
  std::vector<ResolutionCost> rated_reductions() const;
  // The formula of a step, all but the cost. What the cost counts is returned.
  CoreCounters encode_step();
  ResolutionCost rate(const Choice& choice, const InsertedSignal& result) const;

  void suggest_one();
  void suggest_all();
  void resolve_all();
  std::optional<Best> best_transformation();
  std::optional<RatedChoice> cheapest_choice(const ResolutionCost* incumbent);
  void apply(Best best);
  bool makes_progress();
  bool save(const std::string& base_name) const;
  bool save_step() const;
  void add_solution(const ResolutionCost& cost);
  std::string empty_message() const;

  net::StgPrefix& prefix_;
  const configuration::SearchOptions options_;
  const CostCoefficients coefficients_;
  const bool uses_reductions_;
  const std::string file_name_;
  base::Deadline deadline_{0};
  InsertionEngine insertions_;
  CoreStore store_;
  std::uint64_t unlock_number_ = 0;  // of the STG before the step, if reductions are used
  conflicts::Notes notes_ = conflicts::Notes::given;  // until they have been given
  std::uint32_t signals_inserted_ = 0, reductions_applied_ = 0;
  std::size_t fewest_conflicts_, steps_without_progress_ = 0;
  std::vector<AppliedStep> applied_;
  results::Report report_;
};

}  // namespace vorel::resolution
