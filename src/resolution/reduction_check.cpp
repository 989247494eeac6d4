#include "resolution/reduction_check.h"

#include <algorithm>
#include <cassert>

#include "resolution/input_like.h"

namespace vorel::resolution {
namespace {

using net::StgPlace;
using net::StgTransition;

bool needs_all_of(const StgTransition& more, const StgTransition& less) {
  return std::ranges::includes(more.preset, less.preset, {}, &StgPlace::index, &StgPlace::index);
}

std::vector<const net::Signal*> signals_led_to(const StgTransition& transition) {
  std::vector<const net::Signal*> signals;
  for (const StgTransition* next : closure_through_dummies(transition)) {
    if (!next->signal->is_dummy()) signals.push_back(next->signal);
  }
  return signals;
}

bool has(const base::PtrList<StgPlace>& places, const StgPlace* place) {
  return std::ranges::find(places, place) != places.end();
}

// Clauses for one question, which go with it.
class Question {
 public:
  Question(EncodedRun& run, const Reduction& reduction)
      : run_{run}, reduction_{reduction}, group_{run.formula().new_group()} {}
  ~Question() { run_.formula().remove_group(group_); }
  Question(const Question&) = delete;
  Question& operator=(const Question&) = delete;

  sat::ClauseGroup group() const { return group_; }
  // The tokens are more than, fewer than, at most the number.
  void tokens_at_least(std::uint32_t number) {
    circuit().assert_not_greater(taken(number), put(), group_);
  }
  void tokens_at_most(std::uint32_t number) {
    circuit().assert_not_greater(put(), taken(number), group_);
  }
  void tokens_below_zero() { circuit().assert_less_than(put(), taken(0), group_); }

  std::optional<TokenBound> answer(bool is_upper, std::uint32_t tokens) {
    auto run = run_.solve();
    if (!run) return std::nullopt;
    const std::uint32_t bound = tokens + (*run)[*reduction_.target];
    return TokenBound{std::move(*run), is_upper, bound};
  }
  bool is_possible() { return run_.solve().has_value(); }

 private:
  sat::IntegerCircuit circuit() { return sat::IntegerCircuit(run_.formula()); }
  sat::Lits put() {
    return run_.occurrences(reduction_.sources, reduction_.marked ? 1 : 0, group_);
  }
  sat::Lits taken(std::uint32_t more) {
    return run_.occurrences({&reduction_.target, 1}, more, group_);
  }

