// Any bytes as a PNML document, of every kind of process.
#include <algorithm>

#include "formats/pnml_reader.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {
namespace {

template <class T>
void require_numbering(const base::OwnedList<T>& list) {
  for (std::size_t i = 0; i < list.size(); ++i) require(list[i]->index == i);
}

// Links have both ends, in order and without repetition.
template <class List, class Back>
void require_links(const List& links, const Back& has_back_link) {
  std::int64_t previous = -1;
  for (const auto* element : links) {
    require(previous < element->index && has_back_link(*element));
    previous = element->index;
  }
}

template <class List, class T>
bool contains(const List& list, const T& element) {
  return std::find(list.begin(), list.end(), &element) != list.end();
}

template <net::Process P>
void require_sound(const P& process) {
  require_numbering(process.places);
  require_numbering(process.transitions);
  require_numbering(process.conditions);
  require_numbering(process.events);
  std::uint64_t tokens = 0;
  for (const auto& place : process.places) tokens += place->initial_marking;
  for (const auto& condition : process.conditions) {
    require(process.places[condition->place->index].get() == condition->place);
    if (condition->is_initial()) --tokens;
  }
  require(tokens == 0);
  for (const auto& event : process.events) {
    require(process.transitions[event->transition->index].get() == event->transition);
    require_links(event->preset, [&](const auto& c) { return contains(c.postset, *event); });
    require_links(event->postset, [&](const auto& c) { return contains(c.producers(), *event); });
  }
}

}  // namespace

// Some documents are refused without a word.
void fuzz_pnml(const std::string& bytes) {
  const auto input = formats::read_pnml_text<net::FullVariant>(bytes);
  if (input != nullptr) std::visit([](const auto& process) { require_sound(process); }, *input);
}

}  // namespace vorel::fuzzing
