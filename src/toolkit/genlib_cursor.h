// toolkit/genlib_cursor.h - a spot in the text of a gate library.
// Here:      blanks and comments, words, names, numbers, saying what is wrong at a spot.
// Not here:  statements (toolkit/genlib_reader.h), expressions (toolkit/gate_expression.h).
// A comment goes from "#" to the end of its line. What stands in quotes is one word, or name, that
// goes no further than its line.
#pragma once

#include <string>
#include <string_view>

namespace vorel {

class GenlibCursor {
 public:
  // `name` is what messages call the text, which must outlive this.
  GenlibCursor(std::string_view text, std::string name);

  bool at_end() const { return rest_.empty(); }
  bool at(char c) const { return rest_.starts_with(c); }
  bool at_name() const;

  // Takes the character if it comes next.
  bool accept(char c);
  bool expect(char c) { return accept(c) || fail_expected(std::string{'\'', c, '\''}); }

  // Takes what follows up to a blank or a comment.
  bool take_word(std::string_view& word, std::string_view expected);
  // Takes the name of a pin, which also ends at an operator.
  bool take_name(std::string_view& name, std::string_view expected);
  // Takes a finite number.
  bool take_number(double& number, std::string_view expected);

  // These leave a note for those who ask for diagnostics, with the line; both give false.
  bool fail_expected(std::string_view expected) const;
  // `part` is a part of the text; `fault` tells what is wrong with it.
  bool fail_at(std::string_view part, std::string_view fault) const;

 private:
  void skip(std::size_t size);
  void skip_gaps();
  std::string_view word_here() const;
  bool take_text(std::size_t size, std::string_view& taken, std::string_view expected);

  std::string_view text_;
  std::string_view rest_;  // never starts with a blank or a comment
  std::string name_;
};

}  // namespace vorel
