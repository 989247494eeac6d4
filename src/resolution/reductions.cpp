#include "resolution/reductions.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <set>
#include <tuple>

#include "base/messages.h"
#include "base/run_state.h"
#include "net/event_relations.h"
#include "resolution/input_like.h"
#include "resolution/reduction_check.h"

namespace vorel::resolution {
namespace {

using net::StgPrefix;
using net::StgTransition;
using Event = StgPrefix::Event;

constexpr int verbosity_of_number = 5;

// Which transitions have events that are concurrent.
class TransitionConcurrency {
 public:
  explicit TransitionConcurrency(const StgPrefix& prefix)
      : rows_(prefix.transitions.size(), std::vector<bool>(prefix.transitions.size())) {
    net::EventRelations relations(prefix);
    for (const auto& event : prefix.events) {
      relations.choose(*event);
      std::vector<bool>& row = rows_[*event->transition];
      for (const auto& other : prefix.events) {
        if (relations.relation_of(*other) == net::EventRelation::concurrent)
          row[other->transition->index] = true;
      }
    }
  }

  bool operator()(const StgTransition& a, const StgTransition& b) const {
    return rows_[a][b.index];
  }

 private:
  base::IndexedBy<StgTransition, std::vector<bool>> rows_;
};

sat::CnfParams plain(sat::CnfParams params) {
  params.store_cnf_formula = false;
  params.restrict_branching = true;
  return params;
}

struct Tools {
  const StgPrefix& prefix;
  const TransitionConcurrency& concurrency;
  OccurrenceCounts& counts;
  const sat::CnfParams& params;
  const ReductionLimits& limits;
};

// The reductions of one target. A literal for each possible source, and one for the token.
class SourceSearch {
 public:
  SourceSearch(const Tools& tools, const StgTransition& target)
      : tools_{tools}, target_{target}, formula_{tools.params}, circuit_{formula_} {
    for (const auto& transition : tools.prefix.transitions) {
      if (tools.concurrency(target, *transition)) universe_.push_back(transition.get());
    }
    for (std::size_t i = 0; i < universe_.size(); ++i) sources_.push_back(new_lit());
    marked_ = new_lit();
  }

  void run(std::vector<Reduction>& found) {
    if (universe_.empty()) return;
    encode();
    ReductionCheck check(tools_.prefix, tools_.counts, tools_.params, target_);
    std::uint32_t left = tools_.limits.max_reductions;
    for (std::uint32_t i = 0; i < tools_.limits.max_candidates && left > 0; ++i) {
      if (!find_smallest()) return;
      const Reduction candidate = candidate_of_model();
      if (const auto objection = check.objection(candidate)) {
        require(*objection);
      } else if (base::run_failed()) {
        return;
      } else if (check.changes_anything(candidate)) {
        found.push_back(candidate);
        --left;
        exclude(candidate);
      } else {
        exclude_with_supersets(candidate);
      }
    }
  }

 private:
  sat::Lit new_lit() { return {formula_.new_var(false), false}; }

  void encode() {
    formula_.add_clause(sources_, sat::PermanentGroup);
    for (std::size_t i = 0; i < universe_.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (tools_.concurrency(*universe_[i], *universe_[j]))
          formula_.add_binary(~sources_[i], ~sources_[j], sat::PermanentGroup);
      }
    }
    std::set<std::vector<std::int64_t>> seen;
    for (const auto& event : tools_.prefix.events) {
      if (!event->is_cut_off()) continue;
      const auto differences = differences_at(*event);
      if (seen.insert(differences).second) require_balance(differences);
    }
    size_ = circuit_.count_ones(sources_, sat::PermanentGroup);
  }

  // How much oftener each possible source, and last the target, occurs up to the cut-off than up to
  // its correspondents.
  std::vector<std::int64_t> differences_at(const Event& cut_off) const {
    std::vector<std::int64_t> result;
    const auto correspondents = cut_off.cut_off.correspondents();
    const auto add = [&](const StgTransition& transition) {
      result.push_back(std::int64_t{tools_.counts.of(transition)[cut_off]} -
                       tools_.counts.before_or_at(correspondents, transition));
    };
    for (const StgTransition* transition : universe_) add(*transition);
    add(target_);
    return result;
  }

