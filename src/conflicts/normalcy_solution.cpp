#include "conflicts/normalcy_solution.h"

#include <cassert>

namespace vorel::conflicts {
namespace {

struct KindText {
  NormalcyViolation kind;
  std::string_view start, printed_end, xml_end;  // around the name of the signal
  std::string_view reason;
};
constexpr KindText kind_texts[] = {
    {NormalcyViolation::mixed_triggers,
     "Normalcy violation due to different triggers' signs for signal ", "\n", "", "mixed_triggers"},
    {NormalcyViolation::contradictory_hypotheses,
     "Normalcy violation due to contradictious normalcy type hypotheses for signal ",
     "\n(the paths show violations of p- and n-normalcy correspondingly)\n",
     "; the two traces show violations of p- and n-normalcy correspondingly",
     "contradictious_hypotheses"},
    {NormalcyViolation::csc_conflict, "Normalcy violation due to a CSC conflict for signal ", "\n",
     "", "CSC_conflict"},
    {NormalcyViolation::other, "Normalcy violation for signal ", ":\n", ": ", "other"},
};

const KindText& text_of(NormalcyViolation kind) {
  assert(kind != NormalcyViolation::none);
  return kind_texts[static_cast<std::size_t>(kind) - 1];
}

}  // namespace

void NormalcySolution::add_evidence(results::Trace trace, results::Trace triggers) {
  assert(traces.size() == triggers_.size());
  traces.push_back(std::move(trace));
  triggers_.push_back(std::move(triggers));
}

void NormalcySolution::print_below_trace(std::ostream& stream, std::size_t trace) const {
  if (trace >= triggers_.size()) return;
  stream << "triggers: ";
  print_events(stream, triggers_[trace]);
}

void NormalcySolution::print(std::ostream& stream) const {
  results::Solution::print(stream);
  if (!results::is_standard_output(stream)) return;
  const KindText& text = text_of(kind_);
  stream << '\n' << text.start << signal_ << text.printed_end;
  if (kind_ != NormalcyViolation::other) return;
  stream << (first_not_p ? "n" : "p") << "-normalcy is violated according to the first path\n"
         << (first_not_p ? "p" : "n") << "-normalcy is violated according to the other two paths\n";
}

std::string NormalcySolution::message() const {
  const KindText& text = text_of(kind_);
  std::string message = std::string(text.start) + signal_ + std::string(text.xml_end);
  if (kind_ == NormalcyViolation::other) {
    message += first_not_p ? "n" : "p";
    message += "-normalcy is violated according to the first trace, ";
    message += first_not_p ? "p" : "n";
    message += "-normalcy is violated according to the other two traces";
  }
  return message;
}

results::XmlNode* NormalcySolution::to_xml(results::XmlDocument& document) const {
  const bool by_triggers_alone = kind_ == NormalcyViolation::mixed_triggers ||
                                 kind_ == NormalcyViolation::contradictory_hypotheses;
  results::XmlNode* element = results::xml_element(document, "solution");
  results::xml_attribute(document, *element, "signal", signal_);
  results::xml_attribute(document, *element, "cost", cost());
  results::xml_attribute(document, *element, "reason", text_of(kind_).reason);
  results::xml_attribute(document, *element, "normalcy_type_hypothesis",
                         by_triggers_alone ? "?" : (first_not_p ? "n" : "p"));
  results::xml_attribute(document, *element, "message", message());
  for (std::size_t i = 0; i < traces.size(); ++i) {
    element->append_node(results::trace_to_xml(document, traces[i]));
    if (i < triggers_.size())
      element->append_node(results::trace_to_xml(document, triggers_[i], "triggers"));
  }
  return element;
}

}  // namespace vorel::conflicts
