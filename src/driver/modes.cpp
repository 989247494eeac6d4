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

namespace vorel::driver {
namespace {

// What every run does before its engine is built; false when the run must stop.
template <net::Process P>
bool prepare_run(const P& process, base::Params& params) {
  net::print_statistics(process, std::cout);
  if constexpr (P::NetType::has_signals) evaluate_coefficients(process, params);
  return !base::run_failed();
}

void print_times(std::uint64_t total_ticks) {
  std::cout << "\n SAT/Total time: "
            << base::format_seconds(base::seconds_of(base::run_state().sat_ticks)) << '/'
            << base::format_seconds(base::seconds_of(total_ticks));
}

// Only the search is timed, neither building the engine nor its report.
template <class Engine>
void run_engine(Engine& engine) {
  const std::uint64_t start = base::ticks_now();
  engine.run();
  const std::uint64_t total_ticks = base::ticks_now() - start;
  if (base::run_failed()) return;
  engine.report();
  engine.print_statistics(std::cout);
  print_times(total_ticks);
}

void report_not_supported() { base::print_error("This mode is currently not supported"); }

template <net::Process P>
void run_deadlock(base::Params params, P& process) {
  if (!prepare_run(process, params)) return;
  reach::DeadlockCheck<P> engine(process, configuration::SearchOptions::of(params));
  run_engine(engine);
}

template <net::Process P>
void run_reach(base::Params params, P& process, configuration::Enabledness enabledness) {
  if (!prepare_run(process, params)) return;
  reach::ReachCheck<P> engine(process, configuration::SearchOptions::of(params), enabledness);
  if (!base::run_failed()) run_engine(engine);
}

template <class Engine>
void run_conflict_check(base::Params params, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, params)) return;
  Engine engine(prefix, configuration::SearchOptions::of(params));
  if (!base::run_failed()) run_engine(engine);
}

// A signal without an equation is an answer too: it is reported, though the run has failed.
template <synthesis::SynthesisStyle style>
void run_synthesis(base::Params params, net::StgPrefix& prefix) {
  if (!prepare_run(prefix, params)) return;
  synthesis::EquationSearch engine(prefix, configuration::SearchOptions::of(params), style);
  if (base::run_failed()) return;
  const std::uint64_t start = base::ticks_now();
  engine.run();
  const std::uint64_t total_ticks = base::ticks_now() - start;
  const bool has_equations = !base::run_failed();
  engine.report();
  if (!has_equations) return;
  engine.print_statistics(std::cout);
  print_times(total_ticks);
}

// The run of a mode whose engine does not exist yet.
template <net::Process P>
void run_without_engine(base::Params params, P& process) {
  if (prepare_run(process, params)) report_not_supported();
}

// An input that was read with errors is not run.
template <class Shape, class Run>
void run_mode(std::unique_ptr<Shape> (*read)(), base::Params params, Run run) {
  const std::unique_ptr<Shape> input = read();
  assert(input == nullptr || !input->valueless_by_exception());
  if (input == nullptr || base::run_failed()) return;
  std::visit([&](auto& process) { run(std::move(params), process); }, *input);
}

void deadlock_mode(base::Params params) {
  run_mode(formats::read_full, std::move(params),
           [](base::Params copy, auto& process) { run_deadlock(std::move(copy), process); });
}

void reach_mode(base::Params params) {
  run_mode(formats::read_no_stg_mp, std::move(params), [](base::Params copy, auto& process) {
    run_reach(std::move(copy), process, configuration::Enabledness::direct);
  });
}

void run_reach_stg(base::Params params, net::StgPrefix& prefix) {
  run_reach(std::move(params), prefix, configuration::Enabledness::via_dummies);
}

// All the other modes take nothing but a prefix of an STG.
template <void (*run)(base::Params, net::StgPrefix&)>
void stg_mode(base::Params params) {
  run_mode(formats::read_stg_prefix, std::move(params), run);
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
    {Mode::resolve, stg_mode<run_without_engine<net::StgPrefix>>},
    {Mode::decomposition, stg_mode<run_without_engine<net::StgPrefix>>},
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
