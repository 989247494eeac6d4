#include "decomposition/symmetry_classes.h"

#include <algorithm>
#include <cmath>

namespace vorel::decomposition {
namespace {

class SymmetryTest {
 public:
  explicit SymmetryTest(const bdd::BDDCover& cover) {
    sets_ = {cover.er_plus, cover.qr_plus, cover.er_minus, cover.qr_minus};
    if (cover.is_two_valued()) sets_ = {cover.er_plus, cover.er_minus};
    for (const bdd::Bdd& set : sets_) {
      signatures_.push_back(set.minterm_signature());
      if (cover.is_two_valued()) break;
    }
  }

  bool are_symmetric(std::uint32_t a, std::uint32_t b) const {
    return std::ranges::all_of(signatures_,
                               [=](const auto& signature) {
                                 return std::abs(signature[a] - signature[b]) < tolerance;
                               }) &&
           std::ranges::all_of(sets_, [&](const bdd::Bdd& set) { return is_unchanged(set, a, b); });
  }

 private:
  // The cheap necessary condition: as many points with the one variable as with the other.
  static constexpr double tolerance = 1.0 / 65536;

  static bool is_unchanged(const bdd::Bdd& set, std::uint32_t a, std::uint32_t b) {
    const bdd::Bdd first = bdd::bdd_variable(a), second = bdd::bdd_variable(b);
    return bdd::cofactor(set, first & ~second) == bdd::cofactor(set, second & ~first);
  }

  std::vector<bdd::Bdd> sets_;
  std::vector<std::vector<double>> signatures_;
};

}  // namespace

std::vector<std::vector<std::uint32_t>> symmetry_classes(const bdd::BDDCover& cover) {
  const SymmetryTest test(cover);
  std::vector<std::vector<std::uint32_t>> classes;
  for (const std::uint32_t variable : cover.support()) {
    const auto found = std::ranges::find_if(classes, [&](const auto& members) {
      return test.are_symmetric(members.front(), variable);
    });
    if (found == classes.end()) {
      classes.push_back({variable});
    } else {
      found->push_back(variable);
    }
  }
  return classes;
}

}  // namespace vorel::decomposition
