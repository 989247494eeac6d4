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
                               const sat::CnfParams& params, const StgTransition& target)
    : prefix_{prefix},
      counts_{counts},
      target_{target},
      run_{prefix, counts, params},
      stalled_{prefix, counts, params} {
  for (const auto& event : prefix.events) {
    if (event->transition == &target) target_is_enabled_.push_back(run_.enabled(*event));
  }
  encode_stalling();
  exclude_cut_offs_to_pass();
  find_competitions();
  find_hazards();
}

// An event of the target is enabled. Every other event has fired, or lacks something, or has lost
// it, or competes with that one.
void ReductionCheck::encode_stalling() {
  sat::CnfFormula& formula = stalled_.formula();
  base::IndexedBy<Event, sat::Lit> waits(prefix_.events.size(), sat::LitFalse);
  sat::Lits clause;
  for (const auto& event : prefix_.events) {
    if (event->transition != &target_) continue;
    waits[*event] = sat::Lit(formula.new_var(false), false);
    formula.add_binary(~waits[*event], stalled_.enabled(*event), sat::PermanentGroup);
    clause.push_back(waits[*event]);
  }
  formula.add_clause(clause, sat::PermanentGroup);
  for (const auto& event : prefix_.events) {
    if (event->transition == &target_) continue;
    clause.assign({stalled_.fired(*event)});
    for (const Condition* condition : event->preset) {
      clause.push_back(~stalled_.produced(*condition));
      for (const Event* consumer : condition->postset) {
        clause.push_back(stalled_.fired(*consumer));
        clause.push_back(waits[*consumer]);
      }
    }
    formula.add_clause(clause, sat::PermanentGroup);
  }
}

// Those with more targets up to them than up to their correspondents, unless others have fewer: a
// run behind such a one has a twin with fewer targets, so whoever stalls for good need not pass it.
void ReductionCheck::exclude_cut_offs_to_pass() {
  const OccurrenceCount& count = counts_.of(target_);
  sat::Lits passed;
  for (const auto& event : prefix_.events) {
    if (!event->is_cut_off()) continue;
    const std::uint32_t other = counts_.before_or_at(event->cut_off.correspondents(), target_);
    if (count[*event] < other) return;
    if (count[*event] > other) passed.push_back(stalled_.fired(*event));
  }
  stalled_.formula().add_units(passed, true, sat::PermanentGroup);
}

void ReductionCheck::find_competitions() {
  for (const auto& condition : prefix_.conditions) {
    for (const Event* winner : condition->postset) {
      for (const Event* loser : condition->postset) {
        if (loser->transition == &target_ ||
            needs_all_of(*loser->transition, *winner->transition)) {
          continue;
        }
        const sat::Lits both{run_.enabled(*winner), run_.enabled(*loser)};
        competitions_.push_back(
            run_.formula().make_gate(sat::Gate(sat::GateAnd, both), sat::PermanentGroup, +1));
      }
    }
  }
}

// Both are enabled, and the target is once the winner has fired.
sat::Lit ReductionCheck::hazard_lit(const Event& winner, const Event& loser) {
  const auto is_dummy = [](const StgTransition* t) { return t->signal->is_dummy(); };
  const StgTransition& first = *winner.transition;
  sat::Lits lits{run_.enabled(winner), run_.enabled(loser)};
  for (const StgPlace* place : target_.preset) {
    if (has(first.postset, place) || std::ranges::any_of(place->preset, is_dummy)) continue;
    if (has(first.preset, place)) return sat::LitFalse;
    lits.push_back(run_.marked(*place));
  }
  return run_.formula().make_gate(sat::Gate(sat::GateAnd, lits), sat::PermanentGroup, +1);
}

void ReductionCheck::find_hazards() {
  const auto may_win = [this](const StgTransition& winner, const StgTransition& loser) {
    return &winner != &target_ && &winner != &loser &&
           (winner.signal->is_dummy() || winner.signal != loser.signal);
  };
  const auto signals = signals_led_to(target_);
  for (const auto& condition : prefix_.conditions) {
    if (condition->postset.size() < 2) continue;
    for (const Event* loser : condition->postset) {
      if (loser->transition == &target_) continue;
      const auto led_to = signals_led_to(*loser->transition);
      const bool excites = std::ranges::find_first_of(led_to, signals) != led_to.end();
      if (!excites && !net::is_dummy(*loser)) continue;
      for (const Event* winner : condition->postset) {
        if (may_win(*winner->transition, *loser->transition)) {
          hazards_.push_back(
              {winner->transition, loser->transition, excites, hazard_lit(*winner, *loser)});
        }
      }
    }
  }
}

// A winner that is a source lets the target fire.
bool ReductionCheck::is_hazard_of(const Hazard& hazard, const Reduction& reduction) const {
  const auto is_source = [&](const StgTransition* transition) {
    return std::ranges::find(reduction.sources, transition) != reduction.sources.end();
  };
  if (is_source(hazard.winner)) return false;
  return hazard.excites || std::ranges::any_of(closure_through_dummies(*hazard.loser), is_source);
}

std::optional<TokenBound> ReductionCheck::hazard(const Reduction& reduction) {
  Question question(run_, reduction);
  question.tokens_at_most(0);
  std::vector<const Hazard*> possible;
  sat::Lits lits;
  for (const Hazard& hazard : hazards_) {
    if (!is_hazard_of(hazard, reduction)) continue;
    possible.push_back(&hazard);
    lits.push_back(hazard.lit);
  }
  run_.formula().add_clause(lits, question.group());
  auto found = question.answer(false, 1);
  if (!found) return std::nullopt;
  // What stays undefined could be true: a gate that is used positively alone is never decided.
  const auto met = std::ranges::find_if(possible, [this](const Hazard* hazard) {
    return run_.formula().value(hazard->lit) != sat::ModelValue::no;
  });
  assert(met != possible.end());
  ++found->run[*(*met)->winner];
  return found;
}

std::optional<TokenBound> ReductionCheck::objection(const Reduction& reduction) {
  assert(reduction.target == &target_);
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
    run_.formula().add_clause(competitions_, competing.group());
    if (auto found = competing.answer(false, 0)) return found;
  }
  return hazard(reduction);
}

bool ReductionCheck::changes_anything(const Reduction& reduction) {
  assert(reduction.target == &target_);
  Question waiting(run_, reduction);
  waiting.tokens_at_most(0);
  run_.formula().add_clause(target_is_enabled_, waiting.group());
  return waiting.is_possible();
}

}  // namespace vorel::resolution
