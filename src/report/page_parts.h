// report/page_parts.h - what all sections of a page are made of.
// Here:      drawings with their texts, traces as waveforms, badges, times.
// Not here:  the sections (report/page_sections.h).
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "flow/flow_result.h"
#include "formats/waveform.h"
#include "report/drawings.h"
#include "report/html_writer.h"
#include "report/waveform_drawing.h"

namespace vorel::report {

// How something is to be taken; a class of the stylesheet, and a mark beside the colour.
enum class Tone { good, plain, doubtful, bad };
std::string_view class_of(Tone tone);
std::string_view mark_of(Tone tone);

// A word on a coloured ground.
void add_badge(HtmlWriter& html, Tone tone, std::string_view word);

// A section with its heading. The id is for links.
class Section {
 public:
  Section(HtmlWriter& html, std::string_view id, std::string_view heading);

 private:
  HtmlWriter::Element element_;
};

// The picture, its text for whoever asks for it, a caption; without a picture the text alone.
void add_drawing(HtmlWriter& html, const Drawing& drawing, std::string_view caption);

// A trace of the STG as a waveform; null: of one that is not known to be consistent.
void add_trace(HtmlWriter& html, const net::Stg* stg, const flow::StgTrace& trace,
               std::string_view caption, Emphasis emphasis);

// A table within a box that scrolls, with these heads; "#" before a head makes numbers of the
// column.
class Table {
 public:
  Table(HtmlWriter& html, std::span<const std::string_view> heads);

 private:
  HtmlWriter::Element box_, table_, body_;
};

// "a, b, c" with each name as code.
void add_names(HtmlWriter& html, std::span<const std::string> names, std::string_view if_none);

// A listing that is folded up.
void add_listing(HtmlWriter& html, std::string_view title, std::string_view text);

// To a file beside the page.
void add_link(HtmlWriter& html, std::string_view file);

// "0.42 ms", "1.3 s".
std::string duration(double seconds);
// At most two digits behind the point.
std::string decimal(double number);

// "/steps/3/text"
std::string pointer(std::string_view list, std::size_t position, std::string_view key);

}  // namespace vorel::report
