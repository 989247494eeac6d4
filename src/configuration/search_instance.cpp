#include "configuration/search_instance.h"

#include <cassert>
#include <iostream>
#include <utility>

#include "base/indexed_by.h"
#include "base/messages.h"
#include "configuration/configuration_encoding.h"
#include "configuration/decoding.h"

namespace vorel::configuration {

template <net::Process P>
SearchInstance<P>::SearchInstance(const StateStructure<P>& structure,
                                  const EncodingOptions& options)
    : structure_{structure}, options_{options}, formula_{options.formula} {}

template <net::Process P>
void SearchInstance<P>::add_configuration() {
  configurations_.push_back(
      std::make_unique<Configuration>(structure_, formula_, options_.enabledness));
  Configuration& added = *configurations_.back();
  ConfigurationEncoding<P> encoding(added.vars);
  encoding.encode_causality();
  encoding.encode_conflicts();
  encode_merged_rules(added);
  if constexpr (P::NetType::has_signals) {
    if (options_.no_max_dummies) encoding.encode_no_max_dummies();
  }
}

template <net::Process P>
void SearchInstance<P>::encode_merged_rules(Configuration& configuration) {
  if constexpr (P::is_merged) {
    ConfigurationEncoding<P> encoding(configuration.vars);
    encoding.encode_initial_conditions();
    if (options_.backward_conflicts) encoding.encode_backward_conflicts();
    encoding.encode_no_gaps();
    configuration.acyclicity = std::make_unique<Acyclicity<P>>(configuration.vars);
    if (!options_.incremental_acyclicity) configuration.acyclicity->encode_all_components();
  }
}

// Who wants to store the formula wants it as it is, without assumptions.
template <net::Process P>
void SearchInstance<P>::set_alternatives(std::vector<sat::Alternative> alternatives) {
  if (!options_.formula.store_cnf_formula)
    alternatives_ = sat::AlternativeSearch(std::move(alternatives));
}

template <net::Process P>
void SearchInstance<P>::set_guess(std::size_t i, std::span<const Event* const> events) {
  base::IndexedBy<Event, bool> is_guessed(process().events.size());
  for (const Event* event : events) is_guessed[*event] = true;
  guess_.clear();
  for (const auto& event : process().events) {
    const sat::Lit lit = configurations_[i]->vars.variable_of(*event);
    if (!lit.is_uninit()) guess_.push_back(is_guessed[*event] ? lit : ~lit);
  }
}

template <net::Process P>
bool SearchInstance<P>::solve_formula() {
  if (!guess_.empty()) {
    constexpr std::uint64_t most_conflicts = 100;  // nearly all follows from the guess
    const sat::Lits guess = std::exchange(guess_, {});
    if (formula_.solve_assuming(guess, most_conflicts).value_or(false)) return true;
  }
  const std::optional<bool> answer = alternatives_.solve(formula_);
  return answer ? *answer : formula_.solve();
}

template <net::Process P>
bool SearchInstance<P>::solve() {
  if (is_new_) print_instance_size();
  is_new_ = false;
  do {
    if (!solve_formula() || base::run_failed()) return false;
  } while (refine());
  alternatives_ = sat::AlternativeSearch();
  return true;
}

template <net::Process P>
std::optional<std::uint64_t> SearchInstance<P>::find_least_cost(
    std::span<const sat::WeightedLit> cost, const std::function<void()>& record) {
  print_instance_size();
  return sat::find_least_cost(formula_, cost, ~std::uint64_t{0}, sat::PermanentGroup, record,
                              base::Deadline(0), [this] { return refine(); });
}

template <net::Process P>
bool SearchInstance<P>::refine() {
  bool has_grown = false;
  if constexpr (P::is_merged) {
    for (const auto& configuration : configurations_) {
      assert(configuration->acyclicity != nullptr && "encoded with its configuration");
      if (configuration->acyclicity->refine(decode_events(configuration->vars))) has_grown = true;
    }
    if (has_grown) print_instance_size();
  }
  return has_grown;
}

template <net::Process P>
void SearchInstance<P>::print_instance_size() const {
  if (!P::is_merged) return;
  const sat::SatSolver& solver = formula_.solver();
  base::print_formatted(std::cerr, "\nInstance size: cl/vars/lits=%llu/%u/%llu...",
                        static_cast<unsigned long long>(solver.num_clauses()), solver.num_vars(),
                        static_cast<unsigned long long>(solver.num_literals()));
}

template <net::Process P>
std::vector<const typename P::Event*> SearchInstance<P>::events_of_model(std::size_t i) const {
  assert(i < size());
  return decode_events(configurations_[i]->vars);
}

template <net::Process P>
sat::Lits SearchInstance<P>::event_literals() const {
  sat::Lits lits;
  for (const auto& configuration : configurations_) {
    for (const auto& event : process().events) {
      const sat::Lit lit = configuration->vars.variable_of(*event);
      if (!lit.is_uninit()) lits.push_back(lit);
    }
  }
  return lits;
}

#define INSTANTIATE(P) template class SearchInstance<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
