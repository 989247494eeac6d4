#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/indexed_by.h"
#include "report/drawing_style.h"
#include "report/drawings.h"
#include "report/graph_layout.h"
#include "report/svg_canvas.h"
#include "report/svg_text.h"

namespace vorel::report {
namespace {

using net::Stg;
using net::StgPlace;
using net::StgTransition;

constexpr double place_radius = 8, token_radius = 3.5;
constexpr std::size_t most_place_columns = 6;

bool has_token(const StgPlace& place) { return place.initial_marking > 0; }

bool is_arc(const StgPlace& place) {
  return place.preset.size() == 1 && place.postset.size() == 1 &&
         place.preset.front() != place.postset.front();
}

bool contains(const base::PtrList<StgTransition>& list, const StgTransition* transition) {
  return std::ranges::find(list, transition) != list.end();
}

class StgDrawing {
 public:
  explicit StgDrawing(const Stg& stg) : stg_{stg}, node_of_(stg.places.size(), base::no_index) {
    for (const auto& transition : stg.transitions) {
      const double width = box_width(label_of(transition->name));
      graph_.nodes.push_back({width, box_height, false, Layer::any, 0});
    }
    for (const auto& place : stg.places) add_place(*place);
  }

  Drawing run() {
    Drawing drawing{"", description()};
    if (graph_.nodes.empty() || graph_.nodes.size() > most_drawn_nodes ||
        graph_.edges.size() > most_drawn_arcs) {
      drawing.alternative = summary() + (graph_.nodes.empty() ? "." : ", too large to be drawn.");
      return drawing;
    }
    const std::optional<GraphLayout> layout = lay_out(graph_);
    if (!layout) return drawing;
    draw(*layout);
    double width = layout->width, height = layout->height;
    draw_legend(canvas_, legend(), width, height);
    drawing.svg = std::move(canvas_).finish(width, height, "stg", summary(), drawing.alternative);
    return drawing;
  }

 private:
  struct Arc {
    const StgPlace* place;
    bool has_token;  // drawn on the arc
    bool is_read;
  };

  void add_edge(std::uint32_t from, std::uint32_t to, bool is_backward, const Arc& arc) {
    graph_.edges.push_back({from, to, std::nullopt, is_backward, !arc.is_read, false});
    arcs_.push_back(arc);
  }

  // Layers begin with what can happen first: arcs to marked places lead upwards.
  void add_place(const StgPlace& place) {
    if (is_arc(place)) {
      add_edge(place.preset.front()->index, place.postset.front()->index, has_token(place),
               {&place, has_token(place), false});
      return;
    }
    const auto node = static_cast<std::uint32_t>(graph_.nodes.size());
    node_of_[place] = node;
    drawn_places_.push_back(&place);
    graph_.nodes.push_back({2 * place_radius, 2 * place_radius, true, Layer::any, 0});
    for (const StgTransition* transition : place.preset) {
      const bool is_read = contains(place.postset, transition);
      // One line stands for both directions.
      if (!is_read) add_edge(transition->index, node, has_token(place), {&place, false, false});
    }
    for (const StgTransition* transition : place.postset) {
      add_edge(node, transition->index, false, {&place, false, contains(place.preset, transition)});
    }
  }

  void draw(const GraphLayout& layout) {
    for (std::size_t i = 0; i < arcs_.size(); ++i) draw_edge(arcs_[i], layout.curves[i]);
    for (const StgPlace* place : drawn_places_) {
      draw_place(*place, layout.centres[node_of_[*place]]);
    }
    for (const auto& transition : stg_.transitions) {
      draw_transition(*transition, layout.centres[transition->index]);
    }
  }

  void draw_edge(const Arc& arc, const Curve& curve) {
    canvas_.begin_group("edge", arc.place->name);
    draw_arc(canvas_, curve, !arc.is_read);
    if (arc.has_token) canvas_.circle(middle_of(curve), token_radius, "token");
    canvas_.end_group();
  }

  void draw_place(const StgPlace& place, Point centre) {
    canvas_.begin_group("node", place.name);
    canvas_.circle(centre, place_radius, "place");
    if (has_token(place)) canvas_.circle(centre, token_radius, "token");
    canvas_.text({centre.x + place_radius + 3, centre.y + 3}, "small start halo",
                 shortened(printable(place.name), most_place_columns));
    canvas_.end_group();
  }

  void draw_transition(const StgTransition& transition, Point centre) {
    const net::SignalKind kind = transition.signal->kind;
    const GraphNode& node = graph_.nodes[transition.index];
    canvas_.begin_group("node " + std::string{kind_word(kind)},
                        transition.name + " (" + std::string{kind_word(kind)} + ")");
    draw_border(canvas_, kind, centre, node.width, node.height);
    canvas_.text({centre.x, centre.y + text_height}, "label", label_of(transition.name));
    canvas_.end_group();
  }

  std::vector<LegendItem> legend() const {
    std::vector<LegendItem> items;
    std::array<bool, net::signal_kind_count> is_there{};
    for (const auto& transition : stg_.transitions) {
      is_there[static_cast<std::size_t>(transition->signal->kind)] = true;
    }
    for (std::size_t kind = 0; kind < is_there.size(); ++kind) {
      if (is_there[kind]) items.push_back(kind_sample(static_cast<net::SignalKind>(kind)));
    }
    return items;
  }

  std::string summary() const {
    return "STG with " + counted(stg_.transitions.size(), "transition") + " of " +
           counted(stg_.signals.size(), "signal") + " and " + counted(stg_.places.size(), "place");
  }

  std::string description() const {
    std::string text = summary() + ".";
    for (const auto& transition : stg_.transitions) text += what_follows(*transition);
    for (const StgPlace* place : drawn_places_) text += what_follows(*place);
    return text;
  }

  std::string what_follows(const StgTransition& transition) const {
    std::vector<std::string> next;
    for (const StgPlace* place : transition.postset) {
      if (is_arc(*place)) {
        next.push_back(place->postset.front()->name + (has_token(*place) ? " (marked)" : ""));
      } else if (!contains(place->postset, &transition)) {
        next.push_back("place " + place->name);
      }
    }
    if (next.empty()) return "";
    return " " + transition.name + " leads to " + listed(next) + ".";
  }

  std::string what_follows(const StgPlace& place) const {
    std::vector<std::string> next, readers;
    for (const StgTransition* transition : place.postset) {
      (contains(place.preset, transition) ? readers : next).push_back(transition->name);
    }
    std::string text = " Place " + place.name + (has_token(place) ? " (marked)" : "");
    if (!next.empty()) text += " leads to " + listed(next);
    if (!readers.empty()) {
      text += std::string{next.empty() ? "" : " and"} + " is read by " + listed(readers);
    }
    if (place.postset.empty()) text += " leads nowhere";
    return text + ".";
  }

  const Stg& stg_;
  Graph graph_;  // the transitions by their numbers, then the places that are drawn
  std::vector<Arc> arcs_;
  std::vector<const StgPlace*> drawn_places_;
  base::IndexedBy<StgPlace, std::uint32_t> node_of_;
  SvgCanvas canvas_;
};

}  // namespace

Drawing draw_stg(const net::Stg& stg) { return StgDrawing(stg).run(); }

}  // namespace vorel::report
