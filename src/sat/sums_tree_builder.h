// sat/sums_tree_builder.h - parities of many sets of literals, defined together by shared gates.
// Here:      recording sets, then the gates of all of them at once.
// Not here:  what the sets share (sat/sums_tree.h).
//
// Sets are recorded first, each giving a literal that can be used in clauses at once; the gates
// come when all sets are known. Until then the literals are promises of the formula, which asserts
// in each solve that none is open: a parity cannot be left free by mistake.
#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "base/hashing.h"
#include "sat/cnf_formula.h"
#include "sat/sums_tree.h"

namespace vorel::sat {

class SumsTreeBuilder {
 public:
  // The formula must outlive the builder, and must not be reset between recording and emitting.
  explicit SumsTreeBuilder(CnfFormula& formula) : formula_{formula} {}
  ~SumsTreeBuilder();
  SumsTreeBuilder(const SumsTreeBuilder&) = delete;
  SumsTreeBuilder& operator=(const SumsTreeBuilder&) = delete;

  // A literal equal to the parity of the set, in any order and with repetitions and constants; the
  // same one for sets of equal parity up to complement until the next sums_emit().
  Lit sums_literal(std::span<const Lit> set);
  // Defines all literals given since the last time, with both halves of their gates, and forgets
  // the sets.
  void sums_emit(ClauseGroup group = PermanentGroup);

 private:
  void emit(const SumsTree& node, Lit parent, ClauseGroup group);

  CnfFormula& formula_;
  std::vector<SumsSet> sets_;  // in the order of recording
  std::unordered_map<Lits, Lit, base::SequenceHash> outputs_;
};

}  // namespace vorel::sat
