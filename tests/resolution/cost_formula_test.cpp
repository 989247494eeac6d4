// The cost that a model of least cost gives to some choice, against the finished prefix.
#include "resolution/cost_formula.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "base/sort_unique.h"
#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/history.h"
#include "oracle/parse_g.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "sat/integer_circuit.h"
#include "sat/least_cost.h"
#include "support/default_params.h"
#include "support/seeds.h"

namespace vorel::resolution {
namespace {

using net::Stg;
using net::StgPrefix;
using Event = StgPrefix::Event;
using Places = std::vector<const net::StgPlace*>;

// ---- What triggers and locks are, by definition

class Reference {
 public:
  explicit Reference(const StgPrefix& prefix) : prefix_{prefix} {
    for (const auto& event : prefix.events)
      pasts_.emplace(event.get(), oracle::local_configuration<Stg>(*event));
  }

  std::uint64_t logic(bool pwr_of_2) const {
    std::map<const net::Signal*, std::set<const net::Signal*>> triggers;
    for (const auto& event : prefix_.events)
      for (const Event* cause : pasts_.at(event.get()))
        if (triggers_event(cause, event.get()))
          triggers[event->transition->signal].insert(cause->transition->signal);
    std::uint64_t sum = 0;
    for (const net::SignalId id : prefix_.driven_signals()) {
      const std::size_t count = triggers[&base::element(prefix_.signals, id)].size();
      sum += pwr_of_2 ? std::uint64_t{1} << count : count;
    }
    return sum;
  }

  std::uint64_t unlocked_weight(const net::Signal& signal) const {
    std::uint64_t sum = 0;
    for (const net::SignalId id : prefix_.visible_signals()) {
      const net::Signal& other = base::element(prefix_.signals, id);
      if (&other == &signal || (is_steady(signal, other) && is_steady(other, signal))) continue;
      sum += other.kind == net::SignalKind::input ? 2 : 4;
    }
    return sum;
  }

  bool are_concurrent(const Event* a, const Event* b) const {
    if (pasts_.at(a).contains(b) || pasts_.at(b).contains(a)) return false;
    auto both = pasts_.at(a);
    both.insert(pasts_.at(b).begin(), pasts_.at(b).end());
    return oracle::is_conflict_free<Stg>(both);
  }

 private:
  bool triggers_event(const Event* cause, const Event* event) const {
    if (cause == event || net::is_dummy(*cause)) return false;
    const auto& past = pasts_.at(event);
    return std::none_of(past.begin(), past.end(), [&](const Event* between) {
      return between != cause && between != event && !net::is_dummy(*between) &&
             pasts_.at(between).contains(cause);
    });
  }

  // Seen from each event of a.
  bool is_steady(const net::Signal& a, const net::Signal& b) const {
    std::set<std::ptrdiff_t> differences;
    for (const auto& [event, past] : pasts_) {
      if (event->transition->signal != &a) continue;
      const auto count = [&p = past](const net::Signal& signal) {
        return std::count_if(p.begin(), p.end(),
                             [&](const Event* e) { return e->transition->signal == &signal; });
      };
      differences.insert(count(b) - count(a));
      for (const auto& [other, unused] : pasts_)
        if (other->transition->signal == &b && are_concurrent(event, other)) return false;
    }
    return differences.empty() || (differences.size() == 1 && std::abs(*differences.begin()) <= 1);
  }

