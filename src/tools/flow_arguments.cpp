#include "tools/flow_arguments.h"

#include <algorithm>
#include <cassert>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/messages.h"
#include "flow/flow_words.h"
#include "resolution/coefficients.h"
#include "tools/arguments.h"
#include "tools/flow_files.h"
#include "tools/input_net.h"

namespace vorel::tools {
namespace {

constexpr const char* description =
    "Makes a circuit of a Signal Transition Graph (STG) and proves that it is right,\n"
    "or tells what is wrong with the STG, and by what trace.\n";

constexpr const char* footer = R"(
The steps, each told in one line:
  read         in all formats of vorel-unfold; a place that is to have two tokens
               from the start is an error
  unfold       to a finite complete prefix; an STG that is not safe or not
               consistent is at fault
  check        dead transitions and signals, deadlock, outputs that inputs disable
               (a fault), outputs that disable each other (an arbiter), inputs that
               the circuit would have to hold back
  properties   those of --properties
  coding       encoding conflicts: states with one code, USC, in which different
               outputs are due, CSC
  resolve      a new signal for each conflict that is in the way
  synthesise   the circuit, in Verilog
  verify       the circuit next to the STG, as vorel-verify does
  report       the files

With -o the folder gets, for an STG x.g: x.g, the STG with all signals that were
inserted; x.v, the circuit; x_gates.v, models of the gates it uses from a library;
x_tb.v with --testbench; traces/*.vcd, each trace for a viewer of waveforms;
report.html, to be looked at; report.json, for programs. A run that ends without a
circuit leaves the report and the traces only, and one that ends with an error the
folder as it was. What report.json lists of an earlier run goes, but for the
circuits of other STGs.

Examples:
  vorel-flow vme.g
  vorel-flow vme.g -o vme --testbench
  vorel-flow --style complex --reset rst --json - vme.g
  vorel-flow --lib cells.genlib --cost lock=0,trig=#s*4 vme.g -o out

Exit code: 0 a verified circuit, 1 the same with warnings, 2 errors, 3 the STG is
at fault, 4 gave up (at a limit, or without a circuit that is right), 5 out of
memory.)";

// "NAME=EXPR,NAME=EXPR", or a preset.
bool take_costs(const std::string& list, resolution::CoefficientTexts& texts) {
  if (list == "small") return texts = resolution::small_preset, true;
  if (list == "logic") return texts = resolution::logic_preset, true;
  std::string_view rest = list;
  while (!rest.empty()) {
    const std::string_view item = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(rest.size(), item.size() + 1));
    const std::size_t equals = item.find('=');
    const auto table = resolution::coefficient_table();
    const auto row =
        std::ranges::find(table, item.substr(0, equals), &resolution::CoefficientRow::name);
    if (row == table.end() || equals == std::string_view::npos || equals + 1 == item.size())
      return false;
    texts.*row->text = item.substr(equals + 1);
  }
  return !list.empty() && list.back() != ',';
}

// Escaped, a name may consist of anything that is printed.
bool is_verilog_name(const std::string& name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) { return '!' <= c && c <= '~'; });
}

std::vector<std::string> style_keys() {
  std::vector<std::string> keys;
  for (const flow::StyleRow& row : flow::style_rows) keys.emplace_back(row.key);
  return keys;
}

class FlowArguments {
 public:
  FlowArguments() {
    task_.request.threads = preset_threads();
    app_.footer(footer);
    add_usual_flags(app_);
    app_.formatter(std::make_shared<PlainHelp>());
    add_files();
    add_resolution();
    add_circuit();
    add_run();
  }

  std::optional<FlowTask> parse(int argc, char** argv) {
    if (!parse_arguments(app_, argc, argv) || !settle()) return std::nullopt;
    return std::move(task_);
  }

 private:
  void add_files() {
    app_.add_option("stg", task_.stg, "file with the STG, or -")->required()->type_name("");
    add_format_option(app_, task_.format_name);
    app_.add_option("-o,--output", task_.folder,
                    "folder for the circuit and the report, which is made if\n"
                    "there is none; without it nothing is kept")
        ->type_name("FOLDER");
    app_.add_option("--json", task_.document,
                    "write all that was found out as a JSON document; its\n"
                    "schema is docs/flow.schema.json; - is the standard\n"
                    "output, and the steps are told on the standard error")
        ->type_name("FILE");
    app_.add_flag_callback(
        "--no-html", [this] { task_.wants_page = false; },
        "leave report.html with its drawings out");
    app_.add_option("--properties", task_.properties,
                    "answer the properties of this file: paragraphs of the\n"
                    "form 'name: property', in the language of vorel -Fs, and\n"
                    "lines that begin with # as comments")
        ->type_name("FILE");
  }

  void add_resolution() {
    flow::ResolutionRequest& resolution = task_.request.resolution;
    app_.add_flag_callback(
        "--no-resolve", [&resolution] { resolution.is_wanted = false; },
        "insert no signals: give up at an encoding conflict");
    app_.add_option("--insertions", resolution.concurrent_insertions,
                    "where edges of new signals may be put: 0 in sequence\n"
                    "only, 1 also concurrently to what comes soon (default),\n"
                    "2 wherever it is valid")
        ->check(CLI::Range(0, 2).description(""))
        ->type_name("0..2");
    app_.add_flag("--reduce", resolution.with_reductions,
                  "conflicts may also be resolved by less concurrency");
    app_.add_option("--cost", costs_,
                    "coefficients of the cost of an insertion, as -c of vorel\n"
                    "has them: NAME=EXPR, with commas between; 'small' for few\n"
                    "insertions, 'logic' for simple logic; may be given several\n"
                    "times, and a later one takes precedence")
        ->type_name("LIST");
  }

  void add_circuit() {
    flow::FlowRequest& request = task_.request;
    app_.add_option("--style", style_,
                    "complex gates, generalised C-elements (gc), standard-C\n"
                    "(stdc) or gates of a library (mapped); auto (default):\n"
                    "the first of mapped, given 30 seconds, stdc, complex\n"
                    "that leads to a correct circuit")
        ->check(CLI::IsMember(style_keys()).description(""))
        ->type_name("NAME");
    app_.add_option("--lib", request.library,
                    "gate library in the GENLIB format, or with .gz; without\n"
                    "it that of vorel -T")
        ->type_name("FILE");
    app_.add_option("--module", request.module.name,
                    "name of the Verilog module (default: that of the STG)")
        ->type_name("NAME");
    app_.add_option("--reset", reset_,
                    "what gives signals their initial values: an input of\n"
                    "this name, high while the circuit is reset; an initial\n"
                    "block ('initial', the default); or 'none'")
        ->type_name("NAME");
    app_.add_flag_callback(
        "--no-keep", [&request] { request.module.keeps_gates = false; },
        "without (* keep *), which has synthesis tools leave each\n"
        "gate as it is");
    app_.add_flag("--testbench", request.wants_testbench,
                  "also a testbench, in which the STG plays the environment");
  }

  void add_run() {
    flow::FlowRequest& request = task_.request;
    app_.add_option("--max-events", request.limits.max_events,
                    "give up when a prefix has more than N events")
        ->check(is_count_of_events())
        ->type_name("N");
    app_.add_option("--timeout", request.limits.max_seconds,
                    "give up after S seconds, which may be a fraction")
        ->check(is_time())
        ->type_name("S");
    app_.add_option("--mapping-timeout", request.limits.max_mapping_seconds,
                    "with --style auto: go on to the next style when mapping\n"
                    "takes more than S seconds (default 30)")
        ->check(is_time())
        ->type_name("S");
    add_threads_option(app_, request.threads);
    app_.add_option("--solver", request.solver,
                    "solve with 0 the solver made here, or 1 MiniSat (default)")
        ->check(CLI::Range(0, 1).description(""))
        ->type_name("0..1");
    app_.add_flag("-q,--quiet", task_.quiet, "print nothing but errors and warnings");
  }

  bool settle() {
    flow::FlowRequest& request = task_.request;
    // As a variable of a script that is not set leaves them.
    for (const CLI::Option* option : app_.get_options())
      if (option->count() > 0 && option->get_expected_min() > 0 &&
          option->results().front().empty())
        return fail(option->get_name() + " needs a value");
    for (const std::string& list : costs_) {
      if (!take_costs(list, request.resolution.coefficients))
        return fail("--cost: '" + list + "' is not a list of NAME=EXPR");
    }
    for (const flow::StyleRow& row : flow::style_rows)
      if (row.key == style_) request.style = row.style;
    synthesis::ModuleOptions& module = request.module;
    if (!is_verilog_name(reset_))
      return fail("--reset: '" + reset_ + "' cannot be the name of an input in Verilog");
    if (reset_ == "none") {
      module.reset = synthesis::ResetKind::none;
    } else if (reset_ != "initial") {
      module.reset = synthesis::ResetKind::input;
      module.reset_input = reset_;
    }
    request.stg_name = task_.stg == standard_stream ? "standard input" : task_.stg;
    if (module.name.empty()) module.name = circuit_name(task_.stg);
    return true;
  }

  bool fail(const std::string& text) const {
    base::print_error(text + " (" + app_.get_name() + " --help tells more)");
    return false;
  }

  FlowTask task_;
  std::vector<std::string> costs_;
  std::string style_{flow::row_of(flow::Style::automatic).key};
  std::string reset_{"initial"};
  CLI::App app_{description, "vorel-flow"};
};

}  // namespace

std::optional<FlowTask> parse_flow_arguments(int argc, char** argv) {
  return FlowArguments().parse(argc, argv);
}

}  // namespace vorel::tools
