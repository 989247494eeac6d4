// tools/flow_command.h - one run of vorel-flow from start to exit code.
// Here:      reading the input, running the flow, delivering what it found.
// Not here:  the steps from the STG to a verified circuit (flow/flow.h), options
//            (tools/flow_arguments.h), files (tools/flow_files.h), texts (tools/flow_report.h).
#pragma once

namespace vorel::tools {

// The body of main. Returns the exit code: that of the verdict, 2 after an error.
int run_flow_command(int argc, char** argv);

}  // namespace vorel::tools
