// verify/testbench_subject.h - what a testbench needs to know of a circuit that is read.
// Not here:  the testbench (synthesis/testbench.h), what a circuit is (verify/circuit_builder.h).
#pragma once

#include <optional>
#include <span>
#include <string>

#include "net/net.h"
#include "synthesis/testbench.h"
#include "toolkit/library_gate.h"
#include "verify/circuit_builder.h"

namespace vorel::verify {

// All gates that take time have wires of their own; those of the library become models
// (decomposition/gate_models.h). Delays that the module itself writes are not seen. As for
// read_circuit the initial values of the STG are set; internal signals may not be hidden. nullopt
// after an error: those of read_circuit, or an instance of a library gate has no name.
std::optional<synthesis::TestbenchSubject> read_testbench_subject(
    const std::string& file_name, const net::Stg& stg,
    std::span<const toolkit::LibraryGate> library, const CircuitOptions& options);

}  // namespace vorel::verify
