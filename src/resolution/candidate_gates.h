// resolution/candidate_gates.h - sets of candidates as literals of a formula.
// Here:      whether some candidate of a set is chosen, whether two are; each set once.
// Not here:  which sets matter (resolution/trigger_formula.h, resolution/lock_formula.h).
#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "base/bit_rows.h"
#include "base/hashing.h"
#include "resolution/candidates.h"
#include "sat/cnf_formula.h"

namespace vorel::resolution {

using CandidateList = std::vector<CandidateId>;  // ascending

class CandidateGates {
 public:
  CandidateGates(const Candidates& candidates, const CandidateLits& literals,
                 sat::CnfFormula& formula, sat::ClauseGroup group)
      : candidates_{candidates}, literals_{literals}, formula_{formula}, group_{group} {}

  const Candidates& candidates() const { return candidates_; }
  sat::CnfFormula& formula() { return formula_; }
  sat::Lit literal(CandidateId candidate) const { return literals_[candidate]; }

  // The candidates that have an occurrence in the row, each once.
  CandidateList candidates_in(base::BitRow occurrences) const;
  sat::Lits literals_of(const CandidateList& list) const;

  // A candidate of the set is chosen. Defined in both directions.
  sat::Lit any_of(const CandidateList& set);
  // Implies that at most one of the list is chosen, and none that is in it twice.
  sat::Lit at_most_one(const CandidateList& list);

  void add_clause(std::span<const sat::Lit> clause) { formula_.add_clause(clause, group_); }
  sat::Lit make_gate(sat::GateType type, std::span<const sat::Lit> inputs) {
    return formula_.make_gate(sat::Gate(type, inputs), group_);
  }

 private:
  using Cells = std::unordered_map<CandidateList, sat::Lit, base::SequenceHash>;

  sat::Lit new_at_most_one(const CandidateList& list);

  const Candidates& candidates_;
  const CandidateLits& literals_;
  sat::CnfFormula& formula_;
  const sat::ClauseGroup group_;
  Cells any_, at_most_one_;
};

}  // namespace vorel::resolution
