#include "verify/progress_check.h"

#include <algorithm>
#include <cassert>

namespace vorel::verify {
namespace {

constexpr std::size_t max_rounds = 100'000;

// Gates chosen so that they cannot run for ever while all others stand still: none oscillates
// alone, and none depends on itself through others.
class AcyclicGates {
 public:
  explicit AcyclicGates(const CircuitFunctions& functions)
      : functions_{functions}, chosen_(functions.circuit().gates.size()) {}

  bool add(std::size_t gate) {
    if (functions_.can_oscillate_alone(gate)) return false;
    seen_.assign(chosen_.size(), false);
    return chosen_[gate] = !leads_to(gate, gate);
  }

 private:
  // Through chosen gates.
  bool leads_to(std::size_t from, std::size_t target) {
    for (const std::size_t reader : functions_.readers(functions_.circuit().gates[from].output)) {
      if (reader == target) return true;
      if (!chosen_[reader] || seen_[reader]) continue;
      seen_[reader] = true;
      if (leads_to(reader, target)) return true;
    }
    return false;
  }

  const CircuitFunctions& functions_;
  std::vector<bool> chosen_, seen_;
};

}  // namespace

ProgressCheck::ProgressCheck(MarkingFormula& formula, const FaultFinder& faults,
                             const TraceBuilder& traces,
                             std::span<const std::pair<WireId, WireId>> arbiters,
                             bool is_persistent)
    : formula_{formula},
      composition_{formula.composition()},
      faults_{faults},
      traces_{traces},
      is_persistent_{is_persistent && has_no_free_choice()},
      waits_for_arbiter_(composition_.circuit().wires.size()) {
  for (const auto& [a, b] : arbiters) {
    let_wait_for_arbiter(a);
    let_wait_for_arbiter(b);
  }
  choose_resting_gates();
}

// No two transitions that the environment does not make compete for a token.
bool ProgressCheck::has_no_free_choice() const {
  return std::ranges::all_of(composition_.stg().places, [this](const auto& place) {
    return std::ranges::count_if(place->postset, [this](const auto* transition) {
             const auto wire = composition_.wire_of(*transition->signal);
             return !wire || composition_.functions().driver(*wire) != no_gate;
           }) <= 1;
  });
}

// Silent transitions cannot go on for ever.
bool ProgressCheck::is_silently_acyclic() const {
  enum class Mark : std::uint8_t { none, open, done };
  std::vector<Mark> marks(composition_.stg().transitions.size());
  const auto visit = [&](const auto& self, const net::StgTransition& transition) -> bool {
    Mark& mark = marks[transition.index];
    if (mark != Mark::none || !composition_.is_silent(*transition.signal))
      return mark != Mark::open;
    mark = Mark::open;
    for (const auto* place : transition.postset)
      for (const auto* next : place->postset)
        if (!self(self, *next)) return false;
    mark = Mark::done;
    return true;
  };
  return std::ranges::all_of(composition_.stg().transitions,
                             [&](const auto& t) { return visit(visit, *t); });
}

void ProgressCheck::let_wait_for_arbiter(WireId wire) {
  if (waits_for_arbiter_[wire.value]) return;
  waits_for_arbiter_[wire.value] = true;
  for (const std::size_t reader : composition_.functions().readers(wire))
    let_wait_for_arbiter(composition_.circuit().gates[reader].output);
}

void ProgressCheck::add_resting(std::size_t gate, sat::Lits& lits) {
  const net::Signal* const signal =
      composition_.signal_of(composition_.circuit().gates[gate].output);
  const sat::Lit excited = formula_.excited(gate);
  if (signal == nullptr) lits.push_back(~excited);
  for (const auto& transition : composition_.stg().transitions)
    if (transition->signal == signal)
      lits.push_back(~formula_.all_of({excited, formula_.enabled(*transition)}));
}

// Those of wires that are no signals first: it is their delays that would take many rounds.
void ProgressCheck::choose_resting_gates() {
  const auto& gates = composition_.circuit().gates;
  AcyclicGates acyclic(composition_.functions());
  for (std::size_t g = 0; g < gates.size(); ++g)
    if (composition_.signal_of(gates[g].output) == nullptr && acyclic.add(g))
      add_resting(g, hidden_at_rest_);
  all_at_rest_ = hidden_at_rest_;
  for (std::size_t g = 0; g < gates.size(); ++g)
    if (composition_.signal_of(gates[g].output) != nullptr && acyclic.add(g))
      add_resting(g, all_at_rest_);
  if (!is_silently_acyclic()) return;
  for (const auto& transition : composition_.stg().transitions)
    if (composition_.is_silent(*transition->signal))
      all_at_rest_.push_back(~formula_.enabled(*transition));
}

// Once due, the signal is until it has changed or an input takes its place: nothing else takes the
// tokens that lead to its edges.
bool ProgressCheck::stays_due(const net::Signal& signal) const {
  std::vector<bool> is_seen(composition_.stg().places.size());
  for (const PlaceSet& set : formula_.edge_presets(signal))
    for (const std::uint32_t place : set) is_seen[place] = true;
  return std::ranges::all_of(composition_.stg().places, [&](const auto& place) {
    if (!is_seen[place->index]) return true;
    std::size_t own = 0, silent = 0;
    for (const auto* transition : place->postset) {
      const auto wire = composition_.wire_of(*transition->signal);
      if (!wire)
        ++silent;
      else if (transition->signal == &signal)
        ++own;
      else if (composition_.functions().driver(*wire) != no_gate)
        return false;
    }
    return silent == 0 || (silent == 1 && own == 0);
  });
}

sat::Lits ProgressCheck::question(WireId wire) {
  const net::Signal& signal = *composition_.signal_of(wire);
  // Being due no more is no fault where an arbiter has decided so.
  const bool may_rest = waits_for_arbiter_[wire.value] || stays_due(signal);
  sat::Lits lits = may_rest ? all_at_rest_ : hidden_at_rest_;
  lits.push_back(formula_.change_allowed(signal));
  lits.push_back(~formula_.excited(composition_.functions().driver(wire)));
  return lits;
}

Answer ProgressCheck::check_signal(WireId wire, Result& result) {
  const sat::Lits lits = question(wire);
  const Awaited awaited{wire, waits_for_arbiter_[wire.value]};
  const sat::Lit asked = sat::Lit(formula_.formula().new_var(false), false);
  for (std::size_t round = 0; round < max_rounds; ++round, ++result.rounds) {
    sat::Lits assumptions = lits;
    assumptions.push_back(asked);
    const auto found = formula_.solve(std::move(assumptions));
    if (!found) return Answer::undecided;
    if (!*found) return Answer::holds;
    const auto events = formula_.events_of_model();
    const auto state = traces_.state_after(events);
    if (!state) return Answer::fails;
    const auto run =
        faults_.runs().run_to_edge(awaited, marking_of(composition_, *state), is_persistent_);
    if (run.outcome == RunOutcome::unknown) return Answer::undecided;
    if (run.outcome == RunOutcome::never) {
      result.finding = traces_.finding(
          {Question::progress, wire, nullptr, awaited.waits_for_arbiter}, events, is_persistent_);
      return Answer::fails;
    }
    sat::Lits clause{~asked};
    for (const std::uint32_t place : run.needed) clause.push_back(~formula_.marked(place));
    for (const std::uint32_t place : run.absent) clause.push_back(formula_.marked(place));
    formula_.formula().add_clause(clause, sat::PermanentGroup);
  }
  return Answer::undecided;
}

ProgressCheck::Result ProgressCheck::run() {
  Result result{Answer::holds, std::nullopt, 0};
  for (const Gate& gate : composition_.circuit().gates) {
    if (composition_.signal_of(gate.output) == nullptr) continue;
    const Answer answer = check_signal(gate.output, result);
    if (answer == Answer::undecided) result.answer = answer;
    if (answer == Answer::fails) {
      result.answer = answer;
      break;
    }
  }
  return result;
}

}  // namespace vorel::verify
