#include "sat/core_guided.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <map>
#include <unordered_map>
#include <vector>

#include "base/messages.h"
#include "sat/integer_circuit.h"
#include "sat/timed_solve.h"
#include "sat/totalizer.h"

namespace vorel::sat {
namespace {

constexpr std::uint64_t highest = ~std::uint64_t{0};
constexpr std::uint64_t minimisation_conflicts = 100;  // for one literal of a core
constexpr std::uint64_t exhaustion_conflicts = 1000;   // for one more of a core
constexpr int most_trims = 5;
constexpr std::uint64_t free_tries = 100, tries_per_drop = 10;  // to make a core smaller
// A core costs a few conflicts; what goes beyond these tells that cores are hard to find.
constexpr std::uint64_t conflicts_per_core = 8;
constexpr std::uint64_t work_before_descent = 256, literals_per_work = 4;
constexpr std::uint64_t turn_growth = 4;
constexpr std::uint64_t descent_share = 8;  // its turn is so many times longer

std::uint64_t sum_of(std::uint64_t a, std::uint64_t b) { return a > highest - b ? highest : a + b; }

class CoreGuidedSearch {
 public:
  CoreGuidedSearch(CnfFormula& formula, std::span<const WeightedLit> cost, std::uint64_t bound,
                   ClauseGroup group, const std::function<void()>& record,
                   const base::Deadline& deadline, const Refinement& refine)
      : formula_{formula},
        cost_{cost},
        group_{group},
        record_{record},
        deadline_{deadline},
        refine_{refine},
        upper_{bound},
        is_unweighted_{
            std::ranges::all_of(cost, [](const auto& soft) { return soft.weight == 1; })} {
    normalise();
  }

  std::optional<std::uint64_t> run() {
    const std::optional<std::uint64_t> least = search();
    if (number_group_) formula_.remove_group(*number_group_);
    return least;
  }

 private:
  // Without any assumptions first: a formula without models is refuted faster so, and what the
  // first model costs keeps the assumptions few.
  std::optional<std::uint64_t> search() {
    if (lower_ >= upper_ || !solve({}).value_or(false)) return std::nullopt;
    note_model();
    harden();
    threshold_ = next_threshold(highest);
    divide();
    while (is_open() && !base::run_failed()) {
      if (may_descend() && work() >= work_until_descent_) descend();
      if (!is_open() || base::run_failed()) break;
      const std::optional<bool> answer = solve_in_turn(assumptions());
      if (!answer) {
        if (deadline_.is_over()) return std::nullopt;
      } else if (*answer) {
        note_model();
        if (next_part()) continue;
        if (!relax_cores() && !lower_threshold()) break;
        divide();
      } else {
        if (base::run_failed() || formula_.failed_assumptions().empty()) break;
        take_core(formula_.failed_assumptions());
      }
    }
    if (base::run_failed() || !has_model_) return std::nullopt;
    return upper_;
  }

  // A literal that costs something. An output of a totalizer stands for all thresholds from it on
  // until it is found in a core.
  struct Soft {
    Lit lit;
    std::uint64_t weight;     // what is not part of the lower bound yet
    std::uint32_t totalizer;  // none: a literal of the cost itself
    std::uint32_t count;
    bool in_model = true;  // in the last one, unless it is newer than that
  };
  struct Core {
    Lits lits;
    std::uint64_t weight;
  };
  static constexpr std::uint32_t none = ~0u;
  static constexpr std::size_t whole = ~std::size_t{0};

  // Each variable once, without constants.
  void normalise() {
    std::map<Lit, std::uint64_t> weights;
    for (const auto& [lit, weight] : cost_) {
      if (lit == LitTrue) lower_ = sum_of(lower_, weight);
      if (!lit.is_constant() && weight != 0) weights[lit] = sum_of(weights[lit], weight);
    }
    for (auto& [lit, weight] : weights) {
      const auto other = weights.find(~lit);
      if (other != weights.end()) {
        const std::uint64_t both = std::min(weight, other->second);
        lower_ = sum_of(lower_, both);
        weight -= both;
        other->second -= both;
      }
      if (weight != 0) add_soft({lit, weight, none, 0});
    }
  }

  // The bits of a bound that no model has met say nothing of those of the cost.
  bool may_descend() const { return is_unweighted_ && has_model_; }
  bool is_open() const { return std::max(lower_, proven_) < upper_; }

  void add_soft(const Soft& soft) {
    index_of_.emplace(soft.lit, static_cast<std::uint32_t>(softs_.size()));
    softs_.push_back(soft);
  }
  Soft& soft_of(Lit lit) { return softs_[index_of_.at(lit)]; }
  bool is_in_model(Lit lit) { return soft_of(lit).in_model; }

