// tests/synthesis/synthesis_support.h - running a search for equations.
#pragma once

#include <vector>

#include "synthesis/equation_search.h"

namespace vorel::synthesis {

// By signal, SET before RESET; none when a conflict of codes was reported.
inline std::vector<const SignalSolution*> solutions_of(EquationSearch& engine) {
  engine.run();
  std::vector<const SignalSolution*> solutions;
  for (const auto& solution : engine.found().solutions) {
    solutions.push_back(static_cast<const SignalSolution*>(solution.get()));
  }
  return solutions;
}

}  // namespace vorel::synthesis
