// oracle/net_text.h - nets written in one line of a test.
// "marked p q; a: p q -> r; b: r ->" has the places p and q marked, and two transitions. Places
// come to be by being named. A mistake in the text is a mistake of the test and ends it.
// Here also: the nets with a name of their own that several tests start from.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "net/net.h"

namespace vorel::oracle {

net::Net net_from(std::string_view text);

// n forks and n philosophers who take one fork, then the other: deadlocks with all holding one.
net::Net philosophers(std::uint32_t n);

// n places in a ring, with tokens that move on when the next place is free; no token and no free
// place both mean that the initial marking is dead.
net::Net token_ring(std::uint32_t n, std::uint32_t tokens);

// Small nets on which shortcuts are known to go wrong: an event that reproduces its own preset
// while others compete for it, a cycle of length two, choices whose branches meet again.
struct TrapNet {
  std::string_view name;
  std::string_view text;  // for net_from()
};
std::span<const TrapNet> trap_nets();

}  // namespace vorel::oracle
