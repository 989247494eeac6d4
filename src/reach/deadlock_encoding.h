// reach/deadlock_encoding.h - clauses that make the final state of a configuration a deadlock.
// Here:      the two methods of -D.
// Not here:  the configuration itself (configuration/configuration_encoding.h), the search
//            (reach/deadlock_check.h).
#pragma once

#include <memory>
#include <span>

#include "configuration/marking_bounds.h"
#include "configuration/state_literals.h"

namespace vorel::reach {

// In the group of the configuration's literals; one of the methods is called, once.
template <net::Process P>
class DeadlockEncoding {
 public:
  explicit DeadlockEncoding(configuration::StateLiterals<P>& state,
                            const configuration::StateStructure<P>& structure);

  // Method 1: no event of the prefix is enabled by the final cut, be it a cut-off or not. Cut-offs
  // stand for what could go on after them; they are in no configuration themselves, so as members
  // of a clause they count as false. In a merged process that is not enough: a configuration may
  // merge from one that goes on behind a cut-off, and what its final state enables need not have an
  // event there. So the marking is looked at, too.
  void encode_deadlock_with_cutoffs();

  // Method 2: no transition of the net is enabled by the final marking. Cut-offs are ignored but
  // for what they say of the completeness of the prefix.
  void encode_deadlock_ignoring_cutoffs();

  // Where nearly every condition has but one past, as in a prefix, unit propagation finds what
  // follows, and what is below is of no use.
  bool has_many_pasts() const requires P::is_merged;
  // What the net alone says of its dead markings, after one of the methods. Redundant.
  void encode_marking_bounds() requires P::is_merged;
  // More of that, which takes longer, after the other bounds.
  void encode_local_bounds() requires P::is_merged;

 private:
  using Event = typename P::Event;
  using Condition = typename P::Condition;
  using Transition = typename P::NetType::Transition;

  void encode_dead_cut();
  void encode_dead_marking();
  void encode_progress();
  std::vector<const Transition*> transitions_to_disable() const;
  bool start_with_unproduced(const Event& event);
  void append_consumers(const Condition& condition);
  void append_consumer_lits(const Condition& condition, sat::Lits& lits);
  void add_on_places(std::span<const configuration::MarkingFilter::Clause> clauses);

  configuration::StateLiterals<P>& state_;
  configuration::ConfigurationVars<P>& vars_;
  const configuration::StateStructure<P>& structure_;
  const P& process_;
  base::IndexedBy<Condition, sat::LitCell> consumed_;  // of conditions with many rivals
  sat::Lits clause_;                                   // scratch

  // Merged processes only.
  sat::Lits places_;
  std::unique_ptr<const configuration::MarkingBounds> bounds_;
  std::unique_ptr<configuration::MarkingFilter> filter_;
};

// The consumers (events, or transitions of a net) whose preset contains that of another one, or
// equals that of a lower-numbered one: disabled whenever the other one is.
template <class Consumer>
base::IndexedBy<Consumer, bool> dominated_consumers(const base::OwnedList<Consumer>& consumers);

}  // namespace vorel::reach
