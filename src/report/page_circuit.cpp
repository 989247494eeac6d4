#include <array>
#include <string>

#include "flow/flow_words.h"
#include "report/drawings.h"
#include "report/page_parts.h"
#include "report/page_sections.h"

namespace vorel::report {
namespace {

void add_made_of(HtmlWriter& html, const flow::CircuitResult& circuit) {
  const auto line = html.in("p");
  html.text("Module ");
  html.add("code", circuit.module_name);
  html.text(": " + std::string{flow::row_of(circuit.style).title} + ", ");
  html.text(circuit.instances.size() == 1 ? "1 gate"
                                          : std::to_string(circuit.instances.size()) + " gates");
  if (circuit.area > 0) {
    html.text(", area ");
    html.decimal("/circuit/area", circuit.area, decimal(circuit.area));
  }
  html.text(".");
  if (circuit.inserted.empty()) return;
  html.text(" Signals inserted to map it: ");
  add_names(html, circuit.inserted, "");
  html.text(".");
}

void add_equations(HtmlWriter& html, std::span<const flow::Equation> equations) {
  constexpr std::array<std::string_view, 4> heads = {"Function", "Equation", "#Literals",
                                                     "Triggers"};
  html.add("h3", "Equations");
  const Table table(html, heads);
  for (std::size_t i = 0; i < equations.size(); ++i) {
    const auto row = html.in("tr");
    {
      const auto cell = html.in("th", "scope=\"row\"");
      html.add("code", equations[i].function);
    }
    {
      const auto cell = html.in("td");
      html.add("code", equations[i].text);
    }
    {
      const auto cell = html.in("td", "class=\"number\"");
      html.count(pointer("/circuit/equations", i, "literals"), equations[i].literals);
    }
    const auto cell = html.in("td");
    add_names(html, equations[i].triggers, "\u2013");
  }
}

void add_pin(HtmlWriter& html, std::string_view wire, bool is_inverted) {
  const auto code = html.in("code");
  if (is_inverted) html.text("!");
  html.text(wire);
}

void add_netlist(HtmlWriter& html, const flow::CircuitResult& circuit) {
  constexpr std::array<std::string_view, 6> heads = {"Instance", "Gate",     "Output",
                                                     "Inputs",   "Function", "#Area"};
  const auto details = html.in("details", "open=\"open\"");
  html.add("summary", "Netlist");
  const Table table(html, heads);
  for (const flow::Instance& instance : circuit.instances) {
    const auto row = html.in("tr");
    const auto code = [&](std::string_view text) {
      const auto cell = html.in("td");
      if (!text.empty()) html.add("code", text);
    };
    code(instance.name);
    code(instance.gate);
    {
      const auto cell = html.in("td");
      add_pin(html, instance.output, instance.is_output_inverted);
    }
    {
      const auto cell = html.in("td");
      for (std::size_t i = 0; i < instance.inputs.size(); ++i) {
        if (i > 0) html.markup(", ");
        add_pin(html, instance.inputs[i].wire, instance.inputs[i].is_inverted);
      }
    }
    code(instance.function);
    html.add("td", "class=\"number\"", instance.area > 0 ? decimal(instance.area) : "");
  }
}

}  // namespace

void add_attempts(HtmlWriter& html, const PageContent& content) {
  constexpr std::array<std::string_view, 2> heads = {"Style", "What came out"};
  const Table table(html, heads);
  for (const flow::Attempt& attempt : content.result.attempts) {
    const auto row = html.in("tr");
    html.add("th", "scope=\"row\"", flow::row_of(attempt.style).title);
    const auto cell = html.in("td");
    if (attempt.failure.empty()) {
      add_badge(html, Tone::good, "taken");
    } else {
      add_badge(html, Tone::doubtful, "left");
      html.text(" " + attempt.failure);
    }
  }
}

void add_circuit(HtmlWriter& html, const PageContent& content) {
  const flow::FlowResult& result = content.result;
  const flow::CircuitResult& circuit = *result.circuit;
  add_made_of(html, circuit);
  add_drawing(html, draw_schematic(circuit, *result.circuit_stg()), "The circuit");
  if (!circuit.equations.empty()) add_equations(html, circuit.equations);
  add_netlist(html, circuit);
  add_listing(html, "Verilog", circuit.module_text);
  if (!circuit.models_text.empty()) add_listing(html, "Models of the gates", circuit.models_text);
  if (!circuit.testbench_text.empty()) add_listing(html, "Testbench", circuit.testbench_text);
}

}  // namespace vorel::report
