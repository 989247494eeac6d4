#include "zchaff/assignment.h"

namespace vorel::zchaff {

void Assignment::add_variable() {
  values_.insert(values_.end(), 2, Truth::open);
  places_.push_back({0, no_clause});
  fact_groups_.emplace_back();
  negated_before_.push_back(1);  // most variables of an encoding are false in most models
}

}  // namespace vorel::zchaff
