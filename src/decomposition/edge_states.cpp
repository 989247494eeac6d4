#include "decomposition/edge_states.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "base/run_state.h"
#include "configuration/triggers.h"
#include "sat/bdd_definition.h"

namespace vorel::decomposition {
namespace {

using sat::Lit;
using sat::Lits;
using State = configuration::StateLiterals<net::StgPrefix>;

constexpr int verbosity_of_refusals = 6;
constexpr std::uint32_t question_group = 1;

// By variable of the function; null for those on which it does not depend.
std::vector<const net::Signal*> signals_of(const bdd::Bdd& function, const net::Stg& stg,
                                           std::span<const std::string> names) {
  std::vector<const net::Signal*> signals;
  for (const std::uint32_t variable : function.support()) {
    assert(variable < names.size() && "each variable stands for a signal");
    const auto signal = std::ranges::find(stg.signals, names[variable],
                                          [](const auto& candidate) { return candidate->name; });
    assert(signal != stg.signals.end() && "the signal of each variable is in the STG");
    signals.resize(variable + std::size_t{1}, nullptr);
    signals[variable] = &**signal;
  }
  return signals;
}

Lit literal_of(const bdd::Bdd& function, std::span<const net::Signal* const> signals, State& state,
               sat::CnfFormula& formula, sat::ClauseGroup group) {
  Lits values(signals.size(), sat::LitFalse);
  for (std::size_t i = 0; i < signals.size(); ++i)
    if (signals[i] != nullptr) values[i] = state.code(base::id_of(*signals[i]));
  return sat::define_bdd(formula, function, values, group);
}

}  // namespace

EdgeStates::EdgeStates(const resolution::Candidates& candidates,
                       const configuration::EncodingOptions& options)
    : candidates_{candidates},
      prefix_{candidates.prefix()},
      structure_{prefix_},
      states_{structure_, options, 1},
      occurrences_(candidates.all_occurrences().size()),
      is_in_support_(prefix_.signals.size(), false),
      target_group_{states_.formula().new_group()} {
  configuration::TriggerFinder finder(prefix_);
  for (const OccurrenceId id : candidates.all_occurrences()) {
    Occurrence& occurrence = occurrences_[id];
    occurrence.triggers =
        finder.triggers_after(configuration::events_of(prefix_, candidates.occurrence(id).causes));
    occurrence.triggered = occurrence.excited = occurrence.awaited = sat::LitUninit;
  }
}

void EdgeStates::set_target(const bdd::Bdd& function, std::span<const std::string> names) {
  sat::CnfFormula& formula = states_.formula();
  formula.remove_group(target_group_);
  target_group_ = formula.new_group();
  target_ = function;
  signals_ = signals_of(function, prefix_, names);
  is_in_support_ = base::IndexedBy<net::Signal, bool>(prefix_.signals.size(), false);
  for (const net::Signal* signal : signals_)
    if (signal != nullptr) is_in_support_[*signal] = true;
  target_lit_ = literal_of(function, signals_, states_.state(0), formula, target_group_);
  possible_ = base::BitRows(4, candidates_.size());
  for (const KnownState& state : known_states_) take_marks(state, is_true_at(state.code));
}

bool EdgeStates::is_true_at(const std::vector<int>& values) const {
  std::vector<int> code(signals_.size() + 1, 0);
  for (std::size_t i = 0; i < signals_.size(); ++i)
    if (signals_[i] != nullptr) code[i] = values[signals_[i]->index];
  return target_.evaluate(code);
}

bool EdgeStates::initial_value() const {
  std::vector<int> values;
  for (const auto& signal : prefix_.signals) values.push_back(signal->initial_value);
  return is_true_at(values);
}

bool EdgeStates::can_be_triggered(CandidateId candidate) const {
  const auto occurrences = candidates_.occurrences_of(candidate);
  return std::all_of(occurrences.begin(), occurrences.end(), [this](OccurrenceId id) {
    const auto& triggers = occurrences_[id].triggers;
    return std::ranges::all_of(triggers, [this](const Event* trigger) {
      return is_in_support_[*trigger->transition->signal];
    });
  });
}

bool EdgeStates::is_excited_at_start(CandidateId candidate) const {
  const auto occurrences = candidates_.occurrences_of(candidate);
  return std::any_of(occurrences.begin(), occurrences.end(),
                     [this](OccurrenceId id) { return occurrences_[id].triggers.empty(); });
}

Lit EdgeStates::triggered(OccurrenceId id) {
  Occurrence& occurrence = occurrences_[id];
  if (!occurrence.triggered.is_uninit()) return occurrence.triggered;
  Lits fired;
  for (const Event* trigger : occurrence.triggers)
    fired.push_back(states_.state(0).vars().event_lit(*trigger));
  return occurrence.triggered =
             states_.formula().make_gate(sat::Gate(sat::GateAnd, fired), sat::PermanentGroup);
}

Lit EdgeStates::excited(OccurrenceId id) {
  Occurrence& occurrence = occurrences_[id];
  if (!occurrence.excited.is_uninit()) return occurrence.excited;
  Lits inputs{triggered(id)};
  for (const configuration::StgEventId follower : candidates_.occurrence(id).followers)
    inputs.push_back(~states_.state(0).vars().event_lit(follower));
  return occurrence.excited =
             states_.formula().make_gate(sat::Gate(sat::GateAnd, inputs), sat::PermanentGroup);
}

Lit EdgeStates::awaited(OccurrenceId id) {
  Occurrence& occurrence = occurrences_[id];
  if (!occurrence.awaited.is_uninit()) return occurrence.awaited;
  sat::CnfFormula& formula = states_.formula();
  Lits ways;
  for (const Event* last : occurrence.triggers) {
    Lits inputs{states_.state(0).enabled(*last)};
    for (const Event* trigger : occurrence.triggers)
      if (trigger != last) inputs.push_back(states_.state(0).vars().event_lit(*trigger));
    ways.push_back(formula.make_gate(sat::Gate(sat::GateAnd, inputs), sat::PermanentGroup));
  }
  return occurrence.awaited = formula.make_gate(sat::Gate(sat::GateOr, ways), sat::PermanentGroup);
}

sat::ClauseGroup EdgeStates::new_question() {
  return states_.formula().renew_group(states_.formula().group(question_group));
}

Lit EdgeStates::literal(OccurrenceId id, Timing timing) {
  return timing == Timing::excited ? excited(id) : awaited(id);
}

bool EdgeStates::is_possible(CandidateId candidate, Timing timing, bool value) {
  Lits any;
  for (const OccurrenceId id : candidates_.occurrences_of(candidate))
    any.push_back(literal(id, timing));
  const sat::ClauseGroup question = new_question();
  states_.formula().add_clause(any, question);
  states_.formula().add_unit(target_lit_ ^ !value, question);
  return states_.formula().solve();
}

void EdgeStates::take_marks(const KnownState& state, bool value) {
  for (const Timing timing : {Timing::excited, Timing::awaited})
    possible_.add(row_of(timing, value), state.marks[static_cast<std::size_t>(timing)]);
}

// Literals that nobody has asked for yet leave no mark.
EdgeStates::KnownState EdgeStates::state_of_model() {
  const sat::CnfFormula& formula = states_.formula();
  KnownState state{std::vector<int>(prefix_.signals.size(), 0), {2, candidates_.size()}};
  for (const net::SignalId signal : prefix_.visible_signals())
    state.code[signal.value] = formula.is_true(states_.state(0).code(signal)) ? 1 : 0;
  for (const OccurrenceId id : candidates_.all_occurrences()) {
    const Lit literals[] = {occurrences_[id].excited, occurrences_[id].awaited};
    for (std::size_t timing = 0; timing < std::size(literals); ++timing)
      if (!literals[timing].is_uninit() && formula.is_true(literals[timing]))
        state.marks.set(timing, candidates_.candidate_of(id).value);
  }
  return state;
}

// Some of the candidates must be so: as long as there is a state, it is known to be possible for
// one more at least.
void EdgeStates::find_possible(resolution::CandidateList candidates, Timing timing, bool value) {
  const auto is_known = [=, this](CandidateId candidate) {
    return is_known_possible(candidate, timing, value);
  };
  std::erase_if(candidates, is_known);
  const sat::ClauseGroup question = new_question();
  states_.formula().add_unit(target_lit_ ^ !value, question);
  while (!candidates.empty()) {
    Lits any;
    for (const CandidateId candidate : candidates)
      for (const OccurrenceId id : candidates_.occurrences_of(candidate))
        any.push_back(literal(id, timing));
    states_.formula().add_clause(any, question);
    if (!states_.formula().solve()) return;
    KnownState state = state_of_model();
    assert(is_true_at(state.code) == value);
    take_marks(state, value);
    if (known_states_.size() < most_known_states) known_states_.push_back(std::move(state));
    [[maybe_unused]] const std::size_t found = std::erase_if(candidates, is_known);
    assert(found > 0);
  }
}

// The last change of a signal in the model that is no trigger of the candidate.
std::string EdgeStates::other_change_in_model(CandidateId candidate) {
  const auto& vars = states_.state(0).vars();
  std::string name = "$1";
  for (const auto& event : prefix_.events) {
    if (!vars.is_in_model(*event) || !is_in_support_[*event->transition->signal]) continue;
    const auto occurrences = candidates_.occurrences_of(candidate);
    const bool is_trigger =
        std::any_of(occurrences.begin(), occurrences.end(), [&](OccurrenceId id) {
          return std::ranges::count(occurrences_[id].triggers, &*event) != 0;
        });
    if (!is_trigger) name = event->transition->name;
  }
  return name;
}

Admission EdgeStates::admission(CandidateId candidate) const {
  const bool rises = is_known_possible(candidate, Timing::excited, true);
  if (rises == is_known_possible(candidate, Timing::excited, false)) return Admission::none;
  if (is_known_possible(candidate, Timing::awaited, rises)) return Admission::none;
  return rises ? Admission::rising : Admission::falling;
}

void EdgeStates::tell_refusal(CandidateId candidate) {
  const bool rises = is_known_possible(candidate, Timing::excited, true);
  const bool falls = is_known_possible(candidate, Timing::excited, false);
  const bool is_triggered = can_be_triggered(candidate);
  if (is_triggered && !rises && !falls) return;
  std::cerr << "\n Insertion " << resolution::to_text(candidates_.insertion(candidate));
  if (is_triggered && rises == falls && is_possible(candidate, Timing::excited, true)) {
    std::cerr << " is concurrent with " << other_change_in_model(candidate)
              << " in a sensitive state";
  } else {
    std::cerr << " is incompatible";
  }
}

base::IndexedBy<net::Insertion, Admission> EdgeStates::admissions() {
  for (const net::SignalId signal : prefix_.visible_signals()) states_.state(0).code(signal);
  resolution::CandidateList triggered, rising, falling;
  for (const CandidateId candidate : candidates_.all())
    if (can_be_triggered(candidate)) triggered.push_back(candidate);
  for (const bool value : {true, false}) find_possible(triggered, Timing::excited, value);
  for (const CandidateId candidate : triggered) {
    const Admission so_far = admission(candidate);
    if (so_far != Admission::none)
      (so_far == Admission::rising ? rising : falling).push_back(candidate);
  }
  find_possible(rising, Timing::awaited, true);
  find_possible(falling, Timing::awaited, false);
  base::IndexedBy<net::Insertion, Admission> result(candidates_.size(), Admission::none);
  if (base::run_failed()) return result;
  for (const CandidateId candidate : triggered) result[candidate] = admission(candidate);
  if (base::verbosity() >= verbosity_of_refusals)
    for (const CandidateId candidate : candidates_.all())
      if (result[candidate] == Admission::none) tell_refusal(candidate);
  return result;
}

bool EdgeStates::is_triggered_in_model(OccurrenceId id) {
  const auto& vars = states_.state(0).vars();
  return std::ranges::all_of(occurrences_[id].triggers,
                             [&](const Event* trigger) { return vars.is_in_model(*trigger); });
}

// The next value is the initial one, changed once for each occurrence that is excited or has fired.
std::optional<EdgeStates::Deviation> EdgeStates::deviation(std::span<const CandidateId> edges,
                                                           bool begins_at_1) {
  Lits inputs{target_lit_};
  for (const CandidateId edge : edges)
    for (const OccurrenceId id : candidates_.occurrences_of(edge)) inputs.push_back(triggered(id));
  sat::CnfFormula& formula = states_.formula();
  const sat::ClauseGroup question = new_question();
  const Lit differs = formula.make_gate(sat::Gate(sat::GateXor, inputs), question);
  formula.add_unit(differs ^ begins_at_1, question);
  if (!formula.solve()) return std::nullopt;
  Deviation deviation{.edges = {}, .value = formula.is_true(target_lit_)};
  for (const CandidateId candidate : candidates_.all()) {
    const auto occurrences = candidates_.occurrences_of(candidate);
    const auto count = std::count_if(occurrences.begin(), occurrences.end(),
                                     [this](OccurrenceId id) { return is_triggered_in_model(id); });
    if (count % 2 != 0) deviation.edges.push_back(candidate);
  }
  return deviation;
}

bool computes(const net::StgPrefix& prefix, net::SignalId signal, const bdd::Bdd& function,
              std::span<const std::string> names, const configuration::EncodingOptions& options) {
  const configuration::StateStructure<net::StgPrefix> structure(prefix);
  configuration::StateFormula states(structure, options, 1);
  sat::CnfFormula& formula = states.formula();
  const Lit value = literal_of(function, signals_of(function, prefix, names), states.state(0),
                               formula, sat::PermanentGroup);
  const Lit next = states.state(0).next_value(signal);
  const Lit differs =
      formula.make_gate(sat::Gate(sat::GateXor, std::array{value, next}), sat::PermanentGroup);
  formula.add_unit(differs, sat::PermanentGroup);
  return !formula.solve() && !base::run_failed();
}

}  // namespace vorel::decomposition
