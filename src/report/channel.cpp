#include "report/channel.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <optional>
#include <utility>

namespace vorel::report {
namespace {

constexpr double least_distance = 5;  // between pieces of different nets that run side by side

bool are_near(double a, double b) { return std::abs(a - b) < least_distance; }

// Level wires first, then those that go up from the top, those that go down from the bottom: so
// they do not cross.
std::pair<int, double> rank_of(const Trunk& trunk) {
  const bool has_both = !trunk.left.empty() && !trunk.right.empty();
  const double left = trunk.left.empty() ? trunk.low : trunk.left.front().y;
  const bool goes_down = has_both && trunk.right.front().y > left;
  return {goes_down ? 1 : 0, goes_down ? -left : left};
}

void measure(Trunk& trunk) {
  std::vector<double> levels = trunk.links;
  for (const Terminal& terminal : trunk.left) levels.push_back(terminal.y);
  for (const Terminal& terminal : trunk.right) levels.push_back(terminal.y);
  assert(!levels.empty());
  const auto [low, high] = std::ranges::minmax(levels);
  trunk.low = low;
  trunk.high = high;
}

}  // namespace

Trunk& Channel::trunk_of(std::uint32_t net) {
  const auto known = std::ranges::find(trunks_, net, &Trunk::net);
  if (known != trunks_.end()) return *known;
  Trunk trunk;
  trunk.net = net;
  trunks_.push_back(std::move(trunk));
  return trunks_.back();
}

void Channel::add(std::vector<Terminal>& list, Terminal terminal) {
  const auto is_same = [&terminal](const Terminal& t) {
    return t.y == terminal.y && t.node == terminal.node;
  };
  if (std::ranges::none_of(list, is_same)) list.push_back(terminal);
}

// Else the piece from the left to `a` would run on that from `b` to the right.
bool Channel::must_be_left_of(const Trunk& a, const Trunk& b) const {
  if (a.net == b.net) return !a.left.empty() && a.right.empty() && b.left.empty();
  return std::ranges::any_of(a.left, [&b](const Terminal& from) {
    return std::ranges::any_of(b.right,
                               [&from](const Terminal& to) { return are_near(from.y, to.y); });
  });
}

// False where the conditions go in a circle; then those not in the order are in it or behind it.
bool Channel::order_trunks(std::vector<std::size_t>& order) const {
  std::vector<std::size_t> left;
  for (std::size_t i = 0; i < trunks_.size(); ++i)
    if (!trunks_[i].is_level()) left.push_back(i);
  std::ranges::sort(left, {}, [this](std::size_t i) { return std::pair{rank_of(trunks_[i]), i}; });
  while (!left.empty()) {
    const auto is_free = [&](std::size_t i) {
      return std::ranges::none_of(left, [&](std::size_t other) {
        return other != i && must_be_left_of(trunks_[other], trunks_[i]);
      });
    };
    const auto next = std::ranges::find_if(left, is_free);
    if (next == left.end()) return false;
    order.push_back(*next);
    left.erase(next);
  }
  return true;
}

// As near to the middle of the trunk as can be, where no other wire runs from side to side.
double Channel::free_level(const Trunk& trunk) const {
  std::vector<double> used, candidates = {(trunk.low + trunk.high) / 2};
  for (const Trunk& other : trunks_) {
    for (const Terminal& terminal : other.left) used.push_back(terminal.y);
    for (const Terminal& terminal : other.right) used.push_back(terminal.y);
    used.insert(used.end(), other.links.begin(), other.links.end());
  }
  for (const double level : used) {
    candidates.push_back(level - least_distance);
    candidates.push_back(level + least_distance);
  }
  std::ranges::sort(candidates, {}, [middle = candidates.front()](double level) {
    return std::pair{std::abs(level - middle), level};
  });
  const auto found = std::ranges::find_if(candidates, [&used](double level) {
    return std::ranges::none_of(used, [level](double other) { return are_near(level, other); });
  });
  assert(found != candidates.end() && "above all others there is room");
  return *found;
}

// Whoever is in the circle has terminals on both sides; one of those behind it may have, too, and
// loses no more than a straight trunk.
void Channel::split_one(const std::vector<std::size_t>& ordered) {
  for (std::size_t i = 0; i < trunks_.size(); ++i) {
    const bool is_whole = !trunks_[i].left.empty() && !trunks_[i].right.empty();
    if (!is_whole || trunks_[i].is_level() || std::ranges::find(ordered, i) != ordered.end())
      continue;
    const double level = free_level(trunks_[i]);
    Trunk second;
    second.net = trunks_[i].net;
    second.right = std::exchange(trunks_[i].right, {});
    second.links = trunks_[i].links = {level};
    measure(trunks_[i]);
    measure(second);
    trunks_.push_back(std::move(second));
    return;
  }
  assert(false && "two trunks with terminals on one side each are in no circle");
}

std::size_t Channel::first_track(const Trunk& trunk, const std::vector<std::size_t>& before) const {
  std::size_t track = 0;
  for (const std::size_t i : before)
    if (must_be_left_of(trunks_[i], trunk)) track = std::max(track, trunks_[i].track + 1);
  const auto is_taken = [&](std::size_t i) {
    const Trunk& other = trunks_[i];
    return other.track == track && other.low < trunk.high + least_distance &&
           trunk.low < other.high + least_distance;
  };
  while (std::ranges::any_of(before, is_taken)) ++track;
  return track;
}

void Channel::assign_tracks() {
  for (Trunk& trunk : trunks_) measure(trunk);
  std::vector<std::size_t> order;
  while (!order_trunks(order)) {
    split_one(order);
    order.clear();
  }
  std::vector<std::size_t> before;
  for (const std::size_t i : order) {
    trunks_[i].track = first_track(trunks_[i], before);
    track_count_ = std::max(track_count_, trunks_[i].track + 1);
    before.push_back(i);
  }
}

}  // namespace vorel::report
