#include "reach/configuration_encoding.h"

#include <algorithm>
#include <cassert>

namespace vorel {
namespace {

template <class T>
void sort_unique(std::vector<T*>& list) {
  std::ranges::sort(list, {}, &T::index);
  const auto repeated = std::ranges::unique(list);
  list.erase(repeated.begin(), repeated.end());
}

// Finds the conditions whose conflicts are implied by those of others.
template <Process P>
class ConflictCover {
 public:
  explicit ConflictCover(const P& process)
      : process_{process}, skip_(process.conditions.size()), consumers_(process.conditions.size()) {
    for (const auto& condition : process.conditions) {
      consumers_[*condition] = static_cast<std::uint32_t>(
          std::ranges::count_if(condition->postset, std::not_fn(&Event::is_cut_off)));
    }
  }

  IndexedBy<typename P::Condition, bool> run() && {
    for (const auto& condition : process_.conditions) {
      if (!skip_[*condition])
        skip_[*condition] = consumers_[*condition] < 2 || is_covered(*condition);
    }
    return std::move(skip_);
  }

 private:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  // Whoever is consumed by all consumers of the condition is in the preset of each: it is enough to
  // look at the smallest one. Of those with the same consumers only the condition itself stays.
  bool is_covered(const Condition& condition) {
    // A damaged file may name a consumer twice; then the constraint says that it never fires.
    if (std::ranges::adjacent_find(condition.postset) != condition.postset.end()) return false;
    rivals_.clear();
    for (const Condition* other : smallest_preset(condition)) {
      const bool has_as_many = consumers_[*other] >= consumers_[condition];
      if (other != &condition && has_as_many && !skip_[*other]) rivals_.push_back(other);
    }
    for (const Event* event : condition.postset) {
      if (rivals_.empty()) return false;
      if (event->is_cut_off()) continue;
      std::erase_if(rivals_, [event](const Condition* other) {
        return !std::ranges::binary_search(event->preset, other->index, {}, &Condition::index);
      });
    }
    for (const Condition* other : rivals_) {
      if (consumers_[*other] > consumers_[condition]) return true;
      skip_[*other] = true;
    }
    return false;
  }

  static std::span<Condition* const> smallest_preset(const Condition& condition) {
    std::span<Condition* const> smallest;
    for (const Event* event : condition.postset) {
      if (event->is_cut_off()) continue;
      if (smallest.empty() || event->preset.size() < smallest.size()) smallest = event->preset;
    }
    return smallest;
  }

  const P& process_;
  IndexedBy<Condition, bool> skip_;
  IndexedBy<Condition, std::uint32_t> consumers_;  // their number, cut-offs left out
  std::vector<const Condition*> rivals_;           // scratch
};

}  // namespace

template <Process P>
Lit event_lit(ConfigurationVars<P>& vars, const typename P::Event& event) {
  assert(!event.is_cut_off() && "a cut-off is in no configuration");
  LitCell& cell = vars.events[event];
  if (cell.lit.is_uninit()) cell.lit = Lit(vars.formula.new_var(vars.no_branch), false);
  return cell.lit;
}

template <Process P>
Lit produced_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
                 ClauseGroup group, Polarity polarity) {
  LitCell& cell = vars.produced[condition];
  if (cell.serves(polarity)) return cell.lit;
  const auto producers = condition.producers();
  if (producers.empty()) return cell.lit = LitTrue;
  if (producers.size() == 1) {
    const auto& producer = *producers.front();
    return cell.lit = producer.is_cut_off() ? LitFalse : event_lit(vars, producer);
  }
  Lits lits;
  for (const auto* event : producers) {
    if (!event->is_cut_off()) lits.push_back(event_lit(vars, *event));
  }
  return vars.formula.define_gate(cell, GateType::GateOr, lits, group, polarity);
}

