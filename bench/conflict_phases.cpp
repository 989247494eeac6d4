// bench/conflict_phases.cpp - where does the time of -C go, and do rounds get slower?
// Usage: bench_conflict_phases FILE...   (*.pnml prefixes of STGs)
// Rows per file: for both methods seconds of reading, encoding and solving; then the milliseconds
// per solution of searches for the first 25, 50, 100 and 200 of all solutions, which share nothing.
// Each row runs in a process of its own; the answer is replayed.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <variant>

#include "base/clock.h"
#include "base/default_params.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/csc_check.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"

namespace vorel::bench {
namespace {

base::Params params_of(int method, int all_solutions) {
  base::Params params = base::default_params();
  params.set("solver", 1);
  params.set("method", method);
  params.set("all_solutions", all_solutions);
  return params;
}

void measure(const char* file, int method, int all_solutions) {
  std::cerr.rdbuf(nullptr);
  std::ostringstream answer;
  std::streambuf* const out = std::cout.rdbuf(answer.rdbuf());
  const std::uint64_t start = base::ticks_now();
  const auto process = formats::read_pnml<net::StgPrefixVariant>(file);
  const double read = base::seconds_of(base::ticks_now() - start);
  if (process == nullptr) {
    std::printf("%-34s refused\n", file);
    return;
  }
  const net::StgPrefix& prefix = std::get<net::StgPrefix>(*process);
  const std::uint64_t before = base::ticks_now();
  conflicts::CscCheck engine(prefix,
                             configuration::SearchOptions::of(params_of(method, all_solutions)));
  engine.run();
  const double search = base::seconds_of(base::ticks_now() - before),
               solve = base::seconds_of(base::run_state().sat_ticks);
  engine.report("");
  std::cout.rdbuf(out);
  const std::size_t found = engine.solutions().solutions.size();
  std::printf("%-34s %8zu  -m%d -a%-4d %7.3f %7.3f %8.3f %9.2f  %zu conflicts, %s\n", file,
              prefix.events.size(), method, all_solutions, read, search - solve, solve,
              1e3 * search / static_cast<double>(found == 0 ? 1 : found), found,
              base::run_failed() ? "NOT verified" : "verified");
  std::fflush(stdout);
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  std::printf("%-34s %8s  %9s %7s %7s %8s %9s  %s\n", "input", "events", "options", "read",
              "encode", "solve", "ms/answer", "answer");
  std::fflush(stdout);
  for (int i = 1; i < argc; ++i) {
    for (const auto& [method, all] :
         {std::pair{1, 0}, {2, 0}, {2, 25}, {2, 50}, {2, 100}, {2, 200}}) {
      const pid_t child = fork();
      if (child == 0) {
        vorel::bench::measure(argv[i], method, all);
        return 0;
      }
      waitpid(child, nullptr, 0);
    }
  }
  return 0;
}
