// unfolder/concurrency_relation.h - which pairs of conditions are concurrent, as rows of bits.
// Here:      a sparse row for each condition, and the rows of a new batch.
// Not here:  the search that asks (unfolder/co_set_finder.h), which can do without.
//
// The relation is symmetric and irreflexive. It is thin in practice (some tens of thousands), so a
// row holds only the words that are not zero. What is concurrent with the new conditions of an
// event is what is concurrent with all that it consumes; new conditions have the highest numbers,
// so older rows only grow at their ends. Nobody asks an older row for the newest conditions as long
// as the events that consume these are sought: the older ones are told afterwards, while other
// things are done that take no rows.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "base/worker_pool.h"
#include "unfolder/branching_process.h"
#include "unfolder/room.h"

namespace vorel::unfolder {

class ConcurrencyRelation {
 public:
  // Bit i of the word `index` stands for condition 32 * index + i.
  struct Word {
    std::uint32_t index;
    std::uint32_t bits;
  };
  // By index, no word is zero. The words lie in the rooms of the workers.
  class Row {
   public:
    std::uint32_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const Word* begin() const { return words_; }
    const Word* end() const { return words_ + size_; }

   private:
    friend class ConcurrencyRelation;
    Word* words_ = nullptr;
    std::uint32_t size_ = 0, capacity_ = 0;
  };

  // Of the initial conditions only, all pairs of which are concurrent.
  ConcurrencyRelation(const BranchingProcess& process, base::WorkerPool& pool);

  // Of so many conditions that come at once all may be concurrent; more are not entered without a
  // look at what they come from.
  static constexpr std::uint64_t most_unseen = 1u << 10;

  // Prepares to enter the conditions of a batch of events of equal size that has just been
  // numbered, in the order of their conditions. False if nothing is to be entered, and the relation
  // is of no use any more: where a row costs more to enter and to read than histories cost to
  // compare.
  bool begin_batch(std::span<const EventId> batch);
  // Enters them, by all workers, one of which does something else first.
  void add_batch(std::span<const EventId> batch, const std::function<void()>& something_else);
  // Tells a part of the older conditions of those of the last batch; to be called for all parts
  // before the next batch, by several workers if need be, while nobody reads rows.
  void tell_older(std::uint32_t worker, std::uint32_t part);
  std::uint32_t part_count() const { return part_count_; }

  bool concurrent(ConditionId c, ConditionId d) const;
  // Of one of the last batch. An older one may lack these until it has been told.
  std::span<const Word> row(ConditionId c) const { return rows_[c]; }

  template <class Visit>
  static void for_each(std::span<const Word> row, Visit visit) {
    for (const Word& word : row) for_each_bit(word, visit);
  }

  // Bytes of all rows, nearly.
  std::uint64_t memory() const { return word_count() * sizeof(Word); }

 private:
  // Rows that grow move into arrays of the next power of two; those that they leave are kept for
  // others.
  class RowRoom {
   public:
    // Capacities are powers of two.
    Word* take(std::uint32_t capacity);
    void give_back(Word* words, std::uint32_t capacity);

   private:
    Room<Word> words_;
    std::array<std::vector<Word*>, 32> free_;  // by logarithm of the capacity
  };

  // Of one worker.
  struct alignas(64) Scratch {
    RowRoom rows;
    std::uint64_t word_count = 0;  // that this worker has added to rows
    // Of the batch.
    Room<Word> common;
    // How many conditions of an event of the batch were met, by its position.
    std::vector<std::uint32_t> count;     // all 0 between uses
    std::vector<std::uint32_t> partners;  // positions of events that are concurrent with one
  };

  // What is read of an event of the batch again and again, side by side.
  struct Entry {
    std::span<const Word> common;  // what is concurrent with all that it consumes
    ConditionId first, end;        // it produces the conditions first .. end - 1
    std::uint32_t preset_size;
  };

  template <class Visit>
  static void for_each_bit(const Word& word, Visit visit) {
    for (std::uint32_t bits = word.bits; bits != 0; bits &= bits - 1) {
      visit(32 * word.index + static_cast<std::uint32_t>(std::countr_zero(bits)));
    }
  }

  // Much may be concurrent with most conditions as long as all is small: words of so many rows that
  // are not too long. Rows may be longer where places have many conditions: so many histories would
  // have to be compared then.
  std::uint64_t longest(std::uint64_t row_count) const {
    const std::uint64_t row_size = row_count > 32ull * process_.net().place_count ? 1024 : 512;
    return std::max<std::uint64_t>(1u << 20, row_count * row_size) / sizeof(Word);
  }
  ConditionId shortest_row(const UnfoldedEvent& event) const;
  void find_consumers(std::span<const EventId> batch);
  bool may_get_long_rows(std::span<const EventId> batch) const;
  std::uint64_t most_new_words(std::span<const EventId> batch, std::size_t step,
                               std::uint64_t limit) const;
  std::span<const Word> common_row(const UnfoldedEvent& event, Room<Word>& room) const;
  void find_partners(const Entry& entry, Scratch& scratch);
  void make_rows(std::uint32_t position, Scratch& scratch);
  void divide_rows();
  std::uint64_t word_count() const;
  static void reserve(Row& row, std::uint32_t size, RowRoom& room);
  static void append(Row& row, ConditionId first, ConditionId last, RowRoom& room);

  const BranchingProcess& process_;
  base::WorkerPool& pool_;
  std::vector<Row> rows_;                          // by condition
  std::vector<std::unique_ptr<Scratch>> scratch_;  // by worker

  std::vector<Entry> entries_;  // of the last batch, by position
  // Where the parts begin in which older rows are extended, and where the last one ends.
  std::vector<std::uint32_t> first_words_;
  std::uint32_t part_count_ = 0;
  // The consumers in the batch of a condition are a list that begins at first_consumer_[c] and ends
  // with no_index, as does that of a condition that the batch leaves alone.
  struct Consumer {
    ConditionId condition;
    std::uint32_t position;
    std::uint32_t next;
  };
  std::vector<Consumer> consumers_;
  std::vector<std::uint32_t> first_consumer_;
  std::vector<std::uint32_t> consumed_;  // by index of a word: which conditions have consumers
};

}  // namespace vorel::unfolder
