#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "report/channel_router.h"
#include "report/drawing_style.h"
#include "report/drawings.h"
#include "report/gate_symbol.h"
#include "report/graph_layout.h"
#include "report/svg_canvas.h"
#include "report/svg_text.h"

namespace vorel::report {
namespace {

using flow::Instance;

constexpr double pin_height = 18, least_gate_height = 40, bubble_radius = 3.5;
constexpr double port_height = 20, label_margin = 36, c_element_width = 48, joint_radius = 2.4;
constexpr double wire_label_gap = 8;
constexpr double pointed_part = 0.06;  // of the width of a gate, by which its middle lies more left

constexpr std::size_t most_function_columns = 46;

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
    graph_.node_gap = 24;
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
    const Wiring wiring = route(*layout);
    draw(wiring);
    double width = wiring.width, height = wiring.height;
    draw_legend(canvas_, legend(), width, height);
    drawing.svg =
        std::move(canvas_).finish(width, height, "schematic", summary(), drawing.alternative);
    return drawing;
  }

 private:
  using Node = std::uint32_t;

  struct Wire {
    Node from, to;
    std::optional<std::uint32_t> pin;  // of `to`, if it is a gate
    std::optional<std::size_t> edge;   // of the graph; those of one gate to itself have none
    std::string name;
  };

  static bool is_of_library(const Instance& instance) { return !instance.gate.empty(); }

  // A shape says all that there is to say of a function.
  static std::string label(const Instance& instance, GateShape shape) {
    if (is_of_library(instance)) return label_of(short_name(instance.gate));
    if (shape != GateShape::box) return "";
    return shortened(printable(instance.function), most_function_columns);
  }

  void add_gate(const Instance& instance) {
    const auto pins = static_cast<std::uint32_t>(std::ranges::count_if(
        instance.inputs, [&](const Instance::Pin& pin) { return has_pin(instance, pin); }));
    const double height = std::max(pin_height * pins, least_gate_height);
    driver_of_.emplace(instance.output, static_cast<Node>(graph_.nodes.size()));
    symbols_.push_back(symbol_of(instance, circuit_.circuit));
    // Pins are whole units high.
    graph_.nodes.push_back({std::floor(gate_width(instance, symbols_.back().shape)),
                            pins == 0 ? height : pins * std::floor(height / pins), false,
                            Layer::any, pins});
  }

  static double small_label_width(std::string_view label) {
    return label_width(label) * small_letter_width / letter_width;
  }

  static std::string first_line(const Instance& instance, GateShape shape) {
    const std::string name = is_of_library(instance) ? label_of(instance.name) : "";
    const bool is_told = shape == GateShape::box && keeps_its_value(instance);
    return is_told ? name + (name.empty() ? "keeps its value" : " keeps its value") : name;
  }

