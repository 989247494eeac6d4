#include "driver/modes.h"

#include <cassert>
#include <iostream>
#include <iterator>
#include <memory>
#include <utility>
#include <variant>

#include "base/clock.h"
#include "base/messages.h"
#include "base/run_state.h"
#include "conflicts/csc_check.h"
#include "conflicts/normalcy_check.h"
#include "conflicts/usc_check.h"
#include "driver/coefficients.h"
#include "driver/option_table.h"
#include "formats/process_file.h"
#include "net/process.h"
#include "net/process_variant.h"
#include "reach/deadlock_check.h"
#include "reach/reach_check.h"
#include "synthesis/equation_search.h"

namespace vorel {
namespace {

// What every run does before its engine is built; false when the run must stop.
template <Process P>
bool prepare_run(const P& process, Params& params) {
  print_statistics(process, std::cout);
  if constexpr (P::NetType::has_signals) evaluate_coefficients(process, params);
  return !run_failed();
}

void print_times(std::uint64_t total_ticks) {
  std::cout << "\n SAT/Total time: " << format_seconds(seconds_of(run_state().sat_ticks)) << '/'
            << format_seconds(seconds_of(total_ticks));
}

// Only the search is timed, neither building the engine nor its report.
template <class Engine>
void run_engine(Engine& engine) {
  const std::uint64_t start = ticks_now();
  engine.run();
  const std::uint64_t total_ticks = ticks_now() - start;
  if (run_failed()) return;
  engine.report();
  engine.print_statistics(std::cout);
  print_times(total_ticks);
}

void report_not_supported() { print_error("This mode is currently not supported"); }

template <Process P>
void run_deadlock(Params params, P& process) {
  if (!prepare_run(process, params)) return;
  DeadlockCheck<P> engine(process, params);
  run_engine(engine);
}

template <Process P>
void run_reach(Params params, P& process, FinalState final_state) {
  if (!prepare_run(process, params)) return;
  ReachCheck<P> engine(process, params, final_state);
  if (!run_failed()) run_engine(engine);
}

template <class Engine>
void run_conflict_check(Params params, StgPrefix& prefix) {
  if (!prepare_run(prefix, params)) return;
  Engine engine(prefix, params);
  if (!run_failed()) run_engine(engine);
}

// A signal without an equation is an answer too: it is reported, though the run has failed.
template <SynthesisStyle style>
void run_synthesis(Params params, StgPrefix& prefix) {
  if (!prepare_run(prefix, params)) return;
  EquationSearch engine(prefix, params, style);
  if (run_failed()) return;
  const std::uint64_t start = ticks_now();
  engine.run();
  const std::uint64_t total_ticks = ticks_now() - start;
  const bool has_equations = !run_failed();
  engine.report();
  if (!has_equations) return;
  engine.print_statistics(std::cout);
  print_times(total_ticks);
}

// The run of a mode whose engine does not exist yet.
template <Process P>
void run_without_engine(Params params, P& process) {
  if (prepare_run(process, params)) report_not_supported();
}

// An input that was read with errors is not run.
template <class Shape, class Run>
void run_mode(std::unique_ptr<Shape> (*read)(), Params params, Run run) {
  const std::unique_ptr<Shape> input = read();
  assert(input == nullptr || !input->valueless_by_exception());
  if (input == nullptr || run_failed()) return;
  std::visit([&](auto& process) { run(std::move(params), process); }, *input);
}

void deadlock_mode(Params params) {
  run_mode(read_full, std::move(params),
           [](Params copy, auto& process) { run_deadlock(std::move(copy), process); });
}

void reach_mode(Params params) {
  run_mode(read_no_stg_mp, std::move(params), [](Params copy, auto& process) {
    run_reach(std::move(copy), process, FinalState::marking);
  });
}

void run_reach_stg(Params params, StgPrefix& prefix) {
  run_reach(std::move(params), prefix, FinalState::stg_state);
}

// All the other modes take nothing but a prefix of an STG.
template <void (*run)(Params, StgPrefix&)>
void stg_mode(Params params) {
  run_mode(read_stg_prefix, std::move(params), run);
}

struct ModeEntry {
  Mode mode;
  ModeFunction function;
};
constexpr ModeEntry mode_entries[] = {
    {Mode::deadlock, deadlock_mode},
    {Mode::reach, reach_mode},
    {Mode::reach_stg, stg_mode<run_reach_stg>},
    {Mode::usc, stg_mode<run_conflict_check<UscCheck>>},
    {Mode::csc, stg_mode<run_conflict_check<CscCheck>>},
    {Mode::normalcy, stg_mode<run_conflict_check<NormalcyCheck>>},
    {Mode::complex_gate, stg_mode<run_synthesis<SynthesisStyle::complex_gate>>},
    {Mode::gc, stg_mode<run_synthesis<SynthesisStyle::generalised_c>>},
    {Mode::standard_c, stg_mode<run_synthesis<SynthesisStyle::standard_c>>},
    {Mode::resolve, stg_mode<run_without_engine<StgPrefix>>},
    {Mode::decomposition, stg_mode<run_without_engine<StgPrefix>>},
};
static_assert(std::size(mode_entries) == last_mode);

}  // namespace

ModeFunction mode_function(std::int32_t mode) {
  for (const ModeEntry& entry : mode_entries) {
    if (static_cast<std::int32_t>(entry.mode) == mode) return entry.function;
  }
  return nullptr;
}

}  // namespace vorel
