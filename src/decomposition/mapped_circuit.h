// decomposition/mapped_circuit.h - an STG in the gates of a library, and its way to the user.
// Here:      all signals, the area, the module, the report.
// Not here:  single signals (decomposition/mapped_solution.h), the frame of modules
//            (synthesis/verilog_module.h), decomposition itself.
#pragma once

#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "base/unique_names.h"
#include "decomposition/mapped_solution.h"
#include "net/net.h"
#include "results/report.h"
#include "synthesis/netlist.h"

namespace vorel::decomposition {

class MappedCircuit {
 public:
  // Both outlive this, and the STG has all inserted signals.
  MappedCircuit(const net::Stg& stg, const GateLibrary& library);

  // The next output or internal signal, in the order of the STG (MappedSolution).
  void add(const Deco& deco, std::vector<std::string> triggers, std::span<const std::string> names);

  double area() const;
  // MappedSolutions.
  const results::Report& found() const { return report_; }
  const MappedSolution& solution(std::size_t number) const;

  // False after an error, with nothing written: a name cannot stand in Verilog.
  bool write_verilog(std::ostream& stream) const;
  // For other tools.
  synthesis::Netlist netlist() const;
  // Delivers the circuit, as a module if the output is named *.v.
  void report(const std::string& output) const;

 private:
  bool names_can_stand() const;

  const net::Stg& stg_;
  const GateLibrary& library_;
  base::UniqueNames taken_{0};
  results::Report report_;
};

// The verdict without a circuit, and a file that says so.
void report_failure(const std::string& output);

}  // namespace vorel::decomposition
