#include "bdd/bdd_cover.h"

#include <algorithm>
#include <utility>

#include "base/sort_unique.h"
#include "bdd/cover_bdd.h"

namespace vorel::bdd {

BDDCover::BDDCover(Bdd er_plus_set, Bdd qr_plus_set, Bdd er_minus_set, Bdd qr_minus_set)
    : er_plus{std::move(er_plus_set)},
      qr_plus{std::move(qr_plus_set)},
      er_minus{std::move(er_minus_set)},
      qr_minus{std::move(qr_minus_set)} {}

BDDCover::BDDCover(const Bdd& function) : BDDCover(two_valued(function, ~function)) {}

std::vector<std::uint32_t> BDDCover::support() const {
  std::vector<std::uint32_t> variables;
  for (const Bdd* const set : {&er_plus, &qr_plus, &er_minus, &qr_minus})
    std::ranges::copy(set->support(), std::back_inserter(variables));
  base::sort_unique(variables);
  return variables;
}

BDDCover compose(const BDDCover& cover, std::span<const Bdd> substitution) {
  BDDCover result;
  result.qr_minus = compose(cover.qr_minus, substitution);
  result.er_minus = compose(cover.er_minus, substitution);
  result.qr_plus = compose(cover.qr_plus, substitution);
  result.er_plus = compose(cover.er_plus, substitution);
  return result;
}

std::string to_string(const BDDCover& cover, std::span<const std::string> names) {
  const auto text = [names](const Bdd& set) {
    return toolkit::to_string(expression_of(set, names));
  };
  std::string body;
  if (!cover.is_two_valued()) {
    body = "ER+: " + text(cover.er_plus) + ", QR+: " + text(cover.qr_plus) +
           ", ER-: " + text(cover.er_minus) + ", QR-: " + text(cover.qr_minus);
  } else if (cover.er_plus == ~cover.er_minus) {
    body = text(cover.er_plus);
  } else {
    body = "ON: " + text(cover.er_plus) + ", OFF: " + text(cover.er_minus);
  }
  return "BDDCover{" + body + "}";
}

}  // namespace vorel::bdd
