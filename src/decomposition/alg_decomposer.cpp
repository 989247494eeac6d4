#include "decomposition/alg_decomposer.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <unordered_set>
#include <utility>

#include "base/run_state.h"
#include "bdd/bdd_structure.h"
#include "bdd/cover_bdd.h"
#include "decomposition/divisions.h"

namespace vorel::decomposition {
namespace {

constexpr int verbosity_of_decompositions = 4, verbosity_of_divisions = 6;

class Candidates {
 public:
  Candidates(const bdd::Bdd& f, std::uint32_t variable, std::span<const std::string> names)
      : f_{f}, variable_{variable}, names_{names} {}

  void add(const DivisionByDivisor& division);
  std::vector<AlgDecomposition> take() { return std::move(list_); }

 private:
  void add_pair(AlgKind kind, bdd::Bdd first, bdd::Bdd second) {
    if (is_trivial(first) || is_trivial(second) || first == second) return;
    if (second < first) swap(first, second);
    add_new({kind, std::move(first), std::move(second)});
  }
  // `with` and `without`: the function where the sub-function is true, and where it is false.
  void add_collapsed(const bdd::Bdd& sub_function, const bdd::Bdd& with, const bdd::Bdd& without) {
    if (is_trivial(sub_function) || with == without) return;
    if (bdd::is_literal(sub_function)) return;  // it is a signal already
    add_new(
        {AlgKind::collapsed, sub_function, bdd::ite(bdd::bdd_variable(variable_), with, without)});
  }
  // Of no use next to f: nothing of the function, or all of it.
  bool is_trivial(const bdd::Bdd& g) const { return g.is_constant() || g == f_; }

  void add_new(AlgDecomposition decomposition) {
    assert(composed(decomposition, variable_) == f_);
    if (!known_.insert(decomposition).second) return;
    if (base::verbosity() >= verbosity_of_decompositions)
      std::cerr << "\n\nNew alg. decomposition: " << to_string(decomposition, names_);
    list_.push_back(std::move(decomposition));
  }

  const bdd::Bdd& f_;
  const std::uint32_t variable_;
  const std::span<const std::string> names_;
  std::unordered_set<AlgDecomposition> known_;
  std::vector<AlgDecomposition> list_;
};

void Candidates::add(const DivisionByDivisor& division) {
  const auto& [d, q1, q0, r] = division;
  const bdd::Bdd positive = d & q1, negative = ~d & q0;
  const auto disjunction = [this](const bdd::Bdd& a, const bdd::Bdd& b) {
    add_pair(AlgKind::disjunction, a, b);
  };
  if (r.is_false() && q0.is_false()) return add_pair(AlgKind::conjunction, d, q1);
  if (r.is_false() && q1.is_false()) return add_pair(AlgKind::conjunction, ~d, q0);
  add_collapsed(d, q1 | r, q0 | r);
  // Of three parts each against the others. A part that is missing leaves f itself, or what has
  // been found already.
  disjunction(positive | negative, r);
  disjunction(negative | r, positive);
  disjunction(positive | r, negative);
}

}  // namespace

std::vector<AlgDecomposition> AlgDecomposer::decompose(const bdd::Bdd& f) const {
  assert(!std::ranges::binary_search(f.support(), variable_));
  const auto text = [this](const bdd::Bdd& g) {
    return toolkit::to_string(bdd::expression_of(g, names_));
  };
  const bool tells_divisions = base::verbosity() >= verbosity_of_divisions;
  if (tells_divisions) std::cerr << "\n\nAlgebraic decomposition called on:\n" << text(f);
  Candidates candidates(f, variable_, names_);
  for (const DivisionByDivisor& division : divisions_of(f, limit)) {
    if (tells_divisions) {
      std::cerr << "\nD=" << text(division.d) << "\nQ1=" << text(division.q1)
                << "\nQ0=" << text(division.q0) << "\nR=" << text(division.r);
    }
    candidates.add(division);
  }
  return candidates.take();
}

}  // namespace vorel::decomposition
