#include "net/general_occurrences.h"

#include <algorithm>
#include <cassert>
#include <map>

#include "base/indexed_by.h"
#include "net/causality.h"
#include "net/event_relations.h"

namespace vorel::net {
namespace {

using Event = StgPrefix::Event;
using Events = std::vector<Event*>;

// Tokens of one source. In a safe net the events of one transition in a configuration are a chain,
// so that the last one is that which comes last in any causal order.
struct Source {
  std::vector<Events> by_number;            // token number, from 0 on; null from the start
  base::IndexedBy<Event, Event*> last_one;  // before each event, null if there is none
};

class Search {
 public:
  Search(const StgPrefix& prefix, const General& insertion)
      : relations_{prefix}, order_{topological_order(prefix)} {
    assert(insertion.starred.size() == insertion.sources.size() && !insertion.sources.empty());
    for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
      const StgTransition& source = *prefix.transitions[insertion.sources[i]->index];
      sources_.push_back(look_at(source, insertion.starred[i]));
    }
    base::MarkSet<StgTransition> is_target(prefix.transitions.size());
    for (const StgTransition* target : insertion.targets) is_target.insert(*target);
    std::ranges::copy_if(order_, std::back_inserter(waiting_), [&](const Event* event) {
      return is_target.contains(*event->transition);
    });
  }

  std::vector<GeneralOccurrence> run() && {
    std::size_t numbers = sources_.front().by_number.size();
    for (const Source& source : sources_) numbers = std::min(numbers, source.by_number.size());
    for (std::size_t number = 0; number < numbers; ++number) {
      std::vector<Events> tokens;
      for (const Source& source : sources_) tokens.push_back(source.by_number[number]);
      extend(tokens);
    }
    add_followers();
    return std::move(found_);
  }

 private:
  Source look_at(const StgTransition& transition, bool is_starred) const {
    Source source{{}, base::IndexedBy<Event, Event*>(order_.size())};
    if (is_starred) source.by_number.push_back({nullptr});
    base::IndexedBy<Event, std::uint32_t> position(order_.size());
    base::IndexedBy<Event, std::size_t> number(order_.size());
    for (std::uint32_t i = 0; i < order_.size(); ++i) {
      Event& event = *order_[i];
      position[event] = i;
      Event*& last = source.last_one[event];
      for (const auto* condition : event.preset) {
        if (condition->is_initial()) continue;
        Event* const producer = condition->pre_event;
        Event* const other =
            producer->transition == &transition ? producer : source.last_one[*producer];
        if (last == nullptr || (other != nullptr && position[*other] > position[*last])) {
          last = other;
        }
      }
      if (event.transition != &transition) continue;
      number[event] = last != nullptr ? number[*last] + 1 : (is_starred ? 1 : 0);
      if (event.is_cut_off()) continue;
      if (source.by_number.size() <= number[event]) source.by_number.resize(number[event] + 1);
      source.by_number[number[event]].push_back(&event);
    }
    return source;
  }

  // `tokens` are, for each source still without one, those that go with the chosen.
  void extend(std::span<const Events> tokens) {
    if (tokens.empty()) {
      numbers_.emplace(chosen_, found_.size());
      found_.push_back({chosen_, {}});
      return;
    }
    for (Event* event : tokens.front()) {
      chosen_.push_back(event);
      extend(compatible_ones(event, tokens.subspan(1)));
      chosen_.pop_back();
    }
  }

  std::vector<Events> compatible_ones(const Event* event, std::span<const Events> lists) {
    std::vector<Events> rest(lists.begin(), lists.end());
    if (event == nullptr || rest.empty()) return rest;
    relations_.choose(*event);
    for (Events& list : rest) {
      std::erase_if(list, [this](const Event* other) {
        return other != nullptr && relations_.relation_of(*other) == EventRelation::conflict;
      });
    }
    return rest;
  }

  void add_followers() {
    for (Event* event : waiting_) {
      Events tokens;
      for (const Source& source : sources_) tokens.push_back(source.last_one[*event]);
      const auto found = numbers_.find(tokens);
      assert(found != numbers_.end() && "an event of a target takes tokens of one number");
      found_[found->second].followers.push_back(event);
    }
  }

  EventRelations relations_;
  const Events order_;
  std::vector<Source> sources_;
  Events waiting_;  // events of targets
  Events chosen_;
  std::vector<GeneralOccurrence> found_;
  std::map<Events, std::size_t> numbers_;  // positions in found_; never walked through
};

}  // namespace

std::vector<GeneralOccurrence> general_occurrences(const StgPrefix& prefix,
                                                   const General& insertion) {
  return Search(prefix, insertion).run();
}

}  // namespace vorel::net
