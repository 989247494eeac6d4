#include "conflicts/pair_search.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <ranges>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/dummy_cutoffs.h"
#include "sat/integer_circuit.h"
#include "sat/least_cost.h"

namespace vorel::conflicts {
namespace {

bool has_no_conflicts(const net::StgPrefix& prefix) {
  return std::ranges::all_of(prefix.conditions,
                             [](const auto& condition) { return condition->postset.size() <= 1; });
}

std::uint64_t number_of(const std::vector<bool>& bits) {
  std::uint64_t value = 0;
  for (std::size_t i = bits.size(); i-- > 0;) value = 2 * value + (bits[i] ? 1 : 0);
  return value;
}

std::vector<bool> bits_of(std::uint64_t value, std::size_t count) {
  std::vector<bool> bits(count);
  for (std::size_t i = 0; i < count; ++i, value >>= 1) bits[i] = (value & 1u) != 0;
  assert(value == 0 && "the bits hold every cost");
  return bits;
}

}  // namespace

PairSearch::PairSearch(const net::StgPrefix& prefix, const configuration::SearchOptions& options,
                       results::VerdictMessages messages, Notes notes)
    : SearchEngine(prefix, options, std::move(messages)),
      conflict_free_{has_no_conflicts(prefix)},
      method_{options.method == 0 ? 2 : options.method},
      pairs_{instance(), *this} {
  adds_inclusion_ = options.inclusion == configuration::InclusionConstraints::added;
  if (options.inclusion == configuration::InclusionConstraints::by_net) {
    // Where a signal is concurrent with itself, two configurations can have one code that the
    // events common to both have not.
    adds_inclusion_ = conflict_free_ && structure().has_only_ordered_edges();
    if (adds_inclusion_ && notes == Notes::given)
      base::notes_stream() << "\nThe net is (dynamically) conflict-free: optimized method is used.";
  }
  if (notes == Notes::given && configuration::has_dummy_cutoffs(prefix))
    base::print_warning("there are dummy cut-offs; the result will not be reliable");
}

void PairSearch::encode([[maybe_unused]] sat::ClauseGroup group) {
  assert(group == sat::PermanentGroup && "pairs are looked for in one formula");
  if (adds_inclusion_ && !conflict_free_) {
    base::print_warning(
        "+l is valid only for (dynamically) conflict-free nets; the result may be incorrect");
  }
  const auto inclusion = adds_inclusion_ ? std::optional(this->inclusion()) : std::nullopt;
  pairs_.encode(inclusion);
  if (!takes_candidates_in_turn()) add_any_difference(inclusion);
}

void PairSearch::add_any_difference(std::optional<Inclusion> inclusion) {
  const auto all = std::views::iota(0u, candidate_count());
  std::vector<std::uint32_t> open;
  std::ranges::copy_if(all, std::back_inserter(open),
                       [this](std::uint32_t candidate) { return !is_refuted(candidate); });
  if (options().all_solutions == 0 || open.empty()) {
    pairs_.add_any_difference(std::move(open));
    return;
  }
  pairs_.add_any_difference({all.begin(), all.end()});
  if (open.size() == all.size() || open.size() > all.size() / options().local_share) return;
  pairs_left_ = std::make_unique<PairsLeft>(structure(), *this, options().encoding, inclusion,
                                            std::move(open));
}

// Who wants to see the formula sees all of it.
bool PairSearch::is_refuted(std::uint32_t candidate) {
  if (options().encoding.formula.store_cnf_formula) return false;
  if (local_ == nullptr) {
    const std::size_t max_events = process().events.size() / options().local_share;
    local_ = std::make_unique<LocalRefutation>(structure(), *this, options().encoding, max_events,
                                               adds_inclusion_);
  }
  return local_->refutes(candidate);
}

std::vector<std::uint32_t> PairSearch::differing_candidates() const {
  if (takes_candidates_in_turn()) return {candidate_};
  return pairs_.differing_candidates();
}

std::vector<BlockedPairs> PairSearch::pairs_explained_by(const Core& core) const {
  return conflicts::pairs_explained_by(process(), core, conflict_free_);
}

void PairSearch::block(const Core& core, const std::vector<std::uint32_t>* known) {
  const auto blocked = pairs_explained_by(core);
  pairs_.exclude(blocked, sat::PermanentGroup, known);
  if (pairs_left_ != nullptr) pairs_left_->exclude(blocked, known);
}

void PairSearch::block_in_round(const Core& core) {
  assert(takes_candidates_in_turn());
  pairs_.exclude(pairs_explained_by(core), round_group(), nullptr);
}

void PairSearch::for_each_round(const std::function<bool()>& round) {
  if (!takes_candidates_in_turn()) {
    round();
    return;
  }
  for (candidate_ = 0; candidate_ < candidate_count() && !base::run_failed(); ++candidate_) {
    if (is_refuted(candidate_)) continue;
    formula().renew_group(round_group());
    add_candidate_difference(pairs_.pair(), candidate_, round_group());
    if (!round()) return;
  }
}

bool PairSearch::search_one() {
  encode(sat::PermanentGroup);
  bool found = false;
  for_each_round([&] {
    found = instance().solve();
    return !found;
  });
  if (found) record_solution();
  return found;
}

bool PairSearch::search_all() {
  encode(sat::PermanentGroup);
  std::uint32_t limit = options().limit();
  const auto find_next = [this] {
    if (base::run_failed() || (pairs_left_ != nullptr && pairs_left_->is_none())) return false;
    return !base::run_failed() && instance().solve();
  };
  for_each_round([&] {
    for (; limit > 0 && find_next(); --limit) record_and_block();
    return limit > 0;
  });
  has_met_limit_ = limit == 0;
  return !found().solutions.empty();
}

std::pair<configuration::EventSet, configuration::EventSet> PairSearch::pair_of(
    const results::Solution& solution) const {
  assert(solution.traces.size() >= 2);
  const auto events = [&](std::size_t from_end) {
    const results::Trace& trace = solution.traces[solution.traces.size() - from_end];
    return configuration::event_set(configuration::events_of(process(), trace));
  };
  return {events(2), events(1)};
}

void PairSearch::add_traces(results::Solution& solution, const configuration::EventSet& one,
                            const configuration::EventSet& other) const {
  for (const configuration::EventSet* set : {&one, &other}) {
    const auto events = configuration::events_of(process(), *set);
    solution.traces.push_back(configuration::trace_to<net::StgPrefix>(process(), events));
  }
}

// Rounds after the first solution only ask for something cheaper.
bool PairSearch::search_least_cost() {
  encode(sat::PermanentGroup);
  sat::Lits bits;
  const auto resolve = [this](std::span<const sat::Lit> cost, std::vector<bool>& values) {
    return sat::resolve_cost(formula(), cost, values, [this] { record_solution(); });
  };
  for_each_round([&] {
    if (!instance().solve()) return !base::run_failed();
    record_solution();
    const std::uint64_t cost = model_cost();
    if (bits.empty()) {
      bits = cost_bits();  // only those pay who find something
    }
    std::vector<bool> values = bits_of(cost, bits.size());
    sat::minimise_cost(formula(), bits, values, resolve);
    formula().renew_group(formula().group(attempt_group));
    if (base::run_failed() || number_of(values) == 0) return false;
    sat::IntegerCircuit(formula()).assert_at_most(bits, number_of(values) - 1, sat::PermanentGroup);
    return true;
  });
  return !base::run_failed() && !found().solutions.empty();
}

sat::Lits PairSearch::cost_bits() {
  return sat::IntegerCircuit(formula()).count_ones(solution_literals(), sat::PermanentGroup);
}

std::uint64_t PairSearch::model_cost() const {
  return instance().events_of_model(0).size() + instance().events_of_model(1).size();
}

}  // namespace vorel::conflicts
