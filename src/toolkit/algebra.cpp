#include "toolkit/algebra.h"

#include <algorithm>

namespace vorel::toolkit {
namespace {

bool equal(ConstRow a, ConstRow b) { return std::ranges::equal(a, b); }

bool has_row(const PackedCover& cover, ConstRow row) {
  for (std::size_t i = 0; i < cover.size(); ++i)
    if (equal(cover[i], row)) return true;
  return false;
}

// The rows of the dividend that are not products of a row of each factor.
PackedCover remainder_of(const PackedCover& dividend, const PackedCover& quotient,
                         const PackedCover& divisor) {
  PackedCover remainder = dividend;
  PackedCover part(dividend.width());
  const Row rest = part.add_full();
  remainder.filter(0, [&](std::size_t i) {
    for (std::size_t j = 0; j < divisor.size(); ++j) {
      if (!contains(divisor[j], dividend[i])) continue;
      for (std::size_t k = 0; k < rest.size(); ++k) rest[k] = dividend[i][k] | ~divisor[j][k];
      if (has_row(quotient, rest)) return false;
    }
    return true;
  });
  return remainder;
}

// A literal is known by the bit that its rows lack.
bool lacks(ConstRow row, std::size_t bit) { return (row[bit / 64] >> bit % 64 & 1) == 0; }

bool lacks_any_below(ConstRow row, std::size_t bit) {
  for (std::size_t k = 0; k < bit / 64; ++k)
    if (row[k] != all_bits) return true;
  const Word below = (Word{1} << bit % 64) - 1;
  return (~row[bit / 64] & below) != 0;
}

class KernelSearch {
 public:
  using Visit = std::function<bool(const PackedCover&, ConstRow)>;
  explicit KernelSearch(const Visit& visit) : visit_{visit} {}

  // Kernels of a kernel, by literals from this bit on. Each co-kernel is found by way of its lowest
  // literal that is not in that of the kernel.
  bool search(const PackedCover& kernel, ConstRow co_kernel, std::size_t first_bit) {
    if (!visit_(kernel, co_kernel)) return false;
    const std::vector<std::uint32_t> counts = count_literals(kernel);
    for (std::size_t bit = first_bit; bit < counts.size(); ++bit)
      if (counts[bit] > 1 && !search_with(kernel, co_kernel, bit)) return false;
    return true;
  }

 private:
  static std::vector<std::uint32_t> count_literals(const PackedCover& cover) {
    std::vector<std::uint32_t> counts(cover.stride() * 64, 0);
    for (std::size_t i = 0; i < cover.size(); ++i)
      for (std::size_t k = 0; k < cover.stride(); ++k)
        for (Word rest = ~cover[i][k]; rest != 0; rest &= rest - 1)
          ++counts[k * 64 + static_cast<std::size_t>(std::countr_zero(rest))];
    return counts;
  }

  bool search_with(const PackedCover& kernel, ConstRow co_kernel, std::size_t bit) {
    std::vector<Word> common(kernel.stride(), 0);
    for (std::size_t i = 0; i < kernel.size(); ++i)
      for (std::size_t k = 0; k < common.size() && lacks(kernel[i], bit); ++k)
        common[k] |= kernel[i][k];
    if (lacks_any_below(common, bit)) return true;  // found with a lower literal
    const PackedCover inner = divide_by_cube(kernel, common);
    for (std::size_t k = 0; k < common.size(); ++k) common[k] &= co_kernel[k];
    return search(inner, common, bit + 1);
  }

  const Visit& visit_;
};

}  // namespace

std::vector<Word> common_cube(const PackedCover& cover) {
  assert(!cover.empty());
  std::vector<Word> common(cover.stride(), 0);
  for (std::size_t i = 0; i < cover.size(); ++i)
    for (std::size_t k = 0; k < common.size(); ++k) common[k] |= cover[i][k];
  return common;
}

PackedCover divide_by_cube(const PackedCover& cover, ConstRow cube) {
  assert(cube.size() == cover.stride());
  PackedCover quotient(cover.width());
  for (std::size_t i = 0; i < cover.size(); ++i) {
    if (!contains(cube, cover[i])) continue;
    const Row row = quotient.add_full();
    for (std::size_t k = 0; k < row.size(); ++k) row[k] = cover[i][k] | ~cube[k];
  }
  return quotient;
}

Division<PackedCover> divide(const PackedCover& dividend, const PackedCover& divisor) {
  assert(dividend.width() == divisor.width());
  Division<PackedCover> division{PackedCover(dividend.width()), dividend};
  if (divisor.empty()) return division;
  division.quotient = divide_by_cube(dividend, divisor[0]);
  for (std::size_t j = 1; j < divisor.size() && !division.quotient.empty(); ++j) {
    const PackedCover other = divide_by_cube(dividend, divisor[j]);
    division.quotient.filter(0,
                             [&](std::size_t i) { return has_row(other, division.quotient[i]); });
  }
  if (!division.quotient.empty())
    division.remainder = remainder_of(dividend, division.quotient, divisor);
  return division;
}

Division<Cover> divide(const Cover& dividend, const Cover& divisor) {
  const auto division = divide(PackedCover(dividend), PackedCover(divisor));
  return {division.quotient.unpacked(), division.remainder.unpacked()};
}

void for_each_kernel(
    const PackedCover& cover,
    const std::function<bool(const PackedCover& kernel, ConstRow co_kernel)>& visit) {
  if (cover.size() < 2) return;
  const std::vector<Word> common = common_cube(cover);
  KernelSearch(visit).search(divide_by_cube(cover, common), common, 0);
}

void for_each_kernel(const Cover& cover,
                     const std::function<bool(const Cover& kernel, const Cube& co_kernel)>& visit) {
  PackedCover rows(cover);
  remove_contained(rows);
  for_each_kernel(rows, [&](const PackedCover& kernel, ConstRow co_kernel) {
    PackedCover cube(cover.width());
    cube.add(co_kernel);
    return visit(kernel.unpacked(), cube.unpacked()[0]);
  });
}

}  // namespace vorel::toolkit