  const StgPrefix& prefix_;
  std::map<const Event*, oracle::EventSet<Stg>> pasts_;
};

// ---- Random choices

// The events of source and target alternate.
bool is_possible(const StgPrefix& prefix, const net::Concurrent& insertion) {
  return std::ranges::all_of(prefix.events, [&](const auto& event) {
    const bool is_source = event->transition == insertion.source;
    if (is_source == (event->transition == insertion.target)) return !is_source;
    int balance = insertion.marked ? 1 : 0;
    for (const Event* cause : oracle::local_configuration<Stg>(*event)) {
      if (cause == event.get()) continue;
      balance += cause->transition == insertion.source ? 1 : 0;
      balance -= cause->transition == insertion.target ? 1 : 0;
    }
    return balance == (is_source ? 0 : 1);
  });
}
bool is_possible(const StgPrefix& /*prefix*/, const net::SeqBefore& insertion) {
  return !insertion.places.empty() && std::ranges::all_of(insertion.places, [](const auto* place) {
    return place->postset.size() == 1;
  });
}
bool is_possible(const StgPrefix& /*prefix*/, const net::SeqAfter& insertion) {
  return !insertion.places.empty();
}

net::Insertion random_insertion(const StgPrefix& prefix, oracle::Random& random) {
  const auto pick = [&] {
    return prefix.transitions[random.below(prefix.transitions.size())].get();
  };
  const auto some_of = [&random](const auto& list) {
    Places places;
    for (const auto* place : list)
      if (random.chance(60)) places.push_back(place);
    return places;
  };
  const net::StgTransition* const t = pick();
  switch (random.below(3)) {
    case 0:
      return net::SeqBefore{t, some_of(t->preset)};
    case 1:
      return net::SeqAfter{t, some_of(t->postset)};
    default:
      return net::Concurrent{t, random.chance(40), pick()};
  }
}

std::vector<net::Insertion> random_insertions(const StgPrefix& prefix, oracle::Random& random) {
  std::vector<net::Insertion> insertions;
  for (int i = 0; i < 150 && insertions.size() < 30; ++i) {
    net::Insertion insertion = random_insertion(prefix, random);
    if (std::visit([&](const auto& kind) { return is_possible(prefix, kind); }, insertion))
      insertions.push_back(std::move(insertion));
  }
  std::ranges::sort(insertions, insertion_less);
  const auto copies = std::ranges::unique(insertions, insertion_equal);
  insertions.erase(copies.begin(), copies.end());
  return insertions;
}

bool share_a_place(const Places& a, const Places& b) {
  return std::ranges::any_of(a,
                             [&](const auto* place) { return std::ranges::count(b, place) != 0; });
}

bool overlap(const net::Insertion& a, const net::Insertion& b) {
  if (const auto* x = std::get_if<net::SeqBefore>(&a), *y = std::get_if<net::SeqBefore>(&b); x && y)
    return x->target == y->target && share_a_place(x->places, y->places);
  if (const auto* x = std::get_if<net::SeqAfter>(&a), *y = std::get_if<net::SeqAfter>(&b); x && y)
    return x->source == y->source && share_a_place(x->places, y->places);
  return false;
}

bool exclude_each_other(const Candidates& candidates, const OccurrenceOrder& order, CandidateId a,
                        CandidateId b) {
  bool found = a != b && overlap(candidates.insertion(a), candidates.insertion(b));
  for (const OccurrenceId id : candidates.occurrences_of(a))
    order.for_each_concurrent(
        id, [&](OccurrenceId other) { found |= candidates.candidate_of(other) == b; });
  return found;
}

net::Insertion moved_to(const StgPrefix& prefix, net::Insertion insertion) {
  const auto transition = [&](auto*& t) { t = prefix.transitions[t->index].get(); };
  const auto places = [&](Places& list) {
    for (auto*& place : list) place = prefix.places[place->index].get();
  };
  if (auto* before = std::get_if<net::SeqBefore>(&insertion)) {
    transition(before->target);
    places(before->places);
  } else if (auto* after = std::get_if<net::SeqAfter>(&insertion)) {
    transition(after->source);
    places(after->places);
  } else {
    auto& both = std::get<net::Concurrent>(insertion);
    transition(both.source);
    transition(both.target);
  }
  return insertion;
}

// Transitions get signals at random: signals are concurrent with themselves then, or dead.
void mix_labels(StgPrefix& prefix, oracle::Random& random) {
  for (auto& transition : prefix.transitions)
    transition->signal = prefix.signals[random.below(prefix.signals.size())].get();
}

// ---- The comparison

struct Counts {
  int locked = 0, unlocked = 0;  // choices where some signal is locked, or none
};

class Comparison {
 public:
  Comparison(const StgPrefix& prefix, oracle::Random& random)
      : prefix_{prefix},
        random_{random},
        candidates_(prefix, random_insertions(prefix, random)),
        order_(candidates_),
        coefficients_(CostCoefficients::of(support::default_params(
            {{"pwr_of_2", random.chance(30)}, {"use_concurrency_reduction", random.chance(30)}}))),
        formula_({.solver = random.chance(50) ? 0 : 1}) {
    literals_ = CandidateLits(candidates_.size());
    for (sat::Lit& literal : literals_) literal = sat::Lit(formula_.new_var(false), false);
    coefficients_.delay = random.below(4);
    coefficients_.seq_insertions = random.below(4);
    for (const sat::Lit literal : literals_) {
      (random.chance(50) ? cores_.csc_counter_literals : cores_.usc_counter_literals)
          .push_back(literal ^ random.chance(50));
    }
  }

