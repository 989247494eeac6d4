// bench/deadlock_phases.cpp - where does the time of -D go, and how does it grow?
// Usage: bench_deadlock_phases [-f] FILE...   (*.pnml prefixes; -f: a shortest trace)
// A row per file: size, seconds of reading, encoding, solving and all the rest, the share of the
// rest, the peak memory of reading as a multiple of the file, and the verdict with its replay. Each
// file runs in a process of its own.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string_view>
#include <variant>

#include "base/clock.h"
#include "base/default_params.h"
#include "base/messages.h"
#include "base/params.h"
#include "base/run_state.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"
#include "reach/deadlock_check.h"

namespace vorel::bench {
namespace {

double peak_megabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1e3;
}

base::Params deadlock_params(bool shortest) {
  base::Params params = base::default_params();
  params.set("solver", 1);
  params.set("min_cost", shortest ? 1 : 0);
  return params;
}

struct Phases {
  double read = 0, encode = 0, solve = 0, rest = 0, peak = 0;
  std::size_t events = 0;
  std::string verdict;
};

template <net::Process P>
void run_engine(const P& process, bool shortest, Phases& phases) {
  phases.events = process.events.size();
  const std::uint64_t start = base::ticks_now();
  std::ostringstream statistics;
  net::print_statistics(process, statistics);
  {
    reach::DeadlockCheck<P> engine(process,
                                   configuration::SearchOptions::of(deadlock_params(shortest)));
    const std::uint64_t before = base::ticks_now();
    engine.run();
    const std::uint64_t search = base::ticks_now() - before;
    phases.solve = base::seconds_of(base::run_state().sat_ticks);
    phases.encode = base::seconds_of(search) - phases.solve;
    std::ostringstream answer;
    std::streambuf* const out = std::cout.rdbuf(answer.rdbuf());
    engine.report("");
    std::cout.rdbuf(out);
    phases.verdict = answer.str().find("has a deadlock") != std::string::npos ? "deadlock" : "none";
  }
  phases.rest = base::seconds_of(base::ticks_now() - start) - phases.encode - phases.solve;
}

void measure(const char* file, bool shortest) {
  std::cerr.rdbuf(nullptr);
  Phases phases;
  const std::uint64_t start = base::ticks_now();
  auto process = formats::read_pnml<net::FullVariant>(file);
  phases.read = base::seconds_of(base::ticks_now() - start);
  phases.peak = peak_megabytes();
  if (process == nullptr) {
    std::printf("%-34s refused\n", file);
    return;
  }
  std::visit(
      [&](const auto& kind) {
        if constexpr (!std::decay_t<decltype(kind)>::is_merged) run_engine(kind, shortest, phases);
      },
      *process);
  const std::uint64_t end = base::ticks_now();
  process.reset();
  phases.rest += base::seconds_of(base::ticks_now() - end);
  const double megabytes = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
  const double total = phases.read + phases.encode + phases.solve + phases.rest;
  std::printf("%-34s %8zu %7.1f %7.3f %7.3f %7.3f %7.3f %6.1f%% %6.1f  %s, %s\n", file,
              phases.events, megabytes, phases.read, phases.encode, phases.solve, phases.rest,
              100 * phases.rest / total, phases.peak / megabytes, phases.verdict.c_str(),
              base::run_failed() ? "NOT verified" : "verified");
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  std::printf("%-34s %8s %7s %7s %7s %7s %7s %7s %6s  %s\n", "input", "events", "MB", "read",
              "encode", "solve", "rest", "rest", "peak/x", "answer");
  std::fflush(stdout);
  const bool shortest = argc > 1 && std::string_view(argv[1]) == "-f";
  for (int i = shortest ? 2 : 1; i < argc; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      vorel::bench::measure(argv[i], shortest);
      return 0;
    }
    waitpid(child, nullptr, 0);
  }
  return 0;
}
