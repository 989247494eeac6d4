// tools/unfold_arguments.h - the command line of vorel-unfold.
// Here:      options, help, conflicts between options.
// Not here:  what the names of files mean (tools/unfold_files.h).
#pragma once

#include <optional>

#include "tools/unfold_request.h"

namespace vorel::tools {

// nullopt where nothing is left to do: after --help, --version or a reported error.
std::optional<UnfoldRequest> parse_unfold_arguments(int argc, char** argv);

}  // namespace vorel::tools
