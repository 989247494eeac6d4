// oracle/random_stg.h - small random consistent STGs, from a seed.
// Here:      cycles in which the edges of each signal alternate, synchronised by shared signals.
// Not here:  plain nets (oracle/random_net.h).
// The same seed gives the same STG everywhere. All are safe and consistent, which the state graph
// has confirmed; some have coding conflicts, some deadlocks. Initial values are left unknown, as
// in a file: assign_initial_values() of oracle/coding.h fills them in.
#pragma once

#include <cstddef>
#include <cstdint>

#include "net/net.h"

namespace vorel::oracle {

struct RandomStgParams {
  bool dummies = false;
  bool toggles = false;  // some edges are z~
  std::size_t max_states = 300;
};

net::Stg random_stg(std::uint64_t seed, const RandomStgParams& params = {});

}  // namespace vorel::oracle
