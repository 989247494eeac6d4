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

NormalcyHypothesis::NormalcyHypothesis(const net::StgPrefix& prefix,
                                       const configuration::FinalStates& states)
    : prefix_{prefix},
      states_{states},
      finder_(prefix),
      mixed_(prefix.internals_end),
      same_sign_(prefix.internals_end),
      opposite_sign_(prefix.internals_end) {}

bool NormalcyHypothesis::make() {
  for (const auto& event : prefix_.events) {
    const net::SignalKind kind = event->transition->signal->kind;
    if (kind == net::SignalKind::output || kind == net::SignalKind::internal) visit(*event);
  }
  for (std::uint32_t signal = prefix_.inputs_end; signal < prefix_.internals_end; ++signal) {
    if (mixed_[signal] || same_sign_[signal] || opposite_sign_[signal]) continue;
    violation_signal_ = signal;
    base::print_error("cannot make a hyphothesis about the normalcy type of " +
                      prefix_.signals[signal]->name);
    return false;
  }
  find_violation();
  return true;
}

bool NormalcyHypothesis::adds_nothing(const Event& event, std::span<const Event* const> triggers,
                                      std::size_t size) const {
  const std::uint32_t signal = event.transition->signal->index;
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
  if (triggers.empty()) return;
  const std::array<Event*, 1> last{prefix_.events[event.index].get()};
  configuration::EventSet local;
  for (const Event* past : net::causal_past<net::Stg>(prefix_, last)) local.push_back(past->index);
  if (adds_nothing(event, triggers, local.size())) return;
  const auto genuine = genuine_triggers(event, local, triggers);
  if (genuine.empty()) return;
  const bool first_sign = genuine.front().same_sign;
  const bool agree = std::ranges::all_of(
      genuine, [first_sign](const Trigger& trigger) { return trigger.same_sign == first_sign; });
  EvidenceTable& table = !agree ? mixed_ : (first_sign ? same_sign_ : opposite_sign_);
  auto& evidence = table[event.transition->signal->index];
  if (is_known_by(evidence, local.size())) return;
  evidence = TriggerEvidence{&event, std::move(local), {}};
  for (const Trigger& trigger : genuine) evidence->triggers.push_back(trigger.event);
}

std::vector<NormalcyHypothesis::Trigger> NormalcyHypothesis::genuine_triggers(
    const Event& event, const configuration::EventSet& local_configuration,
    std::span<const Event* const> triggers) const {
  const std::uint32_t signal = event.transition->signal->index;
  const configuration::EventSet past =
      configuration::set_difference(local_configuration, {event.index});
  const bool next_after =
      states_.next_value(signal, configuration::without_maximal_dummies(prefix_, past));
  std::vector<Trigger> genuine;
  for (const Event* trigger : triggers) {
    const configuration::EventSet before = without_trigger(past, *trigger);
    if (states_.next_value(signal, before) == next_after) continue;
    const bool rises = !states_.code(before)[trigger->transition->signal->index];
    genuine.push_back({trigger, rises == next_after});
  }
  return genuine;
}

// Nothing but dummies comes after a trigger. They go with it, and so do those that end the rest.
configuration::EventSet NormalcyHypothesis::without_trigger(
    const configuration::EventSet& configuration, const Event& trigger) const {
  std::vector<bool> inside = configuration::membership(prefix_, configuration);
  std::vector<const Event*> removed{&trigger};
  inside[trigger.index] = false;
  for (std::size_t i = 0; i < removed.size(); ++i) {
    for (const auto* condition : removed[i]->postset) {
      for (const Event* next : condition->postset) {
        if (!inside[next->index]) continue;
        assert(next->transition->signal->is_dummy());
        inside[next->index] = false;
        removed.push_back(next);
      }
    }
  }
  configuration::EventSet rest;
  std::ranges::copy_if(configuration, std::back_inserter(rest),
                       [&inside](std::uint32_t number) { return inside[number]; });
  return configuration::without_maximal_dummies(prefix_, rest);
}

void NormalcyHypothesis::find_violation() {
  std::size_t least = 0;
  const auto consider = [&](NormalcyViolation kind, std::uint32_t signal, std::size_t size) {
    if (violation_ == kind && least <= size) return;
    violation_ = kind;
    violation_signal_ = signal;
    least = size;
  };
  for (std::uint32_t signal = prefix_.inputs_end; signal < prefix_.internals_end; ++signal) {
    if (const auto& evidence = mixed_[signal])
      consider(NormalcyViolation::mixed_triggers, signal, evidence->local_configuration.size());
  }
  if (violation_ != NormalcyViolation::none) return;
  for (std::uint32_t signal = prefix_.inputs_end; signal < prefix_.internals_end; ++signal) {
    const auto &same = same_sign_[signal], &opposite = opposite_sign_[signal];
    if (same && opposite) {
      consider(NormalcyViolation::contradictory_hypotheses, signal,
               same->local_configuration.size() + opposite->local_configuration.size());
    }
  }
}

}  // namespace vorel::conflicts
