#include "conflicts/normalcy_hypothesis.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iterator>

#include "base/messages.h"
#include "net/causality.h"

namespace vorel::conflicts {
namespace {

bool is_known_by(const std::optional<TriggerEvidence>& evidence, std::size_t size) {
  return evidence && evidence->local_configuration.size() <= size;
}

}  // namespace

NormalcyHypothesis::NormalcyHypothesis(
    const configuration::StateStructure<net::StgPrefix>& structure)
    : structure_{structure},
      prefix_{structure.process()},
      finder_(prefix_),
      chain_(prefix_.events.size()),
      mixed_(prefix_.internals_end),
      same_sign_(prefix_.internals_end),
      opposite_sign_(prefix_.internals_end) {}

bool NormalcyHypothesis::make() {
  measure_chains();
  for (const auto& event : prefix_.events) {
    const net::SignalKind kind = event->transition->signal->kind;
    if (kind == net::SignalKind::output || kind == net::SignalKind::internal) visit(*event);
  }
  for (const net::SignalId signal : prefix_.driven_signals()) {
    if (mixed_[signal] || same_sign_[signal] || opposite_sign_[signal]) continue;
    violation_signal_ = signal;
    base::print_error("cannot make a hyphothesis about the normalcy type of " +
                      base::element(prefix_.signals, signal).name);
    return false;
  }
  find_violation();
  return true;
}

void NormalcyHypothesis::measure_chains() {
  for (const Event* event : net::topological_order(prefix_)) {
    for (const auto* condition : event->preset) {
      if (condition->is_initial()) continue;
      chain_[*event] = std::max(chain_[*event], chain_[*condition->pre_event]);
    }
    ++chain_[*event];
  }
}

bool NormalcyHypothesis::adds_nothing(const Event& event, std::span<const Event* const> triggers,
                                      std::size_t size) const {
  const net::SignalId signal = base::id_of(*event.transition->signal);
  if (is_known_by(mixed_[signal], size)) return true;
  const net::Sign sign = event.transition->sign;
  const net::Sign first = triggers.front()->transition->sign;
  const bool agree = std::ranges::all_of(
      triggers, [first](const Event* trigger) { return trigger->transition->sign == first; });
  if (!agree || sign == net::Sign::toggle || first == net::Sign::toggle) return false;
  return is_known_by(first == sign ? same_sign_[signal] : opposite_sign_[signal], size);
}

void NormalcyHypothesis::visit(const Event& event) {
  const auto triggers = finder_.triggers_of(event);
  if (triggers.empty() || adds_nothing(event, triggers, chain_[event])) return;
  const std::array<Event*, 1> last{prefix_.events[event.index].get()};
  configuration::EventSet local;
  for (const Event* past : net::causal_past<net::Stg>(prefix_, last))
    local.push_back(base::id_of(*past));
  if (adds_nothing(event, triggers, local.size())) return;
  const auto genuine = genuine_triggers(event, local, triggers);
  if (genuine.empty()) return;
  const bool first_sign = genuine.front().same_sign;
  const bool agree = std::ranges::all_of(
      genuine, [first_sign](const Trigger& trigger) { return trigger.same_sign == first_sign; });
  EvidenceTable& table = !agree ? mixed_ : (first_sign ? same_sign_ : opposite_sign_);
  auto& evidence = table[*event.transition->signal];
  if (is_known_by(evidence, local.size())) return;
  evidence = TriggerEvidence{&event, std::move(local), {}};
  for (const Trigger& trigger : genuine) evidence->triggers.push_back(trigger.event);
}

std::vector<NormalcyHypothesis::Trigger> NormalcyHypothesis::genuine_triggers(
    const Event& event, const configuration::EventSet& local_configuration,
    std::span<const Event* const> triggers) const {
  const net::SignalId signal = base::id_of(*event.transition->signal);
  const configuration::EventSet past =
      configuration::set_difference(local_configuration, {base::id_of(event)});
  const configuration::EventSet after = configuration::without_maximal_dummies(prefix_, past);
  const bool next_after =
      configuration::FinalState<net::StgPrefix>(structure_, after).next_value(signal);
  std::vector<Trigger> genuine;
  for (const Event* trigger : triggers) {
    const configuration::EventSet rest = without_trigger(past, *trigger);
    const configuration::FinalState<net::StgPrefix> before(structure_, rest);
    if (before.next_value(signal) == next_after) continue;
    const bool rises = !before.value(base::id_of(*trigger->transition->signal));
    genuine.push_back({trigger, rises == next_after});
  }
  return genuine;
}

// Nothing but dummies comes after a trigger. They go with it, and so do those that end the rest.
configuration::EventSet NormalcyHypothesis::without_trigger(
    const configuration::EventSet& configuration, const Event& trigger) const {
  auto inside = configuration::membership(prefix_, configuration);
  std::vector<const Event*> removed{&trigger};
  inside[trigger] = false;
  for (std::size_t i = 0; i < removed.size(); ++i) {
    for (const auto* condition : removed[i]->postset) {
      for (const Event* next : condition->postset) {
        if (!inside[*next]) continue;
        assert(net::is_dummy(*next));
        inside[*next] = false;
        removed.push_back(next);
      }
    }
  }
  configuration::EventSet rest;
  std::ranges::copy_if(configuration, std::back_inserter(rest),
                       [&inside](configuration::StgEventId id) { return inside[id]; });
  return configuration::without_maximal_dummies(prefix_, rest);
}

void NormalcyHypothesis::find_violation() {
  std::size_t least = 0;
  const auto consider = [&](NormalcyViolation kind, net::SignalId signal, std::size_t size) {
    if (violation_ == kind && least <= size) return;
    violation_ = kind;
    violation_signal_ = signal;
    least = size;
  };
  for (const net::SignalId signal : prefix_.driven_signals()) {
    if (const auto& evidence = mixed_[signal])
      consider(NormalcyViolation::mixed_triggers, signal, evidence->local_configuration.size());
  }
  if (violation_ != NormalcyViolation::none) return;
  for (const net::SignalId signal : prefix_.driven_signals()) {
    const auto &same = same_sign_[signal], &opposite = opposite_sign_[signal];
    if (same && opposite) {
      consider(NormalcyViolation::contradictory_hypotheses, signal,
               same->local_configuration.size() + opposite->local_configuration.size());
    }
  }
}

}  // namespace vorel::conflicts