  static double gate_width(const Instance& instance, GateShape shape) {
    if (shape == GateShape::c_element) return c_element_width;
    const std::string name = label(instance, shape);
    const double least = small_label_width(first_line(instance, shape)) + label_margin / 2;
    if (shape == GateShape::buffer) return small_label_width(name) + label_margin;
    if (name.empty()) return c_element_width;
    return std::max(label_width(name) + label_margin, least);
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
      add_wire(driver->second, node, std::nullopt, signal.name);
    }
  }

  void add_wire(Node from, Node to, std::optional<std::uint32_t> pin, const std::string& wire) {
    wires_.push_back({from, to, pin, std::nullopt, wire});
    if (from == to) return;
    wires_.back().edge = graph_.edges.size();
    graph_.edges.push_back({from, to, pin, false, false, from < circuit_.instances.size()});
  }

  void add_wires(const Instance& instance) {
    const Node gate = driver_of_.at(instance.output);
    std::uint32_t number = 0;
    for (const Instance::Pin& pin : instance.inputs) {
      if (!has_pin(instance, pin)) continue;
      const auto driver = driver_of_.find(pin.wire);
      if (driver != driver_of_.end()) add_wire(driver->second, gate, number, pin.wire);
      ++number;
    }
  }

  static double pin_offset(const GraphNode& node, std::uint32_t pin) {
    return ((pin + 0.5) / node.pins - 0.5) * node.height;
  }

  // One net for each driver, in the order of the names of its wires.
  Wiring route(const GraphLayout& layout) {
    std::map<std::string, NetToRoute> nets;
    for (const Wire& wire : wires_) {
      NetToRoute& net = nets[wire.name];
      net.driver = wire.from;
      if (!is_port(wire.name) && wire.from < circuit_.instances.size())
        net.label_width = small_label_width(label_of(wire.name)) + 2 * wire_label_gap;
      net.sinks.push_back({wire.to, wire.pin ? pin_offset(graph_.nodes[wire.to], *wire.pin) : 0,
                           wire.edge ? &layout.curves[*wire.edge] : nullptr});
    }
    std::vector<NetToRoute> list;
    for (auto& [name, net] : nets) {
      net_names_.push_back(name);
      list.push_back(std::move(net));
    }
    return route_wires(graph_.nodes, layout, list);
  }

  std::string kind_class(const std::string& wire) const {
    const auto kind = kind_of_.find(wire);
    return kind == kind_of_.end() ? "" : " " + std::string{kind_word(kind->second)};
  }

  void draw(const Wiring& wiring) {
    for (std::size_t i = 0; i < wiring.routes.size(); ++i) {
      canvas_.begin_group("edge" + kind_class(net_names_[i]), net_names_[i]);
      for (const Segment& segment : wiring.routes[i].segments)
        canvas_.line(std::array{segment.from, segment.to}, "wire");
      for (const Point joint : wiring.routes[i].joints)
        canvas_.circle(joint, joint_radius, "joint");
      canvas_.end_group();
    }
    for (std::size_t i = 0; i < circuit_.instances.size(); ++i) draw_gate(i, wiring.centres[i]);
    for (std::size_t i = 0; i < ports_.size(); ++i) {
      const std::size_t node = circuit_.instances.size() + i;
      draw_port(*ports_[i], graph_.nodes[node], wiring.centres[node]);
    }
  }

  void draw_gate(std::size_t number, Point centre) {
    const Instance& instance = circuit_.instances[number];
    const GateSymbol& symbol = symbols_[number];
    const GraphNode& node = graph_.nodes[number];
    canvas_.begin_group("node" + kind_class(instance.output), in_words(instance));
    draw_outline(canvas_, symbol.shape, centre, node.width, node.height);
    draw_names(instance, symbol.shape, node, centre);
    if (!is_port(instance.output))
      canvas_.text({centre.x + node.width / 2 + wire_label_gap, centre.y - 5}, "small start halo",
                   label_of(instance.output));
    draw_pins(instance, symbol, node, centre);
    canvas_.end_group();
  }

  // Outlines other than boxes are pointed at their right.
  void draw_names(const Instance& instance, GateShape shape, const GraphNode& node, Point centre) {
    const double top_line = centre.y - node.height / 2 + 11;
    const std::string name = first_line(instance, shape);
    if (shape == GateShape::buffer) {
      canvas_.text({centre.x - node.width / 2 + 5, centre.y + 3}, "small start",
                   label(instance, shape));
      canvas_.text({centre.x + 4, top_line - 2}, "small start halo", name);
      return;
    }
    const bool is_box = shape == GateShape::box;
    const double middle = is_box ? centre.x : centre.x - pointed_part * node.width;
    canvas_.text({middle, top_line}, "small", name);
    if (shape == GateShape::c_element)
      canvas_.text({middle, centre.y + (name.empty() ? 6 : 11)}, "letter", "C");
    else
      canvas_.text({middle, centre.y + text_height + 3}, "label", label(instance, shape));
  }

  bool is_port(const std::string& wire) const {
    return std::ranges::find(ports_, wire, &net::Signal::name) != ports_.end();
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

  // Inversions in the gate next to its outline, those beside it in front of them.
  void draw_pins(const Instance& instance, const GateSymbol& symbol, const GraphNode& node,
                 Point centre) {
    std::uint32_t number = 0;
    for (const Instance::Pin& pin : instance.inputs) {
      if (!has_pin(instance, pin)) continue;
      const double y = centre.y + pin_offset(node, number);
      const double edge = centre.x - node.width / 2;
      double x = edge + inset_at(symbol.shape, (y - centre.y) / node.height + 0.5);
      if (x > edge) canvas_.line(std::array<Point, 2>{{{edge, y}, {x, y}}}, "pin");
      const bool has_bubble = symbol.shape != GateShape::box && symbol.has_bubble[number];
      ++number;
      if (has_bubble) {
        canvas_.circle({x - bubble_radius, y}, bubble_radius, "bubble");
        x -= 2 * bubble_radius;
      }
      if (pin.is_inverted) canvas_.circle({x - bubble_radius, y}, bubble_radius, "instant");
    }
    const Point output{centre.x + node.width / 2 + bubble_radius, centre.y};
    if (symbol.has_output_bubble) canvas_.circle(output, bubble_radius, "bubble");
    if (instance.is_output_inverted) canvas_.circle(output, bubble_radius, "slow");
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
      items.push_back(bubble_sample("slow", "inverter with a delay"));
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
    text += is_of_library(instance) ? ", a " + instance.gate : ", a gate for " + instance.function;
    if (instance.is_output_inverted) text += " with an inverter behind it";
    if (!inputs.empty()) text += ", of " + listed(inputs);
    return text + ".";
  }

  const flow::CircuitResult& circuit_;
  const net::Stg& stg_;
  Graph graph_;                            // the gates in their order, then the ports
  std::map<std::string, Node> driver_of_;  // by wire
  std::map<std::string, net::SignalKind> kind_of_;
  std::vector<GateSymbol> symbols_;  // by gate
  std::vector<Wire> wires_;
  std::vector<std::string> net_names_;
  std::vector<const net::Signal*> ports_;
  SvgCanvas canvas_;
};

}  // namespace

Drawing draw_schematic(const flow::CircuitResult& circuit, const net::Stg& stg) {
  return Schematic(circuit, stg).run();
}

}  // namespace vorel::report
