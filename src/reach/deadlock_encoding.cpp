#include "reach/deadlock_encoding.h"

#include <algorithm>
#include <cassert>

#include "configuration/sorted_links.h"

namespace vorel::reach {
namespace {

template <class Consumer>
class Domination {
 public:
  explicit Domination(const base::OwnedList<Consumer>& consumers)
      : consumers_{consumers},
        presets_{consumers, &Consumer::preset},
        dominated_(consumers.size()) {}

  base::IndexedBy<Consumer, bool> run() && {
    for (const auto& consumer : consumers_) {
      // What a dominated one dominates, its own dominator does too.
      if (!dominated_[*consumer] && !consumer->preset.empty()) visit(*consumer);
    }
    return std::move(dominated_);
  }

 private:
  using Resource = std::remove_pointer_t<decltype(Consumer{}.preset.front())>;

  // Whoever needs all that this consumer needs is among the consumers of each of its resources: it
  // is enough to look at the resource with the fewest. One that needs just the same and has a lower
  // number has been visited before.
  void visit(const Consumer& consumer) {
    const auto* rarest = *std::ranges::min_element(
        consumer.preset, {}, [](const auto* resource) { return resource->postset.size(); });
    for (const Consumer* other : rarest->postset) {
      if (other != &consumer && !dominated_[*other] && needs_all_of(*other, consumer))
        dominated_[*other] = true;
    }
  }

  bool needs_all_of(const Consumer& other, const Consumer& consumer) const {
    if (other.preset.size() < consumer.preset.size()) return false;
    return std::ranges::all_of(consumer.preset, [&](const auto* resource) {
      return presets_.contains(other, resource->index);
    });
  }

