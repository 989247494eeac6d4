#include "unfolder/concurrency_relation.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vorel::unfolder {
namespace {

using Word = ConcurrencyRelation::Word;

// Keeps in the row, of so many words, what the other one has too. Gives how many are left.
std::size_t intersect(Word* row, std::size_t size, std::span<const Word> other) {
  Word* out = row;
  const Word* in = row;
  const Word* const end = row + size;
  auto with = other.begin();
  while (in != end && with != other.end()) {
    if (in->index < with->index) {
      ++in;
    } else if (with->index < in->index) {
      ++with;
    } else {
      if (const std::uint32_t bits = in->bits & with->bits; bits != 0) *out++ = {in->index, bits};
      ++in;
      ++with;
    }
  }
  return static_cast<std::size_t>(out - row);
}

}  // namespace

ConcurrencyRelation::ConcurrencyRelation(const BranchingProcess& process, base::WorkerPool& pool)
    : process_{process}, pool_{pool}, rows_(process.condition_count()) {
  for (std::uint32_t i = 0; i < pool.size(); ++i) scratch_.push_back(std::make_unique<Scratch>());
  RowRoom& room = scratch_.front()->rows;
  const ConditionId end = process.condition_count();
  for (ConditionId c = 0; c < end; ++c) {
    append(rows_[c], 0, c, room);
    append(rows_[c], c + 1, end, room);
  }
}

bool ConcurrencyRelation::concurrent(ConditionId c, ConditionId d) const {
  assert(c != d && "the relation is irreflexive");
  assert(std::max(c, d) < rows_.size());
  // The younger condition has the shorter row, mostly.
  const std::span<const Word> row = rows_[std::max(c, d)];
  const ConditionId asked = std::min(c, d);
  const auto word = std::ranges::lower_bound(row, asked / 32, {}, &Word::index);
  return word != row.end() && word->index == asked / 32 && (word->bits >> (asked % 32) & 1u) != 0;
}

bool ConcurrencyRelation::begin_batch(std::span<const EventId> batch) {
  assert(std::ranges::all_of(batch,
                             [&](EventId e) {
                               return process_.event(e).size == process_.event(batch.front()).size;
                             }) &&
         "no event of a batch is a cause of another");
  assert(std::ranges::is_sorted(batch, {},
                                [this](EventId e) { return process_.event(e).first_condition; }) &&
         "rows grow at their ends");
  for (const auto& scratch : scratch_) {
    scratch->common.clear();
    scratch->count.resize(std::max(scratch->count.size(), batch.size()));
  }
  find_consumers(batch);
  return word_count() <= longest(rows_.size()) &&
         (process_.condition_count() - rows_.size() <= most_unseen || !may_get_long_rows(batch));
}

void ConcurrencyRelation::add_batch(std::span<const EventId> batch,
                                    const std::function<void()>& something_else) {
  assert(batch.size() == entries_.size() && "the batch has been begun");
  // To copy the rows takes long, and what is reserved and not used takes no memory.
  const std::size_t condition_count = process_.condition_count();
  if (rows_.capacity() < condition_count) rows_.reserve(4 * condition_count);
  rows_.resize(condition_count);
  const auto size = static_cast<std::uint32_t>(batch.size());
  // A single event is not worth being shared.
  const std::uint32_t extra = size > 1 ? 1 : 0;
  if (extra == 0) something_else();
  pool_.run(size + extra, [&](std::uint32_t worker, std::uint32_t item) {
    if (item < extra) return something_else();
    const std::uint32_t i = item - extra;
    Scratch& scratch = *scratch_[worker];
    entries_[i].common = common_row(process_.event(batch[i]), scratch.common);
    find_partners(entries_[i], scratch);
    make_rows(i, scratch);
  });
  divide_rows();
  for (const Consumer& consumer : consumers_) {
    first_consumer_[consumer.condition] = base::no_index;
    consumed_[consumer.condition / 32] = 0;
  }
}

void ConcurrencyRelation::find_consumers(std::span<const EventId> batch) {
  entries_.clear();
  consumers_.clear();
  first_consumer_.resize(process_.condition_count(), base::no_index);
  consumed_.resize(process_.condition_count() / 32 + 1);
  for (std::uint32_t i = 0; i < batch.size(); ++i) {
    const UnfoldedEvent& event = process_.event(batch[i]);
    const ConditionId first = event.first_condition;
    entries_.push_back({{}, first, first + event.postset_size, event.preset_size});
    for (const ConditionId c : event.preset()) {
      const auto own = static_cast<std::uint32_t>(consumers_.size());
      consumers_.push_back({c, i, std::exchange(first_consumer_[c], own)});
      consumed_[c / 32] |= 1u << (c % 32);
    }
  }
}

