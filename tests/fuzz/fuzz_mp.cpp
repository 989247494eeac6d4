// Any bytes as a *.mp file, of a net and of an STG.
#include "fuzz/fuzzing.h"
#include "formats/mp_reader.h"
#include "net/sanity_checks.h"

namespace vorel::fuzzing {
namespace {

// The format as it is defined, with single blanks. Written out here, as there is no other writer.
template <class P>
std::string text_of(const P& process) {
  std::ostringstream text;
  text << process.conditions.size() << ' ' << process.events.size() << ' ' << process.places.size()
       << ' ' << process.transitions.size() << '\n';
  for (const auto& condition : process.conditions) {
    text << condition->place->index + 1 << ' ' << condition->occurrence_depth << ' '
         << condition->initial_marking << '\n';
  }
  for (const auto& event : process.events) {
    text << event->transition->index + 1 << ' ' << event->cut_off << ' ' << event->preset.size()
         << ' ' << event->postset.size();
    for (const auto* condition : event->preset) text << ' ' << condition->index;
    for (const auto* condition : event->postset) text << ' ' << condition->index;
    text << '\n';
  }
  text << "0\n";
  for (const auto& place : process.places) text << place->name << '\n';
  for (const auto& transition : process.transitions) text << transition->name << '\n';
  return text.str();
}

void try_net(const std::string& bytes) {
  std::istringstream input(bytes);
  const auto process = read_mp_net(input, "input");
  if (process == nullptr) return;
  passes_sanity_checks(*process);
  const std::string text = text_of(*process);
  std::istringstream text_input(text);
  const auto again = read_mp_net(text_input, "input");
  require(again != nullptr && text_of(*again) == text);
}

void try_stg(const std::string& bytes) {
  std::istringstream input(bytes);
  const auto process = read_mp_stg(input, "input");
  if (process == nullptr) return;
  passes_sanity_checks(*process);
  for (const auto& transition : process->transitions) require(transition->signal != nullptr);
}

}  // namespace
}  // namespace vorel::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vorel::fuzzing;
  silence_messages();
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  try_net(bytes);
  try_stg(bytes);
  return 0;
}
