#include "conflicts/conflict_solution.h"

namespace vorel {

void ConflictSolution::print(std::ostream& stream) const {
  Solution::print(stream);
  if (signal_.empty() || !is_standard_output(stream)) return;
  stream << "\nConflict for signal " << signal_ << '\n';
}

XmlNode* ConflictSolution::to_xml(XmlDocument& document) const {
  XmlNode* element = Solution::to_xml(document);
  if (signal_.empty()) return element;
  xml_attribute(document, *element, "signal", signal_);
  xml_attribute(document, *element, "message", "CSC conflict for signal " + signal_);
  return element;
}

}  // namespace vorel
