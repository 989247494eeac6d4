// tools/verify_request.h - what a run of vorel-verify is asked to do.
// Here:      the request as plain data.
// Not here:  where it comes from (tools/verify_arguments.h).
#pragma once

#include <string>

#include "verify/circuit_builder.h"
#include "verify/verifier.h"

namespace vorel::tools {

struct VerifyRequest {
  std::string stg;  // file with the STG, or standard_stream
  std::string circuit;
  std::string format_name;  // of the STG; empty: told by its name
  std::string library;      // empty: the built-in one
  std::string document;     // JSON; empty: none
  std::string waves;        // VCD of the failing trace; empty: none
  verify::CircuitOptions options;
  verify::VerifierOptions verifier;
  bool quiet = false;
};

}  // namespace vorel::tools
