// synthesis/signal_solution.h - the equations found for one function of one signal.
// Here:      the alternatives, their text and XML forms.
// Not here:  finding them (synthesis/equation_search.h), Verilog (synthesis/verilog_writer.h).
#pragma once

#include <array>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "results/solution.h"
#include "toolkit/cover.h"
#include "toolkit/logic_expr.h"

namespace vorel::synthesis {

// "Signal NAME (cost N)\nTriggers (approximation): a b", which all texts of a signal begin with.
void print_signal_heading(std::ostream& stream, std::string_view name, std::uint64_t cost,
                          const std::vector<std::string>& triggers);
// "\nContext: a b".
void print_context(std::ostream& stream, const std::vector<std::string>& context);

struct SignalImplementation {
  std::vector<std::string> context;  // the support, by the order of signals
  toolkit::LogicExpr equation;
  std::array<toolkit::Cover, 4> covers;  // ER+, QR+, ER-, QR-; of width 0 where they are not kept
  std::uint64_t cost = 0;                // literals of the equation
  bool self = false;                     // the signal is in its own support
};

class SignalSolution : public results::Solution {
 public:
  // `name`: of the signal, with " SET" or " RESET" behind it for such a function.
  SignalSolution(bool output_configurations, std::string name, std::vector<std::string> triggers)
      : results::Solution(output_configurations),
        name_{std::move(name)},
        triggers_{std::move(triggers)} {}

  // The first alternative's.
  std::uint64_t cost() const override;
  // The same on any stream. The last line has no end: what follows begins with one.
  void print(std::ostream& stream) const override;
  results::XmlNode* to_xml(results::XmlDocument& document) const override;

  // Keeps the alternatives up to number `first`, counted from 0, and of those after it up to number
  // `last` the ones that cost as much.
  virtual void trim(std::size_t first, std::size_t last);

  const std::string& name() const { return name_; }
  const std::vector<std::string>& triggers() const { return triggers_; }
  const SignalImplementation& best() const { return alternatives.front(); }

  std::vector<SignalImplementation> alternatives;  // best first, one at least once complete

 private:
  std::string name_;
  std::vector<std::string> triggers_;
};

}  // namespace vorel::synthesis
