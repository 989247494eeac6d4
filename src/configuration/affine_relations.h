// configuration/affine_relations.h - weighted sums of tokens that are 0, as rows of integers.
// Here:      what follows from them by elimination and by bounds, and what is left of them where
//            they need not hold any more.
// Not here:  where they hold (configuration/local_invariants.h).
//
// A row has a weight for each place and a constant at its end: those of the marked places and the
// constant add up to 0. Rows only help; one whose numbers become large is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vorel::configuration {

using AffineRow = std::vector<std::int64_t>;

enum class Token : std::int8_t { absent = 0, present = 1, unknown = 2 };

// The sum when these are the tokens; an unknown one counts as absent.
std::int64_t value_of(const AffineRow& row, std::span<const Token> tokens);

// Finds tokens that follow from what each row can still add up to. False if that cannot be 0.
bool propagate(std::span<const AffineRow> rows, std::span<Token> tokens);

// Where the tokens of some places are known: the rows, on the others alone.
class AffineBasis {
 public:
  // False if the rows contradict each other; then the basis is of no use.
  bool assign(std::span<const AffineRow> rows, std::span<const Token> tokens);

  // The last half of a row of twice the length is taken for a row by itself: known tokens become
  // part of its constant, and multiples of the basis are subtracted, which leaves zeros if it
  // follows. The first half is multiplied by the same numbers. False if they become large.
  bool reduce(AffineRow& pair) const;

 private:
  std::vector<Token> tokens_;
  std::vector<AffineRow> rows_;  // each without the leading places of those before it
  std::vector<std::size_t> leading_;
};

// Of pairs of a row and what it leaves over: the combinations of rows that leave nothing over.
std::vector<AffineRow> rows_without_rest(std::vector<AffineRow> pairs, std::size_t row_length);

}  // namespace vorel::configuration
