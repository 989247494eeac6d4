#include "tools/gates_command.h"

#include <iostream>
#include <optional>
#include <string>

#include "base/messages.h"
#include "base/program.h"
#include "decomposition/gate_library.h"
#include "decomposition/gate_models.h"
#include "formats/overwriting.h"
#include "formats/save_file.h"
#include "tools/arguments.h"

namespace vorel::tools {
namespace {

constexpr const char* standard_output = "-";

constexpr const char* description =
    "Writes Verilog modules of the gates of a library, with which the netlists that\n"
    "vorel -T maps onto it can be simulated.\n";

constexpr const char* footer = R"(
Gates for which netlists have no use are left out: clocked latches and **wire**.

Examples:
  vorel-gates gates.v                   the built-in library
  vorel-gates -d cells.genlib cells.v   a library of yours
  iverilog -o test netlist.v gates.v testbench.v

Exit code: 0 done, 1 done with warnings, 2 errors, 5 out of memory.)";

struct GatesRequest {
  std::string library;  // empty: the built-in one
  std::string output = standard_output;
};

// nullopt where nothing is left to do: after --help, --version or a reported error.
std::optional<GatesRequest> parse_gates_arguments(int argc, char** argv) {
  GatesRequest request;
  CLI::App app{description, "vorel-gates"};
  app.footer(footer);
  add_usual_flags(app);
  app.add_option("output", request.output, "file for the modules; - or none: standard output")
      ->type_name("");
  app.add_option("-d,--library", request.library, "gate library in the GENLIB format, or with .gz")
      ->type_name("FILE");
  if (!parse_arguments(app, argc, argv)) return std::nullopt;
  return request;
}

void write_models(const GatesRequest& request) {
  const bool to_file = request.output != standard_output;
  if (to_file && (!formats::spares_input(request.output, request.library, "is the library") ||
                  !formats::spares_nets(request.output))) {
    return;
  }
  const auto gates = decomposition::read_gates(request.library);
  if (!gates) return;
  if (to_file) {
    formats::save_file(request.output, [&gates](base::OutputFile& file) {
      return decomposition::write_gate_models(file.stream(), *gates);
    });
  } else {
    decomposition::write_gate_models(std::cout, *gates);
  }
}

}  // namespace

int run_gates_command(int argc, char** argv) {
  base::start_program();
  if (const auto request = parse_gates_arguments(argc, argv)) write_models(*request);
  return base::finish_program();
}

}  // namespace vorel::tools
