// toolkit/genlib_cursor.h - a spot in the text of a gate library.
// Here:      blanks and comments, words, names, numbers, saying what is wrong at a spot.
// Not here:  statements (toolkit/genlib_reader.h), expressions (toolkit/gate_expression.h).
// A comment goes from "#" to the end of its line. What stands in quotes is one word, or name, that
// goes no further than its line.
#pragma once

#include <string>
#include <string_view>

namespace vorel::toolkit {

class GenlibCursor {
 public:
  // What a message shows of a part of the text, between apostrophes.
  static std::string quoted(std::string_view part);

  // `name` is what messages call the text. Both must outlive this.
  GenlibCursor(std::string_view text, std::string_view name);

  bool at_end() const { return rest_.empty(); }
  bool at(char c) const { return rest_.starts_with(c); }
  bool at_word(std::string_view word) const { return word_here() == word; }
  bool at_name() const;

  // Takes the character if it comes next.
  bool accept(char c);
  bool expect(char c) { return accept(c) || fail_expected(std::string{'\'', c, '\''}); }

  // Takes what follows up to a blank or a comment.
  bool take_word(std::string_view& word, std::string_view expected);
  // Takes the name of a pin, which also ends at an operator.
  bool take_name(std::string_view& name, std::string_view expected);
  // Takes a finite number that is not below the bound.
  bool take_number(double& number, double lower_bound, std::string_view expected);

  // These leave a note for those who ask for diagnostics, with the line, and give false. What was
  // found is what comes next, or a part of the text that was taken before.
  bool fail_expected(std::string_view expected) const;
  bool fail_expected(std::string_view expected, std::string_view found) const;
  // Tells what is wrong with a part of the text.
  bool fail_at(std::string_view part, std::string_view fault) const;

 private:
  void skip(std::size_t size);
  void skip_gaps();
  std::string_view word_here() const;
  bool take_text(std::size_t size, std::string_view& taken, std::string_view expected);

  std::string_view text_;
  std::string_view rest_;  // never starts with a blank or a comment
  std::string_view name_;
};

}  // namespace vorel::toolkit
