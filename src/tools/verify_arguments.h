// tools/verify_arguments.h - the command line of vorel-verify.
// Here:      options, help, the lists that options take.
// Not here:  whether files can be read and written (tools/verify_command.h).
#pragma once

#include <optional>

#include "tools/verify_request.h"

namespace vorel::tools {

// nullopt where nothing is left to do: after --help, --version or a reported error.
std::optional<VerifyRequest> parse_verify_arguments(int argc, char** argv);

}  // namespace vorel::tools
