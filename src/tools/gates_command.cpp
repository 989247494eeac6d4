#include "tools/gates_command.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/messages.h"
#include "base/program.h"
#include "decomposition/gate_library.h"
#include "decomposition/gate_models.h"
#include "formats/overwriting.h"
#include "formats/save_file.h"
#include "net/initial_values.h"
#include "synthesis/testbench.h"
#include "tools/arguments.h"
#include "tools/input_net.h"
#include "tools/output_names.h"
#include "unfolder/unfolder.h"
#include "verify/testbench_subject.h"

namespace vorel::tools {
namespace {

constexpr const char* description =
    "Writes Verilog modules of the gates of a library, with which the netlists that\n"
    "vorel -T maps onto it can be simulated, and a testbench for a netlist.\n";

constexpr const char* footer = R"(
Gates for which netlists have no use are left out: clocked latches and **wire**.

In the testbench gates take any time and inputs change where the STG lets them.
It complains of an output or internal signal that changes where the STG does not
let it, or does not when it should, and of a gate that is excited and disabled.
The netlist is that of vorel -T, or structural Verilog without delays, in which
all gates of the library have names; the STG has all internal signals, as the
vorel.g that -T leaves. Modules of vorel -E, -G and -S can be tried as well.

Examples:
  vorel-gates gates.v                   the built-in library
  vorel-gates -d cells.genlib cells.v   a library of yours
  vorel-gates --testbench vorel.g netlist.v test.v
  iverilog -o test netlist.v test.v && vvp -n test +seed=1 +edges=1000

Exit code: 0 done, 1 done with warnings, 2 errors, 5 out of memory.)";

struct GatesRequest {
  std::string library;                          // empty: the built-in one
  std::pair<std::string, std::string> subject;  // STG and netlist, or nothing
  std::string output{standard_stream};
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
  app.add_option("--testbench", request.subject, "also a testbench for a netlist of this STG")
      ->type_name("STG NETLIST");
  if (!parse_arguments(app, argc, argv)) return std::nullopt;
  return request;
}

// A netlist and what it is tried in.
struct Subject {
  net::StgPrefix stg;
  synthesis::TestbenchSubject netlist;
};

// nullopt after an error: the STG is not safe or not consistent, too.
std::optional<Subject> read_subject(const std::string& stg_name, const std::string& netlist_name,
                                    std::span<const toolkit::LibraryGate> gates) {
  auto stg = read_stg("", stg_name);
  if (!stg) return std::nullopt;
  if (stg->inputs_end == stg->internals_end) {
    base::print_error("\"" + stg_name + "\" has no signals that a circuit drives");
    return std::nullopt;
  }
  unfolder::Unfolder<net::Stg> unfolder(std::move(*stg), {});
  if (!unfolder.unfold()) return std::nullopt;
  net::StgPrefix prefix = std::move(unfolder).result();
  if (!net::find_initial_values(prefix)) return std::nullopt;
  auto netlist = verify::read_testbench_subject(netlist_name, prefix, gates, {});
  if (!netlist) return std::nullopt;
  return Subject{std::move(prefix), std::move(*netlist)};
}

bool names_spare_files(const GatesRequest& request) {
  if (request.output == standard_stream) return true;
  std::vector<InputName> inputs{{"is the library", request.library}};
  if (!request.subject.first.empty()) {
    inputs.push_back({"is the STG", request.subject.first});
    inputs.push_back({"is the netlist", request.subject.second});
  }
  return std::ranges::all_of(inputs,
                             [&](const InputName& input) {
                               return formats::spares_input(request.output, input.name, input.what);
                             }) &&
         formats::spares_nets(request.output);
}

void write_modules(const GatesRequest& request) {
  if (!names_spare_files(request)) return;
  const auto gates = decomposition::read_gates(request.library);
  if (!gates) return;
  std::optional<Subject> subject;
  if (!request.subject.first.empty()) {
    subject = read_subject(request.subject.first, request.subject.second, *gates);
    if (!subject) return;
  }
  const auto write = [&](std::ostream& stream) {
    if (!decomposition::write_gate_models(stream, *gates)) return false;
    return !subject || synthesis::write_testbench(stream << '\n', subject->stg, subject->netlist);
  };
  if (request.output == standard_stream) {
    write(std::cout);
  } else {
    formats::save_file(request.output,
                       [&write](base::OutputFile& file) { return write(file.stream()); });
  }
}

}  // namespace

int run_gates_command(int argc, char** argv) {
  base::start_program();
  if (const auto request = parse_gates_arguments(argc, argv)) write_modules(*request);
  return base::finish_program();
}

}  // namespace vorel::tools
