// synthesis/testbench.h - a Verilog module that tries a circuit in the environment of its STG.
// Here:      the token game of the STG in Verilog, random delays, what is complained of.
// Not here:  circuits (synthesis/verilog_writer.h, decomposition/mapped_circuit.h).
//
// The testbench holds each signal and each wire that has a gate of its own at its value, and lets
// a gate change it when its delay, drawn anew each time, is over. So a gate takes any time but acts
// at once when it does, whether it is an `assign` statement or an instance of a model; what is not
// held, such as an inverter that takes no time, follows in no time. Inputs change where the STG
// lets them. It complains, with the time and the names, and stops,
//  - of an edge of an output or internal signal that the STG does not allow,
//  - of a signal that is due and does not come: all gates rest, or had time enough to act,
//  - of a gate that was excited and is disabled, unless the STG itself withdraws the edge,
//  - of a gate whose output has no value.
// Dummies, choices and several transitions that are one edge are followed by keeping all markings
// in which the STG may be; more than 256 at once is a complaint, too. With dummies a signal is due
// if it is enabled in all of these markings that enable no dummy.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "net/net.h"

namespace vorel::synthesis {

struct TestbenchSubject {
  struct Wire {
    std::string name;
    std::optional<bool> initial;  // without: what its gate makes of the initial state
  };

  std::string module;
  // That are not signals and whose gates take time. In an STG whose outputs disable each other, as
  // those of an arbiter, wires that take time are hazards.
  std::vector<Wire> wires;
  // Parameters of instances, such as "U1.delay", that are to be 0, as Verilog takes them: time is
  // the business of the testbench.
  std::vector<std::string> delays = {};
  // An input that leads the circuit to its initial state while it is high; empty: none. Whether it
  // does is tried before all else.
  std::string reset_input = {};
  // A block of the module that holds its wires at the start, which is the business of the
  // testbench; empty: none.
  std::string initial_block = {};
};

inline constexpr std::string_view testbench_name = "VOREL_testbench";

// The STG is safe and consistent, and has a signal that is driven. Signals start at their initial
// values. What is printed begins with the name, which is that of the module, and a colon; it ends
// with "N edges, all as the STG has them" unless there was a complaint. False after an error, with
// nothing written: a signal has a name that cannot stand in Verilog.
bool write_testbench(std::ostream& stream, const net::Stg& stg, const TestbenchSubject& subject,
                     std::string_view name = testbench_name);

}  // namespace vorel::synthesis