  // A model is one of what the formula is about.
  std::optional<bool> refined(const std::function<std::optional<bool>()>& solve_step) {
    std::optional<bool> answer;
    do {
      answer = solve_step();
    } while (answer == true && refine_ && refine_());
    return answer;
  }
  std::optional<bool> solve(const Lits& assumed, std::uint64_t conflicts = no_conflict_limit) {
    return refined([&] { return solve_by(formula_, assumed, deadline_, conflicts); });
  }
  // Nothing, too, when it is the turn of the descent before the answer is known.
  std::optional<bool> solve_in_turn(const Lits& assumed) {
    if (!may_descend()) return solve(assumed);
    return solve(assumed, work_until_descent_ - work());
  }
  // Of a step that may be left out.
  std::optional<bool> try_solve(const Lits& assumed, std::uint64_t conflicts) {
    return formula_.solve_assuming(assumed, conflicts);
  }

  Lits assumptions() const {
    Lits lits;
    for (const Soft& soft : part())
      if (is_in_stratum(soft)) lits.push_back(~soft.lit);
    return lits;
  }

  void note_model() {
    for (Soft& soft : softs_) soft.in_model = formula_.is_true(soft.lit);
    const std::uint64_t cost = model_cost(formula_, cost_);
    assert(cost >= lower_);
    if (cost >= upper_) return;
    upper_ = cost;
    has_model_ = true;
    record_();
  }

  // A literal whose weight would lift the lower bound to the upper one is false in what is better.
  void harden() {
    for (Soft& soft : softs_) {
      if (soft.weight == 0 || sum_of(lower_, soft.weight) < upper_) continue;
      formula_.add_unit(~soft.lit, group_);
      soft.weight = 0;
    }
  }

  // ---- Parts of the literals [MML-2012]

  std::span<const Soft> part() const {
    return std::span(softs_).subspan(part_begin_,
                                     std::min(part_size_, softs_.size() - part_begin_));
  }
  bool is_in_stratum(const Soft& soft) const {
    return soft.weight != 0 && soft.weight >= threshold_;
  }
  bool is_costly(const Soft& soft) const { return soft.in_model && is_in_stratum(soft); }
  auto costly_in(std::span<const Soft> softs) const {
    return std::ranges::count_if(softs, [this](const Soft& soft) { return is_costly(soft); });
  }

  // Every solve for a core assumes all literals anew, and there can be as many cores as the last
  // model has literals that cost something. Most of them can be found among a few of the literals.
  // A part costs one more model.
  void divide() {
    const auto parts = static_cast<std::size_t>(std::sqrt(costly_in(softs_)) / 4);
    part_begin_ = 0;
    part_size_ = parts > 1 ? softs_.size() / parts + 1 : whole;
  }

  // One in which there may be a core, at last the whole. False if that was done already.
  bool next_part() {
    if (part_size_ == whole) return false;
    do {
      part_begin_ += part_size_;
      if (part_begin_ < softs_.size()) continue;
      part_begin_ = 0;
      part_size_ = whole;
    } while (part_size_ != whole && costly_in(part()) == 0);
    return true;
  }

  // ---- The other way: the cost as a binary number

  // What few decisions settle for the whole formula takes as many cores as the cost is high, each
  // with all that follows from it; where the cost is a number, one step may refute many values. And
  // the other way round: of many small choices, each independent of the others, the number tells
  // nothing. So each way has its turn, the longer the more turns there were. The descent goes on
  // for longer when it has proven more than the cores: what is left of it will be harder than that.
  void descend() {
    const std::uint64_t start = conflicts();
    std::uint64_t limit = descent_share * work();
    work_until_descent_ = turn_growth * work();
    const Lits& bits = number();
    Lits higher;  // the bits decided so far, as they are in the least cost
    // As facts they shorten what is learnt, which assumptions do not.
    ClauseGroup attempt = formula_.new_group();
    std::size_t entered = 0;  // so many of them are in the group
    for (std::size_t i = bits.size(); i-- > 0 && !base::run_failed();) {
      if (bits[i].is_constant()) continue;
      higher.push_back(~bits[i]);
      if ((upper_ >> i & 1u) == 0) continue;
      const std::uint64_t most = (upper_ >> i << i) - 1;  // with this bit 0
      if (most >= std::max(lower_, proven_)) {
        for (; entered < higher.size(); ++entered) formula_.add_unit(higher[entered], attempt);
        const std::optional<bool> answer = solve({}, limit);
        if (!answer) break;
        if (*answer) {
          note_model();
          continue;
        }
        attempt = formula_.renew_group(attempt);
        entered = 0;
        proven_ = most + 1;
        limit *= descent_share;
      }
      higher.back() = bits[i];
    }
    formula_.remove_group(attempt);
    descent_conflicts_ += conflicts() - start;
  }

