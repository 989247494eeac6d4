// conflicts/normalcy_solution.h - the violation of normalcy by a signal, told by traces.
#pragma once

#include "conflicts/normalcy_hypothesis.h"
#include "results/solution.h"

namespace vorel::conflicts {

class NormalcySolution : public results::Solution {
 public:
  NormalcySolution(bool output_configurations, NormalcyViolation kind, std::string signal)
      : results::Solution(output_configurations), kind_{kind}, signal_{std::move(signal)} {}

  void print(std::ostream& stream) const override;
  // The attributes and children of this kind of solution, which are not those of the base.
  results::XmlNode* to_xml(results::XmlDocument& document) const override;

  NormalcyViolation kind() const { return kind_; }
  const std::string& signal() const { return signal_; }
  const std::vector<results::Trace>& triggers() const { return triggers_; }  // of the first traces

  // A trace to an event, with the triggers that are evidence. Those come first of all traces.
  void add_evidence(results::Trace trace, results::Trace triggers);

  bool first_not_p =
      false;  // of the kind `other`: the evidence comes from triggers of the same sign

 protected:
  void print_below_trace(std::ostream& stream, std::size_t trace) const override;

 private:
  std::string verdict(std::string_view path) const;
  std::string message() const;

  NormalcyViolation kind_;
  std::string signal_;
  std::vector<results::Trace> triggers_;
};

}  // namespace vorel::conflicts
