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
}

bool EdgeStates::initial_value() const {
  std::vector<int> code(signals_.size() + 1, 0);
  for (std::size_t i = 0; i < signals_.size(); ++i)
    if (signals_[i] != nullptr) code[i] = signals_[i]->initial_value;
  return target_.evaluate(code);
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

bool EdgeStates::is_possible(CandidateId candidate, Lit (EdgeStates::*what)(OccurrenceId),
                             bool value) {
  Lits any;
  for (const OccurrenceId id : candidates_.occurrences_of(candidate))
    any.push_back((this->*what)(id));
  const sat::ClauseGroup question = new_question();
  states_.formula().add_clause(any, question);
  states_.formula().add_unit(target_lit_ ^ !value, question);
  return states_.formula().solve();
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

Admission EdgeStates::admission(CandidateId candidate) {
  const bool tells = base::verbosity() >= verbosity_of_refusals;
  const auto text = [&] { return resolution::to_text(candidates_.insertion(candidate)); };
  const auto refuse_incompatible = [&] {
    if (tells) std::cerr << "\n Insertion " << text() << " is incompatible";
    return Admission::none;
  };
  if (!can_be_triggered(candidate)) return refuse_incompatible();
  const bool rises = is_possible(candidate, &EdgeStates::excited, true);
  if (base::run_failed()) return Admission::none;
  if (is_possible(candidate, &EdgeStates::excited, false) == rises) {
    if (base::run_failed()) return Admission::none;
    if (tells && rises) {
      std::cerr << "\n Insertion " << text() << " is concurrent with "
                << other_change_in_model(candidate) << " in a sensitive state";
    }
    return Admission::none;
  }
  if (is_possible(candidate, &EdgeStates::awaited, rises)) return refuse_incompatible();
  if (base::run_failed()) return Admission::none;
  return rises ? Admission::rising : Admission::falling;
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