  void run(Counts& counts) {
    if (candidates_.size() == 0) return;
    for (const CandidateId a : candidates_.all())
      for (const CandidateId b : candidates_.all())
        if (exclude_each_other(candidates_, order_, a, b))
          formula_.add_binary(~literals_[a], ~literals_[b], formula_.group(0));
    CostFormula cost(order_, candidates_, literals_,
                     {.coefficients = coefficients_, .cores = cores_, .unlock_number = 7},
                     formula_);
    const sat::Lits bits = cost.cost_bits();
    for (int i = 0; i < 8; ++i) expect_costs(cost, bits, counts);
  }

 private:
  // Some that do not exclude each other, half of the time with a signal locked, or almost.
  ChosenCandidates random_choice(const SignalLits& locked) {
    const sat::ClauseGroup wishes = formula_.renew_group(formula_.group(1));
    formula_.renew_group(formula_.group(2));
    ChosenCandidates chosen(candidates_.size(), false);
    std::vector<sat::Lit> locks;
    for (const net::SignalId id : prefix_.visible_signals())
      if (locked[id] != sat::LitFalse) locks.push_back(locked[id]);
    if (!locks.empty() && random_.chance(70))
      formula_.add_unit(locks[random_.below(locks.size())], wishes);
    for (std::uint32_t wanted = random_.below(4);; --wanted) {
      if (!formula_.solve()) break;
      for (const CandidateId id : candidates_.all()) chosen[id] = formula_.is_true(literals_[id]);
      if (wanted == 0) break;
      formula_.add_unit(literals_[CandidateId{random_.below(candidates_.size())}], wishes);
    }
    if (random_.chance(30)) chosen[CandidateId{random_.below(candidates_.size())}] = false;
    return chosen;
  }

