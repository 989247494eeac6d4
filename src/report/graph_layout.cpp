#include "report/graph_layout.h"

#include <cassert>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include <graphviz/gvc.h>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

#include "base/messages.h"

namespace vorel::report {
namespace {

constexpr double units_per_inch = 72;
constexpr double margin = 4;  // for borders, of which half lies outside

// Graphviz never frees the text of its configuration and the edges that it turns to break circles.
// While this lives, what is taken is not looked for by the leak checker.
struct UncheckedLeaks {
#ifdef __SANITIZE_ADDRESS__
  UncheckedLeaks() { __lsan_disable(); }
  ~UncheckedLeaks() { __lsan_enable(); }
  UncheckedLeaks(const UncheckedLeaks&) = delete;
  UncheckedLeaks& operator=(const UncheckedLeaks&) = delete;
#endif
};

struct ContextDeleter {
  void operator()(GVC_t* context) const { gvFreeContext(context); }
};
struct GraphDeleter {
  void operator()(Agraph_t* graph) const { agclose(graph); }
};
struct TextDeleter {
  void operator()(char* text) const { std::free(text); }
};

// Graphviz keeps what it has to say for itself meanwhile.
class SilentGraphviz {
 public:
  SilentGraphviz() : level_{agseterr(AGMAX)} {}
  SilentGraphviz(const SilentGraphviz&) = delete;
  SilentGraphviz& operator=(const SilentGraphviz&) = delete;
  ~SilentGraphviz() { agseterr(level_); }

  std::string last_message() const {
    const std::unique_ptr<char, TextDeleter> text{aglasterr()};
    std::string message = text == nullptr ? "" : text.get();
    while (message.ends_with('\n')) message.pop_back();
    return message.empty() ? "no reason is given" : message;
  }

 private:
  agerrlevel_t level_;
};

std::string number_text(double number) { return base::format_message("%.4f", number); }
std::string inches(double units) { return number_text(units / units_per_inch); }

class Layouter {
 public:
  explicit Layouter(const Graph& graph)
      : graph_{graph}, context_{open_context()}, drawn_{open_graph()} {}
  Layouter(const Layouter&) = delete;
  Layouter& operator=(const Layouter&) = delete;
  ~Layouter() {
    if (is_laid_out_) gvFreeLayout(context_.get(), drawn_.get());
  }

  std::optional<GraphLayout> run() {
    if (context_ == nullptr || drawn_ == nullptr) return fail("it cannot be started");
    set_defaults();
    for (const GraphNode& node : graph_.nodes) add_node(node);
    add_layer(Layer::first, "min");
    add_layer(Layer::last, "max");
    for (const GraphEdge& edge : graph_.edges) add_edge(edge);
    {
      [[maybe_unused]] const UncheckedLeaks leaks;
      is_laid_out_ = gvLayout(context_.get(), drawn_.get(), "dot") == 0;
    }
    if (!is_laid_out_) return fail(messages_.last_message());
    return result();
  }

 private:
  static GVC_t* open_context() {
    [[maybe_unused]] const UncheckedLeaks leaks;
    return gvContext();
  }
  static Agraph_t* open_graph() {
    std::string name = "g";
    return agopen(name.data(), Agdirected, nullptr);
  }

  static std::optional<GraphLayout> fail(const std::string& reason) {
    base::print_warning("Graphviz cannot lay out a drawing: " + reason);
    return std::nullopt;
  }

  void declare(int kind, std::string name, std::string value) {
    agattr(drawn_.get(), kind, name.data(), value.data());
  }
  static void set(void* object, std::string name, std::string value) {
    agset(object, name.data(), value.data());
  }

  // All labels are empty, so that Graphviz needs no fonts: the sizes of nodes are given.
  void set_defaults() {
    declare(AGRAPH, "rankdir", graph_.is_downwards ? "TB" : "LR");
    declare(AGRAPH, "nodesep", inches(graph_.node_gap));
    declare(AGRAPH, "ranksep", inches(graph_.layer_gap));
    declare(AGRAPH, "splines", "spline");
    declare(AGNODE, "label", "");
    declare(AGNODE, "fixedsize", "true");
    declare(AGNODE, "shape", "box");
    declare(AGNODE, "width", "1");
    declare(AGNODE, "height", "1");
    declare(AGEDGE, "arrowsize", "0.6");
    declare(AGEDGE, "dir", "forward");
    declare(AGEDGE, "headport", "");
    declare(AGEDGE, "tailport", "");
  }

