// tools/verify_command.h - one run of vorel-verify from start to exit code.
// Here:      the steps from the files to the answers.
// Not here:  reading the circuit and verifying it (verify), options (tools/verify_arguments.h),
//            the forms of the answers (tools/verify_report.h, tools/verify_document.h).
#pragma once

namespace vorel::tools {

// The body of main. Returns the exit code: 0 correct, 2 errors, 3 not correct, 4 undecided.
int run_verify_command(int argc, char** argv);

}  // namespace vorel::tools
