// toolkit/expand.h - from cubes to primes: products that no literal can leave without meeting the
// OFF-set.
// Here:      expansion of one cube against its blocking matrix [BHMS-1984].
// Not here:  which primes make the result (toolkit/irredundant.h).
#pragma once

#include <functional>
#include <vector>

#include "toolkit/column_index.h"
#include "toolkit/packed_cover.h"
#include "toolkit/transversals.h"

namespace vorel::toolkit {

// Holds the OFF-set, which must not change, by reference. A cube to be expanded must not meet it.
class Expander {
 public:
  explicit Expander(const PackedCover& off)
      : off_{off},
        columns_{off},
        blocking_{off.width()},
        wanted_{off.width()},
        transversals_{off.width()} {}

  // Makes the row a prime: raises it over as many as possible of the rows of `on`, then to as few
  // literals as a bounded search finds.
  void expand(Row row, const PackedCover& on);

  // Visits primes that contain the row, until visit returns false: in the end all of them.
  void for_each_prime(ConstRow row, const std::function<bool(ConstRow prime)>& visit);

 private:
  void block(ConstRow row);
  void keep_sole_literals(ConstRow row);
  ConstRow agreeing(ConstRow row, std::size_t position) const;
  void want(ConstRow row, const PackedCover& on);
  void keep_essential();
  void drop_infeasible();
  bool is_feasible(ConstRow positions) const;
  std::size_t best_wanted() const;
  void raise(ConstRow positions);
  void keep_fewest();

  const PackedCover& off_;
  const ColumnIndex columns_;  // of the OFF-set
  // Sets of positions. A row of blocking_ holds the literals that keep the cube off one row of the
  // OFF-set: at least one must stay. A row of wanted_ holds the literals that must go so that the
  // cube contains one more row of the ON-set.
  PackedCover blocking_, wanted_;
  std::vector<Word> literals_;  // neither kept nor raised so far
  std::vector<Word> kept_;
  std::vector<Word> unsettled_;            // rows of the OFF-set that no kept literal blocks
  std::vector<Word> blocked_, not_alone_;  // scratch: rows by one literal at least, by two
  TransversalSearch transversals_;
};

}  // namespace vorel::toolkit
