// results/solution.h - what a run found: traces of events, in text and XML form.
// Here:      Trace, the base class Solution.
// Not here:  the list of solutions and where it goes (results/report.h); what single modes add.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "results/xml_document.h"

namespace vorel::results {

// One event of a trace. The name belongs to the transition in the process, which outlives results.
struct TraceStep {
  std::uint32_t event = 0;  // the event's index
  const std::string* transition = nullptr;
};

// Results are printed for people on the standard output, and for machines on any other stream.
bool is_standard_output(const std::ostream& stream);

// Events in firing order (or, for a configuration, in any order).
using Trace = std::vector<TraceStep>;

// Writes the names of the transitions, joined by ", ", and a newline.
void print_trace(std::ostream& stream, const Trace& trace);
// The same of the indices of the events, from 0, in ascending order: a configuration is a set.
void print_configuration(std::ostream& stream, const Trace& trace);
// An element with a `step` for each event, not yet attached.
XmlNode* trace_to_xml(XmlDocument& document, const Trace& trace, std::string_view name = "trace");

class Solution {
 public:
  explicit Solution(bool output_configurations) : output_configurations_{output_configurations} {}
  virtual ~Solution() = default;
  Solution(const Solution&) = delete;
  Solution& operator=(const Solution&) = delete;

  // The sum of the lengths of all traces.
  virtual std::uint64_t cost() const;
  // The traces and, on the standard output only, the cost.
  virtual void print(std::ostream& stream) const;
  // A new `solution` element that belongs to the document.
  virtual XmlNode* to_xml(XmlDocument& document) const;

  std::vector<Trace> traces;

 protected:
  bool output_configurations() const { return output_configurations_; }
  // As names in firing order or as numbers, whatever the user wants.
  void print_events(std::ostream& stream, const Trace& trace) const;
  // What stands below a trace (by its position) on the standard output.
  virtual void print_below_trace(std::ostream& /*stream*/, std::size_t /*trace*/) const {}

 private:
  bool output_configurations_;  // print event numbers rather than transition names
};

}  // namespace vorel::results
