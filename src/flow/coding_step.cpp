#include "flow/coding_step.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <unordered_set>
#include <utility>

#include "base/hashing.h"
#include "base/messages.h"
#include "base/sort_unique.h"
#include "configuration/decoding.h"
#include "conflicts/csc_check.h"
#include "conflicts/usc_check.h"
#include "flow/stg_game.h"
#include "net/causality.h"

namespace vorel::flow {
namespace {

using configuration::EventSet;
using conflicts::Core;
using Event = net::StgPrefix::Event;
using State = configuration::FinalState<net::StgPrefix>;

constexpr std::int32_t cores_to_look_for = 200;

configuration::SearchOptions search_options(const sat::CnfParams& formula) {
  configuration::SearchOptions options;
  options.encoding.formula = formula;
  options.all_solutions = cores_to_look_for;
  return options;
}

std::string edge_name(const net::StgTransition& transition) {
  constexpr char signs[] = {'+', '-', '~'};
  return transition.signal->name + signs[static_cast<std::size_t>(transition.sign)];
}

class ConflictTeller {
 public:
  explicit ConflictTeller(const net::StgPrefix& prefix) : prefix_{prefix}, structure_{prefix} {}

  Conflict tell(const Core& found, const conflicts::ConflictCheck& check, bool is_csc) const {
    const Core core = without_detours(found, check, is_csc);
    const State first(structure_, core.first), second(structure_, core.second);
    Conflict conflict;
    conflict.is_csc = is_csc;
    if (is_csc)
      conflict.signal = base::element(prefix_.signals, signal_between(first, second)).name;
    for (const bool value : first.code()) conflict.code += value ? '1' : '0';
    add_traces(core, conflict);
    conflict.excited_first = excited_edges(first);
    conflict.excited_second = excited_edges(second);
    for (const configuration::StgEventId event : core.sum) conflict.core.push_back(event.value);
    return conflict;
  }

 private:
  // Leaves out of both what only happens in both: what neither the differences between the two need
  // nor, of a CSC conflict, the event whose signal is excited in one of them alone.
  Core without_detours(const Core& core, const conflicts::ConflictCheck& check, bool is_csc) const {
    std::vector<Event*> needed;
    for (const configuration::StgEventId event : core.sum)
      needed.push_back(prefix_.events[event.value].get());
    if (is_csc) needed.push_back(excited_event(core));
    EventSet past;
    for (const Event* event : net::causal_past(prefix_, needed))
      past.push_back(base::id_of(*event));
    const EventSet detours =
        configuration::set_difference(configuration::set_difference(core.first, core.sum), past);
    Core result(configuration::set_difference(core.first, detours),
                configuration::set_difference(core.second, detours));
    const auto ends_in_dummy = [this](const EventSet& set) {
      return configuration::without_maximal_dummies(prefix_, set) != set;
    };
    const bool is_as_good = !ends_in_dummy(result.first) && !ends_in_dummy(result.second) &&
                            check.is_conflict(result.first, result.second);
    return is_as_good ? result : core;
  }

  Event* excited_event(const Core& core) const {
    const State first(structure_, core.first), second(structure_, core.second);
    const net::SignalId signal = signal_between(first, second);
    const State& state = first.is_excited(signal) ? first : second;
    for (const Event* event : structure_.instances().events_of(signal))
      if (state.is_enabled(*event)) return prefix_.events[event->index].get();
    assert(false && "the signal is excited");
    return nullptr;
  }

  // Two sorted lists that differ first differ in a signal that only one of them has.
  net::SignalId signal_between(const State& first, const State& second) const {
    const auto one = first.excited_signals(), other = second.excited_signals();
    const auto [a, b] = std::ranges::mismatch(one, other);
    assert((a != one.end() || b != other.end()) && "the pair is in conflict");
    const bool is_in_one = b == other.end() || (a != one.end() && *a < *b);
    return is_in_one ? *a : *b;
  }

