// formats/mci_layout.h - where the tables of a *.mci file are, found before anything is built.
// Here:      the words of the format; one walk over the file that tests every number against its
//            table and counts the links of each event.
// Not here:  making the process (formats/mci_reader.h).
//
// A prefix is mostly small allocations, so the file is walked twice: the first walk finds whether
// it is sound and how long each adjacency list gets, the second one cannot fail and makes every
// list in its final size.
//
// The format, in 32-bit little-endian words; numbers are 1-based, 0 stands for "none":
//   number of conditions, number of events
//   the transition of each event
//   for each condition: its place, its producer or 0, its consumers, 0
//   pairs of a cut-off event and its correspondent (0: the initial marking), 0
//   groups of words, each ended by 0, which nothing uses, 0
//   number of places, number of transitions, length of the longest name
// then bytes: the names of the places, an empty name, the names of the transitions, an empty name;
// each name ends in a zero byte.
#pragma once

#include <cassert>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace vorel::formats {

inline constexpr std::uint32_t mci_unknown_correspondent = 0xFFFFFFFFu;

// Reads words one after the other. Past the end they are 0, which ends every run of the format, so
// that a loop need not test for the end of the file: failed() tells afterwards.
class MciWords {
 public:
  explicit MciWords(std::string_view bytes) : bytes_{bytes} {}

  std::uint32_t next() {
    if (bytes_.size() < 4) {
      bytes_ = {};
      failed_ = true;
      return 0;
    }
    const std::uint32_t word = first_word(bytes_);
    bytes_.remove_prefix(4);
    return word;
  }
  // The number of words before the next 0; there must be one.
  std::uint32_t run_length() const {
    std::uint32_t length = 0;
    while (first_word(bytes_.substr(std::size_t{4} * length)) != 0) ++length;
    return length;
  }
  bool failed() const { return failed_; }
  std::string_view rest() const { return bytes_; }

 private:
  // Compilers make one load of this where words are little-endian.
  static std::uint32_t first_word(std::string_view bytes) {
    assert(bytes.size() >= 4);
    unsigned char b[4];
    std::memcpy(b, bytes.data(), 4);
    return b[0] | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[3]} << 24;
  }

  std::string_view bytes_;
  bool failed_ = false;
};

struct MciLayout {
  std::uint32_t condition_count = 0, event_count = 0;
  std::string_view events, conditions, cut_offs;  // from the start of the table to the file's end
  std::vector<std::string_view> place_names, transition_names;
  std::vector<std::uint32_t> consumed, produced;  // by event: sizes of its preset and postset
};

// False if the bytes end too early or a number is beyond its table. The layout points into them.
bool find_mci_layout(std::string_view bytes, MciLayout& layout);

}  // namespace vorel::formats
