// driver/coefficients.h - the coefficients of the cost function, given as small expressions.
// Here:      the grammar, its evaluation over the counts of an STG, the errors.
// Not here:  the texts (driver/run_request.h), the options that set them (driver/command_line.h).
#pragma once

#include <cstdint>
#include <string_view>

#include "driver/run_request.h"
#include "net/net.h"

namespace vorel::driver {

// The value of one expression in signed 32-bit arithmetic that wraps; 0 after a reported error.
//   #i #o #I #d   input, output, internal, dummy signals
//   #s            signals but for dummies
//   #p #t         places, transitions
std::int32_t evaluate(std::string_view text, const net::Stg& stg);

// Evaluates the seven texts and stores each value under its key.
void evaluate_coefficients(const CoefficientTexts& texts, const net::Stg& stg,
                           base::Params& params);

}  // namespace vorel::driver
