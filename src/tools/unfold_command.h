// tools/unfold_command.h - one run of vorel-unfold from start to exit code.
// Here:      the steps from the net to the file.
// Not here:  unfolding (unfolder/unfolder.h), merging (net/merge.h), options and names
//            (tools/unfold_arguments.h, tools/unfold_files.h).
#pragma once

namespace vorel::tools {

// The body of main. Returns the exit code: 0 clean, 1 warnings, 2 errors.
int run_unfold_command(int argc, char** argv);

}  // namespace vorel::tools
