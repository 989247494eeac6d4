// driver/run_request.h - what a run of vorel is asked to do.
// Here:      the request as plain data.
// Not here:  where it comes from (driver/command_line.h), what is done (driver/modes.h).
#pragma once

#include <string>

#include "base/params.h"
#include "resolution/coefficients.h"

namespace vorel::driver {

struct RunRequest {
  base::Params params;
  std::string input;   // the name of a file
  std::string output;  // empty: the standard output
  std::string data;    // the argument of -d, empty when not given
  resolution::CoefficientTexts coefficients;
};

}  // namespace vorel::driver
