#include "resolution/occurrence_text.h"

#include "resolution/transformation.h"

namespace vorel::resolution {
namespace {

std::string text_of(const Candidates& candidates, base::Id<net::StgPrefix::Event> id) {
  const auto& event = base::element(candidates.prefix().events, id);
  return "e" + std::to_string(event.index) + "(" + event.transition->name + ")";
}

std::string cause_of(const Candidates& candidates, const EdgeOccurrence& occurrence) {
  return occurrence.causes.empty() ? "INITIAL" : text_of(candidates, occurrence.causes.front());
}

std::string causes_of(const Candidates& candidates, const EdgeOccurrence& occurrence) {
  std::string text;
  for (const auto cause : occurrence.causes) text += " " + text_of(candidates, cause);
  return text;
}

std::string conditions_of(const Candidates& candidates, const EdgeOccurrence& occurrence) {
  std::string text;
  for (const ConditionId id : occurrence.consumed) {
    const auto& condition = base::element(candidates.prefix().conditions, id);
    text += " c" + std::to_string(condition.index) + "(" + condition.place->name + ")";
  }
  return text;
}

}  // namespace

std::string to_text(const Candidates& candidates, OccurrenceId id) {
  const net::Insertion& insertion = candidates.insertion(candidates.candidate_of(id));
  const EdgeOccurrence& occurrence = candidates.occurrence(id);
  const std::string text = "Instance of " + to_text(insertion) + ": ";
  if (std::holds_alternative<net::SeqBefore>(insertion))
    return text + "conditions:" + conditions_of(candidates, occurrence);
  if (std::holds_alternative<net::SeqAfter>(insertion))
    return text + "base event: " + cause_of(candidates, occurrence);
  if (std::holds_alternative<net::General>(insertion))
    return text + "source events:" + causes_of(candidates, occurrence);
  return text + cause_of(candidates, occurrence);
}

void print_occurrences(std::ostream& stream, const Candidates& candidates) {
  for (const CandidateId candidate : candidates.all()) {
    stream << "\nInstances of " << to_text(candidates.insertion(candidate));
    for (const OccurrenceId id : candidates.occurrences_of(candidate))
      stream << '\n' << to_text(candidates, id);
  }
  stream << std::flush;
}

}  // namespace vorel::resolution
