// report/verification_document.h - a verification as parts of JSON documents.
// docs/verification.schema.json tells their keys.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "net/net.h"
#include "verify/circuit.h"
#include "verify/verification.h"

namespace vorel::report {

using Json = nlohmann::ordered_json;

// One entry for each question, with its trace where the answer is no.
Json questions_of(const verify::Circuit& circuit, const verify::Verification& verification);
// Pairs of names of wires.
Json arbiters_of(const verify::Circuit& circuit, const verify::Verification& verification);
Json wires_of(const verify::Circuit& circuit, const net::Stg& stg);
// The sizes of the prefix of the composition.
Json composition_of(const verify::Verification& verification);

}  // namespace vorel::report