  void expect_costs(const CostFormula& formula, const sat::Lits& bits, Counts& counts) {
    const ChosenCandidates chosen = random_choice(formula.locked());
    formula_.renew_group(formula_.group(1));
    for (const CandidateId candidate : candidates_.all())
      formula_.add_unit(literals_[candidate] ^ !chosen[candidate], formula_.group(1));
    ResolutionCost cost(coefficients_, {});
    const sat::Resolve resolve = [&](std::span<const sat::Lit> all, std::vector<bool>& values) {
      return sat::resolve_cost(formula_, all, values, [&] { cost = formula.evaluate(chosen); });
    };
    std::vector<bool> values;
    ASSERT_TRUE(resolve(bits, values));
    sat::minimise_cost(formula_, bits, values, resolve);
    std::uint64_t least = 0;
    for (std::size_t i = 0; i < values.size(); ++i) least |= std::uint64_t{values[i]} << i;
    EXPECT_EQ(cost.total(), least);

    StgPrefix edited = net::clone_prefix(prefix_);
    net::Signal& x = net::insert_signal(edited, "x", net::SignalKind::internal, net::unknown_value);
    for (const net::Insertion& insertion : std::get<SignalInsertion>(cost.transformation))
      net::insert_transition(edited, moved_to(edited, insertion), x, net::Sign::toggle);
    net::finish_edit(edited);
    const Reference reference(edited);
    const std::uint64_t base = coefficients_.use_concurrency_reduction ? 7 : 0;
    EXPECT_EQ(cost.logic, reference.logic(coefficients_.pwr_of_2));
    EXPECT_EQ(cost.non_locked - base, reference.unlocked_weight(x));
    ResolutionCost evaluated(coefficients_, cost.transformation);
    evaluate_choice(candidates_, chosen, {}, evaluated);
    evaluate_result(edited, x, 7, evaluated);
    evaluated.csc_cores = cores(cores_.csc_counter_literals, chosen);
    evaluated.usc_cores = cores(cores_.usc_counter_literals, chosen);
    EXPECT_EQ(cost.text(), evaluated.text());

    std::uint64_t all = 0;
    for (const net::SignalId signal : prefix_.visible_signals())
      all += prefix_.driven_signals().contains(signal) ? 4 : 2;
    ++(cost.non_locked - base < all ? counts.locked : counts.unlocked);
  }

  std::uint64_t cores(const sat::Lits& lits, const ChosenCandidates& chosen) const {
    std::uint64_t count = 0;
    for (const CandidateId candidate : candidates_.all())
      for (const sat::Lit lit : lits)
        if (lit.positive() == literals_[candidate] && lit.negated() != chosen[candidate]) ++count;
    return count;
  }

  const StgPrefix& prefix_;
  oracle::Random& random_;
  const Candidates candidates_;
  const OccurrenceOrder order_;
  CostCoefficients coefficients_;
  sat::CnfFormula formula_;
  CandidateLits literals_;
  CoreCounters cores_;
};

TEST(CostFormula, GivesTheNumbersOfTheFinishedPrefix) {
  Counts counts;
  const auto [first, end] = support::seeds(60);
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    oracle::Random random(seed);
    auto prefix = oracle::unfold(
        oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0}), 60);
    if (!prefix) continue;
    if (seed % 4 < 2) mix_labels(*prefix, random);
    Comparison(*prefix, random).run(counts);
  }
  EXPECT_GT(counts.locked, static_cast<int>(end - first));
  EXPECT_GT(counts.unlocked, static_cast<int>(end - first) / 4);
}

TEST(TransformationCost, IsUnknownUntilEachNumberIsKnown) {
  const CostCoefficients coefficients = CostCoefficients::of(support::default_params({}));
  const net::SeqAfter after;
  ResolutionCost cost(coefficients, SignalInsertion{after, net::Concurrent{}});
  cost.delay = cost.logic = cost.non_locked = cost.csc_cores = 3;
  EXPECT_EQ(cost.total(), unknown_cost);
  cost.usc_cores = 2;
  EXPECT_EQ(cost.text(),
            "8*3[csc] + 4*2[usc] + 2*3[delay] + 1*3[log_compl] + 4*1[seq] + 4*1[par] + "
            "50*3[unlck]");
  EXPECT_EQ(cost.total(), 24u + 8 + 6 + 3 + 4 + 4 + 150);
  const net::StgTransition transition;
  const TransformationCost reduction(
      coefficients, Reduction{{&transition, &transition, &transition}, false, &transition});
  EXPECT_EQ(reduction.seq_count() * 10 + reduction.conc_count(), 30u);
  EXPECT_EQ(reduction.total(), unknown_cost);
}

}  // namespace
}  // namespace vorel::resolution
