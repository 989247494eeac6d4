#include "oracle/reference_merger.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <set>
#include <tuple>

#include "net/clone_net.h"

namespace vorel::oracle {
namespace {

// Counts conditions of a place on paths; each answer is kept, as joins make many paths.
template <class N>
class PathCounter {
 public:
  // The most conditions of the place that a path to this condition can have.
  std::int32_t most(const net::ConditionOf<N>& condition, const typename N::Place& place) {
    const auto known = known_.find({&condition, &place});
    if (known != known_.end()) return known->second;
    std::int32_t count = 0;
    if (!condition.is_initial()) {
      for (const auto* cause : condition.pre_event->preset) {
        count = std::max(count, most(*cause, place));
      }
    }
    if (condition.place == &place) ++count;
    return known_[{&condition, &place}] = count;
  }

 private:
  std::map<std::pair<const net::ConditionOf<N>*, const typename N::Place*>, std::int32_t> known_;
};

template <class N>
class Merger {
 public:
  explicit Merger(const net::PrefixOf<N>& prefix) : prefix_{prefix} {
    static_cast<N&>(merged_) = net::clone_net<N>(prefix);
  }

  net::MergedProcessOf<N> run() {
    for (const auto& condition : prefix_.conditions) add(*condition);
    for (const auto& event : prefix_.events) add(*event);
    assert(merged_.conditions.size() <= prefix_.conditions.size());
    assert(merged_.events.size() <= prefix_.events.size());
    net::sort_links(merged_);
    return std::move(merged_);
  }

 private:
  using Numbers = std::set<std::uint32_t>;

  void add(const net::ConditionOf<N>& condition) {
    const std::uint32_t place = condition.place->index;
    const std::int32_t depth = depth_of(condition);
    const auto next = static_cast<std::uint32_t>(merged_.conditions.size());
    const auto [known, is_new] = conditions_.emplace(std::pair{place, depth}, next);
    if (is_new) {
      auto& merged = base::append_new(merged_.conditions);
      merged.place = merged_.places[place].get();
      merged.occurrence_depth = depth;
    }
    assert(!condition.is_initial() || depth == 1);
    if (condition.is_initial()) ++merged_.conditions[known->second]->initial_marking;
  }

  std::int32_t depth_of(const net::ConditionOf<N>& condition) {
    return counter_.most(condition, *condition.place);
  }

  Numbers classes_of(const base::PtrList<net::ConditionOf<N>>& conditions) {
    Numbers classes;
    for (const auto* condition : conditions) {
      classes.insert(conditions_.at({condition->place->index, depth_of(*condition)}));
    }
    return classes;
  }

  void add(const net::EventOf<N>& event) {
    const Numbers preset = classes_of(event.preset), postset = classes_of(event.postset);
    const std::uint32_t transition = event.transition->index;
    const auto next = static_cast<std::uint32_t>(merged_.events.size());
    const auto [known, is_new] = events_.emplace(std::tuple{transition, preset, postset}, next);
    if (!is_new) {
      auto& merged = *merged_.events[known->second];
      merged.cut_off = merged.cut_off && event.is_cut_off();
      return;
    }
    auto& merged = base::append_new(merged_.events);
    merged.transition = merged_.transitions[transition].get();
    merged.cut_off = event.is_cut_off();
    for (const std::uint32_t number : preset) net::add_link(*merged_.conditions[number], merged);
    for (const std::uint32_t number : postset) net::add_link(merged, *merged_.conditions[number]);
  }

  const net::PrefixOf<N>& prefix_;
  net::MergedProcessOf<N> merged_;
  PathCounter<N> counter_;
  std::map<std::pair<std::uint32_t, std::int32_t>, std::uint32_t> conditions_;
  std::map<std::tuple<std::uint32_t, Numbers, Numbers>, std::uint32_t> events_;
};

}  // namespace

template <class N>
net::MergedProcessOf<N> merge(const net::PrefixOf<N>& prefix) {
  return Merger<N>(prefix).run();
}

template net::NetMergedProcess merge(const net::NetPrefix&);
template net::StgMergedProcess merge(const net::StgPrefix&);

}  // namespace vorel::oracle
