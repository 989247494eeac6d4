// zchaff/restart_policy.h - when the search gives up its decisions, and when clauses are reviewed.
// A restart is due when the clauses learnt lately have more levels than those learnt before
// [AS-2012], both as exponential averages [BF-2015]. The first restart of a solve waits longer:
// most of the solves that list models end after a few conflicts, and a restart takes them further
// away.
#pragma once

#include <algorithm>
#include <cstdint>

namespace vorel::zchaff {

class RestartPolicy {
 public:
  // `first_restart`: conflicts before it in each solve; `interval`: until the first reduction, of a
  // large formula.
  RestartPolicy(std::uint32_t margin_percent, std::uint32_t first_restart, std::uint32_t interval)
      : margin_{1 + margin_percent / 100.0},
        most_interval_{interval},
        interval_{interval},
        next_reduction_{interval},
        first_restart_{first_restart} {}

  void note_conflict(std::uint32_t glue) {
    ++conflicts_;
    ++since_restart_;
    fast_.update(glue);
    slow_.update(glue);
  }
  bool is_restart_due() const {
    return since_restart_ >= least_interval_ && fast_.value() > margin_ * slow_.value();
  }
  void note_restart() {
    since_restart_ = 0;
    least_interval_ = later_restart;
  }

  // A new solve starts with a small database again, so that the clauses that are of use to no solve
  // do not pile up over thousands of them. Of a small formula few learnt clauses are of use, and
  // many would take longer to propagate than the formula itself.
  void note_solve(std::uint64_t clauses) {
    since_restart_ = 0;
    least_interval_ = first_restart_;
    growth_ = 0;
    interval_ = std::min(most_interval_, std::max(least_reduction, clauses / 2));
    next_reduction_ = std::min(next_reduction_, conflicts_ + interval_);
  }
  bool is_reduction_due() const { return conflicts_ >= next_reduction_; }
  // The database may grow a little more each time.
  void note_reduction() {
    ++reductions_;
    ++growth_;
    next_reduction_ = conflicts_ + interval_ + interval_ * growth_ / growth_divisor;
  }

  std::uint64_t conflicts() const { return conflicts_; }
  std::uint64_t reductions() const { return reductions_; }

 private:
  static constexpr std::uint32_t later_restart = 10;  // conflicts between two
  static constexpr std::uint64_t growth_divisor = 7;
  static constexpr std::uint64_t least_reduction = 500;  // conflicts before it

  // Weighs the first values as a plain average does.
  class Average {
   public:
    explicit Average(double weight) : weight_{weight} {}
    void update(double next) {
      share_ *= 1 - weight_;
      value_ += weight_ * (next - value_);
    }
    double value() const { return share_ < 1 ? value_ / (1 - share_) : 0; }

   private:
    double weight_, value_ = 0;
    double share_ = 1;  // of the zero that the average began with
  };

  double margin_;
  Average fast_{1.0 / 32}, slow_{1e-5};
  std::uint64_t conflicts_ = 0, reductions_ = 0, growth_ = 0;
  std::uint64_t most_interval_, interval_, next_reduction_;
  std::uint32_t first_restart_;
  std::uint32_t since_restart_ = 0, least_interval_ = later_restart;
};

}  // namespace vorel::zchaff
