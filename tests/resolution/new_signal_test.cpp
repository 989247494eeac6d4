// Sets of candidates as the edges of one signal: the clauses against the states of the net.
#include <gtest/gtest.h>

#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/book_insertion.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "resolution/insertion_constraints.h"
#include "resolution/insertions.h"
#include "resolution/resolution_support.h"
#include "resolution/transformation.h"

namespace vorel::resolution {
namespace {

using Chosen = std::vector<CandidateId>;

// The clauses on some candidates, asked again and again.
class Subject {
 public:
  Subject(const net::StgPrefix& prefix, std::vector<net::Insertion> insertions)
      : candidates{prefix, std::move(insertions)},
        order{candidates},
        old_hazards{prefix},
        formula_{{}},
        literals_(candidates.size()) {
    sat::SumsTreeBuilder parities(formula_);
    for (const CandidateId id : candidates.all()) literals_[id] = {formula_.new_var(false), false};
    add_insertion_constraints(candidates, order, literals_, parities, formula_, formula_.group(0));
    parities.sums_emit();
  }

  std::vector<net::Insertion> of(const Chosen& chosen) const {
    std::vector<net::Insertion> result;
    for (const CandidateId id : chosen) result.push_back(candidates.insertion(id));
    return result;
  }
  // These and no others.
  bool are_allowed(const Chosen& chosen) {
    const sat::ClauseGroup group = formula_.renew_group(formula_.group(1));
    for (const CandidateId id : candidates.all())
      formula_.add_unit(literals_[id] ^ (std::ranges::count(chosen, id) == 0), group);
    return formula_.solve();
  }
  // Some set with these in it; empty if there is none.
  Chosen completed(const Chosen& chosen) {
    const sat::ClauseGroup group = formula_.renew_group(formula_.group(1));
    for (const CandidateId id : chosen) formula_.add_unit(literals_[id], group);
    Chosen result;
    if (!formula_.solve()) return result;
    for (const CandidateId id : candidates.all())
      if (formula_.is_true(literals_[id])) result.push_back(id);
    return result;
  }

  // The edges are inserted into a net by states, then into the prefix.
  bool is_signal(const Chosen& chosen) const {
    const net::StgPrefix& prefix = candidates.prefix();
    const oracle::BookStep step = oracle::insert_signal_by_the_book(prefix, of(chosen));
    const bool is_good = step.fault.empty() || old_hazards.explain(step.fault);
    if (!is_good || !step.has_one_code) return false;
    const std::vector<net::Sign> signs = edge_signs(candidates, order, chosen);
    EXPECT_EQ(signs, step.signs);
    net::StgPrefix edited = net::clone_prefix(prefix);
    net::Signal& signal = net::insert_signal(edited, "x", net::SignalKind::internal, 0);
    for (std::size_t i = 0; i < chosen.size(); ++i)
      net::insert_transition(edited, candidates.insertion(chosen[i]), signal, signs[i]);
    net::finish_edit(edited);
    EXPECT_EQ(oracle::branching_fault<net::Stg>(edited), "");
    EXPECT_EQ(oracle::completeness_fault(edited, oracle::explore<net::Stg>(edited)), "");
    return true;
  }

  const Candidates candidates;
  const OccurrenceOrder order;
  const resolution_support::OldHazards old_hazards;

 private:
  sat::CnfFormula formula_;
  CandidateLits literals_;
};

std::string text_of(const std::vector<net::Insertion>& insertions) {
  std::string text;
  for (const net::Insertion& insertion : insertions) text += to_text(insertion) + "  ";
  return text;
}

// All sets of up to three of some candidates, judged by states alone.
std::size_t compare_all_sets(const net::StgPrefix& prefix, std::vector<net::Insertion> insertions) {
  Subject subject(prefix, std::move(insertions));
  std::set<Chosen> good;
  const std::vector<net::Insertion> all =
      subject.of({subject.candidates.all().begin(), subject.candidates.all().end()});
  oracle::for_each_set(prefix, all, 3, [&](std::span<const std::size_t> set) {
    Chosen chosen;
    for (const std::size_t number : set) chosen.push_back({static_cast<std::uint32_t>(number)});
    if (subject.is_signal(chosen)) good.insert(chosen);
  });
  const auto compare = [&](const Chosen& chosen) {
    EXPECT_EQ(subject.are_allowed(chosen), good.contains(chosen)) << text_of(subject.of(chosen));
  };
  for (const CandidateId a : subject.candidates.all()) {
    compare({a});
    for (const CandidateId b : subject.candidates.all()) {
      if (a < b) compare({a, b});
      for (const CandidateId c : subject.candidates.all())
        if (a < b && b < c) compare({a, b, c});
    }
  }
  return good.size();
}

std::vector<net::Insertion> some_of(std::vector<net::Insertion> insertions, std::size_t count,
                                    oracle::Random& random) {
  random.shuffle(insertions);
  if (insertions.size() > count) insertions.resize(count);
  std::ranges::sort(insertions, insertion_less);
  return insertions;
}

std::vector<net::Insertion> some_of_all_kinds(const net::StgPrefix& prefix, std::size_t count,
                                              oracle::Random& random) {
  std::vector<net::Insertion> some = some_of(insertions(prefix, 2), count, random);
  std::ranges::move(some_of(resolution_support::all_general_insertions(prefix), count / 2, random),
                    std::back_inserter(some));
  return some;
}

TEST(NewSignal, HasTheSetsOfEdgesThatTheStatesAllow) {
  std::size_t good = 0;
  resolution_support::on_prefixes(15, [&](const net::StgPrefix& prefix, std::uint64_t seed) {
    oracle::Random random(seed);
    good += compare_all_sets(prefix, some_of_all_kinds(prefix, 6, random));
  });
  EXPECT_GT(good, 0u);
}

TEST(NewSignal, IsOneHoweverManyEdgesItHas) {
  std::size_t most = 0;
  resolution_support::on_prefixes(15, [&](const net::StgPrefix& prefix, std::uint64_t seed) {
    oracle::Random random(seed);
    Subject subject(prefix, some_of_all_kinds(prefix, 100, random));
    for (int i = 0; i < 10 && subject.candidates.size() > 0; ++i) {
      const Chosen chosen = subject.completed({{random.below(subject.candidates.size())}});
      if (chosen.empty()) continue;
      most = std::max(most, chosen.size());
      EXPECT_TRUE(subject.is_signal(chosen)) << text_of(subject.of(chosen));
    }
  });
  EXPECT_GT(most, 3u);
}

}  // namespace
}  // namespace vorel::resolution
