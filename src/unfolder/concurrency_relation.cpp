#include "unfolder/concurrency_relation.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace vorel::unfolder {
namespace {

using Row = ConcurrencyRelation::Row;
using Word = ConcurrencyRelation::Word;

void intersect(Row& row, const Row& other) {
  auto out = row.begin();
  auto in = row.cbegin();
  auto with = other.begin();
  while (in != row.cend() && with != other.end()) {
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
  row.erase(out, row.end());
}

}  // namespace

ConcurrencyRelation::ConcurrencyRelation(const BranchingProcess& process, base::WorkerPool& pool)
    : process_{process}, pool_{pool}, rows_(process.condition_count()), hits_(pool.size()) {
  const ConditionId end = process.condition_count();
  for (ConditionId c = 0; c < end; ++c) {
    append(rows_[c], 0, c);
    append(rows_[c], c + 1, end);
  }
}

bool ConcurrencyRelation::concurrent(ConditionId c, ConditionId d) const {
  assert(c != d && "the relation is irreflexive");
  assert(std::max(c, d) < rows_.size());
  // The younger condition has the shorter row, mostly.
  const Row& row = rows_[std::max(c, d)];
  const ConditionId asked = std::min(c, d);
  const auto word = std::ranges::lower_bound(row, asked / 32, {}, &Word::index);
  return word != row.end() && word->index == asked / 32 && (word->bits >> (asked % 32) & 1u) != 0;
}

void ConcurrencyRelation::add_batch(std::span<const EventId> batch) {
  const auto size = static_cast<std::uint32_t>(batch.size());
  assert(std::ranges::all_of(batch,
                             [&](EventId e) {
                               return process_.event(e).size == process_.event(batch.front()).size;
                             }) &&
         "no event of a batch is a cause of another");
  assert(std::ranges::is_sorted(batch, {},
                                [this](EventId e) { return process_.event(e).first_condition; }) &&
         "rows grow at their ends");
  common_.resize(size);
  partners_.resize(size);
  for (Hits& hits : hits_) hits.count.resize(std::max<std::size_t>(hits.count.size(), size));
  find_consumers(batch);
  rows_.resize(process_.condition_count());
  pool_.run(size, [&](std::uint32_t worker, std::uint32_t i) {
    common_[i] = common_row(process_.event(batch[i]));
    find_partners(i, batch, hits_[worker]);
    make_rows(i, batch, hits_[worker]);
  });
  const std::uint32_t part_count = count_parts(size);
  pool_.run(part_count, [&](std::uint32_t worker, std::uint32_t part) {
    extend_rows(part, part_count, batch, hits_[worker]);
  });
  for (Hits& hits : hits_) word_count_ += std::exchange(hits.new_words, 0);
  for (const Consumer& consumer : consumers_) first_consumer_[consumer.condition] = base::no_index;
}

void ConcurrencyRelation::find_consumers(std::span<const EventId> batch) {
  consumers_.clear();
  for (std::uint32_t i = 0; i < batch.size(); ++i) {
    for (const ConditionId c : process_.event(batch[i]).preset()) consumers_.push_back({c, i});
  }
  std::ranges::stable_sort(consumers_, {}, &Consumer::condition);
  first_consumer_.resize(process_.condition_count(), base::no_index);
  for (std::uint32_t k = 0; k < consumers_.size(); ++k) {
    std::uint32_t& first = first_consumer_[consumers_[k].condition];
    first = std::min(first, k);
  }
}

Row ConcurrencyRelation::common_row(const UnfoldedEvent& event) const {
  const auto preset = event.preset();
  assert(!preset.empty());
  const auto shortest =
      *std::ranges::min_element(preset, {}, [this](ConditionId c) { return rows_[c].size(); });
  Row row = rows_[shortest];
  for (const ConditionId c : preset) {
    if (c != shortest) intersect(row, rows_[c]);
  }
  return row;
}

// Events of one size are no causes of each other: two of them are concurrent exactly if what one
// consumes is concurrent with all that the other one consumes.
void ConcurrencyRelation::find_partners(std::uint32_t position, std::span<const EventId> batch,
                                        Hits& hits) {
  hits.positions.clear();
  for_each(common_[position], [&](ConditionId c) {
    for (std::uint32_t k = first_consumer_[c];
         k < consumers_.size() && consumers_[k].condition == c; ++k) {
      if (hits.count[consumers_[k].position]++ == 0)
        hits.positions.push_back(consumers_[k].position);
    }
  });
  auto& partners = partners_[position];
  partners.clear();
  for (const std::uint32_t other : hits.positions) {
    if (hits.count[other] == process_.event(batch[other]).preset_size) partners.push_back(other);
    hits.count[other] = 0;
  }
  std::ranges::sort(partners);
}

// The rows of the new conditions: what is common to all that their event consumes, the conditions
// of its partners, and each other.
void ConcurrencyRelation::make_rows(std::uint32_t position, std::span<const EventId> batch,
                                    Hits& hits) {
  const UnfoldedEvent& event = process_.event(batch[position]);
  const ConditionId first = event.first_condition, last = first + event.postset_size;
  const auto& partners = partners_[position];
  const auto later = std::ranges::lower_bound(partners, position);
  assert((later == partners.end() || *later != position) && "no event is concurrent with itself");
  for (ConditionId c = first; c < last; ++c) {
    Row& row = rows_[c];
    row.reserve(common_[position].size() + 2);
    row.assign(common_[position].begin(), common_[position].end());
    const auto append_partner = [&](std::uint32_t partner) {
      const UnfoldedEvent& other = process_.event(batch[partner]);
      append(row, other.first_condition, other.first_condition + other.postset_size);
    };
    std::for_each(partners.begin(), later, append_partner);
    append(row, first, c);
    append(row, c + 1, last);
    std::for_each(later, partners.end(), append_partner);
    hits.new_words += row.size();
  }
}

// A power of two of parts, in which the older rows are extended: one for each worker, if there is
// enough to do.
std::uint32_t ConcurrencyRelation::count_parts(std::uint32_t batch_size) const {
  std::uint64_t words = 0;
  for (std::uint32_t i = 0; i < batch_size; ++i) words += common_[i].size();
  return words < 256 ? 1 : std::bit_ceil(pool_.size());
}

// Tells the older conditions of one part of the new ones: every part_count-th block of words.
void ConcurrencyRelation::extend_rows(std::uint32_t part, std::uint32_t part_count,
                                      std::span<const EventId> batch, Hits& hits) {
  constexpr std::uint32_t words_of_block = 16;
  std::uint64_t new_words = 0;
  for (std::uint32_t i = 0; i < batch.size(); ++i) {
    const UnfoldedEvent& event = process_.event(batch[i]);
    const ConditionId first = event.first_condition, last = first + event.postset_size;
    if (first == last) continue;
    for (const Word& word : common_[i]) {
      if ((word.index / words_of_block & (part_count - 1)) != part) continue;
      for_each_bit(word, [&](ConditionId c) {
        assert(c < first && "what an event consumes is older than what it produces");
        const std::size_t before = rows_[c].size();
        append(rows_[c], first, last);
        new_words += rows_[c].size() - before;
      });
    }
  }
  hits.new_words += new_words;
}

// Adds the conditions first .. last - 1, which lie above all that the row has.
void ConcurrencyRelation::append(Row& row, ConditionId first, ConditionId last) {
  for (ConditionId c = first; c < last; ++c) {
    if (row.empty() || row.back().index != c / 32) {
      assert(row.empty() || row.back().index < c / 32);
      row.push_back({c / 32, 0});
    }
    row.back().bits |= 1u << (c % 32);
  }
}

}  // namespace vorel::unfolder
