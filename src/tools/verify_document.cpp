#include "tools/verify_document.h"

#include <nlohmann/json.hpp>

#include "base/text_sink.h"
#include "report/verification_document.h"
#include "verify/verification_words.h"

namespace vorel::tools {

bool write_document(const VerifyResult& result, std::ostream& stream) {
  const verify::Circuit& circuit = result.circuit;
  const verify::Verification& verification = result.verification;
  const report::Json document{
      {"program", "vorel-verify"},
      {"version", VOREL_VERSION},
      {"stg", result.request.stg},
      {"circuit", result.request.circuit},
      {"verdict", verify::row_of(verification.verdict()).verdict},
      {"questions", report::questions_of(circuit, verification)},
      {"arbiters", report::arbiters_of(circuit, verification)},
      {"wires", report::wires_of(circuit, result.stg)},
      {"gates", circuit.gates.size()},
      {"prefix", report::composition_of(verification)},
      {"seconds", {{"reading", result.reading_seconds}, {"verifying", result.verifying_seconds}}}};
  stream << document.dump(2, ' ', false, report::Json::error_handler_t::replace) << std::endl;
  return stream.good() || base::report_write_failure();
}

}  // namespace vorel::tools
