#include "verify/trace_builder.h"

#include <algorithm>

#include "base/messages.h"

namespace vorel::verify {
namespace {

// The exhaustive check that gates alone do not lead to an edge; beyond it, the search is believed.
constexpr std::size_t max_states_of_check = 5'000;

// Spent for each event; where a fault of progress takes more to be certain, the event stays.
constexpr std::size_t max_markings_of_shortening = 200;

}  // namespace

std::optional<GameState> TraceBuilder::state_after(std::span<const Event* const> events) const {
  GameState state = faults_.game().initial_state();
  for (const Event* event : events) {
    if (faults_.game().make(move_of(*event), state)) continue;
    base::print_error("the trace that was found cannot be replayed: " + event->transition->name +
                      " is not possible");
    return std::nullopt;
  }
  return state;
}

// An event at the end is one whose tokens no other event of the configuration takes.
void TraceBuilder::shorten(const Fault& fault, std::vector<const Event*>& events, GameState state,
                           bool is_persistent) const {
  std::vector<const Event*> kept;  // effects first
  std::vector<bool> is_consumed;   // by condition
  for (auto next = events.rbegin(); next != events.rend(); ++next) {
    const Event& event = **next;
    const auto is_taken = [&](const auto* condition) {
      return condition->index < is_consumed.size() && is_consumed[condition->index];
    };
    bool is_left_out = false;
    if (!deadline_.is_over() && std::ranges::none_of(event.postset, is_taken)) {
      GameState before = state;
      faults_.game().undo(move_of(event), before);
      is_left_out = faults_.is_fault(fault, before, is_persistent, max_markings_of_shortening);
      if (is_left_out) state = std::move(before);
    }
    if (is_left_out) continue;
    kept.push_back(&event);
    for (const auto* condition : event.preset) {
      if (is_consumed.size() <= condition->index) is_consumed.resize(condition->index + 1);
      is_consumed[condition->index] = true;
    }
  }
  events.assign(kept.rbegin(), kept.rend());
}

std::optional<Finding> TraceBuilder::finding(const Fault& fault, std::vector<const Event*> events,
                                             bool is_persistent) const {
  auto state = state_after(events);
  if (!state) return std::nullopt;
  shorten(fault, events, *state, is_persistent);
  state = state_after(events);
  if (!state) return std::nullopt;
  const bool is_contradicted =
      fault.question == Question::progress &&
      faults_.game().can_come_by_gates({fault.wire, fault.waits_for_arbiter}, *state,
                                       max_states_of_check) == true;
  if (!faults_.is_fault(fault, *state, is_persistent) || is_contradicted) {
    base::print_error("what was found cannot be confirmed: " + faults_.message(fault, *state));
    return std::nullopt;
  }
  Finding finding{fault.question, fault.wire, faults_.message(fault, *state), {}};
  for (const Event* event : events)
    if (const Move& move = move_of(*event); move.wire)
      finding.trace.push_back({*move.wire, move.rises});
  if (const auto last = faults_.last_edge(fault, *state)) finding.trace.push_back(*last);
  return finding;
}

}  // namespace vorel::verify
