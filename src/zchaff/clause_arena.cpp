#include "zchaff/clause_arena.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace vorel::zchaff {
namespace {

constexpr std::uint32_t header_words = sizeof(Clause) / sizeof(std::uint32_t);
constexpr std::uint64_t most_words = 0xFFFFFFFEu;  // no_clause lies above
constexpr std::uint64_t first_capacity = 1024;
constexpr std::uint32_t least_garbage = 16384;  // words worth a collection
constexpr std::uint32_t garbage_share = 4;      // one word in so many

std::uint32_t* allocate_words(std::uint64_t count, std::uint32_t* block = nullptr) {
  return static_cast<std::uint32_t*>(std::realloc(block, count * sizeof(std::uint32_t)));
}

}  // namespace

ClauseArena::ClauseArena(std::uint64_t limit)
    : limit_{std::min(limit / sizeof(std::uint32_t), most_words)} {}

ClauseArena::~ClauseArena() {
  assert(old_words_ == nullptr);
  std::free(words_);
}

bool ClauseArena::grow(std::uint64_t words) {
  const std::uint64_t needed = used_ + words;
  if (needed > limit_) return false;
  const std::uint64_t wanted = std::max(first_capacity, needed + needed / 2);
  const std::uint64_t capacity = std::min(wanted, limit_);
  std::uint32_t* const grown = allocate_words(capacity, words_);
  if (grown == nullptr) return false;
  words_ = grown;
  capacity_ = static_cast<std::uint32_t>(capacity);
  return true;
}

ClauseRef ClauseArena::allocate(std::uint32_t words) {
  if (words > capacity_ - used_ && !grow(words)) return no_clause;
  const ClauseRef ref{used_};
  used_ += words;
  return ref;
}

ClauseRef ClauseArena::add(std::span<const Literal> literals, GroupSet groups, bool learnt,
                           std::uint32_t glue) {
  assert(literals.size() >= 2 && literals.size() <= 2ull * max_variables);
  const auto size = static_cast<std::uint32_t>(literals.size());
  const ClauseRef ref = allocate(header_words + size);
  if (ref == no_clause) return no_clause;
  auto* const clause =
      new (words_ + static_cast<std::uint32_t>(ref)) Clause(size, groups, learnt, glue);
  std::ranges::copy(literals, clause->begin());
  return ref;
}

void ClauseArena::mark_garbage(ClauseRef ref) {
  Clause& clause = (*this)[ref];
  assert(!clause.is_garbage());
  clause.mark_garbage();
  wasted_ += header_words + clause.size();
}

bool ClauseArena::is_worth_collecting() const {
  return wasted_ > least_garbage && wasted_ > used_ / garbage_share;
}

bool ClauseArena::start_moving() {
  assert(old_words_ == nullptr);
  const std::uint32_t kept = std::max<std::uint32_t>(used_ - wasted_, 1);
  std::uint32_t* const fresh = allocate_words(kept);
  if (fresh == nullptr) return false;
  old_words_ = words_;
  words_ = fresh;
  capacity_ = kept;
  used_ = wasted_ = 0;
  return true;
}

ClauseRef ClauseArena::moved(ClauseRef old) {
  auto& clause = *reinterpret_cast<Clause*>(old_words_ + static_cast<std::uint32_t>(old));
  if (clause.moved_) return ClauseRef{clause.size_};
  assert(!clause.is_garbage());
  const std::uint32_t words = header_words + clause.size();
  const ClauseRef ref = allocate(words);
  assert(ref != no_clause && "the new block holds all that is no garbage");
  std::memcpy(words_ + static_cast<std::uint32_t>(ref), &clause, words * sizeof(std::uint32_t));
  clause.moved_ = true;
  clause.size_ = static_cast<std::uint32_t>(ref);
  return ref;
}

void ClauseArena::finish_moving() {
  std::free(old_words_);
  old_words_ = nullptr;
}

}  // namespace vorel::zchaff
