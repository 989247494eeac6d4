#include "conflicts/conflict_solution.h"

#include <iostream>

namespace vorel::conflicts {

void ConflictSolution::print(std::ostream& stream) const {
  results::Solution::print(stream);
  if (!results::is_standard_output(stream)) return;
  if (!signal_.empty()) stream << "\nConflict for signal " << signal_ << '\n';
  if (diagnostics.empty()) return;
  stream.flush();
  std::cerr << diagnostics << std::flush;
}

results::XmlNode* ConflictSolution::to_xml(results::XmlDocument& document) const {
  results::XmlNode* element = results::Solution::to_xml(document);
  if (signal_.empty()) return element;
  results::xml_attribute(document, *element, "signal", signal_);
  results::xml_attribute(document, *element, "message", "CSC conflict for signal " + signal_);
  return element;
}

}  // namespace vorel::conflicts
