#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "report/drawing_style.h"
#include "report/drawings.h"
#include "report/graph_layout.h"
#include "report/svg_canvas.h"
#include "report/svg_text.h"

namespace vorel::report {
namespace {

using flow::Instance;

constexpr double pin_height = 18, least_gate_height = 40, bubble_radius = 3.5;
constexpr double port_height = 20, label_margin = 24;

// What stands in front of a colon tells one gate of a library from others; what is behind it is a
// group that the library's author had in mind.
std::string_view short_name(std::string_view gate) {
  const std::size_t colon = gate.find(':');
  return colon == 0 || colon == std::string_view::npos ? gate : gate.substr(0, colon);
}

class Schematic {
 public:
  Schematic(const flow::CircuitResult& circuit, const net::Stg& stg)
      : circuit_{circuit}, stg_{stg} {
    graph_.is_downwards = false;
    graph_.layer_gap = 40;
    for (std::size_t i = 0; i < stg.internals_end; ++i)
      kind_of_.emplace(stg.signals[i]->name, stg.signals[i]->kind);
    for (const Instance& instance : circuit.instances) add_gate(instance);
    for (std::size_t i = 0; i < stg.outputs_end; ++i) add_port(*stg.signals[i]);
    for (const Instance& instance : circuit.instances) add_wires(instance);
  }

  Drawing run() {
    Drawing drawing{"", summary() + "."};
    if (circuit_.instances.empty()) return drawing;
    if (graph_.nodes.size() > most_drawn_nodes || graph_.edges.size() > most_drawn_arcs) {
      drawing.alternative = summary() + ", too large to be drawn.";
      return drawing;
    }
    for (const Instance& instance : circuit_.instances) drawing.alternative += in_words(instance);
    const std::optional<GraphLayout> layout = lay_out(graph_);
    if (!layout) return drawing;
    draw(*layout);
    double width = layout->width, height = layout->height;
    draw_legend(canvas_, legend(), width, height);
    drawing.svg =
        std::move(canvas_).finish(width, height, "schematic", summary(), drawing.alternative);
    return drawing;
  }

 private:
  using Node = std::uint32_t;

  static bool is_of_library(const Instance& instance) { return !instance.gate.empty(); }

  static std::string label(const Instance& instance) {
    return label_of(is_of_library(instance) ? std::string{short_name(instance.gate)}
                                            : instance.function);
  }

  void add_gate(const Instance& instance) {
    const auto pins = static_cast<std::uint32_t>(instance.inputs.size());
    const double height = std::max(pin_height * pins, least_gate_height);
    driver_of_.emplace(instance.output, static_cast<Node>(graph_.nodes.size()));
    // Pins are whole units high.
    graph_.nodes.push_back({std::floor(box_width(label(instance)) + label_margin),
                            pins == 0 ? height : pins * std::floor(height / pins), false,
                            Layer::any, pins});
  }

  void add_port(const net::Signal& signal) {
    const bool is_input = signal.kind == net::SignalKind::input;
    const auto node = static_cast<Node>(graph_.nodes.size());
    graph_.nodes.push_back({box_width(label_of(signal.name)), port_height, false,
                            is_input ? Layer::first : Layer::last, 0});
    ports_.push_back(&signal);
    if (is_input) {
      driver_of_.emplace(signal.name, node);
    } else if (const auto driver = driver_of_.find(signal.name); driver != driver_of_.end()) {
      add_edge(driver->second, node, std::nullopt, signal.name);
    }
  }

  void add_edge(Node from, Node to, std::optional<std::uint32_t> pin, std::string wire) {
    graph_.edges.push_back({from, to, pin, false, false, from < circuit_.instances.size()});
    wires_.push_back(std::move(wire));
  }

  // What a gate reads of itself is part of what it is, and not drawn.
  void add_wires(const Instance& instance) {
    const Node gate = driver_of_.at(instance.output);
    for (std::size_t pin = 0; pin < instance.inputs.size(); ++pin) {
      const auto driver = driver_of_.find(instance.inputs[pin].wire);
      if (driver == driver_of_.end() || driver->second == gate) continue;
      add_edge(driver->second, gate, static_cast<std::uint32_t>(pin), instance.inputs[pin].wire);
    }
  }

  std::string kind_class(const std::string& wire) const {
    const auto kind = kind_of_.find(wire);
    return kind == kind_of_.end() ? "" : " " + std::string{kind_word(kind->second)};
  }

  void draw(const GraphLayout& layout) {
    for (std::size_t i = 0; i < wires_.size(); ++i) {
      canvas_.begin_group("edge" + kind_class(wires_[i]), wires_[i]);
      canvas_.curve(layout.curves[i].points, "wire");
      canvas_.end_group();
    }
    for (std::size_t i = 0; i < circuit_.instances.size(); ++i)
      draw_gate(circuit_.instances[i], graph_.nodes[i], layout.centres[i]);
    for (std::size_t i = 0; i < ports_.size(); ++i) {
      const std::size_t node = circuit_.instances.size() + i;
      draw_port(*ports_[i], graph_.nodes[node], layout.centres[node]);
    }
  }