  void require_balance(const std::vector<std::int64_t>& differences) {
    sat::Lits more, less;
    const auto add = [](sat::Lits& lits, std::int64_t times, sat::Lit lit) {
      if (times > 0) lits.insert(lits.end(), static_cast<std::size_t>(times), lit);
    };
    for (std::size_t i = 0; i < sources_.size(); ++i) {
      add(more, differences[i], sources_[i]);
      add(less, -differences[i], sources_[i]);
    }
    add(less, differences.back(), sat::LitTrue);
    add(more, -differences.back(), sat::LitTrue);
    const sat::Lits a = circuit_.count_ones(more, sat::PermanentGroup);
    const sat::Lits b = circuit_.count_ones(less, sat::PermanentGroup);
    circuit_.assert_not_greater(a, b, sat::PermanentGroup);
    circuit_.assert_not_greater(b, a, sat::PermanentGroup);
  }

  void require(const TokenBound& objection) {
    sat::Lits lits{marked_};
    for (std::size_t i = 0; i < universe_.size(); ++i) {
      lits.insert(lits.end(), objection.run[*universe_[i]], sources_[i]);
    }
    const sat::Lits tokens = circuit_.count_ones(lits, sat::PermanentGroup);
    if (objection.is_upper) {
      circuit_.assert_at_most(tokens, objection.bound, sat::PermanentGroup);
    } else {
      assert(objection.bound > 0 && "the target has occurred or is enabled");
      circuit_.assert_greater(tokens, objection.bound - 1, sat::PermanentGroup);
    }
  }

  // No candidate has fewer sources than the one found last.
  bool find_smallest() {
    if (!formula_.solve()) return false;
    for (; !base::run_failed(); ++least_size_) {
      const sat::ClauseGroup group = formula_.new_group();
      circuit_.assert_at_most(size_, least_size_, group);
      const bool is_found = formula_.solve();
      formula_.remove_group(group);
      if (is_found) return true;
    }
    return false;
  }

  Reduction candidate_of_model() const {
    Reduction reduction{{}, formula_.is_true(marked_), &target_};
    for (std::size_t i = 0; i < universe_.size(); ++i) {
      if (formula_.is_true(sources_[i])) reduction.sources.push_back(universe_[i]);
    }
    return reduction;
  }

  bool has_source(const Reduction& reduction, std::size_t i) const {
    return std::ranges::count(reduction.sources, universe_[i]) != 0;
  }
  void exclude(const Reduction& reduction) {
    sat::Lits clause{marked_ ^ reduction.marked};
    for (std::size_t i = 0; i < universe_.size(); ++i) {
      clause.push_back(sources_[i] ^ has_source(reduction, i));
    }
    formula_.add_clause(clause, sat::PermanentGroup);
  }
  void exclude_with_supersets(const Reduction& reduction) {
    sat::Lits clause;
    if (reduction.marked) clause.push_back(~marked_);
    for (std::size_t i = 0; i < universe_.size(); ++i) {
      if (has_source(reduction, i)) clause.push_back(~sources_[i]);
    }
    formula_.add_clause(clause, sat::PermanentGroup);
  }

  const Tools& tools_;
  const StgTransition& target_;
  sat::CnfFormula formula_;
  sat::IntegerCircuit circuit_;
  std::vector<const StgTransition*> universe_;
  sat::Lits sources_, size_;
  sat::Lit marked_;
  std::uint32_t least_size_ = 1;
};

bool reduction_less(const Reduction& a, const Reduction& b) {
  const auto indices = [](const Reduction& reduction) {
    std::vector<std::uint32_t> result;
    for (const StgTransition* source : reduction.sources) result.push_back(source->index);
    return result;
  };
  return std::tuple(a.target->index, indices(a), a.marked) <
         std::tuple(b.target->index, indices(b), b.marked);
}

}  // namespace

std::vector<Reduction> reductions(const StgPrefix& prefix, const sat::CnfParams& params,
                                  const ReductionLimits& limits) {
  const sat::CnfParams formula_params = plain(params);
  const TransitionConcurrency concurrency(prefix);
  OccurrenceCounts counts(prefix);
  const Tools tools{prefix, concurrency, counts, formula_params, limits};
  std::vector<Reduction> found;
  for (const auto& target : prefix.transitions) {
    if (!is_input_like(*target)) SourceSearch(tools, *target).run(found);
    if (base::run_failed()) return {};
  }
  std::ranges::sort(found, reduction_less);
  if (base::verbosity() >= verbosity_of_number) {
    base::print_formatted(std::cout, "\nNumber of valid concurrency reductions: %zu", found.size());
  }
  return found;
}

}  // namespace vorel::resolution
