#include <algorithm>
#include <array>
#include <string>

#include "flow/flow_words.h"
#include "flow/waveforms.h"
#include "report/page_parts.h"
#include "report/page_sections.h"
#include "report/trace_files.h"
#include "verify/verification_words.h"

namespace vorel::report {
namespace {

Tone tone_of(flow::Gravity gravity) {
  switch (gravity) {
    case flow::Gravity::fault:
      return Tone::bad;
    case flow::Gravity::warning:
      return Tone::doubtful;
    case flow::Gravity::note:
      break;
  }
  return Tone::plain;
}

Tone tone_of(verify::Answer answer) {
  switch (answer) {
    case verify::Answer::holds:
      return Tone::good;
    case verify::Answer::fails:
      return Tone::bad;
    case verify::Answer::undecided:
      break;
  }
  return Tone::doubtful;
}

std::string with_blanks(std::string_view key) {
  std::string words{key};
  std::ranges::replace(words, '_', ' ');
  return words;
}

const net::Stg* given_stg(const flow::FlowResult& result) {
  return result.given ? &*result.given : nullptr;
}

struct TraceCaption {
  flow::FindingKind kind;
  std::string_view caption;
  Emphasis emphasis;
};
constexpr TraceCaption trace_captions[] = {
    {flow::FindingKind::unsafe, "The last step brings a second token", Emphasis::last_step},
    {flow::FindingKind::inconsistent, "The last step is the edge that must not come",
     Emphasis::last_step},
    {flow::FindingKind::not_persistent, "The last step disables it", Emphasis::last_step},
    {flow::FindingKind::arbitration, "The last step disables it", Emphasis::last_step},
    {flow::FindingKind::input_held_back, "The last step disables it", Emphasis::last_step},
    {flow::FindingKind::deadlock, "Nothing can happen behind the last step", Emphasis::none},
};

TraceCaption caption_of(flow::FindingKind kind) {
  const auto* const row = std::ranges::find(trace_captions, kind, &TraceCaption::kind);
  if (row == std::end(trace_captions)) return {kind, "A trace to that state", Emphasis::none};
  return *row;
}

void add_finding(HtmlWriter& html, const PageContent& content, std::size_t i) {
  const flow::StgFinding& finding = content.result.findings[i];
  const auto article = html.in("article");
  {
    const auto heading = html.in("h3");
    add_badge(html, tone_of(finding.gravity), flow::row_of(finding.gravity).key);
    html.markup(" ");
    html.text(with_blanks(flow::row_of(finding.kind).key));
    if (!finding.subjects.empty()) html.markup(": ");
    add_names(html, finding.subjects, "");
  }
  html.add("p", finding.message);
  if (!finding.trace) return;
  const TraceCaption how = caption_of(finding.kind);
  add_trace(html, given_stg(content.result), *finding.trace, how.caption, how.emphasis);
  add_trace_links(html, content, {finding_file(content.result, i)});
}

void add_question_row(HtmlWriter& html, const verify::Verification& verification, std::size_t i) {
  const verify::QuestionRow& question = verify::question_rows[i];
  const verify::Answer answer = verify::answer_to(verification, question.question);
  const auto row = html.in("tr");
  html.add("th", "scope=\"row\"", question.title);
  {
    const auto cell = html.in("td");
    const auto badge =
        html.in("span", "class=\"badge " + std::string{class_of(tone_of(answer))} + "\"");
    html.add("span", "class=\"mark\" aria-hidden=\"true\"", mark_of(tone_of(answer)));
    html.word(pointer("/circuit/verification/questions", i, "answer"), verify::row_of(answer).word);
  }
  if (verification.findings.empty()) return;
  const verify::Finding* const finding = verify::finding_for(verification, question.question);
  html.add("td", finding == nullptr ? "" : finding->message);
}

void add_failure(HtmlWriter& html, const PageContent& content, const verify::Finding& finding) {
  const flow::FlowResult& result = content.result;
  const auto article = html.in("article");
  html.add("h3", std::string{verify::row_of(finding.question).title} + ": no");
  html.add("p", finding.message);
  if (finding.trace.empty()) {
    html.add("p", "class=\"quiet\"", "In the initial state.");
    return;
  }
  const bool ends_wrong = finding.question == verify::Question::conformance ||
                          finding.question == verify::Question::hazard;
  const auto waveform = flow::waveform_of(*result.circuit_stg(), result.circuit->circuit, finding);
  add_drawing(html, draw_waveform(waveform, ends_wrong ? Emphasis::last_step : Emphasis::none),
              ends_wrong ? "A trace; the last edge goes wrong" : "A trace to that state");
  add_trace_links(html, content, {question_file(finding.question)});
}

void add_arbiters(HtmlWriter& html, const verify::Circuit& circuit,
                  const verify::Verification& verification) {
  if (verification.arbiters.empty()) return;
  const auto line = html.in("p");
  html.text("Left to arbiters, which may take an excitation away: ");
  for (std::size_t i = 0; i < verification.arbiters.size(); ++i) {
    if (i > 0) html.markup(", ");
    const auto& [a, b] = verification.arbiters[i];
    html.add("code", circuit.wires[a.value].name);
    html.text(" and ");
    html.add("code", circuit.wires[b.value].name);
  }
  html.text(".");
}

Tone tone_of(flow::PropertyAnswer answer) {
  return answer == flow::PropertyAnswer::undecided ? Tone::doubtful : Tone::plain;
}

void add_property(HtmlWriter& html, const PageContent& content, std::size_t i) {
  const flow::FlowResult& result = content.result;
  const flow::PropertyResult& property = result.properties[i];
  const auto article = html.in("article");
  {
    const auto heading = html.in("h3");
    html.text(property.name);
    html.markup(" ");
    const auto badge =
        html.in("span", "class=\"badge " + std::string{class_of(tone_of(property.answer))} + "\"");
    html.word(pointer("/properties", i, "answer"), flow::row_of(property.answer).key);
  }
  {
    const auto box = html.in("pre", "tabindex=\"0\"");
    html.add("code", property.text);
  }
  if (!property.message.empty()) html.add("p", property.message);
  if (property.answer != flow::PropertyAnswer::witness) return;
  if (!property.values.empty()) {
    const auto list = html.in("p");
    html.text("With ");
    for (std::size_t v = 0; v < property.values.size(); ++v) {
      if (v > 0) html.markup(", ");
      html.add("code", property.values[v].first);
      html.text(" = ");
      html.add("code", property.values[v].second);
    }
    html.text(".");
  }
  add_trace(html, given_stg(result), property.trace, "A trace to a state that satisfies it",
            Emphasis::none);
  add_trace_links(html, content, {property_file(i)});
}

}  // namespace

void add_findings(HtmlWriter& html, const PageContent& content) {
  for (std::size_t i = 0; i < content.result.findings.size(); ++i) add_finding(html, content, i);
}

void add_verification(HtmlWriter& html, const PageContent& content) {
  const flow::CircuitResult& circuit = *content.result.circuit;
  const verify::Verification& verification = *circuit.verification;
  {
    const auto line = html.in("p");
    add_badge(html, tone_of(verification.verdict()),
              verify::row_of(verification.verdict()).sentence);
    html.text(
        " Gates with any delays, next to the STG as their environment; the prefix of both "
        "together has ");
    html.count("/circuit/verification/prefix/events", verification.events);
    html.text(" events and ");
    html.count("/circuit/verification/prefix/conditions", verification.conditions);
    html.text(" conditions.");
  }
  {
    constexpr std::array<std::string_view, 3> heads = {"Question", "Answer", "Why"};
    const bool has_reasons = !verification.findings.empty();
    const Table table(html, std::span(heads).first(has_reasons ? 3 : 2));
    for (std::size_t i = 0; i < verify::question_rows.size(); ++i)
      add_question_row(html, verification, i);
  }
  add_arbiters(html, circuit.circuit, verification);
  for (const verify::Finding& finding : verification.findings) add_failure(html, content, finding);
}

void add_properties(HtmlWriter& html, const PageContent& content) {
  for (std::size_t i = 0; i < content.result.properties.size(); ++i) add_property(html, content, i);
}

}  // namespace vorel::report
