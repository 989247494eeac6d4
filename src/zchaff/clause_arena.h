// zchaff/clause_arena.h - clauses, one after another in one block of memory.
// Here:      the layout of a clause, allocation, moving what is alive into a new block.
// Not here:  which clauses there are (zchaff/clause_database.h).
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

#include "zchaff/solver_types.h"

namespace vorel::zchaff {

// The first word of a clause in its arena.
enum class ClauseRef : std::uint32_t {};
inline constexpr ClauseRef no_clause{0xFFFFFFFFu};

// The header of a clause; its literals follow it in memory. The first two are watched.
class Clause {
 public:
  static constexpr std::uint32_t first_unwatched = 2;

  Clause(std::uint32_t size, GroupSet groups, bool learnt, std::uint32_t glue)
      : size_{size}, groups_{groups}, learnt_{learnt}, glue_{std::min(glue, max_glue) & max_glue} {}

  std::uint32_t size() const { return size_; }
  GroupSet groups() const { return groups_; }
  bool is_learnt() const { return learnt_; }
  bool is_garbage() const { return garbage_; }
  bool is_binary() const { return size_ == 2; }
  // The number of decision levels in a learnt clause when it was last looked at [AS-2009], as far
  // as there is room for it.
  std::uint32_t glue() const { return glue_; }
  // Rounds of reduction that the clause survives because it was of use.
  std::uint32_t credit() const { return credit_; }
  // Where the search for a literal to watch ended last in a long clause; 2 at first, and below the
  // size. The next one goes on from there: on a clause all of whose literals are false one after
  // another, it would else come by the same false ones again and again [Gen-2013].
  std::uint32_t search_position() const { return first_unwatched + search_offset_; }

  void mark_garbage() { garbage_ = true; }
  void set_glue(std::uint32_t glue) { glue_ = std::min(glue, max_glue) & max_glue; }
  void set_credit(std::uint32_t credit) { credit_ = credit & 3u; }
  void set_search_position(std::uint32_t position) {
    assert(position >= first_unwatched && position < size_);
    search_offset_ = std::min(position - first_unwatched, max_search_offset) & max_search_offset;
  }

  Literal* begin() { return reinterpret_cast<Literal*>(this + 1); }
  Literal* end() { return begin() + size_; }
  const Literal* begin() const { return reinterpret_cast<const Literal*>(this + 1); }
  const Literal* end() const { return begin() + size_; }
  Literal& operator[](std::uint32_t i) {
    assert(i < size_);
    return begin()[i];
  }
  std::span<const Literal> literals() const { return {begin(), end()}; }

 private:
  friend class ClauseArena;
  static constexpr std::uint32_t max_glue = (1u << 11) - 1;
  static constexpr std::uint32_t max_search_offset = (1u << 16) - 1;

  std::uint32_t size_;  // after a move: the new place, in the old block
  GroupSet groups_;
  std::uint32_t learnt_ : 1;
  std::uint32_t garbage_ : 1 = 0;
  std::uint32_t moved_ : 1 = 0;
  std::uint32_t credit_ : 2 = 0;
  std::uint32_t glue_ : 11;
  std::uint32_t search_offset_ : 16 = 0;
};
static_assert(sizeof(Clause) == 3 * sizeof(std::uint32_t));
static_assert(sizeof(Literal) == sizeof(std::uint32_t));

class ClauseArena {
 public:
  // `limit`: bytes that the block may take.
  explicit ClauseArena(std::uint64_t limit);
  ~ClauseArena();
  ClauseArena(const ClauseArena&) = delete;
  ClauseArena& operator=(const ClauseArena&) = delete;

  Clause& operator[](ClauseRef ref) {
    assert(static_cast<std::uint32_t>(ref) < used_);
    return *reinterpret_cast<Clause*>(words_ + static_cast<std::uint32_t>(ref));
  }
  const Clause& operator[](ClauseRef ref) const { return const_cast<ClauseArena&>(*this)[ref]; }

  // no_clause when memory or the limit does not suffice.
  ClauseRef add(std::span<const Literal> literals, GroupSet groups, bool learnt,
                std::uint32_t glue);
  void mark_garbage(ClauseRef ref);
  bool is_worth_collecting() const;

  // Moving: the block is laid aside; then every clause that stays is moved, by whatever names it,
  // and what is left is dropped. False, and nothing has happened, when memory does not suffice.
  bool start_moving();
  ClauseRef moved(ClauseRef old);
  void finish_moving();

 private:
  bool grow(std::uint64_t words);
  ClauseRef allocate(std::uint32_t words);

  std::uint64_t limit_;  // in words
  std::uint32_t* words_ = nullptr;
  std::uint32_t used_ = 0, capacity_ = 0;
  std::uint32_t wasted_ = 0;            // words of garbage
  std::uint32_t* old_words_ = nullptr;  // while moving
};

}  // namespace vorel::zchaff
