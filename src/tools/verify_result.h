// tools/verify_result.h - all that a run of vorel-verify has to tell.
// Not here:  the words for it (verify/verification_words.h), its forms (tools/verify_report.h,
//            tools/verify_document.h, flow/waveforms.h).
#pragma once

#include <string>

#include "net/net.h"
#include "tools/verify_request.h"
#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::tools {

struct VerifyResult {
  const VerifyRequest& request;
  const net::Stg& stg;
  bool stg_is_known = true;        // else it alone reached a limit, and the circuit was not read
  std::string stopped_while = {};  // what the run was at when it was ended; nothing else is known
  verify::Circuit circuit;
  verify::Verification verification;
  double reading_seconds = 0, verifying_seconds = 0;
};

}  // namespace vorel::tools
