#include "configuration/merged_validation.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <vector>

#include "base/indexed_by.h"
#include "base/messages.h"

namespace vorel::configuration {
namespace {

// Goes depth first along the events of a set.
template <net::Process P>
class CycleSearch {
 public:
  using Event = typename P::Event;

  CycleSearch(const P& process, std::span<const Event* const> events)
      : inside_(process.events.size()), state_(process.events.size(), State::fresh) {
    for (const Event* event : events) inside_.insert(*event);
  }

  bool finds_cycle_from(const Event& start) {
    if (state_[start] == State::done) return false;
    open(start);
    while (!path_.empty()) {
      Step& step = path_.back();
      if (step.next == step.successors.size()) {
        state_[*step.event] = State::done;
        path_.pop_back();
        continue;
      }
      const Event& next = *step.successors[step.next++];
      if (state_[next] == State::on_path) return true;
      if (state_[next] == State::fresh) open(next);
    }
    return false;
  }

 private:
  enum class State : std::uint8_t { fresh, on_path, done };
  struct Step {
    const Event* event;
    std::vector<const Event*> successors;
    std::size_t next = 0;
  };

  void open(const Event& event) {
    assert(state_[event] == State::fresh && inside_.contains(event));
    state_[event] = State::on_path;
    Step step{&event, {}};
    for (const auto* condition : event.postset) {
      std::ranges::copy_if(condition->postset, std::back_inserter(step.successors),
                           [this](const Event* after) { return inside_.contains(*after); });
    }
    path_.push_back(std::move(step));
  }

  base::MarkSet<Event> inside_;
  base::IndexedBy<Event, State> state_;
  std::vector<Step> path_;
};

// The depth of the latest occurrence of each place; 0 before the first.
template <net::Process P>
class DepthGame {
 public:
  explicit DepthGame(const P& process) : latest_(process.places.size(), 0) {
    for (const auto& condition : process.conditions) {
      if (condition->is_initial()) latest_[*condition->place] = condition->occurrence_depth;
    }
  }

  bool fire(const typename P::Event& event) {
    for (const auto* condition : event.preset) {
      if (condition->occurrence_depth != latest_[*condition->place]) return false;
    }
    return std::ranges::all_of(event.postset, [this](const auto* condition) {
      return condition->occurrence_depth == ++latest_[*condition->place];
    });
  }

 private:
  base::IndexedBy<typename P::NetType::Place, std::int32_t> latest_;
};

}  // namespace

template <net::Process P>
bool check_acyclic(const P& process, std::span<const typename P::Event* const> sequence) {
  CycleSearch<P> search(process, sequence);
  const bool has_cycle = std::ranges::any_of(
      sequence, [&search](const auto* event) { return search.finds_cycle_from(*event); });
  if (has_cycle) base::print_error("acyclicity check failed");
  return !has_cycle;
}

template <net::Process P>
bool check_no_gap(const P& process, std::span<const typename P::Event* const> sequence) {
  DepthGame<P> game(process);
  const bool has_no_gap =
      std::ranges::all_of(sequence, [&game](const auto* event) { return game.fire(*event); });
  if (!has_no_gap) base::print_error("no-gap check failed");
  return has_no_gap;
}

#define INSTANTIATE(P)                                                        \
  template bool check_acyclic<P>(const P&, std::span<const P::Event* const>); \
  template bool check_no_gap<P>(const P&, std::span<const P::Event* const>);
VOREL_FOR_EACH_MERGED_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::configuration
