#include "driver/modes.h"

#include <cassert>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "base/clock.h"
#include "base/input_text.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/csc_check.h"
#include "conflicts/normalcy_check.h"
#include "conflicts/usc_check.h"
#include "decomposition/decomposition_driver.h"
#include "driver/option_table.h"
#include "formats/process_file.h"
#include "net/process.h"
#include "net/process_variant.h"
#include "reach/deadlock_check.h"
#include "reach/reach_check.h"
#include "resolution/coefficients.h"
#include "resolution/resolution_engine.h"
#include "synthesis/equation_search.h"

namespace vorel::driver {
namespace {

constexpr const char* saved_stg = "vorel";  // the name of an STG that has been changed

// What every run does before its engine is built; false when the run must stop.
template <net::Process P>
bool prepare_run(const P& process, RunRequest& request) {
  net::print_statistics(process, std::cout);
  if constexpr (P::NetType::has_signals) {
    resolution::evaluate_coefficients(request.coefficients, process, request.params);
  }
  return !base::run_failed();
}

void print_times(std::uint64_t total_ticks) {
  std::cout << "\n SAT/Total time: "
            << base::format_seconds(base::seconds_of(base::run_state().sat_ticks)) << '/'
            << base::format_seconds(base::seconds_of(total_ticks));
}

enum class FailedRuns : std::uint8_t { left_out, reported };

// Only the search is timed, neither building the engine nor its report.
template <class Engine>
void run_engine(Engine& engine, const std::string& output,
                FailedRuns failed_runs = FailedRuns::left_out) {
  const std::uint64_t start = base::ticks_now();
  engine.run();
  const std::uint64_t total_ticks = base::ticks_now() - start;
  const bool has_failed = base::run_failed();
  if (has_failed && failed_runs == FailedRuns::left_out) return;
  engine.report(output);
  if (has_failed) return;
  engine.print_statistics(std::cout);
  print_times(total_ticks);
}

template <net::Process P>
void run_deadlock(RunRequest request, P& process) {
  if (!prepare_run(process, request)) return;
  reach::DeadlockCheck<P> engine(process, configuration::SearchOptions::of(request.params));
  run_engine(engine, request.output);
}

// A text that begins with "@" names the file that holds the property. nullopt after an error.
std::optional<std::string> property_text(const std::string& data) {
  assert(!data.empty() && "these modes do not start without -d");
  if (!data.starts_with('@')) return data;
  constexpr std::string_view hint = "a property that begins with @ needs a blank before it";
  std::string text;
  if (!base::read_whole_file(data.substr(1), text, hint)) return std::nullopt;
  return text;
}

template <net::Process P>
void run_reach(RunRequest request, P& process, configuration::Enabledness enabledness) {
  if (!prepare_run(process, request)) return;
  const std::optional<std::string> property = property_text(request.data);
  if (!property) return;
  reach::ReachCheck<P> engine(process, configuration::SearchOptions::of(request.params), *property,
                              enabledness);
  if (!base::run_failed()) run_engine(engine, request.output);
}

template <class Engine>
void run_conflict_check(RunRequest request, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, request)) return;
  Engine engine(prefix, configuration::SearchOptions::of(request.params));
  if (!base::run_failed()) run_engine(engine, request.output);
}

void run_resolve(RunRequest request, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, request)) return;
  resolution::ResolutionEngine engine(prefix, request.params, saved_stg);
  if (!base::run_failed()) run_engine(engine, request.output);
}

// A signal without an equation is an answer too: it is reported, though the run has failed.
template <synthesis::SynthesisStyle style>
void run_synthesis(RunRequest request, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, request)) return;
  synthesis::EquationSearch engine(prefix, configuration::SearchOptions::of(request.params), style);
  if (!base::run_failed()) run_engine(engine, request.output, FailedRuns::reported);
}

void run_decomposition(RunRequest request, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, request)) return;
  decomposition::DecompositionDriver engine(prefix, request.params, request.data, saved_stg);
  run_engine(engine, request.output, FailedRuns::reported);
}

// An input that was read with errors is not run.
template <class Shape, class Run>
void run_mode(std::unique_ptr<Shape> (*read)(const std::string&), const RunRequest& request,
              Run run) {
  const std::unique_ptr<Shape> input = read(request.input);
  assert(input == nullptr || !input->valueless_by_exception());
  if (input == nullptr || base::run_failed()) return;
  std::visit([&](auto& process) { run(request, process); }, *input);
}

void deadlock_mode(const RunRequest& request) {
  run_mode(formats::read_full, request,
           [](const RunRequest& r, auto& process) { run_deadlock(r, process); });
}

void reach_mode(const RunRequest& request) {
  run_mode(formats::read_no_stg_mp, request, [](const RunRequest& r, auto& process) {
    run_reach(r, process, configuration::Enabledness::direct);
  });
}

void run_reach_stg(RunRequest request, net::StgPrefix& prefix) {
  run_reach(std::move(request), prefix, configuration::Enabledness::via_dummies);
}

// All the other modes take nothing but a prefix of an STG.
template <void (*run)(RunRequest, net::StgPrefix&)>
void stg_mode(const RunRequest& request) {
  run_mode(formats::read_stg_prefix, request, run);
}

struct ModeEntry {
  Mode mode;
  ModeFunction function;
};
constexpr ModeEntry mode_entries[] = {
    {Mode::deadlock, deadlock_mode},
    {Mode::reach, reach_mode},
    {Mode::reach_stg, stg_mode<run_reach_stg>},
    {Mode::usc, stg_mode<run_conflict_check<conflicts::UscCheck>>},
    {Mode::csc, stg_mode<run_conflict_check<conflicts::CscCheck>>},
    {Mode::normalcy, stg_mode<run_conflict_check<conflicts::NormalcyCheck>>},
    {Mode::complex_gate, stg_mode<run_synthesis<synthesis::SynthesisStyle::complex_gate>>},
    {Mode::gc, stg_mode<run_synthesis<synthesis::SynthesisStyle::generalised_c>>},
    {Mode::standard_c, stg_mode<run_synthesis<synthesis::SynthesisStyle::standard_c>>},
    {Mode::resolve, stg_mode<run_resolve>},
    {Mode::decomposition, stg_mode<run_decomposition>},
};
static_assert(std::size(mode_entries) == last_mode);

}  // namespace

ModeFunction mode_function(std::int32_t mode) {
  for (const ModeEntry& entry : mode_entries) {
    if (static_cast<std::int32_t>(entry.mode) == mode) return entry.function;
  }
  return nullptr;
}

}  // namespace vorel::driver
