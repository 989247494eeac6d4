// results/report.h - the solutions of a run, and their way to the user.
// Here:      Report, its text form, the choice between standard output, file and XML document.
// Not here:  the format of single solutions (results/solution.h).
#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "results/solution.h"

namespace vorel::results {

// The two sentences of a mode.
struct VerdictMessages {
  std::string found;  // there are solutions
  std::string empty;  // there are none
};

class Report {
 public:
  void add(std::unique_ptr<Solution> solution) { solutions.push_back(std::move(solution)); }

  // For people on the standard output, for machines ("YES", "NO", "_SEQUENCE:") on any other
  // stream.
  void print(std::ostream& stream, const VerdictMessages& messages) const;
  // The `result` element of the results document.
  XmlNode* to_xml(XmlDocument& document, const VerdictMessages& messages) const;

  std::vector<std::unique_ptr<Solution>> solutions;  // in the order found
};

// Prints the report to where the name selects: empty or "cerr" the standard output, *.xml the
// results document, anything else a text file (the standard error stream with a warning if that
// cannot be opened).
void deliver(const Report& report, const VerdictMessages& messages, const std::string& file_name);

// Saves the results document; false after a reported error. A name in *.gz is compressed. The file
// is written aside and renamed, so that a failure leaves no partial document.
bool save_results(const Report& report, const VerdictMessages& messages,
                  const std::string& file_name);

}  // namespace vorel::results