  // A table without text whose rows are the pins.
  void add_pins(Agnode_t* drawn, const GraphNode& node) {
    std::string table = R"(<TABLE BORDER="0" CELLBORDER="0" CELLSPACING="0" CELLPADDING="0">)";
    for (std::uint32_t pin = 0; pin < node.pins; ++pin) {
      table += base::format_message(
          R"(<TR><TD PORT="p%u" FIXEDSIZE="TRUE" WIDTH="%d" HEIGHT="%d"></TD></TR>)", pin,
          static_cast<int>(node.width), static_cast<int>(node.height / node.pins));
    }
    table += "</TABLE>";
    char* const label = agstrdup_html(drawn_.get(), table.data());
    set(drawn, "shape", "plain");
    set(drawn, "fixedsize", "false");
    std::string name = "label";
    agset(drawn, name.data(), label);
    agstrfree(drawn_.get(), label);
  }

  void add_node(const GraphNode& node) {
    std::string name = "n" + std::to_string(nodes_.size());
    Agnode_t* const drawn = agnode(drawn_.get(), name.data(), 1);
    nodes_.push_back(drawn);
    if (node.pins > 0) {
      add_pins(drawn, node);
      return;
    }
    set(drawn, "width", inches(node.width));
    set(drawn, "height", inches(node.height));
    if (node.is_round) set(drawn, "shape", "ellipse");
  }

  void add_layer(Layer layer, const std::string& rank) {
    Agraph_t* subgraph = nullptr;
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      if (graph_.nodes[i].layer != layer) continue;
      if (subgraph == nullptr) {
        std::string name = rank;
        subgraph = agsubg(drawn_.get(), name.data(), 1);
        std::string attribute = "rank", value = rank, none;
        agsafeset(subgraph, attribute.data(), value.data(), none.data());
      }
      agsubnode(subgraph, nodes_[i], 1);
    }
  }

  // An edge to an earlier layer is one in the other direction with its arrowhead at its start.
  void add_edge(const GraphEdge& edge) {
    Agnode_t* const from = nodes_[edge.is_backward ? edge.to : edge.from];
    Agnode_t* const to = nodes_[edge.is_backward ? edge.from : edge.to];
    std::string name = "e" + std::to_string(edges_.size());
    Agedge_t* const drawn = agedge(drawn_.get(), from, to, name.data(), 1);
    edges_.push_back(drawn);
    if (!edge.has_arrow) {
      set(drawn, "dir", "none");
    } else if (edge.is_backward) {
      set(drawn, "dir", "back");
    }
    if (edge.pin) {
      set(drawn, edge.is_backward ? "tailport" : "headport",
          "p" + std::to_string(*edge.pin) + ":w");
    }
    if (edge.leaves_at_side) set(drawn, edge.is_backward ? "headport" : "tailport", "e");
  }

  Point point(pointf p) const {
    const boxf box = GD_bb(drawn_.get());
    return {p.x - box.LL.x + margin, box.UR.y - p.y + margin};
  }

  // nullopt for an edge that was lost.
  std::optional<Curve> curve(Agedge_t* drawn, bool is_backward) const {
    const splines* const route = ED_spl(drawn);
    if (route == nullptr || route->size != 1 || route->list[0].size < 4) return std::nullopt;
    const bezier& piece = route->list[0];
    Curve result;
    for (int i = 0; i < piece.size; ++i) result.points.push_back(point(piece.list[i]));
    if (is_backward) {
      result.points = {result.points.rbegin(), result.points.rend()};
      result.tip = piece.sflag != 0 ? point(piece.sp) : result.points.back();
    } else {
      result.tip = piece.eflag != 0 ? point(piece.ep) : result.points.back();
    }
    return result;
  }

  std::optional<GraphLayout> result() const {
    const boxf box = GD_bb(drawn_.get());
    GraphLayout layout{box.UR.x - box.LL.x + 2 * margin, box.UR.y - box.LL.y + 2 * margin, {}, {}};
    for (Agnode_t* const node : nodes_) layout.centres.push_back(point(ND_coord(node)));
    for (std::size_t i = 0; i < edges_.size(); ++i) {
      std::optional<Curve> route = curve(edges_[i], graph_.edges[i].is_backward);
      if (!route) return fail("an edge has no way");
      layout.curves.push_back(std::move(*route));
    }
    return layout;
  }

  const Graph& graph_;
  const SilentGraphviz messages_;
  std::unique_ptr<GVC_t, ContextDeleter> context_;
  std::unique_ptr<Agraph_t, GraphDeleter> drawn_;  // freed before its context
  std::vector<Agnode_t*> nodes_;
  std::vector<Agedge_t*> edges_;
  bool is_laid_out_ = false;
};

}  // namespace

std::optional<GraphLayout> lay_out(const Graph& graph) {
  if (graph.nodes.empty()) return GraphLayout{};
  return Layouter(graph).run();
}

}  // namespace vorel::report
