// synthesis/function_phase.h - the styles of implementation, and the functions each is made of.
#pragma once

#include <cstdint>
#include <vector>

#include "net/net.h"

namespace vorel::synthesis {

// How a signal is implemented [CKKLY-2002].
enum class SynthesisStyle : std::uint8_t {
  complex_gate = 0,
  four_sets = 1,  // a complex gate whose excitation and quiescent sets are kept apart
  generalised_c = 2,
  standard_c = 3,  // with covers that change at most once while the signal is stable
};

// Which function of a signal is derived.
enum class FunctionPhase : std::uint8_t {
  set = 0,         // true where the signal rises
  reset = 1,       // true where it falls
  next_state = 2,  // the value that the signal has or is about to take
};

// One function of one signal.
struct SignalFunction {
  net::SignalId signal;
  FunctionPhase phase = FunctionPhase::next_state;

  // The value that the signal takes where the function is true.
  bool target() const { return phase != FunctionPhase::reset; }
};

using SignalList = std::vector<net::SignalId>;  // ascending

// A function as one of the signals of a support, in ascending order: position i of a code is the
// i-th of them. Refers to the support.
struct ProjectedFunction {
  SignalFunction function;
  const SignalList& support;
};

// Whether a signal is derived as a pair of SET and RESET.
constexpr bool has_two_functions(SynthesisStyle style) {
  return style == SynthesisStyle::generalised_c || style == SynthesisStyle::standard_c;
}

}  // namespace vorel::synthesis
