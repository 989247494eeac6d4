// formats/g_words.h - the words of a .g text, line by line.
// Here:      comments, continued lines, line ends, implicit places with blanks inside.
// Not here:  what the words mean (formats/g_reader.h, formats/g_graph.h).
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "base/source_text.h"

namespace vorel::formats {

struct GWord {
  std::string_view text;  // lives as long as the GWords that gave it
  std::size_t offset;     // of its first character
};

// "NAME=NUMBER" or "NAME(NUMBER)" in two; the number is empty if the text has no such form.
struct GNumbered {
  std::string_view name, number;
};
GNumbered split_number(std::string_view text);

class GWords {
 public:
  explicit GWords(const base::SourceText& source);

  // The words of the next line that has any. False at the end of the text and after an error;
  // failed() tells which.
  bool next_line(std::vector<GWord>& words);
  bool failed() const { return failed_; }

  // Passes over whole lines, whatever is in them, up to the next that starts with a keyword.
  void skip_rows();
  // Where the text goes on with something else than blanks and comments; its size if it does not.
  std::size_t next_offset() const;

 private:
  char at(std::size_t offset) const { return offset < text_.size() ? text_[offset] : '\n'; }
  std::size_t after_blanks(std::size_t offset) const;
  std::size_t after_line_end(std::size_t offset) const;
  std::size_t end_of_line(std::size_t offset) const;
  bool is_continuation(std::size_t offset) const;
  bool ends_word(std::size_t offset) const;
  std::size_t end_of_pair(std::size_t start);
  bool take_word(std::vector<GWord>& words);
  std::string_view without_blanks(std::string_view text);

  const base::SourceText& source_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t no_pair_before_ = 0;  // no ">" is left on the line that ends here
  bool failed_ = false;
  std::deque<std::string> changed_;  // words that do not stand in the text as they are
};

}  // namespace vorel::formats
