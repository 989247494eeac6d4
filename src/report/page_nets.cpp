#include <algorithm>
#include <array>
#include <string>

#include "net/net.h"
#include "report/drawing_style.h"
#include "report/drawings.h"
#include "report/page_parts.h"
#include "report/page_sections.h"

namespace vorel::report {
namespace {

using enum net::SignalKind;

void add_signals(HtmlWriter& html, const net::Stg& stg) {
  constexpr std::array<std::string_view, 3> heads = {"Signal", "Kind", "#At the start"};
  const auto details = html.in("details", "open=\"open\"");
  html.add("summary", "Signals and their initial values");
  const Table table(html, heads);
  for (const net::SignalId id : stg.visible_signals()) {
    const net::Signal& signal = base::element(stg.signals, id);
    const auto row = html.in("tr");
    {
      const auto cell = html.in("td");
      html.add("code", signal.name);
    }
    html.add("td", kind_word(signal.kind));
    html.add(
        "td", "class=\"number\"",
        signal.initial_value == net::unknown_value ? "?" : std::to_string(signal.initial_value));
  }
}

struct PrefixRow {
  std::string_view title, pointer;
  const net::StgPrefix& prefix;
};

void add_prefix_row(HtmlWriter& html, const PrefixRow& shown) {
  const auto cut_offs = std::ranges::count_if(
      shown.prefix.events, [](const auto& event) { return event->is_cut_off(); });
  const std::string base{shown.pointer};
  const auto row = html.in("tr");
  html.add("th", "scope=\"row\"", shown.title);
  const auto number = [&](std::string_view key, std::size_t count) {
    const auto cell = html.in("td", "class=\"number\"");
    html.count(base + std::string{key}, count);
  };
  number("/events", shown.prefix.events.size());
  number("/cut_offs", static_cast<std::size_t>(cut_offs));
  number("/conditions", shown.prefix.conditions.size());
}

void add_prefix_sizes(HtmlWriter& html, const flow::FlowResult& result) {
  constexpr std::array<std::string_view, 4> heads = {"Prefix of", "#Events", "#Cut-offs",
                                                     "#Conditions"};
  const Table table(html, heads);
  add_prefix_row(html, {"the STG given", "/prefixes/given", *result.given});
  if (result.resolved)
    add_prefix_row(html, {"the resolved STG", "/prefixes/resolved", *result.resolved});
  if (result.mapped)
    add_prefix_row(html,
                   {"the STG with signals of the mapping", "/prefixes/mapped", *result.mapped});
}

}  // namespace

void add_stg(HtmlWriter& html, const PageContent& content) {
  const net::StgPrefix& stg = *content.result.given;
  const auto pair = html.in("div", "class=\"pair\"");
  add_drawing(html, draw_stg(stg), "The STG as given");
  add_signals(html, stg);
}

void add_prefixes(HtmlWriter& html, const PageContent& content) {
  const flow::FlowResult& result = content.result;
  html.add(
      "p",
      "What the STG can do, unfolded until nothing new comes. The stronger the colour of an event, "
      "the more cores of CSC conflicts run through it; cut-offs, behind which it goes on as "
      "elsewhere, are "
      "dashed.");
  add_prefix_sizes(html, result);
  const flow::CoreMap given = result.coding ? result.coding->core_map : flow::CoreMap{};
  const auto pair = html.in("div", "class=\"pair\"");
  add_drawing(html, draw_prefix(*result.given, given),
              result.resolved ? "Before resolution" : "The prefix");
  if (!result.resolved) return;
  const flow::CoreMap resolved = result.resolved_core_map.value_or(flow::CoreMap{});
  add_drawing(html, draw_prefix(*result.resolved, resolved), "After resolution");
}

}  // namespace vorel::report
