// toolkit/transversals.h - the minimal sets of positions that meet every given set.
// Here:      enumeration one by one, in linear memory, so that it can stop at any time: the search
//            of Murakami and Uno that keeps, for each chosen position, the sets only it meets
//            [MU-2014].
// Not here:  what such sets mean: the primes of the complement of a unate cover
//            (toolkit/complement.h), the primes that contain a cube (toolkit/expand.h).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "toolkit/packed_cover.h"

namespace vorel::toolkit {

class TransversalSearch {
 public:
  explicit TransversalSearch(std::size_t width)
      : sets_{width}, kept_{width}, chosen_(words_for(width)) {}

  void clear() { sets_.truncate(0); }
  // A set of positions to be met.
  void add_set(ConstRow positions) { sets_.add(positions); }

  // Each minimal transversal of at most max_size positions once, positions that meet many sets
  // first; until visit returns false. No sets: one empty transversal; an empty set among them:
  // none. The search goes as deep as the largest transversal.
  using Visit = std::function<bool(ConstRow positions)>;
  void for_each(const Visit& visit, std::size_t max_size = unbounded);
  static constexpr std::size_t unbounded = ~std::size_t{0};

 private:
  // Bit sets over the numbers of the sets, at an offset of the stack.
  struct Level {
    std::size_t unmet;       // sets that no chosen position meets
    std::size_t critical;    // for each chosen position, the sets that it alone meets
    std::size_t candidates;  // positions that may still be chosen
  };

  void remove_supersets();
  void index_sets();
  bool search(std::size_t depth, const Level& level);
  bool try_position(std::size_t position, std::size_t depth, const Level& level);
  // The positions of the unmet set with the fewest candidates, into branches_.
  void choose_branches(const Level& level);
  ConstRow sets_with(std::size_t position) const {
    return {meets_.data() + position * set_words_, set_words_};
  }

  PackedCover sets_;
  PackedCover kept_;  // scratch
  std::size_t set_words_ = 0;
  std::vector<Word> meets_;  // for each position, the sets that have it
  std::vector<Word> stack_;
  std::vector<std::uint32_t> branches_;  // a stack too
  std::vector<std::uint32_t> gains_;     // scratch: the sets that the newest branches meet
  std::vector<Word> chosen_;
  const Visit* visit_ = nullptr;
  std::size_t max_size_ = unbounded;
};

}  // namespace vorel::toolkit
