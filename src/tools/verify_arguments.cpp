#include "tools/verify_arguments.h"

#include <memory>
#include <vector>

#include "base/messages.h"
#include "tools/arguments.h"

namespace vorel::tools {
namespace {

constexpr const char* description =
    "Proves that a circuit of gates is speed-independent and does what its Signal\n"
    "Transition Graph (STG) says, whatever time gates take, or shows a trace to where\n"
    "it does not.\n";

constexpr const char* footer = R"(
The STG is read as vorel-unfold does, in all its formats. The circuit is structural
Verilog: instances of gates of the library or of the primitives of Verilog, and
"assign", each of which is one gate. A gate takes any time; below the line
  // #PRAGMA: zero delay
an inverter takes none, and belongs to the gate behind it. Inputs change as the STG
says. Wires that are called like a signal of the STG are that signal.

Questions, each answered by yes, no with a trace, or undecided:
  initial state     at the start gates rest, but for those of signals that the STG
                    excites
  conformance       outputs change only where the STG lets them
  no hazard         an excited gate stays excited until its output has changed; two
                    outputs may take this from each other where they are declared by
                    --mutex, or where the STG itself chooses between them
  progress          each output that is due comes without an input that might stay
                    away
  no deadlock       circuit and inputs stop together only where the STG does

Examples:
  vorel-verify vme.g vme.v
  vorel-verify --lib cells.genlib --vcd trace.vcd stg.g netlist.v
  vorel-verify --mutex g1,g2 --initial x=1,y=0 arbiter.g arbiter.v
  vorel-verify --constant reset=0 stg.g netlist.v
  vorel-verify --timeout 60 --json verdict.json stg.g netlist.v

Exit code: 0 correct, 2 errors, 3 not correct, 4 undecided (a limit was reached),
5 out of memory.)";

// "A,B", of two names.
std::optional<std::pair<std::string, std::string>> pair_in(const std::string& text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string::npos || comma != text.rfind(',')) return std::nullopt;
  std::pair<std::string, std::string> names{text.substr(0, comma), text.substr(comma + 1)};
  if (names.first.empty() || names.second.empty() || names.first == names.second)
    return std::nullopt;
  return names;
}

// "A=0,B=1". A comma may be part of a name: only one behind a value ends it.
std::optional<std::vector<verify::InitialValue>> values_in(const std::string& text) {
  std::vector<verify::InitialValue> values;
  std::string item;
  for (const char c : text + ',') {
    const bool is_whole = item.size() > 2 && (item.ends_with("=0") || item.ends_with("=1"));
    if (c != ',' || !is_whole) {
      item += c;
      continue;
    }
    values.push_back({item.substr(0, item.size() - 2), item.back() == '1'});
    item.clear();
  }
  if (!item.empty()) return std::nullopt;
  return values;
}

class VerifyArguments {
 public:
  VerifyArguments() {
    request_.verifier.threads = preset_threads();
    app_.footer(footer);
    add_usual_flags(app_);
    app_.formatter(std::make_shared<PlainHelp>());
    add_files();
    add_circuit();
    add_run();
  }

  std::optional<VerifyRequest> parse(int argc, char** argv) {
    if (!parse_arguments(app_, argc, argv) || !settle_lists()) return std::nullopt;
    return std::move(request_);
  }

 private:
  void add_files() {
    app_.add_option("stg", request_.stg, "file with the STG, or -")->required()->type_name("");
    app_.add_option("circuit", request_.circuit, "file with the circuit, in Verilog")
        ->required()
        ->type_name("");
    add_format_option(app_, request_.format_name);
    app_.add_option("--lib", request_.library,
                    "gate library in the GENLIB format, or with .gz; without\n"
                    "it that of vorel -T")
        ->type_name("FILE");
    app_.add_option("--json", request_.document,
                    "write the answers as a JSON document; its schema is\n"
                    "docs/verification.schema.json")
        ->type_name("FILE");
    app_.add_option("--vcd", request_.waves,
                    "write the trace of the first answer that is no, all\n"
                    "wires at one unit of time a step, for a viewer of\n"
                    "waveforms; nothing is written where there is none")
        ->type_name("FILE");
  }

  void add_circuit() {
    verify::CircuitOptions& options = request_.options;
    app_.add_option("--top", options.top, "the module to take, if the file has several")
        ->type_name("NAME");
    app_.add_flag("--zero-delay-inverters", options.zero_delay_inverters,
                  "inverters on inputs of gates take no time");
    app_.add_option("--mutex", mutexes_,
                    "outputs A and B are those of a mutual exclusion element;\n"
                    "may be given several times")
        ->type_name("A,B");
    app_.add_option("--initial", initial_values_,
                    "initial values of wires that are no signals of the STG:\n"
                    "NAME=0 or NAME=1, with commas between; may be given\n"
                    "several times")
        ->type_name("LIST");
    app_.add_option("--constant", constants_,
                    "inputs of the module that are no signals and keep these\n"
                    "values, such as a reset: NAME=0 or NAME=1, with commas\n"
                    "between; may be given several times")
        ->type_name("LIST");
    app_.add_flag("--hide-internal", options.hide_internal,
                  "the circuit need not have the internal signals of the\n"
                  "STG; wires with their names are like any others");
  }

  void add_run() {
    verify::VerifierOptions& options = request_.verifier;
    app_.add_option("--max-events", options.limits.max_events,
                    "leave undecided what takes a prefix of more than N\n"
                    "events")
        ->check(is_count_of_events())
        ->type_name("N");
    app_.add_option("--timeout", options.limits.max_seconds,
                    "leave undecided what takes more than S seconds, which\n"
                    "may be a fraction")
        ->check(is_time())
        ->type_name("S");
    add_threads_option(app_, options.threads);
    app_.add_option("--solver", options.formula.solver,
                    "solve with 0 the solver made here, or 1 MiniSat (default)")
        ->check(CLI::Range(0, 1).description(""))
        ->type_name("0..1");
    app_.add_flag("-q,--quiet", request_.quiet, "print nothing but errors and warnings");
  }

  bool settle_lists() {
    for (const std::string& text : mutexes_) {
      const auto pair = pair_in(text);
      if (!pair) return fail("--mutex: '" + text + "' is not A,B with the names of two outputs");
      request_.options.mutexes.push_back(*pair);
    }
    return settle_values("--initial", initial_values_, request_.options.initial_values) &&
           settle_values("--constant", constants_, request_.options.constants);
  }

  bool settle_values(const std::string& option, const std::vector<std::string>& lists,
                     std::vector<verify::InitialValue>& all) const {
    for (const std::string& text : lists) {
      const auto values = values_in(text);
      if (!values) return fail(option + ": '" + text + "' is not a list of NAME=0 and NAME=1");
      all.insert(all.end(), values->begin(), values->end());
    }
    return true;
  }

  bool fail(const std::string& text) const {
    base::print_error(text + " (" + app_.get_name() + " --help tells more)");
    return false;
  }

  VerifyRequest request_;
  std::vector<std::string> mutexes_, initial_values_, constants_;
  CLI::App app_{description, "vorel-verify"};
};

}  // namespace

std::optional<VerifyRequest> parse_verify_arguments(int argc, char** argv) {
  return VerifyArguments().parse(argc, argv);
}

}  // namespace vorel::tools
