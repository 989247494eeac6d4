#include "reach/deadlock_check.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "configuration/decoding.h"
#include "configuration/dummy_cutoffs.h"
#include "configuration/validation.h"
#include "reach/deadlock_walk.h"

namespace vorel::reach {
namespace {

configuration::SearchOptions adapted(configuration::SearchOptions options) {
  options.encoding = options.encoding.without_dummy_rules();
  return options;
}

}  // namespace

template <net::Process P>
DeadlockCheck<P>::DeadlockCheck(const P& process, const configuration::SearchOptions& options)
    : configuration::SearchEngine<P>(process, adapted(options),
                                     {"the system has a deadlock", "the system is deadlock-free"}) {
  const auto is_cut_off = [](const auto& event) { return event->is_cut_off(); };
  if (std::ranges::none_of(process.events, is_cut_off)) {
    base::print_warning(
        "the prefix has no cut-off events; if they were discarded by the unfolder then false "
        "deadlocks could have been introduced");
  }
  if constexpr (P::NetType::has_signals) {
    if (configuration::has_dummy_cutoffs(process)) {
      base::print_warning("there are dummy cut-offs; the result will not be reliable");
    }
  }
}

// Where all deadlocks are asked for, or the nearest, or the formula itself, one that happens to be
// met is of no use.
template <net::Process P>
auto DeadlockCheck<P>::run_into_deadlock() const -> Run requires P::is_merged {
  constexpr std::uint64_t steps_per_event = 100;
  const auto& options = this->options();
  if (options.all_solutions != 0 || options.min_cost || options.encoding.formula.store_cnf_formula)
    return {};
  return DeadlockWalk<P>(this->process(), this->structure().instances())
      .find(steps_per_event * this->process().events.size());
}

template <net::Process P>
void DeadlockCheck<P>::shorten_search(DeadlockEncoding<P>& encoding) requires P::is_merged {
  constexpr std::uint64_t few_conflicts = 1000;  // take no longer than the local bounds
  if (!encoding.has_many_pasts()) return;
  const Run run = run_into_deadlock();
  if (!run.empty()) {
    this->instance().set_guess(0, run);  // the formula has the last word
    return;
  }
  encoding.encode_marking_bounds();
  if (!this->options().encoding.formula.store_cnf_formula &&
      !this->formula().solve_assuming({}, few_conflicts))
    encoding.encode_local_bounds();
}

template <net::Process P>
void DeadlockCheck<P>::encode(sat::ClauseGroup) {
  auto& instance = this->instance();
  assert(instance.size() == 0 && "an engine encodes once");
  instance.add_configuration();
  DeadlockEncoding<P> encoding(instance.state(0), this->structure());
  if (this->options().method == 1) {
    encoding.encode_deadlock_with_cutoffs();
  } else {
    encoding.encode_deadlock_ignoring_cutoffs();
  }
  if constexpr (P::is_merged) shorten_search(encoding);
}

template <net::Process P>
bool DeadlockCheck<P>::validate(const results::Solution& solution) const {
  assert(solution.traces.size() == 1);
  return configuration::SearchEngine<P>::validate(solution) &&
         configuration::check_deadlock<P>(
             this->process(), configuration::events_of(this->process(), solution.traces.front()));
}

#define INSTANTIATE(P) template class DeadlockCheck<P>;
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::reach
