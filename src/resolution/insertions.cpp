#include "resolution/insertions.h"

#include <algorithm>
#include <iostream>
#include <set>
#include <utility>

#include "base/messages.h"
#include "base/run_state.h"
#include "base/sort_unique.h"
#include "resolution/input_like.h"
#include "resolution/persistency.h"
#include "resolution/transformation.h"
#include "resolution/transition_counts.h"

namespace vorel::resolution {
namespace {

using Event = net::StgPrefix::Event;
using Place = net::StgPlace;
using Transition = net::StgTransition;

constexpr int verbosity_of_number = 5, verbosity_of_list = 8;

using Subset = std::uint64_t;  // of a list of places, the first place is the lowest bit
constexpr std::size_t longest_list = 63;

// Calls visit(subset) for each that is not empty, as a binary counter goes.
template <class Visit>
void for_each_subset(std::size_t size, const Visit& visit) {
  assert(size <= longest_list && "there would be no end to the subsets");
  for (Subset subset = 1; subset < Subset{1} << size; ++subset) visit(subset);
}

template <class List>
std::vector<const Place*> places_of(const List& list, Subset subset) {
  std::vector<const Place*> places;
  for (std::uint32_t i = 0; i < list.size(); ++i)
    if ((subset >> i & 1) != 0) places.push_back(list[i]);
  return places;
}

// What is left after a configuration of the last event of a transition.
struct Leftover {
  const Event* last = nullptr;  // null if the transition has not occurred
  Subset consumed = 0;          // the places of the postset that have lost their condition

  // All places of the subset still have what the last event produced.
  bool is_open(Subset subset) const { return last != nullptr && (consumed & subset) == 0; }

  // In a safe net the events of one transition in a configuration are a chain.
  void join(const Leftover& other) {
    if (other.last == nullptr || (last != nullptr && last->index > other.last->index)) return;
    if (last != other.last) consumed = 0;
    last = other.last;
    consumed |= other.consumed;
  }
};

// Finds what is left of a transition at cut-offs and at their correspondents.
class Leftovers {
 public:
  explicit Leftovers(const net::StgPrefix& prefix) : prefix_{prefix}, at_(prefix.events.size()) {}

  // The different pairs of a cut-off and its correspondents.
  struct Pair {
    bool occurred, occurred_there;
    Subset consumed, consumed_there;
    auto operator<=>(const Pair&) const = default;

    bool is_balanced(Subset subset) const {
      return (occurred && (consumed & subset) == 0) ==
             (occurred_there && (consumed_there & subset) == 0);
    }
  };
  std::set<Pair> pairs_of(const Transition& transition) {
    for (const auto& event : prefix_.events) at_[*event] = after(*event, transition);
    std::set<Pair> pairs;
    for (const auto& event : prefix_.events) {
      if (!event->is_cut_off()) continue;
      const Leftover here = at_[*event];
      Leftover there;
      for (const Event* other : event->cut_off.correspondents()) there.join(at_[*other]);
      pairs.insert({here.last != nullptr, there.last != nullptr, here.consumed, there.consumed});
    }
    return pairs;
  }

 private:
  Leftover after(const Event& event, const Transition& transition) const {
    if (event.transition == &transition) return {&event, 0};
    Leftover result;
    for (const auto* condition : event.preset)
      if (!condition->is_initial()) result.join(at_[*condition->pre_event]);
    for (const auto* condition : event.preset) {
      if (condition->is_initial() || condition->pre_event != result.last) continue;
      const auto position = std::ranges::find(transition.postset, condition->place);
      result.consumed |= Subset{1} << (position - transition.postset.begin());
    }
    return result;
  }

  const net::StgPrefix& prefix_;
  base::IndexedBy<Event, Leftover> at_;
};

class Enumeration {
 public:
  explicit Enumeration(const net::StgPrefix& prefix)
      : prefix_{prefix}, instances_{prefix}, is_input_like_(prefix.transitions.size()) {
    for (const auto& transition : prefix.transitions)
      is_input_like_[*transition] = is_input_like(*transition);
  }

  void add_sequential() {
    Leftovers leftovers(prefix_);
    for (const auto& transition : prefix_.transitions) {
      if (is_dead(instances_, *transition)) continue;
      add_after(*transition, leftovers.pairs_of(*transition));
      if (!is_input_like_[*transition]) add_before(*transition);
    }
  }

  void add_concurrent(bool only_near) {
    const TransitionCounts counts(instances_);
    for (const auto& target : prefix_.transitions) {
      if (is_dead(instances_, *target) || is_input_like_[*target]) continue;
      for (const Transition* source : sources_for(*target, only_near))
        add_if_alternating(*source, *target, counts);
    }
  }

  std::vector<net::Insertion> take() {
    std::ranges::sort(found_, insertion_less);
    const auto repeated = std::ranges::unique(found_, insertion_equal);
    found_.erase(repeated.begin(), repeated.end());
    return std::move(found_);
  }

