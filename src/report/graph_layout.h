// report/graph_layout.h - where the nodes and edges of a graph go in a picture.
// Here:      the layout in layers, which Graphviz makes (its "dot"), as plain coordinates.
// Not here:  what is drawn there (report/drawings.h).
//
// Lengths are in units of which a letter is about seven wide; x grows to the right, y downwards,
// and the picture's upper left corner is the origin. The same graph gives the same layout. Graphviz
// keeps state of its own for the whole process: one layout at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vorel::report {

struct Point {
  double x = 0, y = 0;
  bool operator==(const Point&) const = default;
};

enum class Layer : std::uint8_t { any, first, last };

struct GraphNode {
  double width = 0, height = 0;  // rounded to whole units
  bool is_round = false;         // an ellipse, else a box
  Layer layer = Layer::any;
  // At the left side, evenly from top to bottom, for edges that say where they arrive. Such edges
  // leave the node in the middle of its right side. For layers from left to right.
  std::uint32_t pins = 0;
};

struct GraphEdge {
  std::uint32_t from = 0, to = 0;    // positions in the list of nodes
  std::optional<std::uint32_t> pin;  // of `to`
  bool is_backward = false;          // leads to an earlier layer, if it can
  bool has_arrow = true;             // room for an arrowhead is left at its end
  bool leaves_at_side = false;       // in the middle of the right side
};

struct Graph {
  bool is_downwards = true;  // else layers go from left to right
  double node_gap = 18, layer_gap = 26;
  std::vector<GraphNode> nodes;
  std::vector<GraphEdge> edges;
};

// Bézier pieces one behind the other: the start, then two control points and an end each. An
// arrowhead goes from the last point to the tip.
struct Curve {
  std::vector<Point> points;
  Point tip;
};

struct GraphLayout {
  double width = 0, height = 0;
  std::vector<Point> centres;  // of the nodes
  std::vector<Curve> curves;   // of the edges, from `from` to `to`
};

// nullopt after a warning: Graphviz could not lay the graph out, or lacks its plug-ins.
std::optional<GraphLayout> lay_out(const Graph& graph);

}  // namespace vorel::report