  EncodedRun& run_;
  const Reduction& reduction_;
  const sat::ClauseGroup group_;
};

}  // namespace

ReductionCheck::ReductionCheck(const net::StgPrefix& prefix, OccurrenceCounts& counts,
                               const sat::CnfParams& params)
    : prefix_{prefix},
      counts_{counts},
      run_{prefix, counts, params},
      stalled_{prefix, counts, params},
      is_target_(prefix.transitions.size()),
      target_group_{stalled_.formula().new_group()} {
  encode_stalling();
  find_competitions();
}

// Every event has fired, or lacks something, or has lost it, or is one of the target, or competes
// with the one of the target that is enabled.
void ReductionCheck::encode_stalling() {
  sat::CnfFormula& formula = stalled_.formula();
  for (sat::Lit& lit : is_target_) lit = sat::Lit(formula.new_var(false), false);
  base::IndexedBy<Event, sat::Lit> waits(prefix_.events.size());
  for (const auto& event : prefix_.events) {
    waits[*event] = sat::Lit(formula.new_var(false), false);
    formula.add_binary(~waits[*event], is_target_[*event->transition], sat::PermanentGroup);
    formula.add_binary(~waits[*event], stalled_.enabled(*event), sat::PermanentGroup);
  }
  sat::Lits clause;
  for (const auto& event : prefix_.events) {
    clause.assign({stalled_.fired(*event), is_target_[*event->transition]});
    for (const Condition* condition : event->preset) {
      clause.push_back(~stalled_.produced(*condition));
      for (const Event* consumer : condition->postset) {
        clause.push_back(stalled_.fired(*consumer));
        clause.push_back(waits[*consumer]);
      }
    }
    formula.add_clause(clause, sat::PermanentGroup);
  }
  for (const auto& transition : prefix_.transitions) {
    clause.assign({~is_target_[*transition]});
    for (const auto& event : prefix_.events) {
      if (event->transition == transition.get()) clause.push_back(waits[*event]);
    }
    formula.add_clause(clause, sat::PermanentGroup);
  }
}

void ReductionCheck::find_competitions() {
  for (const auto& condition : prefix_.conditions) {
    for (const Event* winner : condition->postset) {
      for (const Event* loser : condition->postset) {
        if (!needs_all_of(*loser->transition, *winner->transition))
          competitions_.push_back({winner, loser});
      }
    }
  }
}

void ReductionCheck::choose_target(const StgTransition& target) {
  sat::CnfFormula& formula = stalled_.formula();
  formula.remove_group(target_group_);
  target_group_ = formula.new_group();
  for (const auto& transition : prefix_.transitions) {
    const bool is_target = transition.get() == &target;
    formula.add_unit(is_target_[*transition] ^ !is_target, target_group_);
  }
  target_ = &target;
  find_hazards();
  for (const Event* cut_off : cut_offs_to_pass()) {
    formula.add_unit(~stalled_.fired(*cut_off), target_group_);
  }
}

// By the number of targets up to it that those up to the correspondents do not have. If none is
// negative, a run behind one with more has a twin with fewer targets.
std::vector<const ReductionCheck::Event*> ReductionCheck::cut_offs_to_pass() {
  std::vector<const Event*> result;
  const OccurrenceCount& count = counts_.of(*target_);
  for (const auto& event : prefix_.events) {
    if (!event->is_cut_off()) continue;
    const std::uint32_t other = counts_.before_or_at(event->cut_off.correspondents(), *target_);
    if (count[*event] < other) return {};
    if (count[*event] > other) result.push_back(event.get());
  }
  return result;
}

sat::Lits ReductionCheck::competitions_with_loser_other_than_target() {
  sat::Lits lits;
  for (const Competition& competition : competitions_) {
    if (competition.loser->transition == target_) continue;
    const sat::Lits both{run_.enabled(*competition.winner), run_.enabled(*competition.loser)};
    lits.push_back(
        run_.formula().make_gate(sat::Gate(sat::GateAnd, both), sat::PermanentGroup, +1));
  }
  return lits;
}

// Both are enabled, and the target is once the winner has fired.
sat::Lit ReductionCheck::hazard_lit(const Event& winner, const Event& loser) {
  const auto is_dummy = [](const StgTransition* t) { return t->signal->is_dummy(); };
  const StgTransition& first = *winner.transition;
  sat::Lits lits{run_.enabled(winner), run_.enabled(loser)};
  for (const StgPlace* place : target_->preset) {
    if (has(first.postset, place) || std::ranges::any_of(place->preset, is_dummy)) continue;
    if (has(first.preset, place)) return sat::LitFalse;
    lits.push_back(run_.marked(*place));
  }
  return run_.formula().make_gate(sat::Gate(sat::GateAnd, lits), sat::PermanentGroup, +1);
}

void ReductionCheck::find_hazards() {
  hazards_.clear();
  const auto signals = signals_led_to(*target_);
  const auto keeps_excited = [&](const StgTransition& loser) {
    const auto own = signals_led_to(loser);
    return &loser != target_ && std::ranges::find_first_of(own, signals) != own.end();
  };
  const auto may_win = [&](const StgTransition& winner, const StgTransition& loser) {
    return &winner != target_ && &winner != &loser &&
           (winner.signal->is_dummy() || winner.signal != loser.signal);
  };
  for (const auto& condition : prefix_.conditions) {
    if (condition->postset.size() < 2) continue;
    for (const Event* loser : condition->postset) {
      if (!keeps_excited(*loser->transition)) continue;
      for (const Event* winner : condition->postset) {
        if (may_win(*winner->transition, *loser->transition))
          hazards_.push_back({winner->transition, hazard_lit(*winner, *loser)});
      }
    }
  }
}

std::optional<TokenBound> ReductionCheck::hazard(const Reduction& reduction) {
  Question question(run_, reduction);
  question.tokens_at_most(0);
  const auto is_source = [&](const Hazard& hazard) {
    return std::ranges::find(reduction.sources, hazard.winner) != reduction.sources.end();
  };
  sat::Lits lits;
  for (const Hazard& hazard : hazards_) {
    if (!is_source(hazard)) lits.push_back(hazard.lit);
  }
  run_.formula().add_clause(lits, question.group());
  auto found = question.answer(false, 1);
  if (!found) return std::nullopt;
  // What stays undefined could be true: a gate that is used positively alone is never decided.
  const auto met = std::ranges::find_if(hazards_, [&](const Hazard& hazard) {
    return !is_source(hazard) && run_.formula().value(hazard.lit) != sat::ModelValue::no;
  });
  assert(met != hazards_.end());
  ++found->run[*met->winner];
  return found;
}

std::optional<TokenBound> ReductionCheck::objection(const Reduction& reduction) {
  assert(reduction.target == target_);
  {
    Question unsafe(run_, reduction);
    unsafe.tokens_at_least(2);
    if (auto found = unsafe.answer(true, 1)) return found;
  }
  {
    Question starving(stalled_, reduction);
    starving.tokens_at_most(0);
    if (auto found = starving.answer(false, 1)) return found;
  }
  {
    Question competing(run_, reduction);
    competing.tokens_below_zero();
    run_.formula().add_clause(competitions_with_loser_other_than_target(), competing.group());
    if (auto found = competing.answer(false, 0)) return found;
  }
  return hazard(reduction);
}

bool ReductionCheck::changes_anything(const Reduction& reduction) {
  assert(reduction.target == target_);
  Question waiting(run_, reduction);
  waiting.tokens_at_most(0);
  sat::Lits enabled;
  for (const auto& event : prefix_.events) {
    if (event->transition == target_) enabled.push_back(run_.enabled(*event));
  }
  run_.formula().add_clause(enabled, waiting.group());
  return waiting.is_possible();
}

}  // namespace vorel::resolution
