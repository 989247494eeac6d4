// tools/flow_arguments.h - the command line of vorel-flow.
// Here:      options, help, the lists that options take.
// Not here:  whether files can be read and written (tools/flow_files.h).
#pragma once

#include <optional>

#include "tools/flow_task.h"

namespace vorel::tools {

// nullopt where nothing is left to do: after --help, --version or a reported error.
std::optional<FlowTask> parse_flow_arguments(int argc, char** argv);

}  // namespace vorel::tools
