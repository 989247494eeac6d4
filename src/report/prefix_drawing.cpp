#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/indexed_by.h"
#include "report/drawing_style.h"
#include "report/drawings.h"
#include "report/graph_layout.h"
#include "report/svg_canvas.h"
#include "report/svg_text.h"

namespace vorel::report {
namespace {

using net::StgPrefix;
using Event = StgPrefix::Event;
using Condition = StgPrefix::Condition;

constexpr double condition_radius = 6, dot_radius = 3.5, badge_radius = 6;
constexpr std::uint32_t shade_count = 5;
constexpr std::uint32_t first_deep_shade = 3;  // on which light letters cannot be read

class PrefixDrawing {
 public:
  PrefixDrawing(const StgPrefix& prefix, const flow::CoreMap& cores)
      : prefix_{prefix}, cores_{cores} {
    if (!cores.empty()) most_cores_ = *std::ranges::max_element(cores);
    for (const auto& event : prefix.events) {
      const double width = box_width(label_of(event->transition->name));
      graph_.nodes.push_back({width, box_height, false, Layer::any, 0});
    }
    for (const auto& condition : prefix.conditions) add_condition(*condition);
  }

  Drawing run() {
    Drawing drawing{"", summary() + "."};
    if (prefix_.events.empty()) return drawing;
    if (prefix_.events.size() > most_drawn_events || graph_.edges.size() > most_drawn_arcs) {
      drawing.alternative = summary() + ", too large to be drawn.";
      return drawing;
    }
    for (const auto& event : prefix_.events) drawing.alternative += what_precedes(*event);
    const std::optional<GraphLayout> layout = lay_out(graph_);
    if (!layout) return drawing;
    draw(*layout);
    double width = layout->width, height = layout->height;
    draw_legend(canvas_, legend(), width, height);
    drawing.svg =
        std::move(canvas_).finish(width, height, "prefix", summary(), drawing.alternative);
    return drawing;
  }

 private:
  std::uint32_t core_count(const Event& event) const {
    return event.index < cores_.size() ? cores_[event.index] : 0;
  }
  // 0 for none, then 1 to shade_count.
  std::uint32_t shade_of(std::uint32_t cores) const {
    if (cores == 0) return 0;
    return static_cast<std::uint32_t>((std::uint64_t{cores} * shade_count + most_cores_ - 1) /
                                      most_cores_);
  }

  void add_edge(std::uint32_t from, std::uint32_t to, const std::string& place) {
    const auto [known, is_new] = edge_between_.try_emplace({from, to}, places_.size());
    if (!is_new) {
      places_[known->second] += ", " + place;
      return;
    }
    graph_.edges.push_back({from, to, std::nullopt, false, true, false});
    places_.push_back(place);
  }

  // Where nothing branches an arc is enough, and what nobody consumes is left out.
  void add_condition(const Condition& condition) {
    if (condition.postset.empty()) return;
    const std::string& place = condition.place->name;
    if (!condition.is_initial() && condition.postset.size() == 1) {
      add_edge(condition.pre_event->index, condition.postset.front()->index, place);
      return;
    }
    const auto node = static_cast<std::uint32_t>(graph_.nodes.size());
    const Layer layer = condition.is_initial() ? Layer::first : Layer::any;
    graph_.nodes.push_back({2 * condition_radius, 2 * condition_radius, true, layer, 0});
    drawn_conditions_.push_back(&condition);
    if (!condition.is_initial()) add_edge(condition.pre_event->index, node, place);
    for (const Event* event : condition.postset) add_edge(node, event->index, place);
  }

  void draw(const GraphLayout& layout) {
    for (std::size_t i = 0; i < places_.size(); ++i) {
      canvas_.begin_group("edge", places_[i]);
      draw_arc(canvas_, layout.curves[i], true);
      canvas_.end_group();
    }
    for (std::size_t i = 0; i < drawn_conditions_.size(); ++i)
      draw_condition(*drawn_conditions_[i], layout.centres[prefix_.events.size() + i]);
    for (const auto& event : prefix_.events) draw_event(*event, layout.centres[event->index]);
  }

  void draw_condition(const Condition& condition, Point centre) {
    canvas_.begin_group("node", condition.place->name);
    canvas_.circle(centre, condition_radius, "place");
    if (condition.is_initial()) canvas_.circle(centre, dot_radius, "token");
    canvas_.end_group();
  }

