// resolution/coefficients.h - the coefficients of the cost function, given as small expressions.
// Here:      the texts by default, the grammar, its evaluation over the counts of an STG, the
//            errors.
// Not here:  the numbers that they weigh (resolution/transformation_cost.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/params.h"
#include "net/net.h"

namespace vorel::resolution {

// The texts of the cost function's seven coefficients, as given by -c or by default.
// They are evaluated against the STG once it is in memory.
struct CoefficientTexts {
  std::string csc = "#s*8";
  std::string usc = "#s*4";
  std::string del = "#s*2";
  std::string trig = "#s*1";
  std::string seq = "#s*4";
  std::string conc = "#s*8";
  std::string lock = "50";
};

// For resolution: the first looks at cores and the number of insertions only, the second at the
// logic too. The initializers are in the order of the members.
inline const CoefficientTexts small_preset{"32", "16", "0", "0", "1", "2", "0"};
inline const CoefficientTexts logic_preset{"#s*8", "#s*4", "0", "#s*1", "#s*4", "#s*8", "50"};

// A coefficient of the cost function.
struct CoefficientRow {
  std::string_view name;  // in -cNAME=EXPR and in the help
  std::string CoefficientTexts::*text;
  std::string_view key;  // of its value
};

// In the order of evaluation.
std::span<const CoefficientRow> coefficient_table();

// The value of one expression in signed 32-bit arithmetic that wraps; 0 after a reported error.
//   #i #o #I #d   input, output, internal, dummy signals
//   #s            signals but for dummies
//   #p #t         places, transitions
std::int32_t evaluate(std::string_view text, const net::Stg& stg);

// Evaluates the seven texts and stores each value under its key.
void evaluate_coefficients(const CoefficientTexts& texts, const net::Stg& stg,
                           base::Params& params);

}  // namespace vorel::resolution
