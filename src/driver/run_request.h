// driver/run_request.h - what a run of vorel is asked to do.
// Here:      the request as plain data.
// Not here:  where it comes from (driver/command_line.h), what is done (driver/modes.h).
#pragma once

#include <string>

#include "base/params.h"

namespace vorel::driver {

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

struct RunRequest {
  base::Params params;
  std::string input;   // the name of a file
  std::string output;  // empty: the standard output
  std::string data;    // the argument of -d, empty when not given
  CoefficientTexts coefficients;
};

}  // namespace vorel::driver
