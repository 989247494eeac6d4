#include "results/report.h"

#include <gzstream.h>

#include <cassert>
#include <iostream>

#include "base/messages.h"
#include "base/output_file.h"

namespace vorel::results {
namespace {

constexpr std::string_view write_failure = "cannot write a file";

// True if the stream took all; an error is reported else.
bool check_written(bool written) {
  if (!written) base::print_error(write_failure);
  return written;
}

void deliver_to_text_file(const Report& report, const VerdictMessages& messages,
                          const std::string& file_name) {
  base::OutputFile file(file_name);
  if (!file.is_open()) {
    base::print_warning(base::cannot_open_for_output(file_name));
    report.print(std::cerr, messages);
    return;
  }
  std::cout.flush();  // the file can be the standard output, by another name
  report.print(file.stream(), messages);
  check_written(file.commit());
}

// Leaves the compressed text where the file is written until it is committed.
bool print_compressed(const base::OutputFile& file, const XmlDocument& document) {
  assert(file.is_open());
  ogzstream stream;  // opened afterwards: its constructor forgets a failure
  stream.open(file.written_path().c_str());
  if (!stream.rdbuf()->is_open()) return false;
  print_xml(stream, document);
  stream.close();
  return stream.good();
}

}  // namespace

void Report::print(std::ostream& stream, const VerdictMessages& messages) const {
  assert(!messages.found.empty() && !messages.empty.empty());
  const bool for_people = is_standard_output(stream);
  if (solutions.empty() && !for_people) stream << "NO\n";
  std::size_t number = 0;
  for (const auto& solution : solutions) {
    assert(solution != nullptr);
    stream << '\n';
    if (for_people) {
      stream << "SOLUTION " << number++ << ":\n";
    } else {
      stream << "YES\n";
    }
    solution->print(stream);
  }
  if (for_people) stream << '\n' << (solutions.empty() ? messages.empty : messages.found) << '\n';
}

XmlNode* Report::to_xml(XmlDocument& document, const VerdictMessages& messages) const {
  XmlNode* result = xml_element(document, "result");
  xml_attribute(document, *result, "status", "success");
  xml_attribute(document, *result, "message", solutions.empty() ? messages.empty : messages.found);
  XmlNode* list = xml_element(document, "solutions");
  result->append_node(list);
  for (const auto& solution : solutions) list->append_node(solution->to_xml(document));
  return result;
}

bool save_results(const Report& report, const VerdictMessages& messages,
                  const std::string& file_name) {
  assert(!file_name.empty());
  XmlDocument document;
  document.append_node(report.to_xml(document, messages));
  base::OutputFile file(file_name);
  if (!file.is_open()) {
    base::print_error(base::cannot_open_for_output(file_name));
    return false;
  }
  if (file_name.ends_with(".gz")) {
    return check_written(print_compressed(file, document) && file.commit());
  }
  print_xml(file.stream(), document);
  return check_written(file.commit());
}

void deliver(const Report& report, const VerdictMessages& messages, const std::string& file_name) {
  if (file_name.empty() || file_name == "cerr") {
    report.print(std::cout, messages);  // whether all got there is seen at the end of the run
  } else if (file_name.ends_with(".xml")) {
    save_results(report, messages, file_name);
  } else {
    deliver_to_text_file(report, messages, file_name);
  }
}

}  // namespace vorel::results
