#include "report/channel_router.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/seeds.h"

namespace vorel::report {
namespace {

struct Case {
  std::vector<GraphNode> nodes;
  GraphLayout layout;
  std::vector<NetToRoute> nets;
};

Case random_case(std::mt19937_64& random) {
  Case c;
  const std::size_t columns = 1 + random() % 5;
  for (std::size_t i = 0; i < columns; ++i) {
    double y = static_cast<double>(random() % 60);
    for (std::size_t count = 1 + random() % 4; count > 0; --count) {
      const auto pins = static_cast<std::uint32_t>(1 + random() % 4);
      const double height = 18.0 * pins;
      c.nodes.push_back({static_cast<double>(20 + random() % 60), height, false, Layer::any, pins});
      c.layout.centres.push_back({100.0 * static_cast<double>(i), y + height / 2});
      y += height + static_cast<double>(18 + random() % 20);
    }
  }
  const auto any_node = [&] { return static_cast<std::uint32_t>(random() % c.nodes.size()); };
  for (std::uint32_t i = 0; i < c.nodes.size(); ++i) c.nets.push_back({i, 0, {}});
  // Of each pin one net, back and forth as it comes.
  for (std::uint32_t node = 0; node < c.nodes.size(); ++node)
    for (std::uint32_t pin = 0; pin < c.nodes[node].pins; ++pin) {
      if (random() % 4 == 0) continue;
      const double offset = 18.0 * pin + 9 - c.nodes[node].height / 2;
      c.nets[any_node()].sinks.push_back({node, offset, nullptr});
    }
  std::erase_if(c.nets, [](const NetToRoute& net) { return net.sinks.empty(); });
  return c;
}

bool is_level(const Segment& s) { return s.from.y == s.to.y; }
bool is_within(double value, double a, double b) {
  return std::min(a, b) - 1e-6 <= value && value <= std::max(a, b) + 1e-6;
}
bool is_on(Point p, const Segment& s) {
  return is_within(p.x, s.from.x, s.to.x) && is_within(p.y, s.from.y, s.to.y);
}
// An end of one on the other, which is a connection to whoever looks at it.
bool touch(const Segment& a, const Segment& b) {
  return is_on(a.from, b) || is_on(a.to, b) || is_on(b.from, a) || is_on(b.to, a);
}

bool is_connected(const std::vector<Segment>& segments, const std::vector<Point>& ends) {
  std::vector<bool> is_reached(segments.size());
  std::vector<std::size_t> front{0};
  is_reached[0] = true;
  while (!front.empty()) {
    const Segment& here = segments[front.back()];
    front.pop_back();
    for (std::size_t i = 0; i < segments.size(); ++i) {
      if (is_reached[i] || !touch(here, segments[i])) continue;
      is_reached[i] = true;
      front.push_back(i);
    }
  }
  return std::ranges::count(is_reached, false) == 0 && std::ranges::all_of(ends, [&](Point end) {
           return std::ranges::any_of(
               segments, [&](const Segment& s) { return s.from == end || s.to == end; });
         });
}

bool crosses_box(const Segment& s, Point centre, const GraphNode& node) {
  const double left = centre.x - node.width / 2, top = centre.y - node.height / 2;
  return std::max(s.from.x, s.to.x) > left + 0.01 &&
         std::min(s.from.x, s.to.x) < left + node.width - 0.01 &&
         std::max(s.from.y, s.to.y) > top + 0.01 &&
         std::min(s.from.y, s.to.y) < top + node.height - 0.01;
}

TEST(ChannelRouter, NetsAreConnectedAndTouchNeitherEachOtherNorNodes) {
  const support::Seeds seeds = support::seeds(300);
  for (std::uint64_t seed = seeds.first; seed < seeds.end; ++seed) {
    std::mt19937_64 random(seed);
    const Case c = random_case(random);
    const Wiring wiring = route_wires(c.nodes, c.layout, c.nets);
    ASSERT_EQ(wiring.routes.size(), c.nets.size());
    for (std::size_t i = 0; i < c.nets.size(); ++i) {
      const GraphNode& driver = c.nodes[c.nets[i].driver];
      const Point start = wiring.centres[c.nets[i].driver];
      std::vector<Point> ends{{start.x + driver.width / 2, start.y}};
      for (const NetSink& sink : c.nets[i].sinks) {
        const Point centre = wiring.centres[sink.node];
        ends.push_back({centre.x - c.nodes[sink.node].width / 2, centre.y + sink.offset});
      }
      const std::vector<Segment>& segments = wiring.routes[i].segments;
      EXPECT_TRUE(is_connected(segments, ends)) << "seed " << seed << ", net " << i;
      for (const Segment& s : segments) {
        EXPECT_TRUE(is_level(s) || s.from.x == s.to.x);
        EXPECT_TRUE(is_within(s.from.y, 0, wiring.height) && is_within(s.to.x, 0, wiring.width));
        for (std::size_t n = 0; n < c.nodes.size(); ++n)
          EXPECT_FALSE(crosses_box(s, wiring.centres[n], c.nodes[n])) << "seed " << seed;
        for (std::size_t j = 0; j < i; ++j)
          for (const Segment& other : wiring.routes[j].segments)
            EXPECT_FALSE(touch(s, other)) << "seed " << seed << ", nets " << i << " and " << j;
      }
    }
  }
}

}  // namespace
}  // namespace vorel::report
