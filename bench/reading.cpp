// bench/reading.cpp - how long do the readers take, next to the bare XML parser on the same bytes?
// Usage: bench_reading STEM...   with STEM.pnml and STEM.mci of one prefix each.
// Rows: parsing alone, reading *.pnml, reading *.mci (both with all checks); then the ratios of the
// medians of this run. Every read is checked to give the expected number of events.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <rapidxml/rapidxml.hpp>
#include <string>
#include <vector>

#include "base/input_text.h"
#include "formats/mci_reader.h"
#include "formats/pnml_reader.h"
#include "net/process_variant.h"
#include "net/sanity_checks.h"

namespace vorel::bench {
namespace {

void parse_alone(benchmark::State& state, const std::string& stem) {
  std::string text;
  if (!base::read_whole_file(stem + ".pnml", text))
    return state.SkipWithError("cannot read the file");
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<char> buffer(text.begin(), text.end());
    buffer.push_back('\0');
    rapidxml::xml_document<> document;
    state.ResumeTiming();
    document.parse<0>(buffer.data());
    benchmark::DoNotOptimize(document.first_node());
  }
  state.counters["MB"] = static_cast<double>(text.size()) / 1e6;
}

std::size_t event_count(const net::FullVariant& process) {
  return std::visit([](const auto& kind) { return kind.events.size(); }, process);
}

void read_pnml_file(benchmark::State& state, const std::string& stem) {
  std::size_t events = 0;
  for (auto _ : state) {
    auto process = formats::read_pnml<net::FullVariant>(stem + ".pnml");
    state.PauseTiming();
    events = process ? event_count(*process) : 0;
    process.reset();
    state.ResumeTiming();
  }
  state.counters["events"] = static_cast<double>(events);
  if (events == 0) state.SkipWithError("the prefix was refused");
}

void read_mci_file(benchmark::State& state, const std::string& stem) {
  std::size_t events = 0;
  for (auto _ : state) {
    std::ifstream stream(stem + ".mci", std::ios::binary);
    auto process = formats::read_mci_net(stream, stem + ".mci");
    const bool sound = process != nullptr && net::passes_sanity_checks(*process);
    state.PauseTiming();
    events = sound ? process->events.size() : 0;
    process.reset();
    state.ResumeTiming();
  }
  state.counters["events"] = static_cast<double>(events);
  if (events == 0) state.SkipWithError("the prefix was refused");
}

// Prints the rows as usual, and keeps the medians.
class Reporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") {
        seconds[run.run_name.function_name] = run.GetAdjustedRealTime() / 1e3;
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> seconds;
};

int run(int argc, char** argv) {
  std::cerr.rdbuf(nullptr);  // the warnings of the legacy format
  benchmark::Initialize(&argc, argv);
  const auto add = [](const std::string& name, auto function, const std::string& stem) {
    benchmark::RegisterBenchmark(name.c_str(), function, stem)
        ->Unit(benchmark::kMillisecond)
        ->Iterations(1)
        ->Repetitions(5)
        ->ReportAggregatesOnly(true)
        ->UseRealTime();
  };
  for (int i = 1; i < argc; ++i) {
    add(std::string("parse alone ") + argv[i], parse_alone, argv[i]);
    add(std::string("read pnml ") + argv[i], read_pnml_file, argv[i]);
    add(std::string("read mci ") + argv[i], read_mci_file, argv[i]);
  }
  Reporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  std::printf("\n%-40s %18s %18s\n", "input", "pnml / parse alone", "pnml / mci");
  for (int i = 1; i < argc; ++i) {
    const std::string stem = argv[i];
    const double pnml = reporter.seconds["read pnml " + stem];
    std::printf("%-40s %18.2f %18.2f\n", argv[i], pnml / reporter.seconds["parse alone " + stem],
                pnml / reporter.seconds["read mci " + stem]);
  }
  return 0;
}

}  // namespace
}  // namespace vorel::bench

int main(int argc, char** argv) { return vorel::bench::run(argc, argv); }
