// tests/support/default_params.h - option values for tests that run an engine without the program.
#pragma once

#include <utility>
#include <vector>

#include "base/default_params.h"

namespace vorel::support {

using Options = std::vector<std::pair<const char*, int>>;

// The defaults, with a solver as the driver would choose it, and what the given options say
// instead.
inline base::Params default_params(const Options& options) {
  base::Params params = base::default_params();
  params.set("solver", 1);
  for (const auto& [key, value] : options) params.set(key, value);
  return params;
}

}  // namespace vorel::support
