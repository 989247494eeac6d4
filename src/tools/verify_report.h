// tools/verify_report.h - what vorel-verify tells on the standard output.
#pragma once

#include <ostream>

#include "tools/verify_result.h"

namespace vorel::tools {

// A line of sizes, a line for each question, below a no what is wrong and the trace to it, the
// arbiters, the verdict, the seconds.
void print_report(const VerifyResult& result, std::ostream& stream);

}  // namespace vorel::tools
