#include "formats/mp_writer.h"

#include <algorithm>
#include <cassert>
#include <string_view>
#include <vector>

#include "base/messages.h"
#include "base/text_sink.h"
#include "formats/legacy_format.h"
#include "formats/save_file.h"
#include "net/transition_label.h"

namespace vorel::formats {
namespace {

std::string name_in_file(const net::Transition& transition) { return transition.name; }
std::string name_in_file(const net::StgTransition& transition) {
  assert(transition.signal != nullptr);
  return std::string(net::kind_prefix(transition.signal->kind)) + transition.name;
}

// The names of places, then those of transitions, as the file has them.
template <class N>
std::vector<std::string> names_in_file(const N& net) {
  std::vector<std::string> names;
  names.reserve(net.places.size() + net.transitions.size());
  for (const auto& place : net.places) names.push_back(place->name);
  for (const auto& transition : net.transitions) names.push_back(name_in_file(*transition));
  return names;
}

bool refuse(std::string_view reason) {
  base::print_error("the merged process cannot be written in the *.mp format: " +
                    std::string(reason));
  return false;
}

template <class N>
bool fits_the_format(const net::MergedProcessOf<N>& process,
                     const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (name.find('\n') == std::string::npos) continue;
    return refuse("a line feed is in the name \"" + name + "\"");
  }
  for (const auto& condition : process.conditions) {
    if (!condition->is_initial() || condition->occurrence_depth == 1) continue;
    return refuse("c" + std::to_string(condition->index) + " is marked at depth " +
                  std::to_string(condition->occurrence_depth));
  }
  for (const auto& event : process.events) {
    if (event->preset.empty()) {
      return refuse("e" + std::to_string(event->index) + " has an empty preset");
    }
  }
  return true;
}

template <class N>
void add_condition(base::TextSink& sink, const net::MpConditionOf<N>& condition) {
  assert(condition.occurrence_depth >= 1);
  sink << condition.place->index + 1 << ' '
       << static_cast<std::uint32_t>(condition.occurrence_depth) << ' ' << condition.initial_marking
       << '\n';
}

template <class N>
void add_event(base::TextSink& sink, const net::MpEventOf<N>& event) {
  sink << event.transition->index + 1 << (event.is_cut_off() ? " 1 " : " 0 ") << event.preset.size()
       << ' ' << event.postset.size();
  for (const auto* condition : event.preset) sink << ' ' << condition->index;
  for (const auto* condition : event.postset) sink << ' ' << condition->index;
  sink << '\n';
}

}  // namespace

template <class N>
bool write_mp(const net::MergedProcessOf<N>& process, std::ostream& stream) {
  warn_of_legacy_format("*.mp");
  const std::vector<std::string> names = names_in_file<N>(process);
  if (!fits_the_format(process, names)) return false;
  base::TextSink sink(stream);
  sink << process.conditions.size() << ' ' << process.events.size() << ' ' << process.places.size()
       << ' ' << process.transitions.size() << '\n';
  for (const auto& condition : process.conditions) add_condition(sink, *condition);
  for (const auto& event : process.events) add_event(sink, *event);
  std::size_t longest = 0;
  for (const std::string& name : names) longest = std::max(longest, name.size());
  sink << longest << '\n';
  for (const std::string& name : names) sink << name << '\n';
  return sink.finish();
}

template <class N>
bool save_mp(const net::MergedProcessOf<N>& process, const std::string& file_name) {
  return save_file(file_name,
                   [&process](base::OutputFile& file) { return write_mp(process, file.stream()); });
}

#define INSTANTIATE(N)                                                      \
  template bool write_mp<N>(const net::MergedProcessOf<N>&, std::ostream&); \
  template bool save_mp<N>(const net::MergedProcessOf<N>&, const std::string&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::formats
