#include "configuration/validation.h"

#include <algorithm>
#include <cassert>
#include <string>

#include "base/indexed_by.h"
#include "base/messages.h"
#include "configuration/final_state.h"

namespace vorel::configuration {
namespace {

// The token game on the conditions of a process.
template <net::Process P>
class TokenGame {
 public:
  using Condition = typename P::Condition;

  explicit TokenGame(const P& process)
      : marked_(process.conditions.size()), was_marked_(process.conditions.size()) {
    for (const auto& condition : process.conditions) {
      if (condition->is_initial()) mark(*condition);
    }
  }

  // The condition at which the firing fails, or null.
  const Condition* fire(const typename P::Event& event) {
    for (const Condition* condition : event.preset) {
      if (!marked_[*condition]) return condition;
      marked_[*condition] = false;
    }
    for (const Condition* condition : event.postset) {
      if (condition->index == base::no_index)
        continue;  // left out after a cut-off, so never consumed
      if (was_marked_[*condition]) return condition;
      mark(*condition);
    }
    return nullptr;
  }

 private:
  void mark(const Condition& condition) {
    assert(!marked_[condition] && "told before");
    marked_[condition] = true;
    was_marked_[condition] = true;
  }

  base::IndexedBy<Condition, bool> marked_, was_marked_;
};

}  // namespace

template <net::Process P>
bool check_safe_run(const P& process, std::span<const typename P::Event* const> sequence) {
  TokenGame<P> game(process);
  for (const auto* event : sequence) {
    if (const auto* condition = game.fire(*event)) {
      base::print_error("the safe run check failed on c" + std::to_string(condition->index));
      return false;
    }
  }
  return true;
}

template <net::Process P>
bool check_deadlock(const P& process, std::span<const typename P::Event* const> sequence) {
  const StateStructure<P> structure(process);
  const FinalState<P> state(structure, sequence, Enabledness::direct);
  const auto is_enabled = [&state](const auto& node) { return state.is_enabled(*node); };
  bool is_dead = std::ranges::none_of(process.events, is_enabled);
  if constexpr (P::is_merged) {
    is_dead = is_dead && std::ranges::none_of(process.transitions, is_enabled);
  }
  if (!is_dead) base::print_error("deadlock check failed");
  return is_dead;
}

#define INSTANTIATE(P)                                                         \
  template bool check_safe_run<P>(const P&, std::span<const P::Event* const>); \
  template bool check_deadlock<P>(const P&, std::span<const P::Event* const>);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
