#include "configuration/search_engine.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <limits>

#include "base/messages.h"
#include "configuration/configuration_encoding.h"
#include "configuration/decoding.h"
#include "configuration/merged_encoding.h"
#include "configuration/merged_validation.h"
#include "configuration/validation.h"
#include "sat/enumeration.h"
#include "sat/integer_circuit.h"
#include "sat/least_cost.h"

namespace vorel::configuration {

template <net::Process P>
SearchEngine<P>::SearchEngine(const P& process, const base::Params& params,
                              results::VerdictMessages messages)
    : process_{process},
      params_{params},
      all_solutions_{params.get("all_solutions")},
      messages_{std::move(messages)},
      formula_{sat::CnfParams::of(params)} {}

template <net::Process P>
void SearchEngine<P>::run() {
  if (all_solutions_ != 0) {
    search_all();
  } else if (params_.get("min_cost") != 0) {
    search_least_cost();
  } else {
    search_one();
  }
  finish();
}

template <net::Process P>
void SearchEngine<P>::report(const std::string& output) const {
  const auto is_valid = [this](const auto& solution) { return validate(*solution); };
  if (std::ranges::all_of(report_.solutions, is_valid))
    results::deliver(report_, messages_, output);
}

template <net::Process P>
void SearchEngine<P>::print_statistics(std::ostream& stream) const {
  stream << '\n';
  formula_.print_size(stream);
}

template <net::Process P>
void SearchEngine<P>::decode(results::Solution& solution) const {
  solution.traces.clear();
  for (const auto& vars : configurations_) {
    const auto events = decode_events(process_, *vars);
    const auto sequence = firing_sequence<P>(process_, events);
    assert(sequence.size() == events.size() && "a configuration has no causal cycle");
    solution.traces.push_back(trace_of<Event>(sequence));
  }
}

template <net::Process P>
bool SearchEngine<P>::validate(const results::Solution& solution) const {
  return std::ranges::all_of(solution.traces, [this](const results::Trace& trace) {
    const auto events = events_of(process_, trace);
    if (!check_safe_run<P>(process_, events)) return false;
    if constexpr (P::is_merged) {
      return check_acyclic<P>(process_, events) && check_no_gap<P>(process_, events);
    }
    return true;
  });
}

template <net::Process P>
void SearchEngine<P>::record_solution() {
  auto solution = new_solution();
  decode(*solution);
  add_solution(std::move(solution));
}

template <net::Process P>
void SearchEngine<P>::add_solution(std::unique_ptr<results::Solution> solution) {
  if (all_solutions_ == 0) report_.solutions.clear();
  report_.add(std::move(solution));
}

template <net::Process P>
std::unique_ptr<results::Solution> SearchEngine<P>::new_solution() const {
  return std::make_unique<results::Solution>(params_.get("output_configurations") != 0);
}

template <net::Process P>
sat::Lits SearchEngine<P>::cost_bits(sat::Polarity polarity) {
  return sat::IntegerCircuit(formula_).count_ones(solution_literals(), sat::PermanentGroup,
                                                  polarity);
}

template <net::Process P>
sat::Lits SearchEngine<P>::solution_literals() const {
  sat::Lits lits;
  for (const auto& vars : configurations_) {
    for (const auto& event : process_.events) {
      const sat::Lit lit = vars->events[*event].lit;
      if (!event->is_cut_off() && lit.is_variable()) lits.push_back(lit);
    }
  }
  return lits;
}

template <net::Process P>
bool SearchEngine<P>::solve() {
  do {
    if (P::is_merged && has_grown_) print_instance_size();
    has_grown_ = false;
    if (!formula_.solve() || base::run_failed()) return false;
  } while (refine());
  return true;
}

template <net::Process P>
bool SearchEngine<P>::refine() {
  if constexpr (P::is_merged) {
    assert(acyclicity_.size() == configurations_.size());
    for (std::size_t i = 0; i < acyclicity_.size(); ++i) {
      if (acyclicity_[i]->refine(decode_events(process_, *configurations_[i]))) has_grown_ = true;
    }
  }
  return has_grown_;
}

template <net::Process P>
void SearchEngine<P>::print_instance_size() const {
  const sat::SatSolver& solver = formula_.solver();
  base::print_formatted(std::cerr, "\nInstance size: cl/vars/lits=%llu/%u/%llu...",
                        static_cast<unsigned long long>(solver.num_clauses()), solver.num_vars(),
                        static_cast<unsigned long long>(solver.num_literals()));
}

template <net::Process P>
bool SearchEngine<P>::search_one() {
  encode(sat::PermanentGroup);
  if (base::run_failed() || !solve()) return false;
  record_solution();
  return true;
}

template <net::Process P>
bool SearchEngine<P>::search_all() {
  encode(sat::PermanentGroup);
  if (!base::run_failed()) {
    // -1 stands for all: as an unsigned number, the highest limit.
    sat::enumerate(
        formula_, solution_literals(), formula_.group(0),
        [this](const sat::LiteralCube&) { record_solution(); },
        static_cast<std::uint32_t>(all_solutions_), [this] { return solve(); });
  }
  return !report_.solutions.empty();
}

template <net::Process P>
bool SearchEngine<P>::search_least_cost() {
  sat::Lits bits;
  std::vector<bool> values;
  if (!start_least_cost(bits, values) || base::run_failed()) return false;
  const auto resolve = [this](std::span<const sat::Lit> cost, std::vector<bool>& found) {
    return sat::resolve_cost(
        formula_, cost, found, [this] { record_solution(); }, [this] { return solve(); });
  };
  sat::minimise_cost(formula_, bits, values, resolve);
  return !report_.solutions.empty();
}

template <net::Process P>
bool SearchEngine<P>::start_least_cost(sat::Lits& bits, std::vector<bool>& values) {
  if (!search_one()) return false;
  // The cost is added after the first model, so that only those pay who ask for it. Its gates need
  // the values of that model, which the events fix.
  sat::Lits current;
  for (const sat::Lit lit : solution_literals()) {
    if (formula_.value(lit) == sat::ModelValue::undefined) continue;
    current.push_back(formula_.is_true(lit) ? lit : ~lit);
  }
  bits = cost_bits(sat::default_polarity);
  formula_.add_units(current, false, formula_.group(2));
  const bool resolved = sat::resolve_cost(
      formula_, bits, values, [this] { record_solution(); }, [this] { return solve(); });
  formula_.renew_group(formula_.group(2));
  return resolved;
}

template <net::Process P>
ConfigurationVars<P>& SearchEngine<P>::configuration(std::uint32_t i) {
  while (configurations_.size() <= i) {
    configurations_.push_back(std::make_unique<ConfigurationVars<P>>(process_, formula_));
  }
  return *configurations_[i];
}

template <net::Process P>
void SearchEngine<P>::encode_configuration(ConfigurationVars<P>& vars, sat::ClauseGroup group) {
  encode_causality(process_, vars, group);
  encode_conflicts(process_, vars, group);
  if constexpr (P::is_merged) encode_merged_rules(vars, group);
  if constexpr (P::NetType::has_signals) {
    if (params_.get("no_max_dummies") == 0) return;
    encode_no_max_dummies(process_, vars, group,
                          [](const Event& event) { return event.transition->signal->is_dummy(); });
  }
}

template <net::Process P>
void SearchEngine<P>::encode_merged_rules(ConfigurationVars<P>& vars, sat::ClauseGroup group) {
  if constexpr (P::is_merged) {
    encode_initial_conditions(process_, vars, group);
    if (params_.get("backward_conflict_constraints") != 0) {
      encode_backward_conflicts(process_, vars, group);
    }
    encode_no_gaps(process_, vars, group);
    acyclicity_.push_back(std::make_unique<Acyclicity<P>>(process_, vars));
    assert(&vars == configurations_[acyclicity_.size() - 1].get() && "in their order, each once");
    if (params_.get("incremental_acyclic_constraint") == 0) {
      acyclicity_.back()->encode_all_components();
    }
  }
}

#define INSTANTIATE(P) template class SearchEngine<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
