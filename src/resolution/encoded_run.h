// resolution/encoded_run.h - a configuration of a prefix that may end in cut-offs, as a formula.
// Here:      events, what they leave marked and enable, how often transitions occur.
// Not here:  configurations without cut-offs (configuration/configuration_encoding.h), which is
//            where states are looked for; here a run counts, and it goes as far as the prefix does.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "base/indexed_by.h"
#include "net/instances.h"
#include "resolution/occurrence_counts.h"
#include "sat/cnf_formula.h"
#include "sat/integer_circuit.h"

namespace vorel::resolution {

// By transition: its occurrences in a run.
using Occurrences = base::IndexedBy<net::StgTransition, std::uint32_t>;

class EncodedRun {
 public:
  using Event = net::StgPrefix::Event;
  using Condition = net::StgPrefix::Condition;

  // All must outlive it, and the prefix must not change.
  EncodedRun(const net::StgPrefix& prefix, OccurrenceCounts& counts, const sat::CnfParams& params);

  const net::StgPrefix& prefix() const { return prefix_; }
  sat::CnfFormula& formula() { return formula_; }

  // The event is in the run.
  sat::Lit fired(const Event& event) const { return events_[event]; }
  sat::Lit produced(const Condition& condition) const;
  // The condition is in the cut that the run ends in; the event can fire there; the place has a
  // token. To be used positively.
  sat::Lit marked(const Condition& condition);
  sat::Lit enabled(const Event& event);
  sat::Lit marked(const net::StgPlace& place);

  // The number of occurrences of the transitions in the run, plus `more`; what must not be used
  // once the group has been removed.
  sat::Lits occurrences(std::span<const net::StgTransition* const> transitions, std::uint32_t more,
                        sat::ClauseGroup group);

  // A run that the formula allows; nullopt when there is none, and after a reported failure.
  std::optional<Occurrences> solve();

 private:
  // The literal at i is true if the transition occurs more than i times.
  const sat::Lits& thresholds(const net::StgTransition& transition);

  const net::StgPrefix& prefix_;
  OccurrenceCounts& counts_;
  const net::Instances<net::StgPrefix> instances_;
  sat::CnfFormula formula_;
  base::IndexedBy<Event, sat::Lit> events_;
  base::IndexedBy<Condition, sat::LitCell> marked_;
  base::IndexedBy<Event, sat::LitCell> enabled_;
  base::IndexedBy<net::StgPlace, sat::LitCell> places_;
  base::IndexedBy<net::StgTransition, sat::Lits> thresholds_;  // empty until asked for
};

}  // namespace vorel::resolution
