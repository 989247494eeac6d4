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

// The complements of the literals of the preset; false if one of its conditions is never produced.
template <net::Process P>
bool append_unproduced(configuration::ConfigurationVars<P>& vars, const typename P::Event& event,
                       sat::ClauseGroup group, sat::Lits& clause) {
  for (const auto* condition : event.preset) {
    const sat::Lit produced = configuration::produced_lit(vars, *condition, group, -1);
    if (produced == sat::LitFalse) return false;
    clause.push_back(~produced);
  }
  return true;
}

// An event whose preset nobody else consumes fires once that has been produced, or the final state
// would enable it; a cut-off in this position forbids its causal past.
template <net::Process P>
void encode_progress(const P& process, configuration::ConfigurationVars<P>& vars,
                     sat::ClauseGroup group) {
  sat::Lits clause;
  for (const auto& event : process.events) {
    const bool is_sole_consumer = std::ranges::all_of(
        event->preset, [](const auto* condition) { return condition->postset.size() == 1; });
    clause.clear();
    if (!is_sole_consumer || !append_unproduced(vars, *event, group, clause)) continue;
    if (!event->is_cut_off()) clause.push_back(configuration::event_lit(vars, *event));
    vars.formula.add_clause(clause, group);
  }
}

// The conditions of each place, as one flat list; those that only cut-offs produce are left out, as
// they are in no final cut.
template <net::Process P>
class PlaceInstances {
 public:
  explicit PlaceInstances(const P& process) : first_(process.places.size() + 1) {
    for (const auto& condition : process.conditions) {
      if (can_be_marked(*condition)) ++first_[condition->place->index + 1];
    }
    for (std::size_t i = 1; i < first_.size(); ++i) first_[i] += first_[i - 1];
    conditions_.resize(first_.back());
    std::vector<std::uint32_t> next(first_.begin(), first_.end() - 1);
    for (const auto& condition : process.conditions) {
      if (can_be_marked(*condition)) {
        conditions_[next[condition->place->index]++] = condition.get();
      }
    }
  }

  std::span<const typename P::Condition* const> of(const typename P::NetType::Place& place) const {
    const std::uint32_t first = first_[place.index], last = first_[place.index + 1];
    return std::span(conditions_).subspan(first, last - first);
  }

 private:
  static bool can_be_marked(const typename P::Condition& condition) {
    return condition.is_initial() ||
           !std::ranges::all_of(condition.producers(), &P::Event::is_cut_off);
  }

  std::vector<std::uint32_t> first_;  // by place number, one more at the end
  std::vector<const typename P::Condition*> conditions_;
};

template <net::Process P>
base::IndexedBy<typename P::NetType::Transition, bool> transitions_with_events(const P& process) {
  base::IndexedBy<typename P::NetType::Transition, bool> occurs(process.transitions.size());
  for (const auto& event : process.events) occurs[*event->transition] = true;
  return occurs;
}

// Literals one of which is true exactly if the condition has been consumed. Each of n rivals for a
// condition has a clause that holds them all: where there are many they share one literal, or the
// clauses would have n * n literals.
template <net::Process P>
class ConsumedLits {
 public:
  ConsumedLits(const P& process, configuration::ConfigurationVars<P>& vars, sat::ClauseGroup group)
      : vars_{vars}, group_{group}, shared_(process.conditions.size()) {}

  void append(const typename P::Condition& condition, sat::Lits& clause) {
    if (condition.postset.size() <= max_listed) {
      append_consumers(condition, clause);
      return;
    }
    sat::LitCell& cell = shared_[condition];
    if (!cell.serves(+1)) {
      consumers_.clear();
      append_consumers(condition, consumers_);
      vars_.formula.define_gate(cell, sat::GateOr, consumers_, group_, +1);
    }
    clause.push_back(cell.lit);
  }

 private:
  static constexpr std::size_t max_listed = 32;

  void append_consumers(const typename P::Condition& condition, sat::Lits& lits) {
    for (const auto* consumer : condition.postset) {
      if (!consumer->is_cut_off()) lits.push_back(configuration::event_lit(vars_, *consumer));
    }
  }

  configuration::ConfigurationVars<P>& vars_;
  const sat::ClauseGroup group_;
  base::IndexedBy<typename P::Condition, sat::LitCell> shared_;
  sat::Lits consumers_;  // scratch
};

// No event is enabled by the final cut.
template <net::Process P>
void encode_dead_cut(const P& process, configuration::ConfigurationVars<P>& vars,
                     sat::ClauseGroup group) {
  const auto dominated = Domination(process.events).run();
  ConsumedLits<P> consumed(process, vars, group);
  sat::Lits clause;
  for (const auto& event : process.events) {
    clause.clear();
    if (dominated[*event] || !append_unproduced(vars, *event, group, clause)) continue;
    for (const auto* condition : event->preset) consumed.append(*condition, clause);
    vars.formula.add_clause(clause, group);
  }
}

// No transition is enabled by the final marking.
template <net::Process P>
void encode_dead_marking(const P& process, configuration::ConfigurationVars<P>& vars,
                         sat::ClauseGroup group) {
  const auto dominated = Domination(process.transitions).run();
  const auto occurs = transitions_with_events(process);
  const PlaceInstances<P> instances(process);
  sat::Lits clause;
  for (const auto& transition : process.transitions) {
    if (dominated[*transition] || !occurs[*transition]) continue;
    clause.clear();
    for (const auto* place : transition->preset) {
      clause.push_back(~configuration::place_lit(vars, *place, instances.of(*place), group));
    }
    vars.formula.add_clause(clause, group);
  }
}

}  // namespace

template <class Consumer>
base::IndexedBy<Consumer, bool> dominated_consumers(const base::OwnedList<Consumer>& consumers) {
  return Domination<Consumer>(consumers).run();
}

template <net::Process P>
void encode_deadlock_with_cutoffs(const P& process, configuration::ConfigurationVars<P>& vars,
                                  sat::ClauseGroup group) {
  encode_dead_cut(process, vars, group);
  if constexpr (P::is_merged) encode_dead_marking(process, vars, group);
}

template <net::Process P>
void encode_deadlock_ignoring_cutoffs(const P& process, configuration::ConfigurationVars<P>& vars,
                                      sat::ClauseGroup group) {
  encode_dead_marking(process, vars, group);
  encode_progress(process, vars, group);
}

#define INSTANTIATE(P)                                                                          \
  template void encode_deadlock_with_cutoffs<P>(const P&, configuration::ConfigurationVars<P>&, \
                                                sat::ClauseGroup);                              \
  template void encode_deadlock_ignoring_cutoffs<P>(                                            \
      const P&, configuration::ConfigurationVars<P>&, sat::ClauseGroup);
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
