// configuration/local_invariants.h - weighted sums of tokens that hold while a token is somewhere.
// Here:      those for each place of a part of the net that has one token, such as a process.
// Not here:  sums that hold always (configuration/place_invariants.h), the parts
//            (configuration/one_token_parts.h), arithmetic (configuration/affine_relations.h).
//
// A counter may agree with what it counts only from one step of a process to another, and a copy of
// it only where it has been made. So the affine relations between tokens are computed for each step
// by itself [Kar-1976]: those of all markings in which the token of the process is there, as far as
// can be told from those of the steps before it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "configuration/affine_relations.h"
#include "configuration/place_invariants.h"

namespace vorel::configuration {

// A place that is marked, or that is not.
struct PlaceLiteral {
  std::uint32_t place;
  bool is_marked;
};

class LocalInvariants {
 public:
  using Relations = std::vector<AffineRow>;

  // Exactly one place of the part is marked after every configuration. Takes not many more steps
  // (weights read) than there are left, which become fewer; if they do not suffice, nothing is
  // known.
  LocalInvariants(const TokenFlow& flow, std::span<const PlaceInvariant> always,
                  const TokenFlow::Places& part, std::uint64_t& steps);

  // Some literals of which one is true after every configuration, and none in this marking. Empty
  // where there are none.
  std::vector<PlaceLiteral> clause_against(const std::vector<bool>& marked) const;

 private:
  std::vector<PlaceLiteral> clause_of(const AffineRow& row, std::span<const Token> tokens) const;

  const TokenFlow::Places part_;
  const TokenFlow::Places live_;  // places that may be marked; rows have weights for these alone
  std::vector<Relations> relations_;  // by place of the part; empty if nothing is known
};

}  // namespace vorel::configuration
