#include "sat/least_cost.h"

#include <cassert>

#include "base/messages.h"

namespace vorel::sat {
namespace {

constexpr std::uint32_t attempt_group = 2;

class Descent {
 public:
  Descent(CnfFormula& formula, std::span<const Lit> bits, std::vector<bool>& values,
          const Resolve& resolve)
      : formula_{formula}, bits_{bits}, values_{values}, resolve_{resolve} {}

  void run() {
    for (std::size_t i = bits_.size(); i-- > 0 && !base::run_failed();) {
      const Lit bit = bits_[i];
      if (!values_[i]) {
        assert(bit != LitTrue);
        if (bit != LitFalse) pending_.push_back(~bit);
      } else if (bit != LitTrue) {
        assert(bit != LitFalse);
        try_to_clear(bit);
      }
    }
  }

 private:
  void try_to_clear(Lit bit) {
    fixed_.insert(fixed_.end(), pending_.begin(), pending_.end());
    if (cleared_last_) {
      formula_.add_units(pending_, false, formula_.group(attempt_group));
    } else {  // the last attempt left the group contradictory
      formula_.renew_group(formula_.group(attempt_group));
      formula_.add_units(fixed_, false, formula_.group(attempt_group));
    }
    pending_.clear();
    formula_.add_unit(~bit, formula_.group(attempt_group));
    cleared_last_ = resolve_(bits_, values_);
    fixed_.push_back(cleared_last_ ? ~bit : bit);
  }

  CnfFormula& formula_;
  std::span<const Lit> bits_;
  std::vector<bool>& values_;
  const Resolve& resolve_;
  Lits fixed_;    // the decided higher bits, as they are
  Lits pending_;  // those of them that are 0 without an attempt, not yet in the group
  bool cleared_last_ = true;
};

}  // namespace

bool resolve_cost(CnfFormula& formula, std::span<const Lit> bits, std::vector<bool>& values,
                  const std::function<void()>& record) {
  if (base::run_failed() || !formula.solve() || base::run_failed()) return false;
  record();
  values.assign(bits.size(), false);
  for (std::size_t i = 0; i < bits.size(); ++i) values[i] = formula.is_true(bits[i]);
  return true;
}

void minimise_cost(CnfFormula& formula, std::span<const Lit> bits, std::vector<bool>& values,
                   const Resolve& resolve) {
  assert(values.size() == bits.size());
  Descent(formula, bits, values, resolve).run();
}

}  // namespace vorel::sat
