// oracle/netlist_mutations.h - a netlist with one thing changed, as text.
// Here:      what can be changed in a module that vorel has written.
// Not here:  whether that matters (oracle/circuit_states.h): often it does not.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "oracle/random.h"
#include "toolkit/library_gate.h"

namespace vorel::oracle {

enum class NetlistMutation : std::uint8_t {
  pins_swapped,           // two inputs of one gate or of two
  inversion_lost,         // of an operand, or an inverter that takes no time
  gate_changed,           // into another of the same pins, an AND into an OR
  wire_cut,               // a constant takes its place at one input
  initial_value_flipped,  // in the list at the end
  inverter_made_slow,     // that took no time before
};
inline constexpr std::size_t netlist_mutation_count = 6;

const char* name_of(NetlistMutation mutation);

// nullopt where there is nothing to change in this way.
std::optional<std::string> mutated(const std::string& module, NetlistMutation mutation,
                                   const std::map<std::string, toolkit::LibraryGate>& library,
                                   Random& random);

}  // namespace vorel::oracle
