// verify/circuit_functions.h - the gates of a circuit as functions of its wires.
// Here:      drivers and readers of wires; when a gate is excited, rises and falls.
// Not here:  the STG next to the circuit (verify/composition.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "bdd/cover_bdd.h"
#include "verify/circuit.h"

namespace vorel::verify {

inline constexpr std::size_t no_gate = ~std::size_t{0};

// Gates by their position in the circuit, which must outlive this. Variable w of a function is the
// wire of that number.
class CircuitFunctions {
 public:
  explicit CircuitFunctions(const Circuit& circuit);

  const Circuit& circuit() const { return circuit_; }
  std::size_t driver(WireId wire) const { return driver_[wire.value]; }  // or no_gate: an input
  // Gates that the wire is an input of; a gate does not read its output.
  std::span<const std::size_t> readers(WireId wire) const { return readers_[wire.value]; }
  const Wire& output(std::size_t gate) const {
    return circuit_.wires[circuit_.gates[gate].output.value];
  }

  const bdd::Bdd& next(std::size_t gate) const { return next_[gate]; }
  // Where the function differs from the output.
  bdd::Bdd excited(std::size_t gate) const;
  // Where the gate is excited, and is not any more with the wire changed.
  bdd::Bdd disabled_by(std::size_t gate, WireId wire) const;
  // Where the output, being the other, is about to take the value. A prime and irredundant cover,
  // which does not mention the output.
  bdd::SupportCover cubes(std::size_t gate, bool value) const;
  // With the other wires as they are, the gate would change for ever.
  bool can_oscillate_alone(std::size_t gate) const;

 private:
  bdd::Bdd variable_of(std::size_t gate) const;
  bdd::Bdd when_output(std::size_t gate, bool value) const;

  const Circuit& circuit_;
  std::vector<std::size_t> driver_;                // by wire
  std::vector<std::vector<std::size_t>> readers_;  // by wire
  std::vector<bdd::Bdd> next_;                     // by gate
};

}  // namespace vorel::verify
