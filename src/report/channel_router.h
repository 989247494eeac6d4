// report/channel_router.h - the wires of a schematic, upright and level.
// Here:      columns of nodes are moved apart until the wires between them have room, and each net
//            becomes one tree of straight pieces.
// Not here:  which node stands in which column and row (report/graph_layout.h).
//
// Between two columns is a channel, in which each net has one upright trunk on a track of its own
// (channel routing with constraints [HS-1971]); columns are passed between or beside their nodes.
// Pieces of different nets cross, but neither touch in corners nor run on each other.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "report/graph_layout.h"

namespace vorel::report {

struct NetSink {
  std::uint32_t node = 0;
  double offset = 0;             // of the pin at its left side, downwards from the node's middle
  const Curve* curve = nullptr;  // by which the layout came here; null: none
};

// Comes from the middle of the right side of its driver.
struct NetToRoute {
  std::uint32_t driver = 0;
  double label_width = 0;  // of what stands where it begins
  std::vector<NetSink> sinks;
};

struct Segment {
  Point from, to;  // level or upright
};

struct NetRoute {
  std::vector<Segment> segments;
  std::vector<Point> joints;  // where three or four pieces meet
};

struct Wiring {
  double width = 0, height = 0;
  std::vector<Point> centres;  // of the nodes
  std::vector<NetRoute> routes;
};

// Nodes with the same x in the layout stand in one column; their rows are kept.
Wiring route_wires(std::span<const GraphNode> nodes, const GraphLayout& layout,
                   std::span<const NetToRoute> nets);

}  // namespace vorel::report
