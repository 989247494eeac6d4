// configuration/place_concurrency.h - which places may be marked together.
// Here:      what pairs of places say, for all markings at once.
// Not here:  what the transitions do (configuration/token_flow.h), linear invariants
//            (configuration/place_invariants.h).
#pragma once

#include <cstdint>
#include <vector>

#include "configuration/token_flow.h"

namespace vorel::configuration {

// The least relation that holds of any two tokens of the initial marking, and of those that a
// change of concurrent tokens leaves behind [Kov-1992]: after no configuration are two tokens on
// places that it does not relate. A place related to itself may get a second token, as far as pairs
// can tell. Takes a bit for each pair of places.
class PlaceConcurrency {
 public:
  // All places are related where the relation would take more steps than allowed (words of 64
  // places).
  PlaceConcurrency(const TokenFlow& flow, std::uint64_t most_steps);

  bool related(std::uint32_t p, std::uint32_t q) const {
    return all_ || (row(p)[q / word_bits] >> (q % word_bits) & 1u) != 0;
  }

 private:
  using Word = std::uint64_t;
  static constexpr std::uint32_t word_bits = 64;

  Word* row(std::uint32_t place) { return bits_.data() + std::size_t{place} * words_; }
  const Word* row(std::uint32_t place) const { return bits_.data() + std::size_t{place} * words_; }
  bool has_grown(const TokenFlow::Places& places, std::uint64_t since) const;
  bool find_partners(const TokenFlow::Places& places);
  void relate(std::uint32_t p, std::uint32_t q);
  void add_results(const TokenFlow::Places& produced);
  void close(const TokenFlow& flow, std::uint64_t most_steps);

  bool all_ = false;
  std::uint32_t words_;      // of a row
  std::vector<Word> bits_;   // by place, by place
  std::vector<bool> found_;  // by place: has a token in some marking, as far as pairs can tell
  std::uint64_t now_ = 1;    // counts the changes looked at
  std::vector<std::uint64_t> grown_;  // by place: when its row grew last
  std::vector<Word> partners_;        // scratch: the places related to all that is consumed
};

}  // namespace vorel::configuration
