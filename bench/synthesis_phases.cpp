// bench/synthesis_phases.cpp - what do equations cost, and with which solver?
// Usage: bench_synthesis_phases FILE...   (*.pnml prefixes of STGs without coding conflicts)
// Rows per file: the four styles with both solvers; milliseconds and SAT calls per signal, and the
// share of the time that is spent in the solver. Each row runs in a process of its own; both
// solvers must come to the same number of literals.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>
#include <variant>

#include "base/clock.h"
#include "base/default_params.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"
#include "synthesis/equation_search.h"

namespace vorel::bench {
namespace {

constexpr const char* style_names[] = {"-E", "four", "-G", "-S"};

base::Params params_of(int solver) {
  base::Params params = base::default_params();
  params.set("solver", solver);
  return params;
}

void measure(const char* file, synthesis::SynthesisStyle style, int solver) {
  std::cerr.rdbuf(nullptr);
  const auto process = formats::read_pnml<net::StgPrefixVariant>(file);
  if (process == nullptr) {
    std::printf("%-34s refused\n", file);
    return;
  }
  const net::StgPrefix& prefix = std::get<net::StgPrefix>(*process);
  const std::uint64_t start = base::ticks_now();
  synthesis::EquationSearch engine(prefix, configuration::SearchOptions::of(params_of(solver)),
                                   style);
  engine.run();
  const double seconds = base::seconds_of(base::ticks_now() - start);
  const double solving = base::seconds_of(base::run_state().sat_ticks);
  std::uint64_t literals = 0;
  for (const auto& solution : engine.found().solutions) literals += solution->cost();
  const double signals = prefix.internals_end - prefix.inputs_end;
  std::printf("%-34s %6zu %7u  %-4s -$%d %8.3f %9.3f %9.1f %7.0f%% %8llu%s\n", file,
              prefix.events.size(), prefix.internals_end,
              style_names[static_cast<std::size_t>(style)], solver, seconds,
              1e3 * seconds / signals, static_cast<double>(engine.solve_calls()) / signals,
              100 * solving / seconds, static_cast<unsigned long long>(literals),
              base::run_failed() ? "  no equations" : "");
  std::fflush(stdout);
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  using enum vorel::synthesis::SynthesisStyle;
  std::printf("%-34s %6s %7s  %-4s %3s %8s %9s %9s %8s %8s\n", "input", "events", "signals", "mode",
              "by", "seconds", "ms/signal", "calls/s.", "in SAT", "literals");
  std::fflush(stdout);
  for (int i = 1; i < argc; ++i) {
    for (const auto style : {complex_gate, four_sets, generalised_c, standard_c}) {
      for (const int solver : {0, 1}) {
        const pid_t child = fork();
        if (child == 0) {
          vorel::bench::measure(argv[i], style, solver);
          return 0;
        }
        waitpid(child, nullptr, 0);
      }
    }
  }
  return 0;
}
