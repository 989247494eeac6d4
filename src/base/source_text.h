// base/source_text.h - the text of a net file, and how its user is told about a spot in it.
// Here:      from an offset to line and column; the forms of errors and warnings; excerpts.
// Not here:  splitting the text (formats/g_words.h, formats/ll_net_reader.h).
// Lines end in LF, CR or CR LF. Columns count characters of UTF-8, a tab as one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vorel::base {

// What a message quotes: long texts cut, bytes that would upset a terminal as \xNN.
std::string excerpt(std::string_view text);

// The excerpt between apostrophes.
std::string quoted(std::string_view text);

// A name with a byte below 32, or 127, can be neither shown nor written.
bool has_control_character(std::string_view text);

class SourceText {
 public:
  // `name` is what messages call the file. The text must outlive this.
  SourceText(std::string_view text, std::string name) : text_{text}, name_{std::move(name)} {}

  std::string_view text() const { return text_; }
  std::size_t size() const { return text_.size(); }
  // The offset of a part of the text.
  std::size_t offset_of(std::string_view part) const;
  // From the offset to the end of the line.
  std::string_view rest_of_line(std::size_t offset) const;

  // `syntax error (file NAME, line L, column C): expected X, found 'Y'`; at the end of the text
  // what is found is "the end of the file". These give false, for a caller to pass on.
  bool report_expected(std::size_t offset, std::string_view expected, std::string_view found) const;
  // `syntax error (file NAME, line L, column C): FAULT, found 'Y'`.
  bool report_syntax_error(std::size_t offset, std::string_view fault,
                           std::string_view found) const;
  // `TEXT (file NAME, line L, column C)`.
  bool report(std::size_t offset, std::string_view text) const;
  // `the net is not safe, place NAME has N tokens in the initial marking (file ...)`.
  bool report_unsafe(std::size_t offset, std::string_view place, std::string_view tokens) const;
  void warn(std::size_t offset, std::string_view text) const;

 private:
  std::string location(std::size_t offset) const;

  std::string_view text_;
  std::string name_;
};

// A fault that a file may repeat any number of times, but that is worth one warning: the first in
// the file, with the number of the others.
class RepeatedFault {
 public:
  void note(std::size_t offset, std::string_view subject);
  // `BEFORE 'SUBJECT' AFTER (file ...)`; nothing if there is none.
  void warn(const SourceText& source, std::string_view before, std::string_view after) const;

 private:
  std::uint64_t count_ = 0;
  std::size_t offset_ = 0;
  std::string subject_;
};

}  // namespace vorel::base