  void draw_event(const Event& event, Point centre) {
    const std::string& name = event.transition->name;
    const net::SignalKind kind = event.transition->signal->kind;
    const GraphNode& node = graph_.nodes[event.index];
    std::string group = "node " + std::string{kind_word(kind)}, border;
    if (event.is_cut_off()) border = "cut-off";
    if (const std::uint32_t level = shade_of(core_count(event)); level > 0) {
      border += (border.empty() ? "core" : " core") + std::to_string(level);
      if (level >= first_deep_shade) group += " deep";
    }
    canvas_.begin_group(group, title(event));
    draw_border(canvas_, kind, centre, node.width, node.height, border);
    canvas_.text({centre.x, centre.y + text_height}, "label", label_of(name));
    canvas_.end_group();
    if (core_count(event) > 0) draw_badge(event, centre, node);
  }

  void draw_badge(const Event& event, Point centre, const GraphNode& node) {
    const Point at{centre.x + node.width / 2 - 1, centre.y - node.height / 2 + 1};
    canvas_.begin_group("count");
    canvas_.circle(at, badge_radius, "badge");
    canvas_.text({at.x, at.y + 3}, "badge-text", std::to_string(core_count(event)));
    canvas_.end_group();
  }

  std::string title(const Event& event) const {
    return "event " + std::to_string(event.index) + ": " + event.transition->name +
           (event.is_cut_off() ? ", cut-off" : "") + in_cores(event);
  }
  std::string in_cores(const Event& event) const {
    const std::uint32_t count = core_count(event);
    return count == 0 ? "" : ", in " + counted(count, "conflict core");
  }

  std::vector<LegendItem> legend() const {
    std::vector<LegendItem> items;
    std::array<bool, net::signal_kind_count> is_there{};
    bool has_cut_offs = false;
    for (const auto& event : prefix_.events) {
      is_there[static_cast<std::size_t>(event->transition->signal->kind)] = true;
      has_cut_offs |= event->is_cut_off();
    }
    for (std::size_t kind = 0; kind < is_there.size(); ++kind)
      if (is_there[kind]) items.push_back(kind_sample(static_cast<net::SignalKind>(kind)));
    if (has_cut_offs) items.push_back(box_sample("cut-off", "cut-off"));
    if (most_cores_ > 0) items.push_back(core_scale());
    return items;
  }

  static LegendItem box_sample(const std::string& classes, const std::string& text) {
    constexpr double width = 24;
    const auto draw = [classes](SvgCanvas& canvas, Point middle) {
      canvas.box(middle, width, 14, 5, "border " + classes);
    };
    return {width, draw, text};
  }

  // All shades that a number of cores can have.
  LegendItem core_scale() const {
    constexpr double width = 12;
    const std::uint32_t shades = std::min(most_cores_, shade_count);
    const auto draw = [shades, this](SvgCanvas& canvas, Point middle) {
      for (std::uint32_t i = 0; i < shades; ++i) {
        const std::uint32_t cores = (most_cores_ * (i + 1) + shades - 1) / shades;
        canvas.box({middle.x + width * (i - (shades - 1) / 2.0), middle.y}, width, 14, 0,
                   "border core" + std::to_string(shade_of(cores)));
      }
    };
    const std::string range = most_cores_ == 1 ? "" : "1 to ";
    return {width * shades, draw, "in " + range + counted(most_cores_, "conflict core")};
  }

  std::string summary() const {
    const auto cut_offs = static_cast<std::size_t>(
        std::ranges::count_if(prefix_.events, [](const auto& e) { return e->is_cut_off(); }));
    return "Prefix with " + counted(prefix_.events.size(), "event") + ", " +
           counted(cut_offs, "cut-off") + " and " + counted(prefix_.conditions.size(), "condition");
  }

  std::string what_precedes(const Event& event) const {
    std::vector<std::uint32_t> causes;
    for (const Condition* condition : event.preset)
      if (!condition->is_initial()) causes.push_back(condition->pre_event->index);
    std::ranges::sort(causes);
    causes.erase(std::ranges::unique(causes).begin(), causes.end());
    std::vector<std::string> names;
    for (const std::uint32_t cause : causes)
      names.push_back(std::to_string(cause) + " (" + prefix_.events[cause]->transition->name + ")");
    std::string text = " Event " + std::to_string(event.index) + " is " + event.transition->name;
    text += names.empty() ? ", possible initially" : ", after " + listed(names);
    return text + (event.is_cut_off() ? ", a cut-off" : "") + in_cores(event) + ".";
  }

  const StgPrefix& prefix_;
  const flow::CoreMap& cores_;
  std::uint32_t most_cores_ = 0;
  Graph graph_;  // the events by their numbers, then the conditions that are drawn
  std::vector<std::string> places_;  // by edge
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::size_t> edge_between_;
  std::vector<const Condition*> drawn_conditions_;
  SvgCanvas canvas_;
};

}  // namespace

Drawing draw_prefix(const net::StgPrefix& prefix, const flow::CoreMap& cores) {
  return PrefixDrawing(prefix, cores).run();
}

}  // namespace vorel::report
