#include "decomposition/signal_decomposer.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <set>
#include <unordered_set>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "bdd/cover_bdd.h"

namespace vorel::decomposition {
namespace {

constexpr int verbosity_of_best = 2, verbosity_of_useful = 3, verbosity_of_candidates = 4;
constexpr std::size_t line_width = 52;

bool tells(int verbosity) { return base::verbosity() >= verbosity; }

}  // namespace

// One implementation of a signal, with its function and its sets over the variables of signals.
struct SignalDecomposer::Alternative {
  Alternative(const SignalFunctions& functions, const synthesis::SignalImplementation& of,
              SignalVariables& variables)
      : signal{functions.name()},
        variable{variables.of(signal)},
        implementation{of},
        covers{covers_of(of, variables.names())},
        function{bdd::bdd_of(of.equation, variables.names())} {}

  void describe(Deco& deco) const {
    deco.signal = signal;
    deco.variable = variable;
    deco.function = implementation.equation;
    deco.literals = implementation.cost;
  }

  const std::string& signal;
  std::uint32_t variable;
  const synthesis::SignalImplementation& implementation;
  bdd::BDDCover covers;
  bdd::Bdd function;
};

SignalDecomposer::SignalDecomposer(const GateLibrary& library,
                                   const std::vector<std::string>& gates,
                                   SignalVariables& variables, SubfunctionInserter& inserter,
                                   const Names& disabled_signals)
    : library_{library},
      gates_{gates},
      variables_{variables},
      inserter_{inserter},
      disabled_signals_{disabled_signals},
      matcher_{library, gates},
      boolean_{literals_} {
  const bdd::Bdd first = bdd::bdd_variable(0), second = bdd::bdd_variable(1);
  for (const auto& [kind, function] :
       {std::pair{AlgKind::conjunction, first & second}, {AlgKind::disjunction, first | second}}) {
    const GateMatch match = matcher_.match(bdd::BDDCover(function));
    if (match.exists()) two_input_gates_.push_back({kind, match, matcher_.covers_of_match(match)});
  }
}

void SignalDecomposer::add_algebraic(const Alternative& alternative,
                                     std::vector<Deco>& candidates) {
  const AlgDecomposer decomposer(variables_.placeholder(), variables_.names());
  for (const AlgDecomposition& decomposition : decomposer.decompose(alternative.function)) {
    const auto add = [&](Deco deco) {
      alternative.describe(deco);
      candidates.push_back(std::move(deco));
    };
    if (decomposition.kind == AlgKind::collapsed)
      add(collapsed_deco(decomposition, variables_.placeholder()));
    const bool admits_inverter = inverter_of(alternative.signal) == OutputInverter::admitted;
    for (const TwoInputGate& gate : two_input_gates_)
      if (gate.kind == decomposition.kind && (admits_inverter || !gate.match.inverted))
        add(gate_deco(decomposition, gate.match, gate.shape));
  }
}

void SignalDecomposer::add_boolean(const Alternative& alternative, std::vector<Deco>& candidates) {
  const DecomposedFunction function{.covers = alternative.covers,
                                    .literals = alternative.implementation.cost,
                                    .own_variable = alternative.implementation.self
                                                        ? std::optional(alternative.variable)
                                                        : std::nullopt};
  for (const std::string& name : gates_) {
    if (tells(verbosity_of_candidates)) {
      std::cerr << "\n\n\n\n\n"
                << std::string(line_width, '-') << "\nDecomposing "
                << toolkit::to_string(alternative.implementation.equation) << "\nwith G=" << name;
    }
    ++stats_.relations;
    const DecomposingGate gate(library_.gate(name), SignalVariables::first_pin);
    for (const BooleanCandidate& candidate : boolean_.decompose(function, gate)) {
      Deco deco = boolean_deco(name, matcher_.covers(name), candidate.pins);
      alternative.describe(deco);
      if (tells(verbosity_of_candidates)) {
        std::cerr << "\nNew Bool. decomposition:\n"
                  << to_string(deco, library_, variables_.names());
      }
      candidates.push_back(std::move(deco));
    }
  }
}

const std::vector<Deco>& SignalDecomposer::candidates_of(const Alternative& alternative) {
  const bdd::BDDCover& covers = alternative.covers;
  const auto [entry, is_new] =
      known_.try_emplace({bdd::bdd_variable(alternative.variable), covers.er_plus, covers.qr_plus,
                          covers.er_minus, covers.qr_minus});
  if (is_new) {
    add_algebraic(alternative, entry->second);
    add_boolean(alternative, entry->second);
  }
  return entry->second;
}

// Each sub-function with each function around it once, wherever it comes from.
void SignalDecomposer::add_collapsed(std::vector<Deco>& candidates) {
  std::unordered_set<std::vector<bdd::Bdd>, base::SequenceHash> seen;
  for (const Deco& deco : candidates)
    if (deco.kind == DecoKind::collapsed)
      seen.insert({deco.subfunctions.front().function, deco.collapsed});
  for (std::size_t i = 0, end = candidates.size(); i < end; ++i) {
    for (std::size_t part = 0; part < candidates[i].subfunctions.size(); ++part) {
      const Deco& deco = candidates[i];
      if (deco.kind == DecoKind::collapsed || deco.subfunctions[part].is_trivial()) continue;
      std::optional<Deco> collapsed = collapsed_deco(deco, part, variables_.placeholder());
      if (!collapsed) continue;
      const bdd::Bdd& function = collapsed->subfunctions.front().function;
      if (!seen.insert({function, collapsed->collapsed}).second) continue;
      if (tells(verbosity_of_candidates)) {
        std::cerr << "\nNew decomposition obtained by collapsing sub-function H"
                  << toolkit::to_string(bdd::expression_of(function, variables_.names())) << " in\n"
                  << to_string(deco, library_, variables_.names());
      }
      collapsed->function = deco.function;
      if (deco.kind == DecoKind::monotonic)
        collapsed->function =
            bdd::expression_of(next_value(deco, std::nullopt, 0), variables_.names());
      candidates.push_back(std::move(*collapsed));
    }
  }
}

// A wire behind a gate, or before a latch, is excited together with the signal, and would lose its
// excitation when the signal does: the environment allows the one, but not the other.
OutputInverter SignalDecomposer::inverter_of(const std::string& signal) const {
  return disabled_signals_.contains(signal) ? OutputInverter::refused : OutputInverter::admitted;
}

std::vector<Deco> SignalDecomposer::latches(const SignalFunctions& functions) {
  if (functions.set == nullptr) return {};
  return monotonic_candidates(functions.name(), variables_.of(functions.name()), *functions.set,
                              *functions.reset, functions.solution->cost(), matcher_,
                              variables_.names(), latch_cost_, inverter_of(functions.name()));
}

std::vector<Deco> SignalDecomposer::all_candidates(const SignalFunctions& functions) {
  std::vector<Deco> candidates = latches(functions);
  for (const synthesis::SignalImplementation& of : functions.solution->alternatives) {
    const std::vector<Deco>& found = candidates_of(Alternative(functions, of, variables_));
    candidates.insert(candidates.end(), found.begin(), found.end());
  }
  add_collapsed(candidates);
  return candidates;
}

void SignalDecomposer::add_insertions(Deco& deco) {
  ++stats_.completed;
  for (Subfunction& part : deco.subfunctions) {
    if (!deco.must_be_inserted(part)) continue;
    const auto insertion = inserter_.insert(part.function, deco.signal, false);
    if (!insertion) return;
    part.insertion = insertion->summary();
  }
}

DecoSetting SignalDecomposer::setting(std::uint32_t signal_count) {
  return {.library = library_,
          .signal_count = signal_count,
          .first_free_variable = variables_.first_free(),
          .has_gate = [this](const bdd::BDDCover& cover) { return matcher_.match(cover).exists(); },
          .names = variables_.names(),
          .literal_count = [this](const bdd::Bdd& f) { return literals_.of(f); }};
}

Deco SignalDecomposer::implementation_of(const SignalFunctions& functions) {
  std::vector<Deco> candidates = matched_candidates(
      *functions.solution, matcher_, variables_.names(), inverter_of(functions.name()));
  if (candidates.empty()) candidates = latches(functions);
  Deco* best = nullptr;
  for (Deco& deco : candidates) {
    deco.judge();
    if (!deco.directly_implementable) continue;
    rate(deco, setting(0));
    if (best == nullptr || deco.cost < best->cost) best = &deco;
  }
  return best == nullptr ? Deco{} : std::move(*best);
}

DecoQueue SignalDecomposer::decompositions(const SignalFunctions& functions,
                                           std::uint32_t signal_count) {
  std::vector<Deco> candidates = all_candidates(functions);
  stats_.candidates += candidates.size();
  for (Deco& deco : candidates) {
    for (Subfunction& part : deco.subfunctions)
      if (!part.is_constant())
        part.match = matcher_.match(bdd::BDDCover(part.function), variables_.names());
  }
  DecoQueue queue(std::move(candidates),
                  {.add_insertions = [this](Deco& deco) { add_insertions(deco); },
                   .setting = [this, signal_count] { return setting(signal_count); }});
  tell(functions.name(), queue);
  return queue;
}

void SignalDecomposer::tell(const std::string& signal, DecoQueue& queue) const {
  if (tells(verbosity_of_useful)) {
    std::cerr << "\n\nUseful decompositions for " << signal;
    for (const Deco* deco : queue.all())
      std::cerr << '\n' << to_string(*deco, library_, variables_.names());
  }
  if (tells(verbosity_of_best)) {
    const std::string line = '\n' + std::string(line_width, '$');
    std::cerr << line;
    if (const Deco* const best = queue.front()) {
      std::cerr << "\nBest decomposition for " << to_string(*best, library_, variables_.names());
    } else {
      std::cerr << "\nNo decomposition for " << signal;
    }
    std::cerr << line;
  }
}

bool SignalDecomposer::still_holds(const Deco& implementation, const SignalFunctions& functions) {
  assert(implementation.directly_implementable);
  if (implementation.kind == DecoKind::monotonic) {
    const auto is_among = [&](const bdd::Bdd& function, const synthesis::SignalSolution* solution) {
      return solution != nullptr &&
             std::ranges::any_of(solution->alternatives, [&](const auto& alternative) {
               return bdd::bdd_of(alternative.equation, variables_.names()) == function;
             });
    };
    return is_among(implementation.subfunctions[0].function, functions.set) &&
           is_among(implementation.subfunctions[1].function, functions.reset);
  }
  std::vector<bdd::Bdd> inputs;
  std::set<std::uint32_t> support;
  for (const Subfunction& part : implementation.subfunctions) {
    inputs.push_back(part.function);
    for (const std::uint32_t variable : part.function.support()) support.insert(variable);
  }
  const bdd::BDDCover gate = compose(implementation.shape, inputs);
  return std::ranges::any_of(functions.solution->alternatives, [&](const auto& of) {
    std::set<std::uint32_t> context;
    for (const std::string& name : of.context) context.insert(variables_.of(name));
    return std::ranges::includes(context, support) && does(gate, covers_of(of, variables_.names()));
  });
}

}  // namespace vorel::decomposition
