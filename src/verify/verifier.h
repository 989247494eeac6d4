// verify/verifier.h - whether a circuit is speed-independent and does what its STG says.
// Here:      all questions of verify/verification.h, answered on a prefix of the composition.
// Not here:  where the circuit comes from (verify/circuit_builder.h), how answers are told (tools).
//
// The composition of circuit and STG is unfolded (verify/composition.h), and each question becomes
// a property of one reachable marking, which a SAT solver looks for. What it finds is replayed by
// the token game of circuit and STG before it is told.
#pragma once

#include <cstdint>
#include <optional>

#include "net/net.h"
#include "sat/cnf_formula.h"
#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::verify {

struct VerifierOptions {
  VerificationLimits limits;
  sat::CnfParams formula;
  std::uint32_t threads = 1;  // that unfold; the answers are the same for any number
};

// The STG is numbered and sorted, consistent, and its initial values are known; wires that are its
// signals start with them. nullopt after a reported error: an STG that is not safe, or a finding
// that could not be replayed. Limits are no error: what they leave open is undecided.
std::optional<Verification> verify(const net::Stg& stg, const Circuit& circuit,
                                   const VerifierOptions& options = {});

}  // namespace vorel::verify
