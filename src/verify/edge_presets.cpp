#include "verify/edge_presets.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace vorel::verify {
namespace {

PlaceSet numbers_of(const base::PtrList<net::StgPlace>& places) {
  PlaceSet numbers;
  for (const net::StgPlace* place : places) numbers.push_back(place->index);
  assert(std::ranges::is_sorted(numbers) && "arcs are sorted");
  return numbers;
}

// What must be marked before the transition for the set to be marked after it. Nothing when the
// transition is of no use, or when a place would need two tokens.
std::optional<PlaceSet> before_firing(const net::StgTransition& transition, const PlaceSet& set) {
  const PlaceSet preset = numbers_of(transition.preset), postset = numbers_of(transition.postset);
  PlaceSet rest, shared;
  std::ranges::set_difference(set, postset, std::back_inserter(rest));
  if (rest.size() == set.size()) return std::nullopt;
  std::ranges::set_intersection(rest, preset, std::back_inserter(shared));
  if (!shared.empty()) return std::nullopt;
  PlaceSet result;
  std::ranges::set_union(rest, preset, std::back_inserter(result));
  return result;
}

class BackwardSearch {
 public:
  BackwardSearch(const net::Stg& stg, const IsSilent& is_silent, std::size_t max_sets)
      : max_sets_{max_sets} {
    for (const auto& transition : stg.transitions)
      if (is_silent(*transition->signal)) silent_.push_back(transition.get());
  }

  void add(PlaceSet set) {
    const auto contains = [](const PlaceSet& large, const PlaceSet& small) {
      return std::ranges::includes(large, small);
    };
    if (std::ranges::any_of(sets_, [&](const PlaceSet& s) { return contains(set, s); })) return;
    std::erase_if(sets_, [&](const PlaceSet& s) { return contains(s, set); });
    sets_.push_back(set);
    open_.push_back(std::move(set));
  }

  bool run() {
    while (!open_.empty() && sets_.size() <= max_sets_) {
      const PlaceSet set = std::move(open_.back());
      open_.pop_back();
      for (const net::StgTransition* transition : silent_)
        if (auto before = before_firing(*transition, set)) add(std::move(*before));
    }
    return open_.empty();
  }

  std::vector<PlaceSet> result() && {
    std::ranges::sort(sets_);
    return std::move(sets_);
  }

 private:
  const std::size_t max_sets_;
  std::vector<const net::StgTransition*> silent_;
  std::vector<PlaceSet> sets_;  // none contains another
  std::vector<PlaceSet> open_;
};

}  // namespace

std::optional<EdgePresets> edge_presets(const net::Stg& stg, const IsSilent& is_silent,
                                        std::size_t max_sets) {
  EdgePresets result(stg.signals.size());
  std::vector<BackwardSearch> searches(stg.signals.size(), {stg, is_silent, max_sets});
  for (const auto& transition : stg.transitions)
    if (!is_silent(*transition->signal))
      searches[transition->signal->index].add(numbers_of(transition->preset));
  for (std::size_t s = 0; s < result.size(); ++s) {
    if (!searches[s].run()) return std::nullopt;
    result[s] = std::move(searches[s]).result();
  }
  return result;
}

}  // namespace vorel::verify
