#include "driver/command_line.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "driver/option_table.h"
#include "support/run_program.h"

namespace vorel::driver {
namespace {

using Arguments = std::vector<std::string>;

std::optional<RunRequest> parse(Arguments arguments) {
  arguments.insert(arguments.begin(), "vorel");
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  return parse_command_line(static_cast<int>(pointers.size()), pointers.data());
}

struct Effect {
  Arguments arguments;  // the input file is added
  std::string key;
  std::int32_t value;
};

TEST(CommandLine, StoresWhatTheOptionsSay) {
  const Effect table[] = {
      {{"-T"}, "mode", 11},
      {{"-D"}, "solver", 1},
      {{"-E"}, "solver", 0},
      {{"-E", "-$1"}, "solver", 1},
      {{"-D", "-!"}, "restrict_branching", 1},
      {{"-E", "-@"}, "output_configurations", 1},
      {{"-D", "-+"}, "incremental_acyclic_constraint", 1},
      {{"-D", "-a"}, "all_solutions", -1},
      {{"-D", "-a5"}, "all_solutions", 5},
      {{"-D", "-a", "-a0", "-f"}, "min_cost", 1},
      {{"-D", "-a99999999999999999999"}, "all_solutions", -1},
      {{"-D", "-b"}, "backward_conflict_constraints", 1},
      {{"-C", "-g!3"}, "max_gate_inputs", 3},
      {{"-C", "-g!3"}, "use_latches", 0},
      {{"-C", "-g"}, "max_gate_inputs", 2147483647},
      {{"-C"}, "inclusion_constraints", -1},
      {{"-C", "-l+", "-l-"}, "inclusion_constraints", 0},
      {{"-N", "-m2"}, "method", 2},
      {{"-D", "-s"}, "store_cnf_formula", 1},
      {{"-D", "-v9"}, "verbosity", 9},
      {{"-D", "-w"}, "wait_mode", 3},
      {{"-D"}, "no_max_dummies", 1},
      {{"-R", "-cl"}, "pwr_of_2", 0},
  };
  for (Effect row : table) {
    SCOPED_TRACE(row.arguments.back() + " sets " + row.key);
    row.arguments.push_back("net.pnml");
    const auto request = parse(row.arguments);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->params.get(row.key), row.value);
    EXPECT_EQ(request->input, "net.pnml");
    EXPECT_EQ(request->output, "");
  }
}

TEST(CommandLine, TakesFileNamesAfterTheOptionsAndIgnoresTheRest) {
  const auto request = parse({"-F", "-d", "-x", "net.mci", "-a", "extra"});
  ASSERT_TRUE(request);
  EXPECT_EQ(request->data, "-x");
  EXPECT_EQ(request->input, "net.mci");
  EXPECT_EQ(request->output, "-a");
  EXPECT_EQ(parse({"-D", "", "-D"}).value().input, "");
}

std::string texts_after(const Arguments& arguments) {
  const resolution::CoefficientTexts t = parse(arguments).value().coefficients;
  return t.csc + ' ' + t.usc + ' ' + t.del + ' ' + t.trig + ' ' + t.seq + ' ' + t.conc + ' ' +
         t.lock;
}

TEST(CommandLine, AppliesCoefficientOptionsFromLeftToRight) {
  EXPECT_EQ(texts_after({"-D", "x"}), "#s*8 #s*4 #s*2 #s*1 #s*4 #s*8 50");
  EXPECT_EQ(texts_after({"-R", "-cs", "x"}), "32 16 0 0 1 2 0");
  EXPECT_EQ(texts_after({"-T", "-cs", "x"}), "0 0 0 0 1 2 0");
  EXPECT_EQ(texts_after({"-R", "-cl", "x"}), "#s*8 #s*4 0 #s*1 #s*4 #s*8 50");
  EXPECT_EQ(texts_after({"-T", "-cl", "x"}), "0 0 0 #s*32 #s*1 #s*2 8");
  EXPECT_EQ(texts_after({"-R", "-cs", "-ccsc=99", "x"}), "99 16 0 0 1 2 0");
  EXPECT_EQ(texts_after({"-R", "-ccsc=99", "-cs", "x"}), "32 16 0 0 1 2 0");
  EXPECT_EQ(texts_after({"-R", "-ccsc=1", "-cusc=2", "-cdel=3", "-ctrig=4", "-cseq=5", "-cconc=6",
                         "-clock=", "x"}),
            "1 2 3 4 5 6 ");
}

struct Refusal {
  Arguments arguments;
  std::string error;
};

const std::string only_af = "only one option among -a, -f may be specified";
const std::string only_fa = "only one option among -f, -a may be specified";
const std::string no_data = "no data is provided with the -d option";
const std::string needs_data =
    "the -d option must be used in the current mode to provide additional information";
const std::string no_file = "unfolding file name must be specified";

std::string unknown(const std::string& option) {
  return "unrecognized option: " + option + "\n(vorel -h describes the options)";
}
std::string unknown_mode(const std::string& mode) {
  return "unrecognized mode: " + mode + "\n(vorel -h describes the modes)";
}
std::string invalid(const std::string& option) {
  return "option " + option + " is invalid in the current mode";
}

const Refusal refusals[] = {
    {{"-X"}, unknown_mode("-X")},
    {{""}, unknown_mode("")},
    {{"-v1", "-D", "f"}, unknown_mode("-v1")},
    {{"-D", "-x", "net.mci"}, unknown("-x")},
    {{"-D", "-", "f"}, unknown("-")},
    {{"-D", "-!!", "f"}, unknown("-!!")},
    {{"-D", "-$2", "f"}, unknown("-$2")},
    {{"-D", "-a5 ", "f"}, unknown("-a5 ")},
    {{"-R", "-c", "f"}, unknown("-c")},
    {{"-R", "-ccsc", "f"}, unknown("-ccsc")},
    {{"-F", "-dx", "f"}, unknown("-dx")},
    {{"-C", "-g!x", "f"}, unknown("-g!x")},
    {{"-C", "-l", "f"}, unknown("-l")},
    {{"-D", "-m12", "f"}, unknown("-m12")},
    {{"-E", "-a", "f"}, invalid("-a")},
    {{"-D", "-d", "x", "f"}, invalid("-d")},
    {{"-D", "-l+", "f"}, invalid("-l+")},
    {{"-D", "-m3", "f"}, invalid("-m3")},
    {{"-D", "-a", "-f", "f"}, only_af},
    {{"-D", "-f", "-a", "f"}, only_fa},
    {{"-F", "-d"}, no_data},
    {{"-F", "-d", "x"}, no_data},
    {{"-F"}, needs_data},
    {{"-F", "-d", "", "f"}, needs_data},
    {{"-D"}, no_file},
};

TEST(CommandLine, RefusesWithOneMessageAndNoOtherOutput) {
  for (const Refusal& row : refusals) {
    const support::ProgramRun run = support::run_vorel(row.arguments);
    EXPECT_EQ(run.exit_code, 2) << row.error;
    EXPECT_EQ(run.err, "\nError: " + row.error + "\n");
    EXPECT_EQ(run.out, "") << row.error;
  }
}

}  // namespace
}  // namespace vorel::driver