 private:
  void add_after(const Transition& source, const std::set<Leftovers::Pair>& pairs) {
    for_each_subset(source.postset.size(), [&](Subset subset) {
      std::vector<const Place*> places = places_of(source.postset, subset);
      if (says_the_same_elsewhere(source, places) || an_input_follows(places)) return;
      if (std::ranges::all_of(pairs, [&](const auto& pair) { return pair.is_balanced(subset); }))
        found_.push_back(net::SeqAfter{&source, std::move(places)});
    });
  }

  static bool says_the_same_elsewhere(const Transition& source,
                                      const std::vector<const Place*>& places) {
    if (source.signal->is_dummy() && places.size() == source.postset.size()) return true;
    const auto leads_on = [&places](const Place* place) {
      return place->initial_marking == 0 && place->preset.size() == 1 &&
             place->postset.size() == 1 &&
             place->postset.front() == places.front()->postset.front();
    };
    return std::ranges::all_of(places, leads_on);
  }

  bool an_input_follows(const std::vector<const Place*>& places) const {
    return std::ranges::any_of(places, [this](const Place* place) {
      return std::ranges::any_of(place->postset,
                                 [this](const Transition* t) { return is_input_like_[*t]; });
    });
  }

  void add_before(const Transition& target) {
    std::vector<const Place*> own;
    for (const Place* place : target.preset)
      if (place->postset.size() == 1) own.push_back(place);
    for_each_subset(own.size(), [&](Subset subset) {
      found_.push_back(net::SeqBefore{&target, places_of(own, subset)});
    });
  }

  static std::vector<const Transition*> feeding(const Transition& transition) {
    std::vector<const Transition*> result;
    for (const Place* place : transition.preset)
      result.insert(result.end(), place->preset.begin(), place->preset.end());
    base::sort_unique(result, &Transition::index);
    return result;
  }

  std::vector<const Transition*> sources_for(const Transition& target, bool only_near) const {
    const std::vector<const Transition*> before = feeding(target);
    std::vector<const Transition*> sources;
    if (only_near) {
      for (const Transition* transition : before) {
        const auto more = feeding(*transition);
        sources.insert(sources.end(), more.begin(), more.end());
      }
      base::sort_unique(sources, &Transition::index);
    } else {
      for (const auto& transition : prefix_.transitions) sources.push_back(transition.get());
    }
    base::MarkSet<Transition> is_left_out(prefix_.transitions.size());
    for (const Transition* transition : before) is_left_out.insert(*transition);
    for (const Place* place : target.postset)
      for (const Transition* transition : place->postset) is_left_out.insert(*transition);
    // What another transition leads to through dummies includes what its own members lead to.
    for (const Transition* transition : closure_through_dummies(target))
      is_left_out.insert(*transition);
    std::erase_if(sources, [&](const Transition* transition) {
      return is_left_out.contains(*transition) || is_dead(instances_, *transition);
    });
    return sources;
  }

  // The counts leave no choice whether there is a token at the start.
  void add_if_alternating(const Transition& source, const Transition& target,
                          const TransitionCounts& counts) {
    const auto u = base::id_of(source), t = base::id_of(target);
    const std::int32_t tokens = counts.lead(t, u);  // 0 = tokens + sources - targets
    if (tokens != 0 && tokens != 1) return;
    if (counts.lead(u, t) != 1 - tokens) return;  // 1 = tokens + sources - targets
    if (!counts.agree_at_cut_offs(u, t)) return;
    found_.push_back(net::Concurrent{&source, tokens == 1, &target});
  }

  const net::StgPrefix& prefix_;
  const net::Instances<net::StgPrefix> instances_;
  base::IndexedBy<Transition, bool> is_input_like_;
  std::vector<net::Insertion> found_;
};

void print_list(std::ostream& stream, const std::vector<net::Insertion>& found) {
  stream << "\nInsertions:";
  for (std::size_t i = 0; i < found.size(); ++i) stream << '\n' << i << ": " << to_text(found[i]);
  stream << std::flush;
}

}  // namespace

std::vector<net::Insertion> insertions(const net::StgPrefix& prefix, int concurrent_insertions) {
  Enumeration enumeration(prefix);
  enumeration.add_sequential();
  if (concurrent_insertions > 0) enumeration.add_concurrent(concurrent_insertions == 1);
  std::vector<net::Insertion> found = enumeration.take();
  remove_hazards(prefix, found);
  if (base::verbosity() >= verbosity_of_list) print_list(std::cerr, found);
  if (base::verbosity() >= verbosity_of_number)
    base::print_formatted(std::cerr, "\nNumber of valid transition insertions: %u",
                          static_cast<std::uint32_t>(found.size()));
  return found;
}

}  // namespace vorel::resolution
