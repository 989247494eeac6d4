// bench/mapping_phases.cpp - what does it cost to map a circuit onto the gates of a library?
// Usage: bench_mapping_phases SECONDS OPTION FILE...
//   (OPTION is the most inputs of a gate, 0 for any; *.pnml prefixes of STGs without conflicts)
// A row per file, in a process and a folder of its own, killed after so many seconds: signals at
// the start and inserted; rounds of the loop, insertions tried on a copy, candidates that were
// rated, Boolean relations; queries of the matcher; questions of the inserter, and the sets of
// edges that it looked at; seconds of all, and of deriving equations and of finding decompositions
// with their insertions; gates with inverters, area. The circuit is left in FILE.v, its STG in
// FILE.g.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <string>
#include <variant>

#include "base/clock.h"
#include "base/default_params.h"
#include "decomposition/decomposition_driver.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"

namespace vorel::bench {
namespace {

using decomposition::DecompositionDriver;

using Count = unsigned long long;

Count count_gates(const decomposition::MappedCircuit& circuit) {
  Count gates = 0;
  const auto add = [&gates](const decomposition::GateInstance& gate) {
    gates += gate.inverted() ? 2u : 1u;
    for (const decomposition::InstancePin& pin : gate.pins) gates += pin.bubble.exists() ? 1u : 0u;
  };
  for (std::size_t i = 0; i < circuit.found().solutions.size(); ++i) {
    add(circuit.solution(i).main_gate());
    for (const auto& gate : circuit.solution(i).subfunction_gates()) add(gate);
  }
  return gates;
}

// In the folder to which the driver writes.
void measure(const std::string& file, std::int32_t most_inputs) {
  const auto process = formats::read_pnml<net::StgPrefixVariant>(file);
  if (process == nullptr) return;
  net::StgPrefix& prefix = std::get<net::StgPrefix>(*process);
  const std::size_t signals = prefix.internals_end, events = prefix.events.size();
  base::Params params = base::default_params();
  params.set("max_gate_inputs", most_inputs);
  const std::uint64_t start = base::ticks_now();
  DecompositionDriver driver(prefix, params, "");
  driver.run();
  const double seconds = base::seconds_of(base::ticks_now() - start);
  const auto& stats = driver.stats();
  std::printf("%5zu %5zu %4zu %4u %5llu %7llu %7llu %7llu %6llu %7llu %8.2f %8.2f %8.2f", events,
              signals, driver.inserted().size(), stats.rounds, Count{stats.tried},
              Count{driver.decomposer_stats().candidates},
              Count{driver.decomposer_stats().relations}, Count{driver.matcher_stats().queries},
              Count{driver.inserter_stats().questions}, Count{driver.inserter_stats().choices},
              seconds, stats.derivation_seconds, stats.decomposition_seconds);
  if (const auto* const circuit = driver.circuit()) {
    std::printf(" %5llu %7.0f", count_gates(*circuit), circuit->area());
    std::ofstream netlist(file + ".v");
    circuit->write_verilog(netlist);
    std::filesystem::copy_file("vorel.g", file + ".g",
                               std::filesystem::copy_options::overwrite_existing);
  } else {
    std::printf(" failed to decompose");
  }
  std::fflush(stdout);
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const auto limit = static_cast<unsigned>(std::strtoul(argv[1], nullptr, 10));
  const auto option = static_cast<std::int32_t>(std::strtol(argv[2], nullptr, 10));
  for (int i = 3; i < argc; ++i) {
    const std::string file = std::filesystem::absolute(argv[i]);
    const std::string folder = file + ".folder";
    std::filesystem::create_directories(folder);
    const pid_t child = fork();
    if (child == 0) {
      alarm(limit);
      std::cerr.rdbuf(nullptr);
      std::filesystem::current_path(folder);
      vorel::bench::measure(file, option == 0 ? std::numeric_limits<std::int32_t>::max() : option);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) std::printf("more than %u seconds, or killed", limit);
    std::fflush(stdout);
    std::filesystem::remove_all(folder);
  }
  return 0;
}
