#include "synthesis/monotonic_cover.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <numeric>
#include <span>

#include "toolkit/minimise.h"

namespace vorel {
namespace {

bool contains(const Cube& large, const Cube& small) {
  for (std::size_t i = 0; i < large.size(); ++i) {
    if (large[i] != Ternary::dash && large[i] != small[i]) return false;
  }
  return true;
}

bool covers(const Cover& cover, const Cube& code) {
  return std::ranges::any_of(cover, [&code](const Cube& cube) { return contains(cube, code); });
}

Cover extended(Cover cover, const std::vector<Cube>& codes, std::span<const std::uint32_t> which) {
  for (const std::uint32_t i : which) cover.add(codes[i]);
  return cover;
}

// Codes that hang together through arcs and that nothing decides: all true or all false together is
// always monotonic.
struct Unit {
  std::vector<std::uint32_t> codes;
  std::size_t arc_count = 0;  // within it and to codes that are decided
};

class MonotonicCoverSolver {
 public:
  MonotonicCoverSolver(const Cover& on, const Cover& off, const std::vector<CodeArc>& arcs)
      : on_{on}, off_{off} {
    number_codes(arcs);
    decide(off_, /*forwards=*/true, Value::no);
    decide(on_, /*forwards=*/false, Value::yes);
    collect_units();
  }

  Cover run() { return solve(on_, off_); }

 private:
  enum class Value : std::uint8_t { open, yes, no };
  using Arc = std::pair<std::uint32_t, std::uint32_t>;

  void number_codes(const std::vector<CodeArc>& arcs) {
    for (const auto& [from, to] : arcs) arcs_.emplace_back(number_of(from), number_of(to));
    std::ranges::sort(arcs_);
    const auto repeated = std::ranges::unique(arcs_);
    arcs_.erase(repeated.begin(), repeated.end());
    values_.resize(codes_.size(), Value::open);
  }

  std::uint32_t number_of(const Cube& code) {
    const auto [found, is_new] = numbers_.emplace(code, static_cast<std::uint32_t>(codes_.size()));
    if (is_new) codes_.push_back(code);
    return found->second;
  }

  // What is false stays so along the arcs; what comes before something true is true. The codes that
  // this decides join the side.
  void decide(Cover& side, bool forwards, Value value) {
    std::vector<std::uint32_t> reached;
    for (const Cube& code : side) {
      const auto found = numbers_.find(code);
      if (found == numbers_.end()) continue;
      assert(values_[found->second] == Value::open && "no arc leads from OFF to ON");
      values_[found->second] = value;
      reached.push_back(found->second);
    }
    const std::size_t given = reached.size();
    const auto targets = neighbours(forwards);
    for (std::size_t i = 0; i < reached.size(); ++i) {
      for (const std::uint32_t next : targets[reached[i]]) {
        if (values_[next] == value) continue;
        assert(values_[next] == Value::open && "no arc leads from OFF to ON");
        values_[next] = value;
        reached.push_back(next);
      }
    }
    side = extended(std::move(side), codes_, std::span(reached).subspan(given));
  }

  std::vector<std::vector<std::uint32_t>> neighbours(bool forwards) const {
    std::vector<std::vector<std::uint32_t>> result(codes_.size());
    for (const auto& [from, to] : arcs_) {
      (forwards ? result[from] : result[to]).push_back(forwards ? to : from);
    }
    return result;
  }

  // The connected components of the open codes.
  void collect_units() {
    std::vector<std::uint32_t> parent(codes_.size());
    std::iota(parent.begin(), parent.end(), 0u);
    const auto root_of = [&parent](std::uint32_t i) {
      while (parent[i] != i) i = parent[i] = parent[parent[i]];
      return i;
    };
    const auto is_open = [this](std::uint32_t i) { return values_[i] == Value::open; };
    for (const auto& [from, to] : arcs_) {
      if (is_open(from) && is_open(to)) parent[root_of(from)] = root_of(to);
    }
    std::map<std::uint32_t, std::size_t> unit_of;  // by root
    for (std::uint32_t i = 0; i < codes_.size(); ++i) {
      if (!is_open(i)) continue;
      const auto [found, is_new] = unit_of.emplace(root_of(i), units_.size());
      if (is_new) units_.emplace_back();
      units_[found->second].codes.push_back(i);
    }
    for (const auto& [from, to] : arcs_) {
      const std::uint32_t end = is_open(from) ? from : to;
      if (is_open(end)) ++units_[unit_of.at(root_of(end))].arc_count;
    }
  }

  // The cheaper of the covers that come of either value for the unit that hurts most.
  Cover solve(const Cover& on, const Cover& off) {
    ++calls_;
    Cover cover = minimise(on, off);
    const Unit* split = most_split_unit(cover);
    if (split == nullptr) return cover;
    Cover without = solve(on, extended(off, codes_, split->codes));
    // Beyond a number of trials the value that keeps the cover small must do.
    constexpr std::size_t max_calls = 1000;
    if (calls_ > max_calls) return without;
    Cover with = solve(extended(on, codes_, split->codes), off);
    return with.literal_count() < without.literal_count() ? with : without;
  }

  // Null if the cover gives all codes of each unit one value.
  const Unit* most_split_unit(const Cover& cover) const {
    const Unit* worst = nullptr;
    std::size_t worst_separated = 0;
    for (const Unit& unit : units_) {
      const auto covered = static_cast<std::size_t>(std::ranges::count_if(
          unit.codes, [&](std::uint32_t i) { return covers(cover, codes_[i]); }));
      const std::size_t separated = std::min(covered, unit.codes.size() - covered);
      if (separated == 0) continue;
      const bool is_worse = separated > worst_separated ||
                            (separated == worst_separated && unit.arc_count > worst->arc_count);
      if (!is_worse) continue;
      worst = &unit;
      worst_separated = separated;
    }
    return worst;
  }

  Cover on_, off_;
  std::map<Cube, std::uint32_t> numbers_;
  std::vector<Cube> codes_;    // that have arcs, by number
  std::vector<Value> values_;  // by code
  std::vector<Arc> arcs_;
  std::vector<Unit> units_;
  std::size_t calls_ = 0;
};

}  // namespace

Cover monotonic_cover(const Cover& on, const Cover& off, const std::vector<CodeArc>& arcs) {
  return MonotonicCoverSolver(on, off, arcs).run();
}

}  // namespace vorel
