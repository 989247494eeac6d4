#include "resolution/insertion_engine.h"

#include <cassert>
#include <iostream>
#include <utility>

#include "base/run_state.h"
#include "net/check.h"
#include "net/clone_net.h"
#include "resolution/insertion_constraints.h"
#include "resolution/insertions.h"
#include "resolution/occurrence_text.h"

namespace vorel::resolution {
namespace {

constexpr int verbosity_of_occurrences = 6;

}  // namespace

struct InsertionEngine::Step {
  Step(const net::StgPrefix& prefix, std::vector<net::Insertion> insertions,
       sat::CnfFormula& formula)
      : candidates{prefix, std::move(insertions)},
        order{candidates},
        literals(candidates.size()),
        sums{formula} {
    for (sat::Lit& literal : literals) literal = sat::Lit(formula.new_var(false), false);
  }

  Candidates candidates;
  OccurrenceOrder order;
  CandidateLits literals;
  CandidateLits parities;  // none before the constraints
  sat::SumsTreeBuilder sums;
};

InsertionEngine::InsertionEngine(net::StgPrefix& prefix, std::string base_name,
                                 const sat::CnfParams& params, std::int32_t concurrent_insertions)
    : prefix_{prefix},
      base_name_{std::move(base_name)},
      concurrent_insertions_{concurrent_insertions},
      formula_{params} {}

InsertionEngine::~InsertionEngine() = default;

sat::SumsTreeBuilder& InsertionEngine::sums() {
  assert(step_ != nullptr);
  return step_->sums;
}
const Candidates& InsertionEngine::candidates() const {
  assert(step_ != nullptr);
  return step_->candidates;
}
const OccurrenceOrder& InsertionEngine::order() const {
  assert(step_ != nullptr);
  return step_->order;
}
const CandidateLits& InsertionEngine::literals() const {
  assert(step_ != nullptr);
  return step_->literals;
}

const CandidateLits& InsertionEngine::parities() const {
  assert(step_ != nullptr);
  return step_->parities;
}

void InsertionEngine::start_step() { start_step(insertions(prefix_, concurrent_insertions_)); }

void InsertionEngine::start_step(std::vector<net::Insertion> insertions) {
  step_.reset();
  formula_.reset();
  step_ = std::make_unique<Step>(prefix_, std::move(insertions), formula_);
  if (base::verbosity() >= verbosity_of_occurrences) print_occurrences(std::cerr, candidates());
  step_->parities = add_insertion_constraints(candidates(), order(), literals(), step_->sums,
                                              formula_, sat::PermanentGroup);
}

Choice InsertionEngine::choice() const {
  Choice choice(candidates().size());
  for (const CandidateId candidate : candidates().all())
    choice[candidate] = formula_.is_true(literals()[candidate]);
  return choice;
}

InsertedSignal InsertionEngine::after_insertion(const Choice& choice,
                                                std::uint8_t initial_value) const {
  return after_insertion(insertions_of(candidates(), choice), initial_value);
}

InsertedSignal InsertionEngine::after_insertion(const SignalInsertion& edges,
                                                std::uint8_t initial_value) const {
  const Candidates chosen(prefix_, edges);
  const auto all = chosen.all();
  const std::vector<CandidateId> ids(all.begin(), all.end());
  const auto signs = edge_signs(chosen, OccurrenceOrder(chosen), ids, initial_value);
  InsertedSignal result{.prefix = net::clone_prefix(prefix_), .signal = {}, .numbers = {}};
  net::Signal& signal =
      net::insert_signal(result.prefix, base_name_, net::SignalKind::internal, initial_value);
  for (std::size_t i = 0; i < edges.size(); ++i)
    net::insert_transition(result.prefix, edges[i], signal, signs[i]);
  result.numbers = net::finish_edit(result.prefix);
  net::check(result.prefix);
  result.signal = base::id_of(signal);
  return result;
}

void InsertionEngine::adopt(net::StgPrefix prefix) {
  step_.reset();
  prefix_ = std::move(prefix);
}

}  // namespace vorel::resolution
