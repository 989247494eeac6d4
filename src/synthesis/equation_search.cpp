#include "synthesis/equation_search.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "configuration/dummy_cutoffs.h"
#include "synthesis/assumptions.h"
#include "synthesis/monotonic_cover.h"
#include "synthesis/verilog_module.h"
#include "synthesis/verilog_writer.h"
#include "toolkit/factor.h"
#include "toolkit/minimise.h"

namespace vorel::synthesis {
namespace {

std::vector<CodeArc> reversed(std::vector<CodeArc> arcs) {
  for (auto& [from, to] : arcs) std::swap(from, to);
  return arcs;
}

// The cheapest first; of equal cost, those that depend on the signal itself.
bool is_better(const SignalImplementation& a, const SignalImplementation& b) {
  return a.cost != b.cost ? a.cost < b.cost : a.self && !b.self;
}

// What stands behind the name of a signal.
std::string_view suffix_of(FunctionPhase phase) {
  if (phase == FunctionPhase::next_state) return "";
  return phase == FunctionPhase::set ? " SET" : " RESET";
}

}  // namespace

EquationSearch::EquationSearch(const net::StgPrefix& prefix,
                               const configuration::SearchOptions& options, SynthesisStyle style,
                               configuration::Notes notes, std::size_t max_codes)
    : prefix_{prefix},
      style_{style},
      notes_{notes},
      output_configurations_{options.output_configurations},
      encoding_{options.encoding},
      structure_{prefix},
      triggers_{structure_},
      support_search_{structure_, options.encoding, style},
      state_search_{structure_, options.encoding, style, max_codes} {
  if (notes == configuration::Notes::given && configuration::has_dummy_cutoffs(prefix)) {
    base::print_warning("there are dummy cut-offs; the result will not be reliable");
  }
}

void EquationSearch::run() {
  assert(report_.solutions.empty() && "an engine runs once");
  using enum FunctionPhase;
  if (notes_ == configuration::Notes::given && base::verbosity() >= 1)
    print_broken_assumptions(std::cerr, structure_, encoding_);
  if (base::run_failed()) return;
  const auto derive_all = [this](net::SignalId signal) {
    if (has_two_functions(style_)) return derive({signal, set}) && derive({signal, reset});
    return derive({signal, next_state});
  };
  for (const net::SignalId signal : prefix_.driven_signals()) {
    if (derive_all(signal)) continue;
    report_.solutions.clear();
    solutions_.clear();
    return;
  }
}

bool EquationSearch::derive(SignalFunction function) {
  const SignalList& triggers = triggers_.triggers(function);
  auto solution = std::make_unique<SignalSolution>(
      output_configurations_,
      base::element(prefix_.signals, function.signal).name + std::string(suffix_of(function.phase)),
      names_of(triggers));
  for (const SignalList& support : support_search_.supports(function, triggers)) {
    const ProjectedFunction projected{function, support};
    const SignalImplementation* const known = known_implementation(*solution, projected);
    solution->alternatives.push_back(known != nullptr ? *known : implementation(projected));
    if (base::run_failed()) break;
  }
  if (base::run_failed()) return false;
  assert(!solution->alternatives.empty());
  std::ranges::stable_sort(solution->alternatives, is_better);
  solutions_.push_back(solution.get());
  report_.add(std::move(solution));
  return true;
}

void EquationSearch::use(KnownEquations known) {
  known_ = std::move(known);
  can_stay_ = base::IndexedBy<net::Signal, bool>(prefix_.signals.size(), true);
  const auto exclude_neighbours = [this](const net::StgPlace& place) {
    for (const auto* transitions : {&place.preset, &place.postset})
      for (const net::StgTransition* transition : *transitions)
        can_stay_[*transition->signal] = false;
  };
  for (const auto& transition : prefix_.transitions) {
    if (transition->signal->name != known_.inserted) continue;
    for (const auto* places : {&transition->preset, &transition->postset})
      for (const net::StgPlace* place : *places) exclude_neighbours(*place);
  }
}

const SignalImplementation* EquationSearch::known_implementation(
    const SignalSolution& solution, const ProjectedFunction& projected) const {
  if (!known_.find || !can_stay_[projected.function.signal]) return nullptr;
  return known_.find(solution.name(), names_of(projected.support));
}

SignalImplementation EquationSearch::implementation(const ProjectedFunction& projected) {
  SignalImplementation result;
  result.context = names_of(projected.support);
  result.self = std::ranges::binary_search(projected.support, projected.function.signal);
  const StateSets sets = state_search_.collect(projected);
  if (base::run_failed()) return result;
  if (style_ == SynthesisStyle::four_sets) result.covers = sets.four_sets;
  assert(sets.on.width() == projected.support.size() && sets.off.width() == sets.on.width());
  const toolkit::Cover on = minimised(sets.on, sets.off, sets.arcs);
  const toolkit::Cover off = minimised(sets.off, sets.on, reversed(sets.arcs));
  toolkit::LogicExpr straight = toolkit::factor(on, result.context, false);
  toolkit::LogicExpr inverted = toolkit::factor(off, result.context, true);
  const bool takes_inverted = toolkit::literal_count(straight) > toolkit::literal_count(inverted);
  result.equation = takes_inverted ? std::move(inverted) : std::move(straight);
  assert(result.context.size() == projected.support.size());
  result.cost = toolkit::literal_count(result.equation);
  return result;
}

toolkit::Cover EquationSearch::minimised(const toolkit::Cover& on, const toolkit::Cover& off,
                                         const std::vector<CodeArc>& arcs) const {
  if (style_ == SynthesisStyle::standard_c) return monotonic_cover(on, off, arcs);
  return toolkit::minimise(on, off);
}

std::vector<std::string> EquationSearch::names_of(const SignalList& signals) const {
  std::vector<std::string> names;
  names.reserve(signals.size());
  for (const net::SignalId signal : signals)
    names.push_back(base::element(prefix_.signals, signal).name);
  return names;
}

results::VerdictMessages EquationSearch::messages() const {
  std::uint64_t cost = 0;
  for (const auto& solution : report_.solutions) cost += solution->cost();
  return {"Equations derived (literals=" + std::to_string(cost) + ')', "Cannot derive equation"};
}

void EquationSearch::report(const std::string& output) const {
  deliver_with_module(report_, messages(), output, [this](std::ostream& stream) {
    return write_verilog(stream, prefix_, style_, solutions_);
  });
}

void EquationSearch::print_statistics(std::ostream& stream) const {
  stream << '\n';
  support_search_.print_size(stream);
}

}  // namespace vorel::synthesis
