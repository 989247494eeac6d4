// base/run_state.h - the few values that belong to the whole process.
// Here:      what every layer may read or add to.
// Not here:  the severity, which only rises through base/messages.h; what the command line gave,
//            which travels as arguments.
// Modes run on one thread, so none is guarded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vorel::base {

struct RunState {
  int verbosity = 0;  // 0 to 9; diagnostics test `verbosity >= N`; written once, by the driver
  std::uint64_t sat_ticks = 0;               // ticks of base/clock.h spent inside the SAT solver
  std::vector<std::string> temporary_files;  // in order of creation (base/temporary_files.h)
};

// The one instance.
RunState& run_state();

inline int verbosity() { return run_state().verbosity; }

}  // namespace vorel::base
