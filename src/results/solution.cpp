#include "results/solution.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <numeric>

namespace vorel::results {

bool is_standard_output(const std::ostream& stream) { return &stream == &std::cout; }

void print_trace(std::ostream& stream, const Trace& trace) {
  std::string_view separator;
  for (const TraceStep& step : trace) {
    assert(step.transition != nullptr);
    stream << separator << *step.transition;
    separator = ", ";
  }
  stream << '\n';
}

void print_configuration(std::ostream& stream, const Trace& trace) {
  std::vector<std::uint32_t> events;
  for (const TraceStep& step : trace) events.push_back(step.event);
  std::ranges::sort(events);
  std::string_view separator;
  for (const std::uint32_t event : events) {
    stream << separator << event;
    separator = ", ";
  }
  stream << '\n';
}

XmlNode* trace_to_xml(XmlDocument& document, const Trace& trace, std::string_view name) {
  XmlNode* element = xml_element(document, name);
  for (const TraceStep& step : trace) {
    assert(step.transition != nullptr);
    XmlNode* child = xml_element(document, "step");
    xml_attribute(document, *child, "event", std::uint64_t{step.event});
    xml_attribute(document, *child, "transition", *step.transition);
    element->append_node(child);
  }
  return element;
}

std::uint64_t Solution::cost() const {
  return std::accumulate(traces.begin(), traces.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const Trace& trace) { return sum + trace.size(); });
}

void Solution::print_events(std::ostream& stream, const Trace& trace) const {
  output_configurations_ ? print_configuration(stream, trace) : print_trace(stream, trace);
}

void Solution::print(std::ostream& stream) const {
  assert(!traces.empty() && "a solution without traces overrides all of print");
  const bool for_people = is_standard_output(stream);
  for (std::size_t i = 0; i < traces.size(); ++i) {
    if (!for_people) stream << "_SEQUENCE:\n";
    print_events(stream, traces[i]);
    if (for_people) print_below_trace(stream, i);
  }
  if (!for_people) return;
  stream << (traces.size() == 1 ? "path cost: " : "total cost of all paths: ") << cost() << '\n';
}

XmlNode* Solution::to_xml(XmlDocument& document) const {
  XmlNode* element = xml_element(document, "solution");
  xml_attribute(document, *element, "cost", cost());
  for (const Trace& trace : traces) element->append_node(trace_to_xml(document, trace));
  return element;
}

}  // namespace vorel::results