  // The bits of the cost. What is learnt of them in one turn is of use in the next.
  const Lits& number() {
    if (!number_group_) {
      number_group_ = formula_.new_group();
      Lits lits;
      for (const WeightedLit& costly : cost_) lits.push_back(costly.lit);
      bits_ = IntegerCircuit(formula_).count_ones(lits, *number_group_);
    }
    return bits_;
  }

  std::uint64_t conflicts() const { return formula_.solver().num_conflicts(); }
  // Of the search for cores: these, and the conflicts beyond what they are worth.
  std::uint64_t work() const {
    const std::uint64_t spent = conflicts() - first_conflict_ - descent_conflicts_;
    const std::uint64_t expected = conflicts_per_core * lower_;
    return long_cores_ + (spent > expected ? spent - expected : 0);
  }

  // ---- Strata

  // The weights below the last threshold, until they are much fewer than the literals [ABL-2013].
  std::uint64_t next_threshold(std::uint64_t last) const {
    std::map<std::uint64_t, std::size_t, std::greater<>> counts;
    for (const Soft& soft : softs_)
      if (soft.weight != 0) ++counts[soft.weight];
    std::size_t literals = 0, weights = 0;
    for (const auto& [weight, count] : counts) {
      literals += count;
      ++weights;
      if (weight < last && 4 * literals > 5 * weights) return weight;
    }
    return counts.empty() ? 0 : counts.rbegin()->first;
  }

  // False when all literals are assumed already: the model is one of least cost.
  bool lower_threshold() {
    const bool all = std::ranges::all_of(
        softs_, [this](const Soft& s) { return s.weight == 0 || s.weight >= threshold_; });
    if (all) {
      assert(upper_ == lower_);
      return false;
    }
    harden();
    threshold_ = next_threshold(threshold_);
    return true;
  }

  // ---- Cores: literals that cannot all be false [IMM-2019]

  void take_core(const Lits& failed) {
    Core core{.lits = {}, .weight = highest};
    Lits assumed = failed;
    trim(assumed);
    minimise(assumed);
    for (const Lit lit : assumed) {
      core.lits.push_back(~lit);
      core.weight = std::min(core.weight, soft_of(~lit).weight);
    }
    assert(core.weight > 0);
    std::ranges::sort(core.lits);
    lower_ = sum_of(lower_, core.weight);
    formula_.add_clause(core.lits, group_);
    for (const Lit lit : core.lits) soft_of(lit).weight -= core.weight;
    for (const Lit lit : core.lits) expose_next(soft_of(lit));
    if (core.lits.size() < 2) return;
    ++long_cores_;
    cores_.push_back(std::move(core));
  }

  void trim(Lits& assumed) {
    for (int i = 0; i < most_trims && assumed.size() > 1; ++i) {
      const std::size_t size = assumed.size();
      if (solve(assumed) != false || base::run_failed()) return;
      assumed = formula_.failed_assumptions();
      if (assumed.size() == size) return;
    }
  }

  void minimise(Lits& assumed) {
    std::ranges::sort(assumed, [this](Lit a, Lit b) {
      const std::uint64_t x = soft_of(~a).weight, y = soft_of(~b).weight;
      return x != y ? x > y : a < b;
    });
    drop_by_propagation(assumed);
    auto true_ones = std::ranges::count_if(assumed, [this](Lit lit) { return is_in_model(~lit); });
    for (std::size_t i = assumed.size(); i-- > 0 && assumed.size() > 1;) {
      const bool in_model = is_in_model(~assumed[i]);
      if (in_model && true_ones == 1) continue;  // the last model has all others false
      // A literal that is needed costs a model of the whole formula.
      if (tries_ > free_tries + tries_per_drop * drops_) return;
      Lits rest = assumed;
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
      ++tries_;
      if (try_solve(rest, minimisation_conflicts) != false) continue;
      if (base::run_failed()) return;
      ++drops_;
      if (in_model) --true_ones;
      assumed = std::move(rest);
    }
  }

