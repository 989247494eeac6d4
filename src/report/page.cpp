#include "report/page.h"

#include <array>
#include <string>

#include "report/drawing_style.h"
#include "report/html_writer.h"
#include "report/page_parts.h"
#include "report/page_sections.h"
#include "report/page_style.h"
#include "report/waveform_drawing.h"

namespace vorel::report {
namespace {

bool always(const PageContent&) { return true; }
bool has_files(const PageContent& content) { return !content.files.empty(); }
bool has_findings(const PageContent& content) { return !content.result.findings.empty(); }
bool has_prefix(const PageContent& content) { return content.result.given.has_value(); }
bool has_coding(const PageContent& content) {
  return has_prefix(content) && content.result.coding.has_value();
}
bool has_resolution(const PageContent& content) { return content.result.resolution.has_value(); }
// One that was taken at once says nothing that the circuit does not.
bool has_attempts(const PageContent& content) {
  const auto& attempts = content.result.attempts;
  return attempts.size() > 1 || (!attempts.empty() && !attempts.front().failure.empty());
}
bool has_circuit(const PageContent& content) {
  return content.result.circuit.has_value() && content.result.circuit_stg() != nullptr;
}
bool has_verification(const PageContent& content) {
  return has_circuit(content) && content.result.circuit->verification.has_value();
}
bool has_properties(const PageContent& content) { return !content.result.properties.empty(); }

constexpr std::array<SectionRow, 12> section_rows = {{
    {"summary", "Summary", "Summary", always, add_summary},
    {"findings", "Findings", "What is found in the STG", has_findings, add_findings},
    {"stg", "STG", "The STG", has_prefix, add_stg},
    {"prefix", "Prefix", "The prefix and its conflict cores", has_prefix, add_prefixes},
    {"conflicts", "Conflicts", "Encoding conflicts", has_coding, add_conflicts},
    {"resolution", "Resolution", "Resolution", has_resolution, add_resolution},
    {"attempts", "Styles", "Styles that were tried", has_attempts, add_attempts},
    {"circuit", "Circuit", "Circuit", has_circuit, add_circuit},
    {"verification", "Verification", "Verification", has_verification, add_verification},
    {"properties", "Properties", "Properties", has_properties, add_properties},
    {"files", "Files", "Files", has_files, add_files},
    {"messages", "Limits", "Warnings and limits", always, add_messages},
}};

void add_head(HtmlWriter& html, const PageContent& content) {
  const auto head = html.in("head");
  html.markup(
      "<meta charset=\"utf-8\"/>\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
      "<meta name=\"generator\" content=\"vorel-flow " VOREL_VERSION "\"/>\n");
  html.add("title", content.request.stg_name + " - vorel-flow");
  const auto style = html.in("style");
  html.markup(drawing_style());
  html.markup(waveform_style());
  html.markup(page_style());
}

void add_contents(HtmlWriter& html, const PageContent& content) {
  const auto nav = html.in("nav", "aria-label=\"Contents\"");
  for (const SectionRow& row : section_rows)
    if (row.is_there(content)) html.add("a", "href=\"#" + std::string{row.id} + "\"", row.link);
}

}  // namespace

bool write_page(const flow::FlowRequest& request, const flow::FlowResult& result,
                std::span<const std::string> files, std::ostream& stream) {
  const PageContent content{request, result, files};
  HtmlWriter html(stream);
  html.markup("<!DOCTYPE html>\n");
  {
    const auto page = html.in("html", "xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\"");
    add_head(html, content);
    const auto body = html.in("body");
    add_header(html, content);
    add_contents(html, content);
    const auto main = html.in("main");
    for (const SectionRow& row : section_rows) {
      if (!row.is_there(content)) continue;
      const Section section(html, row.id, row.heading);
      row.add(html, content);
    }
    html.add("footer", "Written by vorel-flow " VOREL_VERSION ".");
  }
  return html.finish();
}

}  // namespace vorel::report