  const base::OwnedList<Consumer>& consumers_;
  const configuration::SortedLinks<Consumer, Resource> presets_;
  base::IndexedBy<Consumer, bool> dominated_;
};

// By how many the producers of a condition are more than one, over all conditions.
template <net::Process P>
std::uint64_t alternative_producers(const P& process) {
  std::uint64_t count = 0;
  for (const auto& condition : process.conditions) {
    const auto producers = condition->producers().size();
    if (producers > 1) count += producers - 1;
  }
  return count;
}

}  // namespace

template <class Consumer>
base::IndexedBy<Consumer, bool> dominated_consumers(const base::OwnedList<Consumer>& consumers) {
  return Domination<Consumer>(consumers).run();
}

template <net::Process P>
DeadlockEncoding<P>::DeadlockEncoding(configuration::StateLiterals<P>& state,
                                      const configuration::StateStructure<P>& structure)
    : state_{state},
      vars_{state.vars()},
      structure_{structure},
      process_{structure.process()},
      consumed_(process_.conditions.size()) {
  assert(&vars_.process() == &process_);
}

// The clause starts with the complements of the literals of the preset; false if one of its
// conditions is never produced.
template <net::Process P>
bool DeadlockEncoding<P>::start_with_unproduced(const Event& event) {
  clause_.clear();
  for (const auto* condition : event.preset) {
    const sat::Lit produced = vars_.produced_lit(*condition, -1);
    if (produced == sat::LitFalse) return false;
    clause_.push_back(~produced);
  }
  return true;
}

template <net::Process P>
void DeadlockEncoding<P>::append_consumer_lits(const Condition& condition, sat::Lits& lits) {
  for (const Event* consumer : condition.postset) lits.push_back(vars_.event_lit(*consumer));
}

// Literals one of which is true exactly if the condition has been consumed. Each of n rivals for a
// condition has a clause that holds them all: where there are many they share one literal, or the
// clauses would have n * n literals.
template <net::Process P>
void DeadlockEncoding<P>::append_consumers(const Condition& condition) {
  constexpr std::size_t max_listed = 32;
  assert(!condition.postset.empty() && "some event consumes it");
  if (condition.postset.size() <= max_listed) {
    append_consumer_lits(condition, clause_);
    return;
  }
  sat::LitCell& cell = consumed_[condition];
  if (!cell.serves(+1)) {
    sat::Lits consumers;
    append_consumer_lits(condition, consumers);
    vars_.formula().define_gate(cell, sat::GateOr, consumers, vars_.group(), +1);
  }
  clause_.push_back(cell.lit);
}

// An event whose preset nobody else consumes fires once that has been produced, or the final state
// would enable it; a cut-off in this position forbids its causal past.
template <net::Process P>
void DeadlockEncoding<P>::encode_progress() {
  for (const auto& event : process_.events) {
    const bool is_sole_consumer = std::ranges::all_of(
        event->preset, [](const auto* condition) { return condition->postset.size() == 1; });
    if (!is_sole_consumer || !start_with_unproduced(*event)) continue;
    clause_.push_back(vars_.event_lit(*event));
    vars_.formula().add_clause(clause_, vars_.group());
  }
}

// No event is enabled by the final cut.
template <net::Process P>
void DeadlockEncoding<P>::encode_dead_cut() {
  const auto dominated = dominated_consumers(process_.events);
  for (const auto& event : process_.events) {
    if (dominated[*event] || !start_with_unproduced(*event)) continue;
    for (const auto* condition : event->preset) append_consumers(*condition);
    vars_.formula().add_clause(clause_, vars_.group());
  }
}

// Those that occur; one that is disabled whenever another one is need not be looked at.
template <net::Process P>
std::vector<const typename P::NetType::Transition*> DeadlockEncoding<P>::transitions_to_disable()
    const {
  const auto dominated = dominated_consumers(process_.transitions);
  std::vector<const Transition*> result;
  for (const auto& transition : process_.transitions) {
    const bool occurs = !structure_.instances().events_of(base::id_of(*transition)).empty();
    assert(transition->index < dominated.size());
    if (!dominated[*transition] && occurs) result.push_back(transition.get());
  }
  return result;
}

// No transition is enabled by the final marking.
template <net::Process P>
void DeadlockEncoding<P>::encode_dead_marking() {
  for (const Transition* transition : transitions_to_disable()) {
    clause_.clear();
    for (const auto* place : transition->preset) clause_.push_back(~state_.marked_at_least(*place));
    vars_.formula().add_clause(clause_, vars_.group());
  }
}

template <net::Process P>
bool DeadlockEncoding<P>::has_many_pasts() const requires P::is_merged {
  constexpr std::uint64_t few = 10;
  return alternative_producers(process_) * few >= process_.conditions.size();
}

template <net::Process P>
void DeadlockEncoding<P>::encode_marking_bounds() requires P::is_merged {
  constexpr std::uint64_t steps_each = 5000;
  bounds_ = std::make_unique<configuration::MarkingBounds>(
      configuration::TokenFlow::of(process_), steps_each * alternative_producers(process_));
  std::vector<bool> can_be_marked;
  for (const auto& place : process_.places) {
    places_.push_back(state_.marked(*place));
    can_be_marked.push_back(places_.back() != sat::LitFalse);
  }
  bounds_->assert_invariants(vars_.formula(), places_);
  const auto disable_all = [this](sat::CnfFormula& formula, const sat::Lits& marked) {
    sat::Lits clause;
    for (const Transition* transition : transitions_to_disable()) {
      clause.clear();
      for (const auto* place : transition->preset) clause.push_back(~marked[place->index]);
      formula.add_clause(clause, sat::PermanentGroup);
    }
  };
  filter_ = std::make_unique<configuration::MarkingFilter>(*bounds_, disable_all, can_be_marked);
  add_on_places(filter_->traps());
}

template <net::Process P>
void DeadlockEncoding<P>::encode_local_bounds() requires P::is_merged {
  assert(filter_ != nullptr && "after the other bounds");
  add_on_places(filter_->local_clauses());
}

template <net::Process P>
void DeadlockEncoding<P>::add_on_places(
    std::span<const configuration::MarkingFilter::Clause> clauses) {
  for (const auto& clause : clauses) {
    clause_.clear();
    for (const auto [place, is_marked] : clause) clause_.push_back(places_[place] ^ !is_marked);
    vars_.formula().add_clause(clause_, vars_.group());
  }
}

template <net::Process P>
void DeadlockEncoding<P>::encode_deadlock_with_cutoffs() {
  encode_dead_cut();
  if constexpr (P::is_merged) encode_dead_marking();
}

template <net::Process P>
void DeadlockEncoding<P>::encode_deadlock_ignoring_cutoffs() {
  encode_dead_marking();
  encode_progress();
}

#define INSTANTIATE(P) template class DeadlockEncoding<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

template base::IndexedBy<net::Transition, bool> dominated_consumers(
    const base::OwnedList<net::Transition>&);
template base::IndexedBy<net::StgTransition, bool> dominated_consumers(
    const base::OwnedList<net::StgTransition>&);
template base::IndexedBy<net::EventOf<net::Net>, bool> dominated_consumers(
    const base::OwnedList<net::EventOf<net::Net>>&);
template base::IndexedBy<net::EventOf<net::Stg>, bool> dominated_consumers(
    const base::OwnedList<net::EventOf<net::Stg>>&);
template base::IndexedBy<net::MpEventOf<net::Net>, bool> dominated_consumers(
    const base::OwnedList<net::MpEventOf<net::Net>>&);
template base::IndexedBy<net::MpEventOf<net::Stg>, bool> dominated_consumers(
    const base::OwnedList<net::MpEventOf<net::Stg>>&);

}  // namespace vorel::reach
