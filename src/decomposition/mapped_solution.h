// decomposition/mapped_solution.h - how one signal is implemented in the gates of a library.
// Here:      its gate, or its latch with the gates of SET and RESET; text, XML and Verilog forms.
// Not here:  the module of all signals (decomposition/mapped_circuit.h), the search for gates.
#pragma once

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "base/unique_names.h"
#include "decomposition/deco.h"
#include "decomposition/gate_instance.h"
#include "results/solution.h"

namespace vorel::decomposition {

class MappedSolution : public results::Solution {
 public:
  // The candidate is directly implementable, with its equation (of a monotonic one: of SET and
  // RESET); variable v is called names[v]. Instances and wires take names from `taken`, which has
  // those of all signals and "U", "w", "IN_BUBBLE", "OUT_BUBBLE": the first is that of the signal's
  // gate, then come wire, instance and inverters pin by pin, those of the output last. The library
  // outlives this.
  MappedSolution(const Deco& deco, std::vector<std::string> triggers, const GateLibrary& library,
                 std::span<const std::string> names, base::UniqueNames& taken);

  // Literals of the equation, or of both.
  std::uint64_t cost() const override;
  void print(std::ostream& stream) const override;
  results::XmlNode* to_xml(results::XmlDocument& document) const override;
  // A comment with the function, and all instances.
  void write_verilog(std::ostream& stream) const;

  // Of all gates and inverters.
  double area() const;
  // The equation, or "monotonic_covers(SET: a, RESET: b)".
  std::string function_text() const;

  const std::string& signal() const { return signal_; }
  const std::vector<std::string>& triggers() const { return triggers_; }
  // The signals that the functions depend on, in the order of variables.
  const std::vector<std::string>& context() const { return context_; }
  const GateInstance& main_gate() const { return main_gate_; }
  // In the order of the pins that they feed; one can feed several.
  const std::vector<GateInstance>& subfunction_gates() const { return subfunction_gates_; }

 private:
  class Builder;

  const GateInstance* gate_that_drives(const std::string& wire) const;

  const GateLibrary& library_;
  std::string signal_;
  std::vector<std::string> triggers_, context_;
  toolkit::LogicExpr set_function_, reset_function_;  // of a complex gate negations
  GateInstance main_gate_;
  std::vector<GateInstance> subfunction_gates_;
};

}  // namespace vorel::decomposition
