#include "resolution/encoded_run.h"

#include <cassert>

#include "base/messages.h"

namespace vorel::resolution {

EncodedRun::EncodedRun(const net::StgPrefix& prefix, OccurrenceCounts& counts,
                       const sat::CnfParams& params)
    : prefix_{prefix},
      counts_{counts},
      instances_{prefix},
      formula_{params},
      events_(prefix.events.size()),
      marked_(prefix.conditions.size()),
      enabled_(prefix.events.size()),
      places_(prefix.places.size()),
      thresholds_(prefix.transitions.size()) {
  for (sat::Lit& lit : events_) lit = sat::Lit(formula_.new_var(false), false);
  for (const auto& event : prefix.events) {
    for (const Condition* condition : event->preset) {
      formula_.add_binary(~fired(*event), produced(*condition), sat::PermanentGroup);
    }
  }
  sat::Lits consumers;
  for (const auto& condition : prefix.conditions) {
    consumers.clear();
    for (const Event* event : condition->postset) consumers.push_back(fired(*event));
    formula_.add_at_most_one(consumers, sat::PermanentGroup);
  }
}

sat::Lit EncodedRun::produced(const Condition& condition) const {
  return condition.is_initial() ? sat::LitTrue : fired(*condition.pre_event);
}

sat::Lit EncodedRun::marked(const Condition& condition) {
  sat::LitCell& cell = marked_[condition];
  if (cell.serves(+1)) return cell.lit;
  sat::Lits lits{produced(condition)};
  for (const Event* consumer : condition.postset) lits.push_back(~fired(*consumer));
  return formula_.define_gate(cell, sat::GateAnd, lits, sat::PermanentGroup, +1);
}

sat::Lit EncodedRun::enabled(const Event& event) {
  sat::LitCell& cell = enabled_[event];
  if (cell.serves(+1)) return cell.lit;
  sat::Lits lits;
  for (const Condition* condition : event.preset) lits.push_back(marked(*condition));
  return formula_.define_gate(cell, sat::GateAnd, lits, sat::PermanentGroup, +1);
}

sat::Lit EncodedRun::marked(const net::StgPlace& place) {
  sat::LitCell& cell = places_[place];
  if (cell.serves(+1)) return cell.lit;
  sat::Lits lits;
  for (const Condition* condition : instances_.conditions_of(base::id_of(place))) {
    lits.push_back(marked(*condition));
  }
  return formula_.define_gate(cell, sat::GateOr, lits, sat::PermanentGroup, +1);
}

const sat::Lits& EncodedRun::thresholds(const net::StgTransition& transition) {
  sat::Lits& result = thresholds_[transition];
  if (!result.empty()) return result;
  const OccurrenceCount& count = counts_.of(transition);
  std::vector<sat::Lits> events;
  for (const Event* event : instances_.events_of(base::id_of(transition))) {
    const std::uint32_t number = count[*event];
    assert(number > 0);
    if (events.size() < number) events.resize(number);
    events[number - 1].push_back(fired(*event));
  }
  for (const sat::Lits& lits : events) {
    result.push_back(formula_.make_gate(sat::Gate(sat::GateOr, lits), sat::PermanentGroup));
  }
  return result;
}

sat::Lits EncodedRun::occurrences(std::span<const net::StgTransition* const> transitions,
                                  std::uint32_t more, sat::ClauseGroup group) {
  sat::Lits lits(more, sat::LitTrue);
  for (const net::StgTransition* transition : transitions) {
    const sat::Lits& own = thresholds(*transition);
    lits.insert(lits.end(), own.begin(), own.end());
  }
  return sat::IntegerCircuit(formula_).count_ones(lits, group);
}

std::optional<Occurrences> EncodedRun::solve() {
  if (!formula_.solve() || base::run_failed()) return std::nullopt;
  Occurrences result(prefix_.transitions.size());
  for (const auto& event : prefix_.events) {
    if (formula_.is_true(fired(*event))) ++result[*event->transition];
  }
  return result;
}

}  // namespace vorel::resolution
