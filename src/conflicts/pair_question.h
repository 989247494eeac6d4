// conflicts/pair_question.h - what is asked of two configurations, in whichever formula.
// Here:      the pair, what engines say about it.
// Not here:  the search (conflicts/pair_search.h), proofs that there is nothing to be found
//            (conflicts/local_refutation.h).
#pragma once

#include "configuration/state_literals.h"

namespace vorel::conflicts {

// The literals of one of the two.
using PairState = configuration::StateLiterals<net::StgPrefix>;

struct EncodedPair {
  sat::CnfFormula& formula;
  PairState& first;
  PairState& second;

  // The event is in both or in neither, or only in the one that is the larger of the two: the
  // second if the literal is true, the first if it is false.
  void add_inclusion(const net::StgPrefix::Event& event, sat::Lit is_second_larger) const {
    const sat::Lit in_first = first.vars().event_lit(event);
    const sat::Lit in_second = second.vars().event_lit(event);
    formula.add_clause(sat::Lits{~in_first, in_second, ~is_second_larger}, sat::PermanentGroup);
    formula.add_clause(sat::Lits{~in_second, in_first, is_second_larger}, sat::PermanentGroup);
  }
};

class PairQuestion {
 public:
  // How the codes of the two are related in the signal, permanently.
  virtual void add_code_constraint(const EncodedPair& pair, net::SignalId signal) const = 0;
  // Candidates, of which one must differ, are numbered from 0.
  virtual std::uint32_t candidate_count() const = 0;
  virtual void add_candidate_difference(const EncodedPair& pair, std::uint32_t candidate,
                                        sat::ClauseGroup group) const = 0;
  // For each of the candidates a literal that is true exactly if the two differ there.
  virtual sat::Lits differences(const EncodedPair& pair,
                                std::span<const std::uint32_t> candidates) const = 0;

 protected:
  ~PairQuestion() = default;
};

// For each of these pairs of literals whether they differ.
inline sat::Lits differences_of(sat::CnfFormula& formula,
                                std::span<const std::pair<sat::Lit, sat::Lit>> pairs) {
  sat::Lits lits;
  for (const auto& [a, b] : pairs)
    lits.push_back(formula.make_gate(sat::Gate(sat::GateXor, {a, b}), sat::PermanentGroup));
  return lits;
}

// Makes the two literals equal.
inline void add_equivalence(sat::CnfFormula& formula, sat::Lit a, sat::Lit b,
                            sat::ClauseGroup group) {
  formula.add_binary(~a, b, group);
  formula.add_binary(a, ~b, group);
}

}  // namespace vorel::conflicts