template <Process P>
Lit marked_lit(ConfigurationVars<P>& vars, const typename P::Condition& condition,
               ClauseGroup group, Polarity polarity) {
  LitCell& cell = vars.marked[condition];
  if (cell.serves(polarity)) return cell.lit;
  Lits lits{produced_lit(vars, condition, group, polarity)};
  for (const auto* event : condition.postset) {
    if (!event->is_cut_off()) lits.push_back(~event_lit(vars, *event));
  }
  return vars.formula.define_gate(cell, GateType::GateAnd, lits, group, polarity);
}

template <Process P>
Lit place_lit(ConfigurationVars<P>& vars, const typename P::NetType::Place& place,
              std::span<const typename P::Condition* const> instances, ClauseGroup group) {
  LitCell& cell = vars.places[place];
  assert((cell.lit.is_uninit() || cell.polarity == -1) && "one direction is all that is defined");
  if (!cell.lit.is_uninit()) return cell.lit;
  cell = {Lit(vars.formula.new_var(false), false), -1};
  Lits clause;
  for (const auto* condition : instances) {
    clause.assign({cell.lit, ~produced_lit(vars, *condition, group, -1)});
    for (const auto* event : condition->postset) {
      if (!event->is_cut_off()) clause.push_back(event_lit(vars, *event));
    }
    vars.formula.add_clause(clause, group);
  }
  return cell.lit;
}

template <Process P>
void encode_causality(const P& process, ConfigurationVars<P>& vars, ClauseGroup group) {
  for (const auto& event : process.events) {
    if (event->is_cut_off()) continue;
    const Lit lit = event_lit(vars, *event);
    for (const auto* condition : event->preset) {
      vars.formula.add_binary(~lit, produced_lit(vars, *condition, group, +1), group);
    }
  }
}

template <Process P>
void encode_conflicts(const P& process, ConfigurationVars<P>& vars, ClauseGroup group) {
  const auto skip = skippable_conditions(process);
  Lits consumers;
  for (const auto& condition : process.conditions) {
    if (skip[*condition]) continue;
    consumers.clear();
    for (const auto* event : condition->postset) {
      if (!event->is_cut_off()) consumers.push_back(event_lit(vars, *event));
    }
    vars.formula.add_at_most_one(consumers, group);
  }
}

template <Process P>
void encode_no_max_dummies(const P& process, ConfigurationVars<P>& vars, ClauseGroup group,
                           const std::function<bool(const typename P::Event&)>& predicate) {
  std::vector<typename P::Event*> successors;
  Lits clause;
  for (const auto& event : process.events) {
    if (event->is_cut_off() || !predicate(*event)) continue;
    successors.clear();
    for (const auto* condition : event->postset) {
      successors.insert(successors.end(), condition->postset.begin(), condition->postset.end());
    }
    sort_unique(successors);
    clause.assign({~event_lit(vars, *event)});
    for (const auto* successor : successors) {
      if (!successor->is_cut_off()) clause.push_back(event_lit(vars, *successor));
    }
    vars.formula.add_clause(clause, group);
  }
}

template <Process P>
IndexedBy<typename P::Condition, bool> skippable_conditions(const P& process) {
  return ConflictCover<P>(process).run();
}

#define INSTANTIATE(P)                                                                             \
  template Lit event_lit<P>(ConfigurationVars<P>&, const P::Event&);                               \
  template Lit produced_lit<P>(ConfigurationVars<P>&, const P::Condition&, ClauseGroup, Polarity); \
  template Lit marked_lit<P>(ConfigurationVars<P>&, const P::Condition&, ClauseGroup, Polarity);   \
  template Lit place_lit<P>(ConfigurationVars<P>&, const P::NetType::Place&,                       \
                            std::span<const P::Condition* const>, ClauseGroup);                    \
  template void encode_causality<P>(const P&, ConfigurationVars<P>&, ClauseGroup);                 \
  template void encode_conflicts<P>(const P&, ConfigurationVars<P>&, ClauseGroup);                 \
  template void encode_no_max_dummies<P>(const P&, ConfigurationVars<P>&, ClauseGroup,             \
                                         const std::function<bool(const P::Event&)>&);             \
  template IndexedBy<P::Condition, bool> skippable_conditions<P>(const P&);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel
