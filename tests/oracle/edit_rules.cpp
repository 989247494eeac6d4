#include "oracle/edit_rules.h"

#include <algorithm>

#include "oracle/history.h"

namespace vorel::oracle {
namespace {

using Event = net::StgPrefix::Event;

EventSet<net::Stg> correspondents(const Event& cut_off) {
  auto result = causes_of<net::Stg>({});
  for (const auto* event : cut_off.cut_off.correspondents()) {
    result.merge(local_configuration<net::Stg>(*event));
  }
  return result;
}

// What is asked of the insertion, word by word.
class Validity {
 public:
  explicit Validity(const net::StgPrefix& prefix) : prefix_{prefix} {}

  bool operator()(const net::SeqBefore& insertion) const {
    return std::ranges::all_of(insertion.places,
                               [](const auto* place) { return place->postset.size() == 1; });
  }
  bool operator()(const net::SeqAfter& insertion) const {
    return agrees_at_cut_offs([&](const auto& past) { return is_open(insertion, past); });
  }
  bool operator()(const net::Concurrent& insertion) const {
    for (const auto& event : prefix_.events) {
      auto past = local_configuration<net::Stg>(*event);
      past.erase(event.get());
      const int count = balance(insertion, past);
      if (event->transition == insertion.source && count != 0) return false;
      if (event->transition == insertion.target && count != 1) return false;
    }
    return agrees_at_cut_offs([&](const auto& past) { return balance(insertion, past); });
  }
  bool operator()(const net::General& insertion) const {
    for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
      for (const net::StgTransition* target : insertion.targets) {
        const net::Concurrent pair{insertion.sources[i], insertion.starred[i], target};
        if (!(*this)(pair)) return false;
      }
    }
    return true;
  }

 private:
  using Past = EventSet<net::Stg>;

  template <class Number>
  bool agrees_at_cut_offs(Number number) const {
    return std::ranges::all_of(prefix_.events, [&](const auto& event) {
      return !event->is_cut_off() ||
             number(local_configuration<net::Stg>(*event)) == number(correspondents(*event));
    });
  }
  // Some event of the source has kept all of the places: there is one such event at most.
  static bool is_open(const net::SeqAfter& insertion, const Past& past) {
    return std::ranges::any_of(past, [&](const Event* event) {
      if (event->transition != insertion.source) return false;
      return std::ranges::none_of(event->postset, [&](const auto* condition) {
        return std::ranges::count(insertion.places, condition->place) != 0 &&
               std::ranges::any_of(condition->postset,
                                   [&](const Event* consumer) { return past.contains(consumer); });
      });
    });
  }
  static int balance(const net::Concurrent& insertion, const Past& past) {
    int count = insertion.marked ? 1 : 0;
    for (const Event* event : past) {
      count += event->transition == insertion.source ? 1 : 0;
      count -= event->transition == insertion.target ? 1 : 0;
    }
    return count;
  }

  const net::StgPrefix& prefix_;
};

}  // namespace

bool keeps_prefix_complete(const net::StgPrefix& prefix, const net::Insertion& insertion) {
  return std::visit(Validity(prefix), insertion);
}

}  // namespace vorel::oracle
