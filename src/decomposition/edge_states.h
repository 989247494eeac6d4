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
//
// Most candidates are refused because of some state, and one state speaks against many. So all are
// asked about at once, and states that were met are kept: for another function they are looked at
// before the solver is asked.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/bit_rows.h"
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

  // By candidate. A rising edge: the target is true in each state in which an occurrence is
  // excited, and false in each state in which a trigger can fire that makes it excited. A falling
  // edge: the other way round. None for candidates that are triggered by a signal on which the
  // target does not depend, and after a reported failure. At verbosity 6 tells why not.
  base::IndexedBy<net::Insertion, Admission> admissions();
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

  // What can be said of an occurrence in a state.
  enum class Timing : std::uint8_t { excited, awaited };
  struct KnownState {
    std::vector<int> code;  // by signal
    base::BitRows marks;    // [timing]: the candidates of which an occurrence is so
  };
  static constexpr std::size_t most_known_states = 1000;

  bool is_true_at(const std::vector<int>& values) const;  // the target; values by signal
  bool can_be_triggered(CandidateId candidate) const;
  sat::Lit triggered(OccurrenceId id);  // all triggers have fired
  sat::Lit excited(OccurrenceId id);
  sat::Lit awaited(OccurrenceId id);  // some trigger can fire, and all others have
  sat::Lit literal(OccurrenceId id, Timing timing);
  // Whether one of the occurrences can be so while the target has the value: asks the solver.
  bool is_possible(CandidateId candidate, Timing timing, bool value);
  // The same, known of candidates that find_possible has been asked about.
  bool is_known_possible(CandidateId candidate, Timing timing, bool value) const {
    return base::has_bit(possible_[row_of(timing, value)], candidate.value);
  }
  static std::size_t row_of(Timing timing, bool value) {
    return 2 * static_cast<std::size_t>(timing) + (value ? 1 : 0);
  }
  void find_possible(resolution::CandidateList candidates, Timing timing, bool value);
  KnownState state_of_model();
  void take_marks(const KnownState& state, bool value);
  // Of what is known to be possible.
  Admission admission(CandidateId candidate) const;
  void tell_refusal(CandidateId candidate);
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
  std::vector<KnownState> known_states_;
  base::BitRows possible_;  // [timing and value of the target]: candidates
};

// Whether the next value of the signal is the function in each state of the prefix. False after a
// reported failure.
bool computes(const net::StgPrefix& prefix, net::SignalId signal, const bdd::Bdd& function,
              std::span<const std::string> names, const configuration::EncodingOptions& options);

}  // namespace vorel::decomposition
