#include "unfolder/concurrency_relation.h"

#include <algorithm>
#include <cassert>

namespace vorel {
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

ConcurrencyRelation::ConcurrencyRelation(const BranchingProcess& process, WorkerPool& pool)
    : process_{process}, pool_{pool}, rows_(process.condition_count()) {
  const ConditionId end = process.condition_count();
  for (ConditionId c = 0; c < end; ++c) {
    append(rows_[c], 0, c);
    append(rows_[c], c + 1, end);
  }
}

bool ConcurrencyRelation::concurrent(ConditionId c, ConditionId d) const {
  // The younger condition has the shorter row, mostly.
  const Row& row = rows_[std::max(c, d)];
  const ConditionId asked = std::min(c, d);
  const auto word = std::ranges::lower_bound(row, asked / 32, {}, &Word::index);
  return word != row.end() && word->index == asked / 32 && (word->bits >> (asked % 32) & 1u) != 0;
}

void ConcurrencyRelation::add_batch(std::span<const EventId> batch) {
  const auto size = static_cast<std::uint32_t>(batch.size());
  common_.resize(size);
  partners_.resize(size);
  find_consumers(batch);
  pool_.run(size, [&](std::uint32_t, std::uint32_t i) {
    common_[i] = common_row(process_.event(batch[i]));
    find_partners(i, batch);
  });
  rows_.resize(process_.condition_count());
  for (std::uint32_t i = 0; i < size; ++i) enter(i, batch);
  for (const Consumer& consumer : consumers_) first_consumer_[consumer.condition] = no_index;
}

void ConcurrencyRelation::find_consumers(std::span<const EventId> batch) {
  consumers_.clear();
  for (std::uint32_t i = 0; i < batch.size(); ++i) {
    for (const ConditionId c : process_.event(batch[i]).preset()) consumers_.push_back({c, i});
  }
  std::ranges::stable_sort(consumers_, {}, &Consumer::condition);
  first_consumer_.resize(process_.condition_count(), no_index);
  for (std::uint32_t k = 0; k < consumers_.size(); ++k) {
    std::uint32_t& first = first_consumer_[consumers_[k].condition];
    first = std::min(first, k);
  }
}

Row ConcurrencyRelation::common_row(const UnfoldedEvent& event) const {
  const auto preset = event.preset();
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
void ConcurrencyRelation::find_partners(std::uint32_t position, std::span<const EventId> batch) {
  std::vector<std::uint32_t> candidates;  // once for each condition that is consumed
  for_each(common_[position], [&](ConditionId c) {
    for (std::uint32_t k = first_consumer_[c];
         k < consumers_.size() && consumers_[k].condition == c; ++k) {
      candidates.push_back(consumers_[k].position);
    }
  });
  std::ranges::sort(candidates);
  auto& partners = partners_[position];
  partners.clear();
  for (std::size_t first = 0; first < candidates.size();) {
    std::size_t last = first;
    while (last < candidates.size() && candidates[last] == candidates[first]) ++last;
    if (last - first == process_.event(batch[candidates[first]]).preset_size) {
      partners.push_back(candidates[first]);
    }
    first = last;
  }
}

void ConcurrencyRelation::enter(std::uint32_t position, std::span<const EventId> batch) {
  const UnfoldedEvent& event = process_.event(batch[position]);
  const ConditionId first = event.first_condition, last = first + event.postset_size;
  if (first == last) return;
  for_each(common_[position], [&](ConditionId c) { append(rows_[c], first, last); });
  for (ConditionId c = first; c < last; ++c) {
    Row& row = rows_[c];
    row.reserve(common_[position].size() + 2);
    row = common_[position];
    word_count_ += row.size();
    bool has_siblings = false;
    const auto append_siblings = [&] {
      append(row, first, c);
      append(row, c + 1, last);
      has_siblings = true;
    };
    for (const std::uint32_t partner : partners_[position]) {
      if (partner > position && !has_siblings) append_siblings();
      const UnfoldedEvent& other = process_.event(batch[partner]);
      append(row, other.first_condition, other.first_condition + other.postset_size);
    }
    if (!has_siblings) append_siblings();
  }
}

// Adds the conditions first .. last - 1, which lie above all that the row has.
void ConcurrencyRelation::append(Row& row, ConditionId first, ConditionId last) {
  for (ConditionId c = first; c < last; ++c) {
    if (row.empty() || row.back().index != c / 32) {
      assert(row.empty() || row.back().index < c / 32);
      row.push_back({c / 32, 0});
      ++word_count_;
    }
    row.back().bits |= 1u << (c % 32);
  }
}

}  // namespace vorel