  void draw_gate(const Instance& instance, const GraphNode& node, Point centre) {
    canvas_.begin_group("node" + kind_class(instance.output), in_words(instance));
    canvas_.box(centre, node.width, node.height, 3, "gate");
    canvas_.text({centre.x, centre.y + text_height}, "label", label(instance));
    canvas_.text({centre.x, centre.y - node.height / 2 + 9}, "small",
                 keeps_its_value(instance) ? instance.name + " keeps" : instance.name);
    canvas_.text({centre.x + node.width / 2 + 5, centre.y - 4}, "small start halo",
                 label_of(instance.output));
    draw_bubbles(instance, node, centre);
    canvas_.end_group();
  }

  // The function of a gate of a library speaks of the output where the gate has a state.
  static bool keeps_its_value(const Instance& instance) {
    const auto is_part_of_name = [](char c) {
      return std::string_view{" ()+'*!&|^~"}.find(c) == std::string_view::npos;
    };
    const std::string& function = instance.function;
    for (std::size_t at = function.find(instance.output); at != std::string::npos;
         at = function.find(instance.output, at + 1)) {
      const std::size_t end = at + instance.output.size();
      const bool begins = at == 0 || !is_part_of_name(function[at - 1]);
      if (begins && (end == function.size() || !is_part_of_name(function[end]))) return true;
    }
    return false;
  }

  void draw_bubbles(const Instance& instance, const GraphNode& node, Point centre) {
    const auto pins = static_cast<double>(instance.inputs.size());
    for (std::size_t pin = 0; pin < instance.inputs.size(); ++pin) {
      if (!instance.inputs[pin].is_inverted) continue;
      const double from_top = (static_cast<double>(pin) + 0.5) * node.height / pins;
      canvas_.circle(
          {centre.x - node.width / 2 - bubble_radius, centre.y - node.height / 2 + from_top},
          bubble_radius, "instant");
    }
    if (instance.is_output_inverted)
      canvas_.circle({centre.x + node.width / 2 + bubble_radius, centre.y}, bubble_radius,
                     "bubble");
  }

  void draw_port(const net::Signal& signal, const GraphNode& node, Point centre) {
    const std::string kind{kind_word(signal.kind)};
    canvas_.begin_group("node " + kind, signal.name + " (" + kind + ")");
    draw_border(canvas_, signal.kind, centre, node.width, node.height);
    canvas_.text({centre.x, centre.y + text_height}, "label", label_of(signal.name));
    canvas_.end_group();
  }

  std::vector<LegendItem> legend() const {
    std::vector<LegendItem> items;
    std::array<bool, net::signal_kind_count> is_there{};
    for (const net::Signal* port : ports_) is_there[static_cast<std::size_t>(port->kind)] = true;
    for (std::size_t kind = 0; kind < is_there.size(); ++kind)
      if (is_there[kind]) items.push_back(kind_sample(static_cast<net::SignalKind>(kind)));
    const bool has_instant = std::ranges::any_of(circuit_.instances, [](const Instance& instance) {
      return std::ranges::any_of(instance.inputs, &Instance::Pin::is_inverted);
    });
    if (has_instant) items.push_back(bubble_sample("instant", "inverted in no time"));
    if (std::ranges::any_of(circuit_.instances, &Instance::is_output_inverted))
      items.push_back(bubble_sample("bubble", "inverter with a delay"));
    return items;
  }

  static LegendItem bubble_sample(const std::string& classes, const std::string& text) {
    const auto draw = [classes](SvgCanvas& canvas, Point middle) {
      canvas.circle(middle, bubble_radius, classes);
    };
    return {2 * bubble_radius, draw, text};
  }

  std::string summary() const { return "Circuit of " + counted(circuit_.instances.size(), "gate"); }

  static std::string in_words(const Instance& instance) {
    std::vector<std::string> inputs;
    for (const Instance::Pin& pin : instance.inputs)
      inputs.push_back(pin.wire + (pin.is_inverted ? " (inverted)" : ""));
    std::string text = " " + instance.output + " is made by " + instance.name;
    if (is_of_library(instance)) text += ", a " + instance.gate;
    if (instance.is_output_inverted) text += " with an inverter behind it";
    if (!inputs.empty()) text += ", of " + listed(inputs);
    return text + ".";
  }

  const flow::CircuitResult& circuit_;
  const net::Stg& stg_;
  Graph graph_;                            // the gates in their order, then the ports
  std::map<std::string, Node> driver_of_;  // by wire
  std::map<std::string, net::SignalKind> kind_of_;
  std::vector<std::string> wires_;  // by edge
  std::vector<const net::Signal*> ports_;
  SvgCanvas canvas_;
};

}  // namespace

Drawing draw_schematic(const flow::CircuitResult& circuit, const net::Stg& stg) {
  return Schematic(circuit, stg).run();
}

}  // namespace vorel::report
