// decomposition/edge_states.h - in which states the edges of a signal that computes a function may
// be excited.
// Here:      the edges that a function admits, states in which a set of them deviates from it, the
//            same question about a signal that is there.
// Not here:  choosing among sets of edges (decomposition/subfunction_inserter.h).
//
// A function is one of codes: its variable v stands for the signal names[v]. A state is what a
// configuration ends in, as the options of the encoding say; the triggers of an occurrence are its
// last causes that are no dummies, and it is excited from when all of them have fired until one of
// its followers fires.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd.h"
#include "configuration/state_formula.h"
#include "resolution/candidate_gates.h"

namespace vorel::decomposition {

// Which edge of a signal that computes a function a candidate can be.
enum class Admission : std::uint8_t { none, rising, falling };

// One formula serves many functions. Refers to the candidates and to their prefix, and goes out of
// use with them.
class EdgeStates {
 public:
  using CandidateId = resolution::CandidateId;

  EdgeStates(const resolution::Candidates& candidates,
             const configuration::EncodingOptions& options);

  // What the questions are about from now on. All variables of the function must stand for signals
  // that are no dummies.
  void set_target(const bdd::Bdd& function, std::span<const std::string> names);

  // Of the target.
  bool initial_value() const;

  // A rising edge: the target is true in each state in which an occurrence is excited, and false in
  // each state in which a trigger can fire that makes it excited. A falling edge: the other way
  // round. None for candidates that are triggered by a signal on which the target does not depend,
  // and after a reported failure. At verbosity 6 tells why not.
  Admission admission(CandidateId candidate);
  // Some occurrence needs no trigger: where the candidate is chosen, the signal begins at the other
  // value than the target, and is about to change.
  bool is_excited_at_start(CandidateId candidate) const;

  // A state in which the next value of a signal with these edges, all of them admitted, is not the
  // target. It is the target there if the number of these among the edges is odd and the signal
  // begins at 0, or it is even and the signal begins at 1; for `value` false the other way round.
  struct Deviation {
    resolution::CandidateList edges;
    bool value = false;  // of the target
  };
  // Nothing if there is no such state, and after a reported failure.
  std::optional<Deviation> deviation(std::span<const CandidateId> edges, bool begins_at_1);

 private:
  using Event = net::StgPrefix::Event;
  using OccurrenceId = resolution::OccurrenceId;

  struct Occurrence {
    std::vector<const Event*> triggers;
    sat::Lit triggered, excited, awaited;  // made on demand
  };

  bool can_be_triggered(CandidateId candidate) const;
  sat::Lit triggered(OccurrenceId id);  // all triggers have fired
  sat::Lit excited(OccurrenceId id);
  sat::Lit awaited(OccurrenceId id);  // some trigger can fire, and all others have
  // Whether one of the occurrences can be so while the target has the value.
  bool is_possible(CandidateId candidate, sat::Lit (EdgeStates::*what)(OccurrenceId), bool value);
  sat::ClauseGroup new_question();
  bool is_triggered_in_model(OccurrenceId id);
  std::string other_change_in_model(CandidateId candidate);

  const resolution::Candidates& candidates_;
  const net::StgPrefix& prefix_;
  const configuration::StateStructure<net::StgPrefix> structure_;
  configuration::StateFormula states_;
  base::IndexedBy<resolution::EdgeOccurrence, Occurrence> occurrences_;
  bdd::Bdd target_;
  std::vector<const net::Signal*> signals_;  // by variable; null for those it does not depend on
  base::IndexedBy<net::Signal, bool> is_in_support_;
  sat::ClauseGroup target_group_;
  sat::Lit target_lit_;
};

// Whether the next value of the signal is the function in each state of the prefix. False after a
// reported failure.
bool computes(const net::StgPrefix& prefix, net::SignalId signal, const bdd::Bdd& function,
              std::span<const std::string> names, const configuration::EncodingOptions& options);

}  // namespace vorel::decomposition
