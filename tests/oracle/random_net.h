// oracle/random_net.h - small random safe nets, from a seed.
// Here:      synchronised state machines, fork-join structures, and a mixture of all families.
// Not here:  STGs (oracle/random_stg.h), nets with a name of their own (oracle/net_text.h).
// The same seed gives the same net everywhere. No net has more than `max_states` markings.
#pragma once

#include <cstddef>
#include <cstdint>

#include "net/net.h"

namespace vorel::oracle {

struct RandomNetParams {
  std::size_t max_states = 300;
};

// Mostly synchronised machines, and some of each other family. About half the nets have a deadlock.
net::Net random_net(std::uint64_t seed, const RandomNetParams& params = {});

}  // namespace vorel::oracle
