#include "oracle/book_insertion.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <utility>
#include <variant>

#include "net/clone_net.h"
#include "oracle/coding.h"
#include "oracle/resolution_checks.h"
#include "oracle/state_graph.h"

namespace vorel::oracle {
namespace {

using net::StgPlace;
using net::StgTransition;

// The element of the list with the name of another.
template <class T>
T& counterpart(const base::OwnedList<T>& list, const T& element) {
  return **std::ranges::find(list, element.name, [](const auto& e) { return e->name; });
}

template <class T>
void erase_one(base::PtrList<T>& list, const T* element) {
  const auto at = std::ranges::find(list, element);
  assert(at != list.end());
  list.erase(at, at + 1);
}

class BookEdit {
 public:
  BookEdit(net::Stg& stg, net::Signal& signal, net::Sign sign) : stg_{stg} {
    x_ = &base::append_new(stg.transitions);
    const std::string label =
        signal.is_dummy() ? "" : std::string{"+-~"[static_cast<std::size_t>(sign)]};
    x_->name = fresh(signal.name + label);
    x_->signal = &signal;
    x_->sign = sign;
  }

  StgTransition& run(const net::Insertion& insertion) {
    if (const auto* before = std::get_if<net::SeqBefore>(&insertion)) {
      run(*before);
    } else if (const auto* after = std::get_if<net::SeqAfter>(&insertion)) {
      run(*after);
    } else if (const auto* both = std::get_if<net::Concurrent>(&insertion)) {
      run(net::General{{both->source}, {both->marked}, {both->target}});
    } else {
      run(std::get<net::General>(insertion));
    }
    return *x_;
  }

 private:
  void run(const net::SeqBefore& insertion) {
    StgTransition& target = counterpart(stg_.transitions, *insertion.target);
    for (const StgPlace* named : insertion.places) {
      StgPlace& place = counterpart(stg_.places, *named);
      erase_one(place.postset, &target);
      erase_one(target.preset, &place);
      net::add_arc(place, *x_);
    }
    join(*x_, target, 0);
  }

  void run(const net::SeqAfter& insertion) {
    StgTransition& source = counterpart(stg_.transitions, *insertion.source);
    for (const StgPlace* named : insertion.places) {
      StgPlace& place = counterpart(stg_.places, *named);
      erase_one(place.preset, &source);
      erase_one(source.postset, &place);
      net::add_arc(*x_, place);
    }
    join(source, *x_, 0);
  }

  void run(const net::General& insertion) {
    for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
      join(counterpart(stg_.transitions, *insertion.sources[i]), *x_, insertion.starred[i] ? 1 : 0);
    }
    for (const StgTransition* target : insertion.targets) {
      join(*x_, counterpart(stg_.transitions, *target), 0);
    }
  }

  void join(StgTransition& from, StgTransition& to, std::uint32_t tokens) {
    const std::string name = fresh("<" + from.name + "," + to.name + ">");
    StgPlace& place = base::append_new(stg_.places);
    place.name = name;
    place.initial_marking = tokens;
    net::add_arc(from, place);
    net::add_arc(place, to);
  }

  std::string fresh(const std::string& name) const {
    std::string unique = name;
    const auto is_taken = [&unique](const auto& node) { return node->name == unique; };
    for (int i = 1; std::ranges::any_of(stg_.places, is_taken) ||
                    std::ranges::any_of(stg_.transitions, is_taken);
         ++i) {
      unique = name + "/" + std::to_string(i);
    }
    return unique;
  }

