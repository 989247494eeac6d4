// conflicts/conflict_check.h - the search for two configurations that are in conflict.
// Here:      the pair, the constraint on their codes, inclusion, the rounds over candidates, the
//            searches for one, all and the cheapest.
// Not here:  what a conflict is (conflicts/csc_check.h, usc_check.h, normalcy_check.h).
//
// Method 1 asks for a difference in any candidate (signal or place), method 2 for each candidate in
// turn, in one solver: what is learnt in one round serves the next. docs/semantics.md tells what
// the two configurations are.
#pragma once

#include "configuration/search_engine.h"
#include "configuration/state_literals.h"
#include "conflicts/core_blocking.h"

namespace vorel::conflicts {

// What the two configurations' inclusion in each other leaves open.
enum class Inclusion : std::uint8_t {
  first_in_second,
  either_in_other,
};

class ConflictCheck : public configuration::SearchEngine<net::StgPrefix> {
 public:
  // Before run(): a core that counts as found already.
  void seed(Core core);
  // The cores found by a search for all solutions and those seeded, in the order of finding.
  const std::list<Core>& seen_pairs() const { return seen_pairs_.cores(); }

  // Whether two configurations are in conflict, worked out without the formula.
  virtual bool is_conflict(const configuration::EventSet& one,
                           const configuration::EventSet& other) const = 0;

 protected:
  // Fixes `method` and `inclusion_constraints` in its copy of the options, where they are open.
  ConflictCheck(const net::StgPrefix& prefix, const base::Params& params,
                results::VerdictMessages messages);
  // Concrete checks end their construction with it.
  void warn_of_dummy_cutoffs() const;

  // What the next steps say is added to the permanent group.
  void encode(sat::ClauseGroup group) final;
  virtual void prepare_encoding() {}
  virtual Inclusion inclusion() const = 0;
  virtual void add_code_constraint();
  virtual void add_any_difference() = 0;
  virtual std::uint32_t first_candidate() const = 0;
  virtual std::uint32_t end_candidate() const = 0;
  virtual void add_candidate_difference(std::uint32_t candidate, sat::ClauseGroup group) = 0;

  bool search_one() override;
  bool search_all() override;
  bool search_least_cost() override;
  // In a search for all solutions: keeps what the current model says and excludes it.
  virtual void record_and_block();
  // Solutions out of what record_and_block() has kept.
  virtual void make_all_solutions();
  virtual std::unique_ptr<results::Solution> solution_of_pair(const Core& core) const = 0;
  bool validate(const results::Solution& solution) const override;

  // The difference in any of these pairs of literals.
  void add_any_of_differences(std::span<const std::pair<sat::Lit, sat::Lit>> pairs);
  // Excludes the pairs that the core explains, but for those with one of the literals.
  void block(const Core& core, sat::ClauseGroup group, std::span<const sat::Lit> unless = {});
  // Of the clauses that last for one candidate.
  sat::ClauseGroup round_group() const;

  bool output_configurations() const { return output_configurations_; }
  bool takes_candidates_in_turn() const { return method_ != 1; }
  std::uint32_t candidate() const { return candidate_; }  // of the current round of method 2
  const configuration::StateStructure& structure() const { return structure_; }
  const configuration::FinalStates& final_states() const { return final_states_; }
  configuration::StateLiterals& first() { return *states_[0]; }
  configuration::StateLiterals& second() { return *states_[1]; }
  sat::ModelValue model_value(sat::Lit lit) const { return pair_.front()->formula.value(lit); }
  // The two configurations of the current model.
  std::pair<configuration::EventSet, configuration::EventSet> model_pair() const;
  std::unique_ptr<results::Solution> with_traces(std::unique_ptr<results::Solution> solution,
                                                 const Core& core) const;

 private:
  // Calls `round` for all candidates together, or for each in turn until it says false.
  void for_each_round(const std::function<bool()>& round);
  void add_inclusion_constraints();
  sat::Lit difference(std::uint32_t event);
  // The length of the two traces of the current model.
  std::uint64_t model_cost() const;

  const bool conflict_free_, output_configurations_;
  std::int32_t method_;
  const configuration::StateStructure structure_;
  const configuration::FinalStates final_states_;
  std::vector<std::unique_ptr<configuration::StateLiterals>> states_;
  std::vector<const configuration::ConfigurationVars<net::StgPrefix>*> pair_;
  MinimalCores seen_pairs_;
  std::uint32_t candidate_ = base::no_index;
};

// Makes the two literals equal.
void add_equivalence(sat::CnfFormula& formula, sat::Lit a, sat::Lit b, sat::ClauseGroup group);

}  // namespace vorel::conflicts
