#include "configuration/search_engine.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/merged_validation.h"
#include "configuration/validation.h"
#include "sat/enumeration.h"

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
  encode(sat::PermanentGroup);
  if (base::run_failed()) return false;
  std::vector<sat::WeightedLit> cost;
  for (const sat::Lit lit : solution_literals()) cost.push_back({lit, 1});
  return instance_.find_least_cost(cost, [this] { record_solution(); }).has_value();
}

#define INSTANTIATE(P) template class SearchEngine<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
