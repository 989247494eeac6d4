// base/run_state.h - the few values that belong to the whole process.
// Here:      what the command line fixed and what every layer may read.
// Not here:  the severity, which only rises through base/messages.h.
// All are written by the driver before a mode starts, but for sat_ticks, which the solve step adds
// to. Modes run on one thread, so none is guarded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorel::base {

// The texts of the cost function's seven coefficients, as given by -c or by default.
// They are evaluated against the STG once it is in memory.
struct CoefficientTexts {
  std::string csc = "#s*8";
  std::string usc = "#s*4";
  std::string del = "#s*2";
  std::string trig = "#s*1";
  std::string seq = "#s*4";
  std::string conc = "#s*8";
  std::string lock = "50";
};

struct RunState {
  std::string input_file_name;   // never empty in a run that reaches a mode
  std::string output_file_name;  // empty: standard output
  std::string mode_data;         // argument of -d, empty when not given
  CoefficientTexts coefficients;
  int verbosity = 0;                         // 0 to 9; diagnostics test `verbosity >= N`
  std::uint64_t sat_ticks = 0;               // ticks of base/clock.h spent inside the SAT solver
  std::vector<std::string> temporary_files;  // in order of creation (base/temporary_files.h)
};

// The one instance.
RunState& run_state();

inline int verbosity() { return run_state().verbosity; }

}  // namespace vorel::base
