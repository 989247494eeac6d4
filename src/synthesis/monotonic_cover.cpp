#include "synthesis/monotonic_cover.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <set>

#include "toolkit/minimise.h"

namespace vorel::synthesis {
namespace {

bool contains(const toolkit::Cube& large, const toolkit::Cube& small) {
  for (std::size_t i = 0; i < large.size(); ++i) {
    if (large[i] != toolkit::Ternary::dash && large[i] != small[i]) return false;
  }
  return true;
}

bool covers(const toolkit::Cover& cover, const toolkit::Cube& code) {
  return std::ranges::any_of(cover,
                             [&code](const toolkit::Cube& cube) { return contains(cube, code); });
}

// Codes with arcs that are neither in ON nor in OFF are free, as long as no arc leads from one that
// is false to one that is true.
class MonotonicCoverSolver {
 public:
  MonotonicCoverSolver(const toolkit::Cover& on, const toolkit::Cover& off,
                       const std::vector<CodeArc>& arcs) {
    number_codes(arcs);
    Sides sides{on, off, std::vector<Value>(codes_.size(), Value::open)};
    for (const toolkit::Cube& code : off) decide(code, Value::no, sides);
    for (const toolkit::Cube& code : on) decide(code, Value::yes, sides);
    given_ = std::move(sides);
  }

  toolkit::Cover run() { return solve(given_); }

 private:
  enum class Value : std::uint8_t { open, yes, no };
  using Neighbours = std::vector<std::vector<std::uint32_t>>;  // by code

  struct Sides {
    toolkit::Cover on, off;
    std::vector<Value> values;  // by code
  };

  void number_codes(const std::vector<CodeArc>& arcs) {
    std::set<std::pair<std::uint32_t, std::uint32_t>> distinct;
    for (const auto& [from, to] : arcs) distinct.emplace(number_of(from), number_of(to));
    next_.resize(codes_.size());
    previous_.resize(codes_.size());
    for (const auto& [from, to] : distinct) {
      next_[from].push_back(to);
      previous_[to].push_back(from);
    }
  }

  std::uint32_t number_of(const toolkit::Cube& code) {
    assert(code.size() > 0 && "an arc changes a signal of the support");
    const auto [found, is_new] = numbers_.emplace(code, static_cast<std::uint32_t>(codes_.size()));
    if (is_new) codes_.push_back(code);
    return found->second;
  }

  void decide(const toolkit::Cube& code, Value value, Sides& sides) const {
    const auto found = numbers_.find(code);
    if (found == numbers_.end() || sides.values[found->second] == value) return;
    assert(sides.values[found->second] == Value::open && "no arc leads from OFF to ON");
    sides.values[found->second] = value;
    spread(found->second, sides);
  }

  // What comes after something false is false, what comes before something true is true. The codes
  // that this decides join their side.
  void spread(std::uint32_t start, Sides& sides) const {
    const Value value = sides.values[start];
    const Neighbours& neighbours = value == Value::no ? next_ : previous_;
    std::vector<std::uint32_t> reached{start};
    for (std::size_t i = 0; i < reached.size(); ++i) {
      for (const std::uint32_t code : neighbours[reached[i]]) {
        if (sides.values[code] == value) continue;
        assert(sides.values[code] == Value::open && "no arc leads from OFF to ON");
        sides.values[code] = value;
        (value == Value::no ? sides.off : sides.on).add(codes_[code]);
        reached.push_back(code);
      }
    }
  }

  Sides with(Sides sides, std::uint32_t code, Value value) const {
    assert(sides.values[code] == Value::open && "only what is free can be chosen");
    (value == Value::no ? sides.off : sides.on).add(codes_[code]);
    decide(codes_[code], value, sides);
    return sides;
  }

  // The cheaper of the covers that come of either value for the code that hurts most.
  toolkit::Cover solve(const Sides& sides) {
    ++calls_;
    toolkit::Cover cover = toolkit::minimise(sides.on, sides.off);
    const std::uint32_t worst = worst_rise(cover);
    if (worst == none) return cover;
    toolkit::Cover without = solve(with(sides, worst, Value::no));
    // Beyond a number of trials, the value that never leads to another rise must do.
    constexpr std::size_t max_calls = 500;
    if (calls_ > max_calls) return without;
    toolkit::Cover cover_with = solve(with(sides, worst, Value::yes));
    return cover_with.literal_count() < without.literal_count() ? cover_with : without;
  }

  // The code at which the cover rises along most arcs; of several, the one with most arcs. `none`
  // if it never rises. Such a code is free: what comes before one that is true is true.
  std::uint32_t worst_rise(const toolkit::Cover& cover) const {
    std::vector<bool> is_covered(codes_.size());
    for (std::size_t i = 0; i < codes_.size(); ++i) is_covered[i] = covers(cover, codes_[i]);
    std::uint32_t worst = none;
    std::pair<std::size_t, std::size_t> worst_count{0, 0};
    for (std::uint32_t code = 0; code < codes_.size(); ++code) {
      if (!is_covered[code]) continue;
      const auto rises = static_cast<std::size_t>(std::ranges::count_if(
          previous_[code], [&](std::uint32_t before) { return !is_covered[before]; }));
      const std::pair count{rises, previous_[code].size() + next_[code].size()};
      if (rises == 0 || count <= worst_count) continue;
      worst = code;
      worst_count = count;
    }
    return worst;
  }

  static constexpr std::uint32_t none = ~std::uint32_t{0};

  std::map<toolkit::Cube, std::uint32_t> numbers_;
  std::vector<toolkit::Cube> codes_;  // that have arcs, by number
  Neighbours next_, previous_;
  Sides given_;
  std::size_t calls_ = 0;
};

}  // namespace

toolkit::Cover monotonic_cover(const toolkit::Cover& on, const toolkit::Cover& off,
                               const std::vector<CodeArc>& arcs) {
  return MonotonicCoverSolver(on, off, arcs).run();
}

}  // namespace vorel::synthesis
