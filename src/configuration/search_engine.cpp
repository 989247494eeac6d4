#include "configuration/search_engine.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/merged_validation.h"
#include "configuration/validation.h"
#include "sat/enumeration.h"
#include "sat/integer_circuit.h"
#include "sat/least_cost.h"

namespace vorel::configuration {

template <net::Process P>
SearchEngine<P>::SearchEngine(const P& process, const SearchOptions& options,
                              results::VerdictMessages messages)
    : structure_{process},
      options_{options},
      messages_{std::move(messages)},
      instance_{structure_, options.encoding} {}

template <net::Process P>
void SearchEngine<P>::run() {
  assert(instance_.size() == 0 && report_.solutions.empty() && "an engine runs once");
  if (options_.all_solutions != 0) {
    search_all();
  } else if (options_.min_cost) {
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
  instance_.formula().print_size(stream);
}

template <net::Process P>
void SearchEngine<P>::decode(results::Solution& solution) const {
  solution.traces.clear();
  for (std::size_t i = 0; i < instance_.size(); ++i) {
    const auto events = instance_.events_of_model(i);
    const auto sequence = firing_sequence<P>(process(), events);
    assert(sequence.size() == events.size() && "a configuration has no causal cycle");
    solution.traces.push_back(trace_of<Event>(sequence));
  }
}

template <net::Process P>
bool SearchEngine<P>::validate(const results::Solution& solution) const {
  return std::ranges::all_of(solution.traces, [this](const results::Trace& trace) {
    const auto events = events_of(process(), trace);
    if (!check_safe_run<P>(process(), events)) return false;
    if constexpr (P::is_merged) {
      return check_acyclic<P>(process(), events) && check_no_gap<P>(process(), events);
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
  assert(solution != nullptr);
  if (options_.all_solutions == 0) report_.solutions.clear();
  report_.add(std::move(solution));
}

template <net::Process P>
std::unique_ptr<results::Solution> SearchEngine<P>::new_solution() const {
  return std::make_unique<results::Solution>(options_.output_configurations);
}

template <net::Process P>
sat::Lits SearchEngine<P>::cost_bits(sat::Polarity polarity) {
  return sat::IntegerCircuit(formula()).count_ones(solution_literals(), sat::PermanentGroup,
                                                   polarity);
}

template <net::Process P>
bool SearchEngine<P>::search_one() {
  encode(sat::PermanentGroup);
  if (base::run_failed() || !instance_.solve()) return false;
  record_solution();
  return true;
}

template <net::Process P>
bool SearchEngine<P>::search_all() {
  encode(sat::PermanentGroup);
  if (!base::run_failed()) {
    sat::enumerate(
        formula(), solution_literals(), formula().group(0),
        [this](const sat::LiteralCube&) { record_solution(); }, options_.limit(),
        [this] { return instance_.solve(); });
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
        formula(), cost, found, [this] { record_solution(); },
        [this] { return instance_.solve(); });
  };
  sat::minimise_cost(formula(), bits, values, resolve);
  return !report_.solutions.empty();
}

template <net::Process P>
bool SearchEngine<P>::start_least_cost(sat::Lits& bits, std::vector<bool>& values) {
  if (!search_one()) return false;
  // The cost is added after the first model, so that only those pay who ask for it. Its gates need
  // the values of that model, which the events fix.
  sat::Lits current;
  for (const sat::Lit lit : solution_literals()) {
    if (formula().value(lit) == sat::ModelValue::undefined) continue;
    current.push_back(formula().is_true(lit) ? lit : ~lit);
  }
  assert(bits.empty() && values.empty());
  bits = cost_bits(sat::default_polarity);
  formula().add_units(current, false, formula().group(2));
  const bool resolved = sat::resolve_cost(
      formula(), bits, values, [this] { record_solution(); }, [this] { return instance_.solve(); });
  formula().renew_group(formula().group(2));
  return resolved;
}

#define INSTANTIATE(P) template class SearchEngine<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
