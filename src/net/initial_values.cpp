#include "net/initial_values.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <optional>
#include <string>
#include <vector>

#include "base/indexed_by.h"
#include "base/messages.h"
#include "net/causality.h"
#include "net/concurrent_edges.h"
#include "net/edge_history.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;

class InitialValuePass {
 public:
  explicit InitialValuePass(StgPrefix& prefix)
      : prefix_{prefix}, order_{topological_order(prefix)} {}

  std::optional<Inconsistency> run() {
    clean_dummies();
    const EdgeHistory history(prefix_, order_);
    for (const EdgeHistory::Disorder& disorder : history.disorders()) {
      if (!accept_disorder(disorder)) return inconsistency_;
    }
    for (Event* event : order_) {
      if (!is_consistent(*event, history.edges_before(*event))) return inconsistency_;
    }
    const auto concurrent = find_concurrent_edges(prefix_, order_, history);
    if (concurrent && !accept_disorder(*concurrent)) return inconsistency_;
    settle_unknown_values();
    assert(all_values_are_settled());
    return std::nullopt;
  }

 private:
  void clean_dummies() {
    for (std::uint32_t i = prefix_.internals_end; i < prefix_.signals.size(); ++i) {
      Signal& signal = *prefix_.signals[i];
      if (signal.initial_value == unknown_value) continue;
      base::print_warning("dummy signal " + signal.name +
                          " has an initial value distinct from '?'");
      signal.initial_value = unknown_value;
    }
    for (const Event* event : order_) {
      StgTransition& transition = *event->transition;
      if (!transition.signal->is_dummy() || transition.sign == Sign::toggle) continue;
      base::print_warning("dummy transition " + transition.name + " cannot have sign");
      transition.sign = Sign::toggle;
    }
  }

  // `edges_before`: the number of edges of its signal that precede the event.
  bool is_consistent(Event& event, std::uint32_t edges_before) {
    Signal& signal = *event.transition->signal;
    if (signal.is_dummy() || event.transition->sign == Sign::toggle) return true;
    const unsigned value_before = event.transition->sign == Sign::minus ? 1 : 0;
    const auto initial = static_cast<std::uint8_t>(value_before ^ (edges_before & 1u));
    if (signal.initial_value == unknown_value) signal.initial_value = initial;
    if (signal.initial_value == initial) return true;
    refuse(signal, causal_past(prefix_, std::array{&event}), nullptr);
    return false;
  }

  // Two concurrent edges of one signal: whichever fires first, a signed one then finds the value
  // that it would bring about. Toggles alone may be concurrent.
  bool accept_disorder(const EdgeHistory::Disorder& disorder) {
    const auto [first, second] = disorder;
    const bool first_is_signed = first->transition->sign != Sign::toggle;
    if (!first_is_signed && second->transition->sign == Sign::toggle) return true;
    Event* const last = first_is_signed ? first : second;
    refuse(*last->transition->signal, causal_past(prefix_, std::array{first, second}), last);
    return false;
  }

  // The trace goes through the events, with `last` (if any) put to the end.
  void refuse(const Signal& signal, std::vector<Event*> events, const Event* last) {
    base::IndexedBy<Event, std::uint32_t> position(prefix_.events.size(), base::no_index);
    std::uint32_t next = 0;
    for (const Event* event : order_) position[*event] = event == last ? base::no_index : next++;
    std::ranges::sort(events, {}, [&](const Event* event) { return position[*event]; });
    inconsistency_ = Inconsistency{&signal, {events.begin(), events.end()}};
  }

  // First the signals that only toggle, then those without events.
  void settle_unknown_values() {
    base::IndexedBy<Signal, bool> has_events(prefix_.signals.size());
    for (const Event* event : order_) has_events[*event->transition->signal] = true;
    const auto settle = [&](bool with_events, const char* verdict) {
      for (std::uint32_t i = 0; i < prefix_.internals_end; ++i) {
        Signal& signal = *prefix_.signals[i];
        if (signal.initial_value != unknown_value || has_events[signal] != with_events) continue;
        base::print_warning("signal " + signal.name + verdict);
        signal.initial_value = 0;
      }
    };
    settle(true, " is assigned initial value 0");
    settle(false, " is dead");
  }

  [[maybe_unused]] bool all_values_are_settled() const {
    return std::ranges::all_of(prefix_.signals, [](const auto& signal) {
      return signal->is_dummy() == (signal->initial_value == unknown_value);
    });
  }

  StgPrefix& prefix_;
  const std::vector<Event*> order_;
  std::optional<Inconsistency> inconsistency_;
};

}  // namespace

std::optional<Inconsistency> settle_initial_values(StgPrefix& prefix) {
  return InitialValuePass(prefix).run();
}

bool find_initial_values(StgPrefix& prefix) {
  const auto inconsistency = settle_initial_values(prefix);
  if (!inconsistency) return true;
  std::string trace;
  for (const Event* event : inconsistency->trace) {
    if (!trace.empty()) trace += ", ";
    trace += event->transition->name;
  }
  base::print_error("the STG is inconsistent, signal " + inconsistency->signal->name +
                    "; trace:\n" + trace);
  return false;
}

}  // namespace vorel::net
