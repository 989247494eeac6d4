// conflicts/conflict_solution.h - a pair of traces with equal codes that are in conflict.
#pragma once

#include "results/solution.h"

namespace vorel::conflicts {

class ConflictSolution : public results::Solution {
 public:
  // `signal`: the name of the signal whose next values differ; empty for a conflict of markings.
  ConflictSolution(bool output_configurations, std::string signal)
      : results::Solution(output_configurations), signal_{std::move(signal)} {}

  void print(std::ostream& stream) const override;
  results::XmlNode* to_xml(results::XmlDocument& document) const override;

  const std::string& signal() const { return signal_; }

  // Lines that go to the standard error stream, below the traces on the standard output.
  std::string diagnostics;

 private:
  std::string signal_;
};

}  // namespace vorel::conflicts
