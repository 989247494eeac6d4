// report/page_sections.h - the sections of a page, each on its own.
// Here:      which there are and when.
// Not here:  their order, the frame around them (report/page.h).
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "flow/flow_request.h"
#include "flow/flow_result.h"
#include "report/html_writer.h"

namespace vorel::report {

struct PageContent {
  const flow::FlowRequest& request;
  const flow::FlowResult& result;
  std::span<const std::string> files;  // beside the page
};

struct SectionRow {
  std::string_view id, link, heading;
  bool (*is_there)(const PageContent& content);
  void (*add)(HtmlWriter& html, const PageContent& content);  // what stands below the heading
};

// Where to find traces for a viewer of waveforms, as far as these files are there.
void add_trace_links(HtmlWriter& html, const PageContent& content,
                     std::initializer_list<std::string> files);

// report/page_summary.cpp
void add_header(HtmlWriter& html, const PageContent& content);
void add_summary(HtmlWriter& html, const PageContent& content);
void add_files(HtmlWriter& html, const PageContent& content);
void add_messages(HtmlWriter& html, const PageContent& content);
// report/page_nets.cpp
void add_stg(HtmlWriter& html, const PageContent& content);
void add_prefixes(HtmlWriter& html, const PageContent& content);
// report/page_encoding.cpp
void add_conflicts(HtmlWriter& html, const PageContent& content);
void add_resolution(HtmlWriter& html, const PageContent& content);
// report/page_circuit.cpp
void add_attempts(HtmlWriter& html, const PageContent& content);
void add_circuit(HtmlWriter& html, const PageContent& content);
// report/page_answers.cpp
void add_findings(HtmlWriter& html, const PageContent& content);
void add_verification(HtmlWriter& html, const PageContent& content);
void add_properties(HtmlWriter& html, const PageContent& content);

}  // namespace vorel::report
