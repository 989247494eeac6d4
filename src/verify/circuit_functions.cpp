#include "verify/circuit_functions.h"

#include <algorithm>
#include <cassert>

namespace vorel::verify {

CircuitFunctions::CircuitFunctions(const Circuit& circuit)
    : circuit_{circuit}, driver_(circuit.wires.size(), no_gate), readers_(circuit.wires.size()) {
  for (std::size_t g = 0; g < circuit.gates.size(); ++g) {
    const Gate& gate = circuit.gates[g];
    assert(driver_[gate.output.value] == no_gate && "a wire has one driver");
    driver_[gate.output.value] = g;
    std::vector<bdd::Bdd> wires;
    for (const WireId input : gate.inputs) {
      assert(input != gate.output && "the output is no input");
      readers_[input.value].push_back(g);
      wires.push_back(bdd::bdd_variable(input.value));
    }
    wires.push_back(bdd::bdd_variable(gate.output.value));
    next_.push_back(bdd::compose(gate.function, wires));
  }
}

bdd::Bdd CircuitFunctions::variable_of(std::size_t gate) const {
  return bdd::bdd_variable(circuit_.gates[gate].output.value);
}

bdd::Bdd CircuitFunctions::when_output(std::size_t gate, bool value) const {
  const bdd::Bdd output = variable_of(gate);
  return bdd::cofactor(next_[gate], value ? output : ~output);
}

bdd::Bdd CircuitFunctions::excited(std::size_t gate) const {
  return next_[gate] ^ variable_of(gate);
}

bdd::Bdd CircuitFunctions::disabled_by(std::size_t gate, WireId wire) const {
  const bdd::Bdd before = excited(gate), variable = bdd::bdd_variable(wire.value);
  const bdd::Bdd after =
      bdd::ite(variable, bdd::cofactor(before, ~variable), bdd::cofactor(before, variable));
  return before & ~after;
}

bdd::SupportCover CircuitFunctions::cubes(std::size_t gate, bool value) const {
  const bdd::Bdd next = when_output(gate, !value);
  return bdd::cover_of(value ? next : ~next);
}

bool CircuitFunctions::can_oscillate_alone(std::size_t gate) const {
  return !(when_output(gate, false) & ~when_output(gate, true)).is_false();
}

}  // namespace vorel::verify
