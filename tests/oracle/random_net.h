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

// Two to six state machines of two to seven states each. They move alone or two or three together;
// some transitions only test a state of a machine, that is, consume and produce one place. About
// half the nets have a deadlock.
Net synchronised_machines(std::uint64_t seed, const RandomNetParams& params = {});

// Nested sequences, choices, forks and joins; starts again at the end, or stops there.
Net fork_join_net(std::uint64_t seed, const RandomNetParams& params = {});

// Mostly synchronised machines, and some of each other family.
Net random_net(std::uint64_t seed, const RandomNetParams& params = {});

}  // namespace vorel::oracle
