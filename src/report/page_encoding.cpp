#include <algorithm>
#include <array>
#include <string>

#include "flow/waveforms.h"
#include "report/page_parts.h"
#include "report/page_sections.h"
#include "report/trace_files.h"
#include "report/waveform_drawing.h"

namespace vorel::report {
namespace {

// Of more conflicts the first are drawn, and told.
constexpr std::size_t most_drawn_conflicts = 12, most_told_conflicts = 100;

// The code, digit by digit below the signals.
void add_code(HtmlWriter& html, const flow::Coding& coding, const flow::Conflict& conflict) {
  if (conflict.code.size() != coding.code_signals.size()) {
    html.add("code", conflict.code);
    return;
  }
  const auto box = html.in("div", "class=\"table\" tabindex=\"0\"");
  const auto table = html.in("table", "class=\"code\"");
  {
    const auto row = html.in("tr");
    html.add("th", "scope=\"row\"", "Common code");
    for (const std::string& signal : coding.code_signals) html.add("th", "scope=\"col\"", signal);
  }
  const auto row = html.in("tr");
  html.add("td", "");
  for (const char digit : conflict.code) html.add("td", std::string(1, digit));
}

void add_excited(HtmlWriter& html, std::string_view which, std::span<const std::string> edges) {
  const auto item = html.in("li");
  html.text("Excited after the " + std::string{which} + " trace: ");
  add_names(html, edges, "nothing");
  html.text(".");
}

void add_core(HtmlWriter& html, const net::StgPrefix& prefix, const flow::Conflict& conflict) {
  const auto item = html.in("li");
  html.text("Core: ");
  for (std::size_t i = 0; i < conflict.core.size(); ++i) {
    if (i > 0) html.markup(", ");
    html.add("code", prefix.events[conflict.core[i]]->transition->name);
  }
  html.text(".");
}

void add_waveforms(HtmlWriter& html, const net::Stg& stg, const flow::Conflict& conflict,
                   std::string_view title) {
  const auto common = flow::waveform_of(stg, conflict.common, std::string{title});
  const auto first = flow::waveform_of(stg, conflict.first, "the first trace");
  const auto second = flow::waveform_of(stg, conflict.second, "the second trace");
  add_drawing(html, draw_waveforms(common, first, second),
              "Two traces that end with the same code");
}

void add_conflict(HtmlWriter& html, const PageContent& content, std::size_t i) {
  const flow::Coding& coding = *content.result.coding;
  const flow::Conflict& conflict = coding.conflicts[i];
  const auto article = html.in("article");
  std::string title = (conflict.is_csc ? "CSC conflict " : "USC conflict ") + std::to_string(i + 1);
  {
    const auto heading = html.in("h3");
    html.text(title);
    if (conflict.is_csc) {
      html.text(": what ");
      html.add("code", conflict.signal);
      html.text(" is to do");
    }
  }
  add_code(html, coding, conflict);
  if (i < most_drawn_conflicts) add_waveforms(html, *content.result.given, conflict, title);
  add_trace_links(html, content,
                  {conflict_file(i, Branch::first), conflict_file(i, Branch::second)});
  const auto list = html.in("ul");
  add_excited(html, "first", conflict.excited_first);
  add_excited(html, "second", conflict.excited_second);
  if (!conflict.core.empty()) add_core(html, *content.result.given, conflict);
}

void add_transformation(HtmlWriter& html, const flow::AppliedTransformation& applied,
                        std::size_t i) {
  const auto row = html.in("tr");
  html.add("td", "class=\"number\"", std::to_string(i + 1));
  html.add("td", applied.is_insertion ? "new signal" : "less concurrency");
  {
    const auto cell = html.in("td");
    if (!applied.signal.empty()) html.add("code", applied.signal);
  }
  {
    const auto cell = html.in("td");
    add_names(html, applied.parts, "");
  }
  {
    const auto cell = html.in("td", "class=\"number\"");
    html.count(pointer("/resolution/transformations", i, "cost"), applied.cost);
  }
  html.add("td", "class=\"quiet\"", applied.cost_text);
}

}  // namespace

void add_conflicts(HtmlWriter& html, const PageContent& content) {
  const flow::Coding& coding = *content.result.coding;
  {
    const auto line = html.in("p");
    add_badge(html, coding.csc_holds ? Tone::good : Tone::doubtful,
              coding.csc_holds ? "CSC holds" : "CSC does not hold");
    html.markup(" ");
    add_badge(html, coding.usc_holds ? Tone::good : Tone::plain,
              coding.usc_holds ? "USC holds" : "USC does not hold");
    html.markup(" ");
    if (!coding.has_all_cores) html.text("Found so far, not all: ");
    html.count("/coding/csc_cores", coding.csc_cores);
    html.text(coding.csc_cores == 1 ? " core of CSC conflicts" : " cores of CSC conflicts");
    if (coding.usc_cores > 0) {
      html.text(", ");
      html.count("/coding/usc_cores", coding.usc_cores);
      html.text(" of USC conflicts");
    }
    html.text(", in the STG given.");
  }
  if (!coding.conflicts.empty())
    html.add("p",
             "Two reachable states have the same values of all signals. In a CSC conflict "
             "the circuit would have to do different things in them, which it cannot tell "
             "apart; a USC conflict alone does no harm.");
  const std::size_t told = std::min(coding.conflicts.size(), most_told_conflicts);
  if (told > most_drawn_conflicts)
    html.add("p", "class=\"quiet\"",
             "Of " + std::to_string(coding.conflicts.size()) + " conflicts found the first " +
                 std::to_string(told) + " are told here, and the first " +
                 std::to_string(most_drawn_conflicts) + " with waveforms.");
  for (std::size_t i = 0; i < told; ++i) add_conflict(html, content, i);
}

void add_resolution(HtmlWriter& html, const PageContent& content) {
  const flow::Resolution& resolution = *content.result.resolution;
  {
    const auto line = html.in("p");
    add_badge(html, resolution.is_complete ? Tone::good : Tone::bad,
              resolution.is_complete ? "all conflicts are resolved" : "conflicts are left");
    if (!resolution.is_complete) {
      html.text(" Cores left: ");
      html.count("/resolution/cores_left", resolution.cores_left);
      html.text(".");
    }
  }
  if (resolution.transformations.empty()) return;
  constexpr std::array<std::string_view, 6> heads = {"#",     "What",  "Signal",
                                                     "Edges", "#Cost", "Cost in parts"};
  {
    const Table table(html, heads);
    for (std::size_t i = 0; i < resolution.transformations.size(); ++i)
      add_transformation(html, resolution.transformations[i], i);
  }
  html.add(
      "p", "class=\"quiet\"",
      "Where edges go: |t before the transition t, t| behind it, only at some of its places if "
      "they are named on the other side of the bar; s -||-> t beside what lies between s and "
      "t; {s}-$->{t} behind and before several. In a reduction s --> t the transition t waits "
      "for s. A star: with a token at the start.");
}

}  // namespace vorel::report
