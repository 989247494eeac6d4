// bdd/bdd_cover.h - the incompletely specified function of one signal, as four BDDs.
// Here:      the four sets, their support, substitution, text.
// Not here:  covers as lists of cubes (toolkit/cover.h) and their BDDs (bdd/cover_bdd.h).
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "bdd/bdd.h"

namespace vorel::bdd {

// Sets of codes. Two-valued: both pairs are equal, and stand for the ON-set and the OFF-set.
struct BDDCover {
  Bdd er_plus;   // the signal is excited to rise
  Bdd qr_plus;   // stable at 1
  Bdd er_minus;  // excited to fall
  Bdd qr_minus;  // stable at 0

  BDDCover() = default;
  BDDCover(Bdd er_plus, Bdd qr_plus, Bdd er_minus, Bdd qr_minus);
  // A function that is specified everywhere.
  explicit BDDCover(const Bdd& function);
  static BDDCover two_valued(const Bdd& on, const Bdd& off) { return {on, on, off, off}; }

  bool is_two_valued() const { return er_plus == qr_plus && er_minus == qr_minus; }

  // The variables that one of the sets depends on, ascending.
  std::vector<std::uint32_t> support() const;
  bool operator==(const BDDCover&) const = default;
};

// The same substitution in each set (bdd/bdd.h).
BDDCover compose(const BDDCover& cover, std::span<const Bdd> substitution);

// "BDDCover{" and "}" around the function, if it is specified everywhere, or the sets. Variable v
// is called names[v], or without names "x" and v.
std::string to_string(const BDDCover& cover, std::span<const std::string> names = {});

}  // namespace vorel::bdd