  // A literal that comes last is not among those that fail if the others need no search to.
  void drop_by_propagation(Lits& assumed) {
    for (std::size_t i = assumed.size(); i-- > 0 && assumed.size() > 1;) {
      Lits order = assumed;
      std::rotate(order.begin() + static_cast<std::ptrdiff_t>(i),
                  order.begin() + static_cast<std::ptrdiff_t>(i) + 1, order.end());
      if (try_solve(order, minimisation_conflicts) != false) continue;
      if (base::run_failed()) return;
      const Lits& failed = formula_.failed_assumptions();
      std::erase_if(assumed,
                    [&](Lit lit) { return std::ranges::find(failed, lit) == failed.end(); });
      i = std::min(i, assumed.size());
    }
  }

  void expose_next(const Soft& soft) {
    if (soft.totalizer == none) return;
    const std::uint32_t count = soft.count + 1;
    Counter& counter = counters_[soft.totalizer];
    if (count > counter.totalizer.size() || count <= counter.exposed) return;
    expose(soft.totalizer, count);
  }

  void expose(std::uint32_t index, std::uint32_t count) {
    Counter& counter = counters_[index];
    counter.exposed = count;
    add_soft({counter.totalizer.at_least(count, formula_, group_), counter.weight, index, count});
  }

  // How many literals of each core found since the last time are true beyond the first one: not
  // before all cores are found that there are without these counts [BJ-2017]. False if there was
  // no core.
  bool relax_cores() {
    if (cores_.empty()) return false;
    for (const Core& core : cores_) {
      const auto index = static_cast<std::uint32_t>(counters_.size());
      counters_.push_back({Totalizer(core.lits), core.weight, 1});
      const std::uint32_t count = exhaust(counters_.back(), core);
      if (count <= core.lits.size()) expose(index, count);
    }
    cores_.clear();
    return true;
  }

  struct Counter {
    Totalizer totalizer;
    std::uint64_t weight;
    std::uint32_t exposed;  // highest threshold that is among the literals
  };

  // The first threshold from 2 that is not easily seen to be reached in any case.
  std::uint32_t exhaust(Counter& counter, const Core& core) {
    std::uint32_t count = 2;
    const auto in_model =
        std::ranges::count_if(core.lits, [this](Lit lit) { return is_in_model(lit); });
    if (in_model < count) return count;
    for (; count <= counter.totalizer.size() && is_open(); ++count) {
      const Lit next = counter.totalizer.at_least(count, formula_, group_);
      const Lits assumed{~next};
      if (try_solve(assumed, exhaustion_conflicts) != false) break;
      if (base::run_failed()) break;
      formula_.add_unit(next, group_);
      lower_ = sum_of(lower_, counter.weight);
    }
    return count;
  }

  CnfFormula& formula_;
  const std::span<const WeightedLit> cost_;
  const ClauseGroup group_;
  const std::function<void()>& record_;
  const base::Deadline& deadline_;
  const Refinement& refine_;
  std::uint64_t lower_ = 0, upper_;
  const bool is_unweighted_;  // all weights are 1
  bool has_model_ = false;
  std::uint64_t threshold_ = 0;  // literals of less weight are not assumed to be false
  std::vector<Soft> softs_;
  std::uint64_t proven_ = 0;      // by descents: no model costs less
  std::uint64_t long_cores_ = 0;  // of more than one literal
  std::uint64_t first_conflict_ = conflicts(), descent_conflicts_ = 0;
  // To make a number of many literals takes long, and so does each step with it.
  std::uint64_t work_until_descent_ = work_before_descent + cost_.size() / literals_per_work;
  std::optional<ClauseGroup> number_group_;  // of the bits
  Lits bits_;
  std::uint64_t tries_ = 0, drops_ = 0;              // of minimise()
  std::size_t part_begin_ = 0, part_size_ = whole;   // of those that are assumed to be false
  std::unordered_map<Lit, std::uint32_t> index_of_;  // in softs_
  std::vector<Counter> counters_;
  std::vector<Core> cores_;  // counted in the lower bound, not relaxed yet
};

}  // namespace

std::uint64_t model_cost(const CnfFormula& formula, std::span<const WeightedLit> cost) {
  std::uint64_t total = 0;
  for (const auto& [lit, weight] : cost)
    if (formula.is_true(lit)) total = sum_of(total, weight);
  return total;
}

std::optional<std::uint64_t> find_least_cost(CnfFormula& formula, std::span<const WeightedLit> cost,
                                             std::uint64_t bound, ClauseGroup group,
                                             const std::function<void()>& record,
                                             const base::Deadline& deadline,
                                             const Refinement& refine) {
  return CoreGuidedSearch(formula, cost, bound, group, record, deadline, refine).run();
}

}  // namespace vorel::sat
