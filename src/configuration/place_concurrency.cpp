#include "configuration/place_concurrency.h"

#include <algorithm>
#include <bit>

namespace vorel::configuration {

PlaceConcurrency::PlaceConcurrency(const TokenFlow& flow, std::uint64_t most_steps)
    : words_{(flow.place_count() + word_bits - 1) / word_bits} {
  const std::uint64_t size = std::uint64_t{flow.place_count()} * words_;
  if (size > most_steps) {
    all_ = true;
    return;
  }
  bits_.resize(size);
  found_.resize(flow.place_count());
  grown_.resize(flow.place_count());
  partners_.resize(words_);
  TokenFlow::Places initial;
  for (std::uint32_t place = 0; place < flow.place_count(); ++place) {
    if (flow.is_initial(place)) initial.push_back(place);
  }
  add_results(initial);
  close(flow, most_steps - size);
}

void PlaceConcurrency::relate(std::uint32_t p, std::uint32_t q) {
  if (related(p, q)) return;
  row(p)[q / word_bits] |= Word{1} << (q % word_bits);
  row(q)[p / word_bits] |= Word{1} << (p % word_bits);
  grown_[p] = grown_[q] = now_;
}

// Of tokens beside the partners.
void PlaceConcurrency::add_results(const TokenFlow::Places& produced) {
  for (const std::uint32_t place : produced) {
    if (!found_[place]) grown_[place] = now_;
    found_[place] = true;
    for (const std::uint32_t other : produced) {
      if (other != place) relate(place, other);
    }
    for (std::uint32_t i = 0; i < words_; ++i) {
      for (Word fresh = partners_[i] & ~row(place)[i]; fresh != 0; fresh &= fresh - 1)
        relate(place, i * word_bits + static_cast<std::uint32_t>(std::countr_zero(fresh)));
    }
  }
}

bool PlaceConcurrency::has_grown(const TokenFlow::Places& places, std::uint64_t since) const {
  return std::ranges::any_of(places,
                             [this, since](std::uint32_t place) { return grown_[place] > since; });
}

// False if the places cannot be marked together.
bool PlaceConcurrency::find_partners(const TokenFlow::Places& places) {
  std::ranges::fill(partners_, ~Word{0});
  for (const std::uint32_t place : places) {
    if (!found_[place]) return false;
    for (const std::uint32_t other : places) {
      if (other != place && !related(place, other)) return false;
    }
    for (std::uint32_t i = 0; i < words_; ++i) partners_[i] &= row(place)[i];
  }
  return !places.empty();
}

void PlaceConcurrency::close(const TokenFlow& flow, std::uint64_t most_steps) {
  std::vector<std::uint64_t> looked_at(flow.changes().size());  // when, by change
  for (bool changed = true; changed;) {
    changed = false;
    for (std::size_t i = 0; i < flow.changes().size(); ++i) {
      const TokenFlow::Change& change = flow.changes()[i];
      if (!has_grown(change.consumed, looked_at[i])) continue;
      const std::uint64_t price = words_ * (change.consumed.size() + change.produced.size());
      if (price > most_steps) {
        all_ = true;
        return;
      }
      most_steps -= price;
      changed = true;
      looked_at[i] = now_++;
      if (find_partners(change.consumed)) add_results(change.produced);
    }
  }
}

}  // namespace vorel::configuration
