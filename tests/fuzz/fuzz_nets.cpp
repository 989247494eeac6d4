// Any bytes as the text of a net; the first byte selects its form.
#include <algorithm>
#include <set>
#include <variant>

#include "formats/g_writer.h"
#include "formats/net_file.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {
namespace {

template <class List, class Node>
bool contains(const List& list, const Node* node) {
  return std::ranges::find(list, node) != list.end();
}

// Numbers are positions, names are unique, arcs are known at both ends and only once.
template <class List>
void require_sound_nodes(const List& list) {
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < list.size(); ++i) {
    const auto& node = *list[i];
    require(node.index == i && names.insert(node.name).second);
    for (const auto* before : node.preset) require(contains(before->postset, &node));
    for (const auto* after : node.postset) require(contains(after->preset, &node));
    require(std::ranges::adjacent_find(node.preset) == node.preset.end());
    require(std::ranges::adjacent_find(node.postset) == node.postset.end());
  }
}

template <class N>
void require_sound(const N& net) {
  require_sound_nodes(net.places);
  require_sound_nodes(net.transitions);
  for (const auto& place : net.places) require(place->initial_marking <= 1);
}

// Written with the names that it has, without those of implicit places.
std::string g_text_of(const net::Stg& stg) {
  std::ostringstream text;
  return formats::write_g(stg, text) ? text.str() : "";
}

// A marked place without arcs that is called like an implicit one cannot be told in a file.
bool has_untellable_place(const net::Stg& stg) {
  return std::ranges::any_of(stg.places, [](const auto& place) {
    return place->preset.empty() && place->postset.empty() && place->name.starts_with('<');
  });
}

// What was written is read back, and then changes no more.
void try_g_round_trip(const net::Net&) {}
void try_g_round_trip(const net::Stg& stg) {
  if (has_untellable_place(stg)) return;
  const std::string text = g_text_of(stg);
  if (text.empty()) return;  // the name of a signal does not suit
  const auto again = formats::read_net_text(text, formats::NetFormat::g, "input");
  require(again.has_value());
  const std::string second = g_text_of(std::get<net::Stg>(*again));
  const auto last = formats::read_net_text(second, formats::NetFormat::g, "input");
  require(last.has_value() && g_text_of(std::get<net::Stg>(*last)) == second);
}

}  // namespace

void fuzz_nets(const std::string& bytes) {
  if (bytes.empty()) return;
  const auto form = static_cast<unsigned char>(bytes[0]) % formats::net_formats.size();
  const auto net = read_or_refuse(bytes.substr(1), [form](const std::string& text) {
    return formats::read_net_text(text, formats::net_formats[form].format, "input");
  });
  if (!net) return;
  std::visit(
      [](const auto& n) {
        require_sound(n);
        try_g_round_trip(n);
      },
      *net);
}

}  // namespace vorel::fuzzing
