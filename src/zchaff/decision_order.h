// zchaff/decision_order.h - which variable is decided on next: the one with the highest activity.
// Activities decay by growing increments [ES-2003], after [MMZ-2001]; a binary heap holds the
// variables that may be decided on, and the assigned ones too until they are met at its top.
#pragma once

#include <cstdint>
#include <vector>

#include "zchaff/solver_types.h"

namespace vorel::zchaff {

class DecisionOrder {
 public:
  // A variable that is no candidate is never decided on.
  void add_variable(bool candidate);

  bool empty() const { return heap_.empty(); }
  Variable top() const { return heap_.front(); }
  void pop();
  // Puts a candidate back that may have been taken out.
  void restore(Variable v) {
    if (is_candidate(v) && position_[index_of(v)] == absent) insert(v);
  }

  void bump(Variable v);
  void decay() { increment_ /= decay_factor; }
  bool is_candidate(Variable v) const { return candidate_[index_of(v)] != 0; }
  double activity(Variable v) const { return activity_[index_of(v)]; }

 private:
  static constexpr std::uint32_t absent = 0xFFFFFFFFu;
  static constexpr double decay_factor = 0.95;

  bool before(Variable a, Variable b) const { return activity(a) > activity(b); }
  void insert(Variable v);
  void place(Variable v, std::uint32_t position);
  void rise(std::uint32_t position);
  void sink(std::uint32_t position);
  void rescale();

  std::vector<Variable> heap_;
  std::vector<std::uint32_t> position_;  // in the heap, by variable
  std::vector<double> activity_;
  std::vector<std::uint8_t> candidate_;
  double increment_ = 1;
};

}  // namespace vorel::zchaff
