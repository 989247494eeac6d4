#include "report/page_parts.h"

#include <cmath>

#include "base/messages.h"
#include "flow/waveforms.h"
#include "report/drawing_style.h"

namespace vorel::report {
namespace {

void add_head(HtmlWriter& html, std::span<const std::string_view> heads) {
  const auto head = html.in("thead");
  const auto row = html.in("tr");
  for (std::string_view text : heads) {
    const bool is_number = text.starts_with('#');
    if (is_number) text.remove_prefix(1);
    html.add("th", is_number ? "scope=\"col\" class=\"number\"" : "scope=\"col\"", text);
  }
}

HtmlWriter::Element begin_body(HtmlWriter& html, std::span<const std::string_view> heads) {
  add_head(html, heads);
  return html.in("tbody");
}

HtmlWriter::Element begin_section(HtmlWriter& html, std::string_view id) {
  return html.in("section", "id=\"" + std::string{id} + "\"");
}

}  // namespace

std::string_view class_of(Tone tone) {
  switch (tone) {
    case Tone::good:
      return "good";
    case Tone::doubtful:
      return "doubtful";
    case Tone::bad:
      return "bad";
    case Tone::plain:
      break;
  }
  return "plain";
}

std::string_view mark_of(Tone tone) {
  switch (tone) {
    case Tone::good:
      return "\u2713";
    case Tone::doubtful:
      return "!";
    case Tone::bad:
      return "\u2717";
    case Tone::plain:
      break;
  }
  return "\u2022";
}

void add_badge(HtmlWriter& html, Tone tone, std::string_view word) {
  const auto badge = html.in("span", "class=\"badge " + std::string{class_of(tone)} + "\"");
  html.add("span", "class=\"mark\" aria-hidden=\"true\"", mark_of(tone));
  html.text(word);
}

Section::Section(HtmlWriter& html, std::string_view id, std::string_view heading)
    : element_{begin_section(html, id)} {
  html.add("h2", heading);
}

void add_drawing(HtmlWriter& html, const Drawing& drawing, std::string_view caption) {
  const auto figure = html.in("figure");
  html.add("figcaption", caption);
  if (drawing.svg.empty()) {
    html.add("p", "class=\"instead\"", drawing.alternative);
    return;
  }
  {
    // The keyboard can scroll it as well.
    const auto box = html.in("div", "class=\"pane\" tabindex=\"0\"");
    html.markup(drawing.svg);
  }
  const auto text = html.in("details", "class=\"as-text\"");
  html.add("summary", "As text");
  html.add("p", drawing.alternative);
}

void add_trace(HtmlWriter& html, const net::Stg* stg, const flow::StgTrace& trace,
               std::string_view caption, Emphasis emphasis) {
  if (trace.empty()) {
    html.add("p", "class=\"quiet\"", "In the initial state.");
    return;
  }
  const std::string title{caption};
  const formats::Waveform waveform =
      stg == nullptr ? flow::waveform_of(trace, title) : flow::waveform_of(*stg, trace, title);
  add_drawing(html, draw_waveform(waveform, emphasis), caption);
}

Table::Table(HtmlWriter& html, std::span<const std::string_view> heads)
    : box_{html.in("div", "class=\"table\" tabindex=\"0\"")},
      table_{html.in("table")},
      body_{begin_body(html, heads)} {}

void add_names(HtmlWriter& html, std::span<const std::string> names, std::string_view if_none) {
  if (names.empty()) html.add("span", "class=\"quiet\"", if_none);
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) html.markup(", ");
    html.add("code", names[i]);
  }
}

void add_listing(HtmlWriter& html, std::string_view title, std::string_view text) {
  const auto details = html.in("details", "class=\"listing\"");
  html.add("summary", title);
  const auto box = html.in("pre", "tabindex=\"0\"");
  html.add("code", text);
}

void add_link(HtmlWriter& html, std::string_view file) {
  std::string address;
  for (const char c : file) {
    const bool is_plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                          (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == '/';
    if (is_plain) {
      address += c;
    } else {
      address +=
          base::format_message("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  // A colon in the first part of an address would make a scheme of it.
  html.add("a", "href=\"./" + address + "\"", file);
}

std::string duration(double seconds) {
  if (seconds < 0.001) return base::format_message("%.2f ms", seconds * 1e3);
  if (seconds < 0.1) return base::format_message("%.1f ms", seconds * 1e3);
  return base::format_message(seconds < 10 ? "%.2f s" : "%.0f s", seconds);
}

std::string decimal(double number) {
  std::string text = base::format_message("%.2f", number);
  while (text.ends_with('0')) text.pop_back();
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::string pointer(std::string_view list, std::size_t position, std::string_view key) {
  return std::string{list} + "/" + std::to_string(position) + "/" + std::string{key};
}

}  // namespace vorel::report
