// configuration/final_state.h - the state that a configuration ends in, worked out by looking at
// it. Here:      its code, which signals are excited in it, its marking; no clauses. Not here:  the
// same as literals (configuration/state_literals.h), which is checked against this.
//
// A signal is excited when one of its events can fire, perhaps after dummies. Dummies that lie at
// the end of a configuration are best left out of it: what is excited after them is excited before.
#pragma once

#include <optional>

#include "configuration/event_set.h"

namespace vorel::configuration {

// The events of each signal that is not a dummy, cut-offs included, as one flat list.
class SignalEvents {
 public:
  explicit SignalEvents(const net::StgPrefix& prefix);
  std::span<const net::StgPrefix::Event* const> of(std::uint32_t signal) const;

 private:
  std::vector<std::uint32_t> first_;  // by signal number, one more at the end
  std::vector<const net::StgPrefix::Event*> events_;
};

class FinalStates {
 public:
  // Both must outlive it.
  FinalStates(const net::StgPrefix& prefix, const SignalEvents& events)
      : prefix_{prefix}, events_{events} {}

  // The values of the signals that are not dummies, by number.
  std::vector<bool> code(const EventSet& configuration) const;
  // The excited outputs and internal signals, ascending.
  std::vector<std::uint32_t> excited_signals(const EventSet& configuration) const;
  bool is_excited(std::uint32_t signal, const std::vector<bool>& inside) const;
  // The value that the signal has or is about to take.
  bool next_value(std::uint32_t signal, const EventSet& configuration) const;
  // The numbers of the marked places, ascending; nullopt after the error "the net is not safe".
  std::optional<std::vector<std::uint32_t>> marking(const EventSet& configuration) const;

 private:
  const net::StgPrefix& prefix_;
  const SignalEvents& events_;
};

}  // namespace vorel::configuration
