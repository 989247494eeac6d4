#include <algorithm>
#include <array>
#include <functional>
#include <numeric>
#include <string>

#include "base/messages.h"
#include "flow/flow_words.h"
#include "report/drawing_style.h"
#include "report/page_parts.h"
#include "report/page_sections.h"

namespace vorel::report {
namespace {

Tone tone_of(flow::Verdict verdict) {
  switch (verdict) {
    case flow::Verdict::verified:
      return Tone::good;
    case flow::Verdict::verified_with_warnings:
    case flow::Verdict::gave_up:
      return Tone::doubtful;
    case flow::Verdict::error:
    case flow::Verdict::faulty_stg:
      break;
  }
  return Tone::bad;
}

// The lambda writes the figure.
void add_tile(HtmlWriter& html, std::string_view title, std::string_view note,
              const std::function<void()>& add_figure) {
  const auto tile = html.in("div", "class=\"tile\"");
  html.add("dt", title);
  {
    const auto figure = html.in("dd");
    add_figure();
  }
  html.add("dd", "class=\"note\"", note);
}

void add_stg_tiles(HtmlWriter& html, const flow::FlowResult& result) {
  const flow::StgSizes& sizes = result.sizes;
  add_tile(html, "Signals",
           std::to_string(sizes.inputs) + " in, " + std::to_string(sizes.outputs) + " out, " +
               std::to_string(sizes.internals) + " internal",
           [&] { html.text(std::to_string(sizes.inputs + sizes.outputs + sizes.internals)); });
  add_tile(html, "Transitions", counted(sizes.places, "place"),
           [&] { html.count("/sizes/transitions", sizes.transitions); });
  if (!result.given) return;
  const auto cut_offs = std::ranges::count_if(
      result.given->events, [](const auto& event) { return event->is_cut_off(); });
  add_tile(html, "Prefix events", counted(static_cast<std::size_t>(cut_offs), "cut-off"),
           [&] { html.count("/prefixes/given/events", result.given->events.size()); });
}

void add_circuit_tiles(HtmlWriter& html, const flow::FlowResult& result) {
  if (result.coding) {
    std::string note = "none";
    if (!result.coding->csc_holds) note = "not resolved";
    if (result.resolution && result.resolution->is_complete)
      note = "resolved by " + counted(result.resolution->transformations.size(), "change");
    add_tile(html, "CSC conflict cores", note,
             [&] { html.count("/coding/csc_cores", result.coding->csc_cores); });
  }
  if (!result.circuit) return;
  const flow::CircuitResult& circuit = *result.circuit;
  std::string note{flow::row_of(circuit.style).title};
  if (circuit.area > 0) note += ", area " + decimal(circuit.area);
  add_tile(html, "Gates", note, [&] { html.text(std::to_string(circuit.instances.size())); });
  if (circuit.equations.empty()) return;
  const auto literals = std::accumulate(
      circuit.equations.begin(), circuit.equations.end(), std::uint64_t{0},
      [](std::uint64_t sum, const flow::Equation& equation) { return sum + equation.literals; });
  add_tile(html, "Literals", "in " + counted(circuit.equations.size(), "equation"),
           [&] { html.text(std::to_string(literals)); });
}

void add_steps(HtmlWriter& html, const flow::FlowResult& result) {
  constexpr std::array<std::string_view, 4> heads = {"Step", "What came out", "#Time", ""};
  const Table table(html, heads);
  double longest = 0;
  for (const flow::StepRecord& record : result.steps) longest = std::max(longest, record.seconds);
  for (std::size_t i = 0; i < result.steps.size(); ++i) {
    const flow::StepRecord& record = result.steps[i];
    const auto row = html.in("tr");
    html.add("th", "scope=\"row\"", flow::row_of(record.step).doing);
    html.add("td", record.text);
    {
      const auto cell = html.in("td", "class=\"number\"");
      html.decimal(pointer("/steps", i, "seconds"), record.seconds, duration(record.seconds));
    }
    const double share = longest > 0 ? record.seconds / longest : 0;
    const auto cell = html.in("td", "class=\"bar\" aria-hidden=\"true\"");
    html.markup("<span style=\"width:" + base::format_message("%.1f", 100 * share) + "%\"></span>");
  }
}

void add_list(HtmlWriter& html, Tone tone, std::string_view word,
              std::span<const std::string> messages) {
  for (const std::string& message : messages) {
    const auto item = html.in("li");
    add_badge(html, tone, word);
    html.text(" " + message);
  }
}

void add_option(HtmlWriter& html, std::string_view title, std::string_view value) {
  const auto row = html.in("tr");
  html.add("th", "scope=\"row\"", title);
  html.add("td", value);
}

// Without folders; the whole path where nothing would be left.
std::string_view file_name_of(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  const bool has_name = slash != path.npos && slash + 1 < path.size();
  return has_name ? path.substr(slash + 1) : path;
}

std::string or_no_limit(std::uint64_t limit) {
  return limit == 0 ? "no limit" : std::to_string(limit);
}

}  // namespace

void add_header(HtmlWriter& html, const PageContent& content) {
  const flow::FlowResult& result = content.result;
  const Tone tone = tone_of(result.verdict);
  const auto header = html.in("header");
  html.add("p", "class=\"program\"", "vorel-flow");
  const std::string& path = content.request.stg_name;
  html.add("h1", file_name_of(path));
  if (file_name_of(path) != path) html.add("p", "class=\"path\"", path);
  const auto verdict = html.in("div", "class=\"verdict " + std::string{class_of(tone)} + "\"");
  html.add("span", "class=\"mark\" aria-hidden=\"true\"", mark_of(tone));
  const auto words = html.in("div");
  {
    const auto line = html.in("p", "class=\"word\"");
    html.word("/verdict", flow::row_of(result.verdict).key);
  }
  if (!result.sentence.empty()) html.add("p", result.sentence);
  if (result.hint.empty()) return;
  const auto hint = html.in("p", "class=\"hint\"");
  html.add("strong", "What to do next:");
  html.text(" " + result.hint);
}

void add_summary(HtmlWriter& html, const PageContent& content) {
  const flow::FlowResult& result = content.result;
  {
    const auto tiles = html.in("dl", "class=\"tiles\"");
    add_stg_tiles(html, result);
    add_circuit_tiles(html, result);
    add_tile(html, "Time", "without this report", [&] { html.text(duration(result.seconds)); });
  }
  if (!result.steps.empty()) add_steps(html, result);
}

void add_files(HtmlWriter& html, const PageContent& content) {
  const auto list = html.in("ul");
  for (const std::string& file : content.files) {
    const auto item = html.in("li");
    add_link(html, file);
  }
}

void add_trace_links(HtmlWriter& html, const PageContent& content,
                     std::initializer_list<std::string> files) {
  const auto is_there = [&](const std::string& file) {
    return std::ranges::find(content.files, file) != content.files.end();
  };
  if (std::ranges::none_of(files, is_there)) return;
  const auto line = html.in("p", "class=\"quiet\"");
  html.text("For a viewer of waveforms:");
  for (const std::string& file : files) {
    if (!is_there(file)) continue;
    html.markup(" ");
    add_link(html, file);
  }
}

void add_messages(HtmlWriter& html, const PageContent& content) {
  const flow::FlowRequest& request = content.request;
  if (content.result.warnings.empty() && content.result.errors.empty()) {
    html.add("p", "class=\"quiet\"", "There were no warnings but those above.");
  } else {
    const auto list = html.in("ul", "class=\"messages\"");
    add_list(html, Tone::bad, "error", content.result.errors);
    add_list(html, Tone::doubtful, "warning", content.result.warnings);
  }
  constexpr std::array<std::string_view, 2> heads = {"Asked for", ""};
  const Table table(html, heads);
  add_option(html, "Style", flow::row_of(request.style).title);
  add_option(html, "Library of gates", request.library.empty() ? "built in" : request.library);
  add_option(html, "Resolution of conflicts", request.resolution.is_wanted ? "yes" : "no");
  add_option(html, "Reductions of concurrency", request.resolution.with_reductions ? "yes" : "no");
  add_option(html, "Most events of a prefix", or_no_limit(request.limits.max_events));
  add_option(html, "Most time",
             request.limits.max_seconds > 0 ? duration(request.limits.max_seconds) : "no limit");
}

}  // namespace vorel::report