  net::Stg& stg_;
  StgTransition* x_;
};

// With edges of unknown sign; the number of each edge of the signal by transition.
using EdgeNumbers = std::map<const StgTransition*, std::size_t>;

net::Stg with_toggles(const net::Stg& stg, std::span<const net::Insertion> insertions,
                      const std::string& name, EdgeNumbers& numbers) {
  net::Stg result = net::clone_net(stg);
  net::Signal& signal = net::add_signal(result, name, net::SignalKind::internal);
  net::sort_signals(result);
  signal.initial_value = 0;
  for (const net::Insertion& insertion : insertions) {
    const auto& edge = insert_by_the_book(result, insertion, signal, net::Sign::toggle);
    numbers.emplace(&edge, numbers.size());
  }
  net::sort_net(result);
  return result;
}

// Gives the signs that the states tell. A fault in words.
std::string settle_signs(BookStep& step, const EdgeNumbers& numbers) {
  const auto graph = explore(step.stg);
  if (graph.outcome != Exploration::complete) return "the net is not safe";
  step.signs.assign(numbers.size(), net::Sign::toggle);
  std::map<Marking, bool> values;
  for (const auto& state : graph.states) {
    const bool value = state.parity[numbers.begin()->first->signal->index];
    step.has_one_code &= values.emplace(state.marking, value).first->second == value;
    for (const auto& arc : state.arcs) {
      const auto edge = numbers.find(arc.transition);
      if (edge == numbers.end()) continue;
      const net::Sign sign = value ? net::Sign::minus : net::Sign::plus;
      if (step.signs[edge->second] == net::Sign::toggle) step.signs[edge->second] = sign;
      if (step.signs[edge->second] != sign) return arc.transition->name + " rises and falls";
    }
  }
  for (const auto& transition : step.stg.transitions) {
    const auto edge = numbers.find(transition.get());
    if (edge == numbers.end()) continue;
    transition->sign = step.signs[edge->second];
    if (transition->sign == net::Sign::toggle) return transition->name + " cannot happen";
  }
  return "";
}

// Two insertions that take the same arc away.
bool edits_overlap(const net::Insertion& a, const net::Insertion& b) {
  const auto share = [](const auto& one, const auto& other) {
    return std::ranges::any_of(one, [&other](const StgPlace* place) {
      return std::ranges::count(other, place->name, [](const auto* p) { return p->name; }) != 0;
    });
  };
  const auto *before = std::get_if<net::SeqBefore>(&a), *too = std::get_if<net::SeqBefore>(&b);
  if (before != nullptr && too != nullptr) {
    return before->target->name == too->target->name && share(before->places, too->places);
  }
  const auto *after = std::get_if<net::SeqAfter>(&a), *also = std::get_if<net::SeqAfter>(&b);
  return after != nullptr && also != nullptr && after->source->name == also->source->name &&
         share(after->places, also->places);
}

// Whether there is a state in which both new transitions are enabled.
bool can_happen_at_once(const net::Stg& stg, const net::Insertion& a, const net::Insertion& b) {
  EdgeNumbers numbers;
  const net::Insertion both[] = {a, b};
  const auto graph = explore(with_toggles(stg, both, "x", numbers));
  return std::ranges::any_of(graph.states, [&](const auto& state) {
    return std::ranges::count_if(
               state.arcs, [&](const auto& arc) { return numbers.contains(arc.transition); }) == 2;
  });
}

}  // namespace

StgTransition& insert_by_the_book(net::Stg& stg, const net::Insertion& insertion,
                                  net::Signal& signal, net::Sign sign) {
  return BookEdit(stg, signal, sign).run(insertion);
}

BookStep insert_signal_by_the_book(const net::Stg& stg, std::span<const net::Insertion> insertions,
                                   const std::string& name) {
  for (std::size_t i = 0; i < insertions.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (edits_overlap(insertions[j], insertions[i])) return {.fault = "the edits overlap"};
    }
  }
  EdgeNumbers numbers;
  BookStep step{.stg = with_toggles(stg, insertions, name, numbers)};
  step.fault = settle_signs(step, numbers);
  if (!step.fault.empty()) return step;
  step.fault = resolution_fault(stg, step.stg, {.new_signals = {name}, .resolved = false});
  return step;
}

void for_each_set(const net::Stg& stg, std::span<const net::Insertion> candidates,
                  std::size_t max_edges,
                  const std::function<void(std::span<const std::size_t>)>& visit) {
  std::vector<std::vector<bool>> exclude(candidates.size());  // by the larger, then the smaller
  for (std::size_t b = 0; b < candidates.size(); ++b)
    for (std::size_t a = 0; a < b; ++a)
      exclude[b].push_back(edits_overlap(candidates[a], candidates[b]) ||
                           can_happen_at_once(stg, candidates[a], candidates[b]));
  std::vector<std::size_t> set;
  const std::function<void(std::size_t)> extend = [&](std::size_t first) {
    for (std::size_t next = first; next < candidates.size(); ++next) {
      if (std::ranges::any_of(set, [&](std::size_t other) { return exclude[next][other]; }))
        continue;
      set.push_back(next);
      visit(set);
      if (set.size() < max_edges) extend(next + 1);
      set.pop_back();
    }
  };
  extend(0);
}

}  // namespace vorel::oracle
