#include "synthesis/verilog_module.h"

#include <iostream>

#include "base/messages.h"
#include "base/output_file.h"
#include "base/run_state.h"
#include "toolkit/verilog_name.h"

namespace vorel::synthesis {
namespace {

std::string joined(const base::OwnedList<net::Signal>& signals, std::uint32_t first,
                   std::uint32_t end) {
  std::string text;
  for (std::uint32_t i = first; i < end; ++i) {
    if (i > first) text += ", ";
    text += toolkit::verilog_name(signals[i]->name);
  }
  return text;
}

}  // namespace

bool names_can_stand_in_verilog(const net::Stg& stg) {
  for (const auto& signal : stg.signals) {
    if (signal->is_dummy() || toolkit::can_stand_in_verilog(signal->name)) continue;
    if (!signal->name.empty()) return toolkit::report_not_for_verilog("the signal", signal->name);
    base::print_error("a signal has no name, and so cannot stand in Verilog");
    return false;
  }
  return true;
}

void write_module_start(std::ostream& stream, std::string_view name, const net::Stg& stg) {
  const std::string outputs = joined(stg.signals, stg.inputs_end, stg.outputs_end);
  const std::string inputs = joined(stg.signals, 0, stg.inputs_end);
  const char* separator = outputs.empty() || inputs.empty() ? "" : ", ";
  stream << "module " << name << '(' << outputs << separator << inputs << ");\n";
  if (!outputs.empty()) stream << "    output " << outputs << ";\n";
  if (!inputs.empty()) stream << "    input " << inputs << ";\n";
  stream << '\n';
}

std::string initial_value_text(std::string_view name, bool value) {
  return std::string(value ? " " : " !").append(name);
}

std::string initial_values_text(const net::Stg& stg) {
  std::string text;
  for (const auto& signal : stg.signals) {
    if (!signal->is_dummy()) text += initial_value_text(signal->name, signal->initial_value == 1);
  }
  return text;
}

void write_module_end(std::ostream& stream, std::string_view initial_values) {
  stream << "\n    // initial values of the signals\n    //" << initial_values << "\nendmodule\n";
}

void deliver_with_module(const results::Report& report, const results::VerdictMessages& messages,
                         const std::string& output, const ModuleWriter& write_module) {
  const bool is_document = output.ends_with(".xml");
  if (!output.ends_with(".v") && !(is_document && base::run_failed())) {
    results::deliver(report, messages, output);
    return;
  }
  std::cout << '\n' << (report.solutions.empty() ? messages.empty : messages.found) << '\n';
  if (is_document) return;
  std::cout.flush();  // the file can be the standard output, by another name
  base::OutputFile file(output);
  if (!file.is_open()) {
    base::print_warning(base::cannot_open_for_output(output));
    write_module(std::cerr);
  } else if (write_module(file.stream()) && !file.commit()) {
    base::print_error("cannot write a file");
  }
}

}  // namespace vorel::synthesis
