// decomposition/subfunction_inserter.h - new signals that compute given functions.
// Here:      the best set of edges for a function, all that was found for a function kept until the
//            STG changes; putting a set into the STG.
// Not here:  which edges a function admits (decomposition/edge_states.h), which edges make a signal
//            (resolution/insertion_engine.h).
//
// The function picks from the candidates of the resolution of conflicts those that could be rising
// edges, and those that could be falling ones. The formula of a step of that resolution chooses
// among them. What it chooses is looked at: a state in which the next value is not the function
// becomes a clause more. Only if no edges compute the function, edges are taken that come close. A
// signal that would only rise, or only fall, is none. Where there is nothing, edges with several
// sources and targets are candidates, too, and only what computes the function will do.
//
// Edges can make an encoding conflict. As that is rare and takes a search through pairs of states,
// it is checked of an insertion that is about to be carried out, and refused then. Where cut-offs
// are dummies the check is not reliable: it refuses good edges, too.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/deadline.h"
#include "base/params.h"
#include "bdd/bdd.h"
#include "configuration/search_options.h"
#include "decomposition/subfunction_insertion.h"
#include "resolution/insertion_engine.h"
#include "resolution/transformation_cost.h"
#include "resolution/transition_locks.h"

namespace vorel::decomposition {

// One entry of the cache. The initial values are those for the function without complement.
struct InsertionResult {
  struct Slot {
    bool is_computed = false;
    std::optional<SubfunctionInsertion> insertion;  // none: there is none
  };
  Slot best;
  Slot best_local;                                   // with exactly one signal that waits
  std::vector<SubfunctionInsertion> insertions;      // all that were met on the way, the best first
  std::vector<resolution::SignalInsertion> refused;  // sets of edges that do not count
};

struct InserterStats {
  std::uint64_t questions = 0, cache_hits = 0;
  std::uint64_t choices = 0;            // sets of edges looked at
  std::uint64_t deviating = 0;          // of these, not the function in some state
  std::uint64_t refused = 0;            // of these
  std::uint64_t searches_given_up = 0;  // because too many were refused
  // With insertions of tag General; of these, with a result.
  std::uint64_t searches_of_general = 0, general_found = 0;
  double seconds = 0;  // in all searches
};

class SubfunctionInserter {
 public:
  // The prefix must be numbered causally, its cut-offs have known correspondents, its signals known
  // initial values. Variable v of all functions stands for the signal names[v], which may grow; an
  // entry that is no signal of the STG may not be used. New signals get the base name, with a
  // number where that is taken.
  SubfunctionInserter(net::StgPrefix& prefix, std::string base_name,
                      const std::vector<std::string>& names, const base::Params& params);
  ~SubfunctionInserter();

  // Beyond it a search that is not finished ends with an error.
  void set_deadline(const base::Deadline& deadline) { deadline_ = deadline; }
  // The best insertion for the function; with `local`, the best of those that are local. None if
  // there is none, and after a reported failure. The context, which may be any text, says what the
  // function is for: it appears in what is told of the search, on the standard error stream, and
  // does not change the result. A function and its complement share what was found.
  std::optional<SubfunctionInsertion> insert(const bdd::Bdd& function, const std::string& context,
                                             bool local);

  // Whether the STG of a prefix that after() has made is without encoding conflicts.
  bool keeps_coding(const net::StgPrefix& prefix) const;
  // An insertion that insert() has given for the function: it shall give another one.
  void refuse(const bdd::Bdd& function, const SubfunctionInsertion& insertion);
  // A copy of the prefix with the new signal. The prefix must be the one that the insertion was
  // found for.
  resolution::InsertedSignal after(const SubfunctionInsertion& insertion) const;
  // Puts what after() has made, perhaps unfolded anew, in place of the prefix and forgets all
  // results.
  void adopt(net::StgPrefix prefix);

  const InserterStats& stats() const { return stats_; }

 private:
  struct Step;   // what all functions share until the STG changes
  class Search;  // for one function

  Step& step();
  // The best among the candidates of the step; with `only_exact`, of those that compute the
  // function.
  std::optional<SubfunctionInsertion> find_best(Search& search, bool local, bool only_exact,
                                                InsertionResult& result);
  // The best that computes the function, with insertions of tag General among the candidates beside
  // those admitted.
  std::optional<SubfunctionInsertion> find_best_general(const bdd::Bdd& function, bool local,
                                                        resolution::SignalInsertion admitted,
                                                        InsertionResult& result);
  // Of tag General; only those that the function admits.
  resolution::SignalInsertion general_candidates(const bdd::Bdd& function);
  // False after the error that it is.
  bool is_in_time() const;
  bool compute_insertions(const bdd::Bdd& function, const std::string& context, bool local,
                          InsertionResult& result);

  net::StgPrefix& prefix_;
  const std::vector<std::string>& names_;
  configuration::SearchOptions options_;
  const resolution::CostCoefficients coefficients_;
  resolution::InsertionEngine engine_;
  std::unique_ptr<Step> step_;
  std::optional<resolution::TransitionRelation> locks_;  // made on demand
  std::unordered_map<bdd::Bdd, InsertionResult> cache_;
  base::Deadline deadline_{0};
  InserterStats stats_;
};

}  // namespace vorel::decomposition
