// conflicts/normalcy_hypothesis.h - of what type each signal can be, judged by its triggers.
// Here:      evidence against p- and n-normalcy, violations that it shows at once.
// Not here:  the search for two configurations that refute the hypothesis (normalcy_check.h).
//
// A trigger of an event is evidence when the next value of the event's signal changes with it. The
// codes before and after it differ in the trigger alone, so a signal that follows its trigger up or
// down is not n-normal, and one that goes against it is not p-normal. A trigger with which nothing
// changes, as the signal was excited before by another of its events, is none.
#pragma once

#include <optional>

#include "configuration/final_state.h"
#include "configuration/triggers.h"

namespace vorel::conflicts {

struct TriggerEvidence {
  const net::StgPrefix::Event* event = nullptr;
  configuration::EventSet local_configuration;         // of the event, the event included
  std::vector<const net::StgPrefix::Event*> triggers;  // those that are evidence
};

// For each signal the evidence with the smallest local configuration.
using EvidenceTable = base::IndexedBy<net::Signal, std::optional<TriggerEvidence>>;

enum class NormalcyViolation : std::uint8_t {
  none = 0,
  mixed_triggers = 1,
  contradictory_hypotheses = 2,
  csc_conflict = 3,
  other = 4,
};

class NormalcyHypothesis {
 public:
  // The structure must outlive it.
  explicit NormalcyHypothesis(const configuration::StateStructure<net::StgPrefix>& structure);

  // False after the error that there is no evidence for some output or internal signal.
  bool make();

  NormalcyViolation violation() const { return violation_; }
  net::SignalId violation_signal() const { return violation_signal_; }
  // Of a signal without a violation so far: p-normal, else n-normal.
  bool is_p(net::SignalId signal) const { return !opposite_sign_[signal]; }

  const EvidenceTable& mixed() const { return mixed_; }
  const EvidenceTable& same_sign() const { return same_sign_; }          // not n-normal
  const EvidenceTable& opposite_sign() const { return opposite_sign_; }  // not p-normal

 private:
  using Event = net::StgPrefix::Event;
  struct Trigger {
    const Event* event;
    bool same_sign;
  };

  void measure_chains();
  void visit(const Event& event);
  // Without walking through configurations: nothing can be learnt that is not known already.
  // `size`: of the local configuration, or less.
  bool adds_nothing(const Event& event, std::span<const Event* const> triggers,
                    std::size_t size) const;
  std::vector<Trigger> genuine_triggers(const Event& event,
                                        const configuration::EventSet& local_configuration,
                                        std::span<const Event* const> triggers) const;
  configuration::EventSet without_trigger(const configuration::EventSet& configuration,
                                          const Event& trigger) const;
  void find_violation();

  const configuration::StateStructure<net::StgPrefix>& structure_;
  const net::StgPrefix& prefix_;
  configuration::TriggerFinder finder_;
  base::IndexedBy<Event, std::uint32_t>
      chain_;  // events on the longest chain to it, itself included
  EvidenceTable mixed_, same_sign_, opposite_sign_;
  NormalcyViolation violation_ = NormalcyViolation::none;
  net::SignalId violation_signal_;
};

}  // namespace vorel::conflicts