// True if rows can be too long after the batch, as far as the rows of what is consumed tell. To
// read all of these takes a tenth of the time of entering the batch, which one worker would spend
// while the others wait: mostly a sample is enough.
bool ConcurrencyRelation::may_get_long_rows(std::span<const EventId> batch) const {
  constexpr std::size_t sample_size = 64;
  assert(word_count() <= longest(process_.condition_count()));
  const std::uint64_t limit = longest(process_.condition_count()) - word_count();
  if (const std::size_t step = batch.size() / sample_size; step > 1) {
    const std::uint64_t half = limit / 2 / step;
    if (most_new_words(batch, step, half) <= half) return false;
  }
  return most_new_words(batch, 1, limit) > limit;
}

// At most so many words come with every step-th event of the batch, unless they are more than the
// limit: then some number above that.
std::uint64_t ConcurrencyRelation::most_new_words(std::span<const EventId> batch, std::size_t step,
                                                  std::uint64_t limit) const {
  std::uint64_t words = 0;
  for (std::size_t i = step / 2; i < batch.size() && words <= limit; i += step) {
    const UnfoldedEvent& event = process_.event(batch[i]);
    // Each condition that it produces is told to those in its row.
    std::uint64_t size = event.postset_size;
    const auto count_produced = [&](ConditionId c) {
      for (std::uint32_t k = first_consumer_[c]; k != base::no_index; k = consumers_[k].next)
        size += entries_[consumers_[k].position].end - entries_[consumers_[k].position].first;
    };
    for (const Word& word : rows_[shortest_row(event)]) {
      size += static_cast<std::uint32_t>(std::popcount(word.bits));
      for_each_bit({word.index, word.bits & consumed_[word.index]}, count_produced);
    }
    words += size * event.postset_size;
  }
  return words;
}

// What is consumed with the fewest words in its row.
ConditionId ConcurrencyRelation::shortest_row(const UnfoldedEvent& event) const {
  assert(!event.preset().empty());
  return *std::ranges::min_element(event.preset(), {},
                                   [this](ConditionId c) { return rows_[c].size(); });
}

std::span<const Word> ConcurrencyRelation::common_row(const UnfoldedEvent& event,
                                                      Room<Word>& room) const {
  const auto preset = event.preset();
  const ConditionId shortest = shortest_row(event);
  std::size_t size = rows_[shortest].size();
  Word* const row = room.take(size);
  std::ranges::copy(rows_[shortest], row);
  for (const ConditionId c : preset) {
    if (c != shortest) size = intersect(row, size, rows_[c]);
  }
  return {row, size};
}

// Events of one size are no causes of each other: two of them are concurrent exactly if what one
// consumes is concurrent with all that the other one consumes.
void ConcurrencyRelation::find_partners(const Entry& entry, Scratch& scratch) {
  auto& partners = scratch.partners;
  partners.clear();
  const auto count_consumers = [&](ConditionId c) {
    for (std::uint32_t k = first_consumer_[c]; k != base::no_index; k = consumers_[k].next) {
      if (scratch.count[consumers_[k].position]++ == 0) partners.push_back(consumers_[k].position);
    }
  };
  for (const Word& word : entry.common) {
    for_each_bit({word.index, word.bits & consumed_[word.index]}, count_consumers);
  }
  std::erase_if(partners, [&](std::uint32_t other) {
    return std::exchange(scratch.count[other], 0) != entries_[other].preset_size;
  });
  std::ranges::sort(partners);
}

// The rows of the new conditions: what is common to all that their event consumes, the conditions
// of its partners, and each other.
void ConcurrencyRelation::make_rows(std::uint32_t position, Scratch& scratch) {
  const auto& [common, first, end, preset_size] = entries_[position];
  const auto& partners = scratch.partners;
  const auto later = std::ranges::lower_bound(partners, position);
  assert((later == partners.end() || *later != position) && "no event is concurrent with itself");
  const auto common_size = static_cast<std::uint32_t>(common.size());
  for (ConditionId c = first; c < end; ++c) {
    Row& row = rows_[c];
    reserve(row, common_size + 2, scratch.rows);
    std::ranges::copy(common, row.words_);
    row.size_ = common_size;
    const auto append_partner = [&](std::uint32_t partner) {
      append(row, entries_[partner].first, entries_[partner].end, scratch.rows);
    };
    std::for_each(partners.begin(), later, append_partner);
    append(row, first, c, scratch.rows);
    append(row, c + 1, end, scratch.rows);
    std::for_each(later, partners.end(), append_partner);
    scratch.word_count += row.size();
  }
}

