// report/html_writer.h - HTML that is well-formed XML, too.
// Here:      elements that close themselves, text of any bytes, numbers that a document has too.
// Not here:  what a page says (report/page.h), how it looks (report/page_style.h).
#pragma once

#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

#include "base/text_sink.h"

namespace vorel::report {

class HtmlWriter {
 public:
  explicit HtmlWriter(std::ostream& stream) : sink_{stream} {}

  // An element that ends with the life of this.
  class [[nodiscard]] Element {
   public:
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;
    ~Element() { writer_.end(name_); }

   private:
    friend class HtmlWriter;
    Element(HtmlWriter& writer, std::string_view name) : writer_{writer}, name_{name} {}

    HtmlWriter& writer_;
    std::string_view name_;
  };

  // Names of elements are literals, attributes markup: `class="a" id="b"`.
  Element in(std::string_view name, std::string_view attributes = {});
  void add(std::string_view name, std::string_view attributes, std::string_view text);
  void add(std::string_view name, std::string_view text) { add(name, {}, text); }

  // Any bytes.
  void text(std::string_view text);
  // Goes out as it is.
  void markup(std::string_view markup) { sink_ << markup; }

  // Figures that stand in the JSON document, too, at the pointer; there the exact value, here what
  // is read.
  void count(std::string_view pointer, std::uint64_t number);
  void decimal(std::string_view pointer, double number, std::string_view shown);
  void word(std::string_view pointer, std::string_view word);

  // False after an error.
  bool finish() { return sink_.finish(); }

 private:
  void end(std::string_view name);
  void figure(std::string_view pointer, std::string_view exact, std::string_view shown);

  base::TextSink sink_;
};

}  // namespace vorel::report
