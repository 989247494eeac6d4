// Sets of candidates that make a signal: what the clauses of a step allow, against all sets put
// into the net and explored state by state.
#include <gtest/gtest.h>

#include <algorithm>

#include "net/clone_net.h"
#include "net/edit.h"
#include "oracle/book_insertion.h"
#include "oracle/coding.h"
#include "oracle/prefix_checks.h"
#include "oracle/random.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "resolution/insertion_constraints.h"
#include "resolution/insertions.h"
#include "resolution/transformation.h"
#include "support/seeds.h"

namespace vorel::resolution {
namespace {

using Set = std::vector<CandidateId>;

class Step {
 public:
  explicit Step(const net::StgPrefix& prefix)
      : candidates_{prefix, insertions(prefix, 2)},
        order_{candidates_},
        formula_{sat::CnfParams{}},
        parities_{formula_},
        chosen_(candidates_.size()) {
    const sat::Lits variables = formula_.new_vars(candidates_.size());
    for (const CandidateId id : candidates_.all()) chosen_[id] = variables[id.value];
    add_insertion_constraints(candidates_, order_, chosen_, parities_, formula_,
                              sat::PermanentGroup);
    parities_.sums_emit();
  }

  const Candidates& candidates() const { return candidates_; }

  bool allows(const Set& set) {
    const sat::ClauseGroup group = formula_.new_group();
    for (const CandidateId id : candidates_.all()) {
      formula_.add_unit(std::ranges::count(set, id) != 0 ? chosen_[id] : ~chosen_[id], group);
    }
    const bool found = formula_.solve();
    formula_.remove_group(group);
    return found;
  }

  std::vector<net::Insertion> insertions_of(const Set& set) const {
    std::vector<net::Insertion> result;
    for (const CandidateId id : set) result.push_back(candidates_.insertion(id));
    return result;
  }

  std::vector<net::Sign> signs(const Set& set) const {
    return edge_signs(candidates_, order_, set);
  }

 private:
  Candidates candidates_;
  OccurrenceOrder order_;
  sat::CnfFormula formula_;
  sat::SumsTreeBuilder parities_;
  CandidateLits chosen_;
};

std::string text_of(const std::vector<net::Insertion>& set) {
  std::string text;
  for (const net::Insertion& insertion : set) text += to_text(insertion) + "  ";
  return text;
}

// Of the prefix with the insertions, too.
std::string edited_prefix_fault(const net::StgPrefix& prefix,
                                const std::vector<net::Insertion>& set,
                                const std::vector<net::Sign>& signs) {
  net::StgPrefix copy = net::clone_prefix(prefix);
  net::Signal& signal = net::insert_signal(copy, "x", net::SignalKind::internal, 0);
  for (std::size_t i = 0; i < set.size(); ++i) {
    net::insert_transition(copy, set[i], signal, signs[i]);
  }
  net::finish_edit(copy);
  if (std::string fault = oracle::branching_fault<net::Stg>(copy); !fault.empty()) return fault;
  return oracle::completeness_fault(copy, oracle::explore<net::Stg>(copy), 3'000);
}

// All sets of up to three, or so many of them drawn at random.
std::vector<Set> sets_of(std::uint32_t candidates, std::size_t most, oracle::Random& random) {
  std::vector<Set> sets;
  for (std::uint32_t a = 0; a < candidates; ++a) {
    sets.push_back({CandidateId{a}});
    for (std::uint32_t b = a + 1; b < candidates; ++b) {
      sets.push_back({CandidateId{a}, CandidateId{b}});
      for (std::uint32_t c = b + 1; c < candidates; ++c) {
        sets.push_back({CandidateId{a}, CandidateId{b}, CandidateId{c}});
      }
    }
  }
  random.shuffle(sets);
  sets.resize(std::min(sets.size(), most));
  return sets;
}

TEST(InsertionSets, AreThoseThatMakeASignalInTheStateGraph) {
  const auto [first, end] = support::seeds(40);
  unsigned allowed = 0, refused = 0;
  for (std::uint64_t seed = first; seed < end && !HasFailure(); ++seed) {
    const net::Stg stg = oracle::random_stg(
        seed, {.dummies = seed % 3 == 1, .toggles = seed % 3 == 2, .max_states = 60});
    auto prefix = oracle::unfold(stg, 100);
    if (!prefix) continue;
    Step step(*prefix);
    oracle::Random random(seed);
    for (const Set& set : sets_of(step.candidates().size(), 400, random)) {
      const auto insertions = step.insertions_of(set);
      SCOPED_TRACE("seed " + std::to_string(seed) + ": " + text_of(insertions));
      const bool is_allowed = step.allows(set);
      const oracle::BookStep drawn = oracle::insert_signal_by_the_book(stg, insertions);
      if (is_allowed) {
        EXPECT_EQ(drawn.fault, "");
        EXPECT_EQ(step.signs(set), drawn.signs);
        EXPECT_EQ(edited_prefix_fault(*prefix, insertions, drawn.signs), "");
      } else if (drawn.has_one_code) {
        EXPECT_NE(drawn.fault, "") << "is missing";
      }
      ++(is_allowed ? allowed : refused);
    }
  }
  EXPECT_GT(allowed, (end - first) / 2);
  std::printf("allowed %u refused %u\n", allowed, refused);
}

}  // namespace
}  // namespace vorel::resolution