// The older rows are extended in parts, each from a word to another, of about as many words that
// events of the batch have in common: one part where there is little to do, else one for each
// worker. The bounds move up slowly from batch to batch, so that a worker mostly finds rows that it
// has extended before.
void ConcurrencyRelation::divide_rows() {
  constexpr std::size_t least_words = 1024, sample_rows = 8, sample_words = 8;
  std::uint64_t words = 0;
  for (const Entry& entry : entries_) words += entry.common.size();
  std::size_t count = words < least_words ? 1 : pool_.size();
  auto& sample = first_words_;
  sample.clear();
  const std::size_t row_step = std::max<std::size_t>(1, entries_.size() / sample_rows);
  for (std::size_t i = 0; i < entries_.size() && count > 1; i += row_step) {
    const std::span<const Word> common = entries_[i].common;
    const std::size_t word_step = std::max<std::size_t>(1, common.size() / sample_words);
    for (std::size_t k = 0; k < common.size(); k += word_step) sample.push_back(common[k].index);
  }
  std::ranges::sort(sample);
  count = std::max<std::size_t>(1, std::min(count, sample.size()));
  for (std::size_t part = 1; part < count; ++part)
    sample[part] = sample[part * sample.size() / count];
  sample.resize(count + 1);
  sample.front() = 0;
  sample.back() = base::no_index;
  part_count_ = static_cast<std::uint32_t>(count);
}

void ConcurrencyRelation::tell_older(std::uint32_t worker, std::uint32_t part) {
  Scratch& scratch = *scratch_[worker];
  std::uint64_t new_words = 0;
  const std::uint32_t first_word = first_words_[part], end_word = first_words_[part + 1];
  for (const auto& [common, first, end, preset_size] : entries_) {
    if (first == end) continue;
    auto word = std::ranges::lower_bound(common, first_word, {}, &Word::index);
    for (; word != common.end() && word->index < end_word; ++word) {
      for_each_bit(*word, [&](ConditionId c) {
        assert(c < first && "what an event consumes is older than what it produces");
        const std::size_t before = rows_[c].size();
        append(rows_[c], first, end, scratch.rows);
        new_words += rows_[c].size() - before;
      });
    }
  }
  scratch.word_count += new_words;
}

std::uint64_t ConcurrencyRelation::word_count() const {
  std::uint64_t sum = 0;
  for (const auto& scratch : scratch_) sum += scratch->word_count;
  return sum;
}

Word* ConcurrencyRelation::RowRoom::take(std::uint32_t capacity) {
  assert(std::has_single_bit(capacity));
  auto& free = free_[static_cast<std::uint32_t>(std::countr_zero(capacity))];
  if (free.empty()) return words_.take(capacity);
  Word* const words = free.back();
  free.pop_back();
  return words;
}

void ConcurrencyRelation::RowRoom::give_back(Word* words, std::uint32_t capacity) {
  assert(std::has_single_bit(capacity));
  free_[static_cast<std::uint32_t>(std::countr_zero(capacity))].push_back(words);
}

// Of two workers that extend a row one after the other, each moves it into a room of its own.
void ConcurrencyRelation::reserve(Row& row, std::uint32_t size, RowRoom& room) {
  if (size <= row.capacity_) return;
  const std::uint32_t capacity = std::bit_ceil(size);
  Word* const words = room.take(capacity);
  std::ranges::copy(row, words);
  if (row.capacity_ != 0) room.give_back(row.words_, row.capacity_);
  row.words_ = words;
  row.capacity_ = capacity;
}

// Adds the conditions first .. last - 1, which lie above all that the row has.
void ConcurrencyRelation::append(Row& row, ConditionId first, ConditionId last, RowRoom& room) {
  for (ConditionId c = first; c < last; ++c) {
    if (row.empty() || row.words_[row.size_ - 1].index != c / 32) {
      assert(row.empty() || row.words_[row.size_ - 1].index < c / 32);
      reserve(row, row.size_ + 1, room);
      row.words_[row.size_++] = {c / 32, 0};
    }
    row.words_[row.size_ - 1].bits |= 1u << (c % 32);
  }
}

}  // namespace vorel::unfolder
