// The cost that a model of least cost gives to some choice, against what the prefix comes to that
// has these edges: resolution/cost_numbers_test.cpp and resolution/signal_locks_test.cpp tell what
// that is right for.
#include "resolution/cost_formula.h"

#include <gtest/gtest.h>

#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/random.h"
#include "resolution/insertion_mutex.h"
#include "resolution/insertions.h"
#include "resolution/resolution_support.h"
#include "support/default_params.h"

namespace vorel::resolution {
namespace {

using net::StgPrefix;

// As many as are tried together: enough to lock signals.
std::vector<net::Insertion> random_insertions(const StgPrefix& prefix, oracle::Random& random) {
  std::vector<net::Insertion> all = insertions(prefix, 2);
  std::ranges::copy(resolution_support::all_general_insertions(prefix), std::back_inserter(all));
  random.shuffle(all);
  if (all.size() > 40) all.erase(all.begin() + 40, all.end());
  std::ranges::sort(all, insertion_less);
  return all;
}

// Transitions get signals at random: signals are concurrent with themselves then, or dead.
void mix_labels(StgPrefix& prefix, oracle::Random& random) {
  for (auto& transition : prefix.transitions)
    transition->signal = prefix.signals[random.below(prefix.signals.size())].get();
}

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
    const toolkit::BitGraph mutex = insertion_mutex(candidates_, order_);
    for (const CandidateId a : candidates_.all())
      for (const CandidateId b : candidates_.all())
        if (mutex.has_edge(a.value, b.value))
          formula_.add_binary(~literals_[a], ~literals_[b], formula_.group(0));
    CostFormula cost(order_, candidates_, literals_,
                     {.coefficients = coefficients_, .cores = cores_, .unlock_number = 7},
                     formula_);
    for (int i = 0; i < 6; ++i) expect_costs(cost, counts);
  }

 private:
  // Some that do not exclude each other, half of the time with a signal locked, or almost.
  Choice random_choice(const SignalLits& locked) {
    const sat::ClauseGroup wishes = formula_.renew_group(formula_.group(1));
    formula_.renew_group(formula_.group(2));
    Choice chosen(candidates_.size(), false);
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

  void expect_costs(const CostFormula& formula, Counts& counts) {
    const Choice chosen = random_choice(formula.locked());
    formula_.renew_group(formula_.group(1));
    for (const CandidateId candidate : candidates_.all())
      formula_.add_unit(literals_[candidate] ^ !chosen[candidate], formula_.group(1));
    const auto least = sat::find_least_cost(formula_, formula.literals(), unknown_cost,
                                            formula_.renew_group(formula_.group(2)), [] {});

    StgPrefix edited = net::clone_prefix(prefix_);
    net::Signal& x = net::insert_signal(edited, "x", net::SignalKind::internal, net::unknown_value);
    ResolutionCost cost(coefficients_, insertions_of(candidates_, chosen));
    for (const net::Insertion& insertion : std::get<SignalInsertion>(cost.transformation))
      net::insert_transition(edited, insertion, x, net::Sign::toggle);
    net::finish_edit(edited);
    evaluate_choice(candidates_, chosen, {}, cost);
    evaluate_result(edited, x, 7, cost);
    cost.csc_cores = cores(cores_.csc_counter_literals, chosen);
    cost.usc_cores = cores(cores_.usc_counter_literals, chosen);
    EXPECT_EQ(cost.total(), least) << cost.text();

    std::uint64_t all = 0;
    for (const net::SignalId signal : prefix_.visible_signals())
      all += prefix_.driven_signals().contains(signal) ? 4 : 2;
    ++(cost.non_locked < all + (coefficients_.use_concurrency_reduction ? 7 : 0) ? counts.locked
                                                                                 : counts.unlocked);
  }

  std::uint64_t cores(const sat::Lits& lits, const Choice& chosen) const {
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
  resolution_support::on_prefixes(60, [&](const StgPrefix& made, std::uint64_t seed) {
    if (made.events.size() > 60) return;
    oracle::Random random(seed);
    StgPrefix prefix = net::clone_prefix(made);
    if (seed % 4 < 2) mix_labels(prefix, random);
    Comparison(prefix, random).run(counts);
  });
  EXPECT_GT(counts.locked, 60);
  EXPECT_GT(counts.unlocked, 15);
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
