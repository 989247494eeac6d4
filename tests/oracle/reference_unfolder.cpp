#include "oracle/reference_unfolder.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <tuple>

#include "net/clone_net.h"
#include "oracle/history.h"

namespace vorel::oracle {
namespace {

// Transitions by index with repetitions: shorter first, then lexicographic.
struct Word {
  std::size_t size = 0;
  std::vector<std::uint32_t> transitions;

  void add(std::uint32_t transition) {
    ++size;
    transitions.insert(std::ranges::lower_bound(transitions, transition), transition);
  }
  auto operator<=>(const Word&) const = default;
};

// What the adequate order compares, in this order. On a safe net it is total [ERV-2002].
struct Rank {
  Word parikh;
  std::vector<Word> foata;  // one word for each depth

  void add(std::uint32_t transition, std::size_t depth) {
    parikh.add(transition);
    if (foata.size() < depth) foata.resize(depth);
    foata[depth - 1].add(transition);
  }
  auto operator<=>(const Rank&) const = default;
};

template <class N>
class Unfolder {
 public:
  Unfolder(const N& net, std::size_t max_events)
      : max_events_{max_events}, open_conditions_(net.places.size()) {
    static_cast<N&>(prefix_) = net::clone_net(net);
  }

  std::optional<net::PrefixOf<N>> run() {
    add_initial_conditions();
    while (!candidates_.empty()) {
      if (prefix_.events.size() == max_events_) return std::nullopt;
      insert_smallest();
    }
    net::sort_links(prefix_);
    return std::move(prefix_);
  }

 private:
  using Condition = net::ConditionOf<N>;
  using Event = net::EventOf<N>;
  using Transition = typename N::Transition;
  using Conditions = std::vector<Condition*>;

  struct Candidate {
    Rank rank;
    Transition* transition;
    std::vector<std::uint32_t> preset;  // condition numbers, in the order of the transition's

    auto key() const { return std::tie(rank, transition->index, preset); }
    bool operator<(const Candidate& other) const { return key() < other.key(); }
  };

  void add_initial_conditions() {
    Conditions initial;
    for (const auto& place : prefix_.places) {
      assert(place->initial_marking <= 1);
      if (place->initial_marking == 1) initial.push_back(&add_condition(*place));
    }
    first_with_.emplace(*final_state<N>(prefix_, causes_of<N>({})), nullptr);
    find_extensions(initial);
  }

  Condition& add_condition(typename N::Place& place) {
    Condition& condition = base::append_new(prefix_.conditions);
    condition.place = &place;
    return condition;
  }

  void insert_smallest() {
    const Candidate candidate = std::move(candidates_.extract(candidates_.begin()).value());
    Event& event = base::append_new(prefix_.events);
    event.transition = candidate.transition;
    std::size_t depth = 0;
    for (const std::uint32_t number : candidate.preset) {
      Condition& condition = *prefix_.conditions[number];
      net::add_link(condition, event);
      depth = std::max(depth, depth_after(condition));
    }
    assert(event.preset.size() == event.transition->preset.size());
    depth_.push_back(depth + 1);
    Conditions produced;
    for (auto* place : event.transition->postset) {
      produced.push_back(&add_condition(*place));
      net::add_link(event, *produced.back());
    }
    if (!test_cut_off(event)) find_extensions(produced);
  }

  std::size_t depth_after(const Condition& condition) const {
    return condition.is_initial() ? 0 : depth_[condition.pre_event->index];
  }

  bool test_cut_off(Event& event) {
    const auto state = final_state<N>(prefix_, local_configuration(event));
    assert(state && "the net must be safe");
    const auto [known, is_new] = first_with_.emplace(*state, &event);
    if (is_new) return false;
    Event* correspondent = known->second;
    if (correspondent == nullptr) {
      event.cut_off.set_correspondents({});
    } else {
      event.cut_off.set_correspondents({&correspondent, 1});
    }
    return true;
  }

  // Every event to come consumes a condition that was new once: trying the new ones is enough.
  void find_extensions(const Conditions& added) {
    for (Condition* condition : added) {
      open_conditions_[condition->place->index].push_back(condition);
    }
    for (Condition* condition : added) {
      for (Transition* transition : condition->place->postset) {
        Conditions chosen;
        choose(*transition, *condition, chosen);
      }
    }
  }

  // Completes `chosen`, the conditions of the first places of the preset, in all ways in which
  // the place of `fixed` gets `fixed`.
  void choose(Transition& transition, Condition& fixed, Conditions& chosen) {
    const auto position = static_cast<std::uint32_t>(chosen.size());
    if (position == transition.preset.size()) return add_candidate(transition, chosen);
    const auto* place = transition.preset[position];
    const Conditions choices =
        place == fixed.place ? Conditions{&fixed} : open_conditions_[place->index];
    for (Condition* choice : choices) {
      chosen.push_back(choice);
      if (is_co_set<N>(chosen)) choose(transition, fixed, chosen);
      chosen.pop_back();
    }
  }

  void add_candidate(Transition& transition, const Conditions& preset) {
    assert(!preset.empty() && is_co_set<N>(preset));
    Candidate candidate{{}, &transition, {}};
    std::size_t depth = 0;
    for (const Event* event : causes_of<N>(preset)) {
      candidate.rank.add(event->transition->index, depth_[event->index]);
    }
    for (const Condition* condition : preset) {
      candidate.preset.push_back(condition->index);
      depth = std::max(depth, depth_after(*condition));
    }
    candidate.rank.add(transition.index, depth + 1);
    candidates_.insert(std::move(candidate));  // found once for each of its new conditions
  }

  std::size_t max_events_;
  net::PrefixOf<N> prefix_;
  std::set<Candidate> candidates_;
  std::vector<Conditions> open_conditions_;  // by place; those that no cut-off produces
  std::vector<std::size_t> depth_;           // by event: length of the longest chain up to it
  std::map<FinalState, Event*> first_with_;  // null: the initial marking
};

}  // namespace

template <class N>
std::optional<net::PrefixOf<N>> unfold(const N& net, std::size_t max_events) {
  return Unfolder<N>(net, max_events).run();
}

template std::optional<net::NetPrefix> unfold(const net::Net&, std::size_t);
template std::optional<net::StgPrefix> unfold(const net::Stg&, std::size_t);

}  // namespace vorel::oracle
