#include "unfolder/unfolder.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <string>
#include <utility>

#include "base/messages.h"
#include "net/check.h"
#include "unfolder/prefix_builder.h"

namespace vorel::unfolder {
namespace {

template <class List, class Predicate>
std::string names_where(const List& list, Predicate holds, std::size_t& count) {
  std::string names;
  count = 0;
  for (const auto& element : list) {
    if (!holds(*element)) continue;
    if (count++ > 0) names += ", ";
    names += element->name;
  }
  return names;
}

// The events that must happen before both conditions are there, causes first: ids rise with
// causality.
std::set<EventId> past_of(const BranchingProcess& process, const CoSetFinder::UnsafePair& pair) {
  std::set<EventId> past;
  std::vector<ConditionId> walk{pair.first, pair.second};
  while (!walk.empty()) {
    const EventId producer = process.producer(walk.back());
    walk.pop_back();
    if (producer == no_event || !past.insert(producer).second) continue;
    const auto preset = process.event(producer).preset();
    walk.insert(walk.end(), preset.begin(), preset.end());
  }
  return past;
}

}  // namespace

template <class N>
Unfolder<N>::Unfolder(N net, const UnfoldOptions& options, UnfoldingLoop::Callback callback)
    : net_{std::move(net)},
      options_{options},
      flat_{flatten(net_)},
      loop_{flat_, options, std::move(callback)} {}

template <class N>
bool Unfolder<N>::unfold() {
  if (!has_presets() || !is_initially_safe()) return false;
  if (flat_.marked.empty()) base::print_warning("the initial marking is empty");
  return report(loop_.run());
}

template <class N>
bool Unfolder<N>::has_presets() const {
  std::size_t count = 0;
  const std::string names = names_where(
      net_.transitions, [](const auto& t) { return t.preset.empty(); }, count);
  if (count == 0) return true;
  base::print_error("the net contains " + std::to_string(count) +
                    " transition(s) with empty preset: " + names);
  return false;
}

template <class N>
bool Unfolder<N>::is_initially_safe() {
  std::size_t count = 0;
  const auto is_unsafe = [](const auto& p) { return p.initial_marking > 1; };
  const std::string names = names_where(net_.places, is_unsafe, count);
  if (count == 0) return true;
  const auto place =
      std::ranges::find_if(net_.places, [&](const auto& p) { return is_unsafe(*p); });
  unsafe_ = Unsafe{place->get(), {}};
  base::print_error("the initial marking is not safe: place(s) " + names);
  return false;
}

template <class N>
bool Unfolder<N>::report(UnfoldOutcome outcome) {
  is_complete_ = outcome == UnfoldOutcome::complete;
  const bool at_a_bound =
      outcome == UnfoldOutcome::too_many_events || outcome == UnfoldOutcome::out_of_time;
  if (options_.keep_incomplete && at_a_bound) return true;
  switch (outcome) {
    case UnfoldOutcome::complete:
      return true;
    case UnfoldOutcome::unsafe:
      report_unsafe();
      return false;
    case UnfoldOutcome::too_many_events:
      base::print_error("the prefix has more than " + std::to_string(options_.max_events) +
                        " events; so far " + loop_.progress());
      return false;
    case UnfoldOutcome::out_of_time:
      base::print_error(base::format_message("the prefix is not complete after %g seconds",
                                             options_.max_seconds) +
                        "; so far " + loop_.progress());
      return false;
    case UnfoldOutcome::too_few_threads:
      break;
  }
  base::print_error("cannot start " + std::to_string(options_.number_of_threads) + " threads");
  return false;
}

template <class N>
void Unfolder<N>::report_unsafe() {
  const BranchingProcess& process = loop_.process();
  unsafe_ = Unsafe{net_.places[process.place(loop_.unsafe_pair().first)].get(), {}};
  std::string names;
  for (const EventId e : past_of(process, loop_.unsafe_pair())) {
    const auto* transition = net_.transitions[process.event(e).transition].get();
    unsafe_->trace.push_back(transition);
    if (!names.empty()) names += ", ";
    names += transition->name;
  }
  base::print_error("the net is not safe, place " + unsafe_->place->name + "; trace:\n" + names);
}

template <class N>
void Unfolder<N>::warn_if_no_events() const {
  const bool all_cut_off = std::ranges::all_of(loop_.entered(), [this](EventId e) {
    return loop_.process().event(e).correspondent != not_cut_off;
  });
  if (all_cut_off) base::print_warning("the prefix contains no non-cut-off events");
}

template <class N>
net::PrefixOf<N> Unfolder<N>::result() && {
  net::PrefixOf<N> prefix = PrefixBuilder<N>(std::move(net_), loop_).build();
  net::check(prefix);
  return prefix;
}

template class Unfolder<net::Net>;
template class Unfolder<net::Stg>;

}  // namespace vorel::unfolder