  void add_traces(const Core& core, Conflict& conflict) const {
    const EventSet common = configuration::set_difference(core.first, core.sum);
    const auto trace = [&](const EventSet& configuration) {
      auto transitions = transitions_of(common);
      const auto behind = transitions_of(configuration::set_difference(configuration, common));
      transitions.insert(transitions.end(), behind.begin(), behind.end());
      return trace_of(prefix_, transitions);
    };
    const auto behind = [&](const StgTrace& whole) {
      return StgTrace(whole.begin() + static_cast<std::ptrdiff_t>(common.size()), whole.end());
    };
    const StgTrace first = trace(core.first);
    conflict.common.assign(first.begin(),
                           first.begin() + static_cast<std::ptrdiff_t>(common.size()));
    conflict.first = behind(first);
    conflict.second = behind(trace(core.second));
  }

  // In an order in which they fire.
  std::vector<const net::StgTransition*> transitions_of(const EventSet& set) const {
    std::vector<const net::StgTransition*> transitions;
    for (const Event* event : configuration::firing_sequence<net::StgPrefix>(
             prefix_, configuration::events_of(prefix_, set)))
      transitions.push_back(event->transition);
    return transitions;
  }

  std::vector<std::string> excited_edges(const State& state) const {
    std::vector<const net::StgTransition*> edges;
    for (const auto& event : prefix_.events)
      if (!net::is_dummy(*event) && state.is_enabled(*event)) edges.push_back(event->transition);
    const auto signal_and_sign = [](const net::StgTransition* edge) {
      return std::pair(edge->signal->index, edge->sign);
    };
    base::sort_unique(edges, signal_and_sign);
    std::vector<std::string> names;
    for (const auto* edge : edges) names.push_back(edge_name(*edge));
    return names;
  }

  const net::StgPrefix& prefix_;
  const configuration::StateStructure<net::StgPrefix> structure_;
};

CoreMap map_of(const net::StgPrefix& prefix, const std::list<Core>& cores) {
  CoreMap map(prefix.events.size());
  for (const Core& core : cores)
    for (const configuration::StgEventId event : core.sum) ++map[event.value];
  return map;
}

void sort_by_length(std::span<Conflict> conflicts) {
  std::ranges::stable_sort(conflicts, {}, [](const Conflict& conflict) {
    return 2 * conflict.common.size() + conflict.first.size() + conflict.second.size();
  });
}

}  // namespace

std::optional<Coding> find_coding(const net::StgPrefix& prefix, const sat::CnfParams& formula) {
  const configuration::SearchOptions options = search_options(formula);
  conflicts::UscCheck usc(prefix, options, conflicts::Notes::left_out);
  usc.run();
  if (base::run_failed()) return std::nullopt;
  // Only states with different markings can have different next values.
  conflicts::CscCheck csc(prefix, options, conflicts::Notes::left_out);
  if (!usc.seen_pairs().empty()) csc.run();
  if (base::run_failed()) return std::nullopt;

  Coding coding;
  coding.csc_cores = csc.seen_pairs().size();
  coding.usc_cores = usc.seen_pairs().size();
  coding.csc_holds = coding.csc_cores == 0;
  coding.usc_holds = coding.usc_cores == 0;
  coding.has_all_cores = !csc.has_met_limit() && !usc.has_met_limit();
  coding.core_map = map_of(prefix, csc.seen_pairs());
  for (const net::SignalId signal : prefix.visible_signals())
    coding.code_signals.push_back(base::element(prefix.signals, signal).name);

  const ConflictTeller teller(prefix);
  std::unordered_set<EventSet, base::SequenceHash> told;
  for (const Core& core : csc.seen_pairs()) {
    told.insert(core.sum);
    coding.conflicts.push_back(teller.tell(core, csc, true));
  }
  for (const Core& core : usc.seen_pairs())
    if (!told.contains(core.sum)) coding.conflicts.push_back(teller.tell(core, usc, false));
  const std::span<Conflict> conflicts = coding.conflicts;
  sort_by_length(conflicts.first(coding.csc_cores));
  sort_by_length(conflicts.subspan(coding.csc_cores));
  return coding;
}

std::optional<CoreMap> find_core_map(const net::StgPrefix& prefix, const sat::CnfParams& formula) {
  conflicts::CscCheck csc(prefix, search_options(formula), conflicts::Notes::left_out);
  csc.run();
  if (base::run_failed()) return std::nullopt;
  return map_of(prefix, csc.seen_pairs());
}

}  // namespace vorel::flow
