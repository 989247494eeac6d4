#include "reach/deadlock_encoding.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "oracle/random_net.h"

namespace vorel::reach {
namespace {

TEST(DominatedConsumers, AreThoseWhosePresetContainsAnother) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const net::Net net = oracle::random_net(seed);
    const auto dominated = dominated_consumers(net.transitions);
    const auto preset = [](const net::Transition& t) {
      std::set<std::uint32_t> places;
      for (const net::Place* place : t.preset) places.insert(place->index);
      return places;
    };
    for (const auto& t : net.transitions) {
      const bool expected = std::ranges::any_of(net.transitions, [&](const auto& u) {
        const auto small = preset(*u), large = preset(*t);
        return std::ranges::includes(large, small) && (small != large || u->index < t->index);
      });
      EXPECT_EQ(dominated[*t], expected) << "seed " << seed << ", transition " << t->name;
    }
  }
}

}  // namespace
}  // namespace vorel::reach
