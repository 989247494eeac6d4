#include "net/occurrence_order.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "base/indexed_by.h"

namespace vorel::net {
namespace {

template <class N>
OccurrenceFault fault_of(const MpConditionOf<N>& condition, const MpConditionOf<N>* lower) {
  if (lower == nullptr) {
    const bool may_be_first = condition.occurrence_depth == 1 || condition.is_initial();
    return may_be_first ? OccurrenceFault::none : OccurrenceFault::gap;
  }
  if (condition.occurrence_depth == lower->occurrence_depth) return OccurrenceFault::repeated;
  if (condition.occurrence_depth - 1 != lower->occurrence_depth) return OccurrenceFault::gap;
  return condition.is_initial() ? OccurrenceFault::marked_later : OccurrenceFault::none;
}

template <class N>
DisorderedOccurrence<N> find_among_conditions(const MergedProcessOf<N>& process) {
  std::vector<const MpConditionOf<N>*> sorted;
  sorted.reserve(process.conditions.size());
  for (const auto& condition : process.conditions) sorted.push_back(condition.get());
  std::ranges::sort(sorted, {}, [](const auto* condition) {
    return std::tuple(condition->place->index, condition->occurrence_depth, condition->index);
  });
  const MpConditionOf<N>* lower = nullptr;
  for (const auto* condition : sorted) {
    if (lower != nullptr && lower->place != condition->place) lower = nullptr;
    const OccurrenceFault fault = fault_of(*condition, lower);
    if (fault != OccurrenceFault::none) return {fault, condition, nullptr};
    lower = condition;
  }
  return {};
}

template <class N>
DisorderedOccurrence<N> find_among_events(const MergedProcessOf<N>& process) {
  constexpr std::int32_t not_left = 0;
  base::IndexedBy<typename N::Place, std::int32_t> left_at(process.places.size(), not_left);
  for (const auto& event : process.events) {
    for (const auto* consumed : event->preset) {
      left_at[*consumed->place] = consumed->occurrence_depth;
    }
    for (const auto* produced : event->postset) {
      const std::int32_t left = left_at[*produced->place];
      if (left != not_left && produced->occurrence_depth - 1 > left) {
        return {OccurrenceFault::skipped, produced, event.get()};
      }
    }
    for (const auto* consumed : event->preset) left_at[*consumed->place] = not_left;
  }
  return {};
}

}  // namespace

template <class N>
DisorderedOccurrence<N> find_disordered_occurrence(const MergedProcessOf<N>& process) {
  const auto found = find_among_conditions(process);
  return found.fault != OccurrenceFault::none ? found : find_among_events(process);
}

template DisorderedOccurrence<Net> find_disordered_occurrence<Net>(const NetMergedProcess&);
template DisorderedOccurrence<Stg> find_disordered_occurrence<Stg>(const StgMergedProcess&);

}  // namespace vorel::net
