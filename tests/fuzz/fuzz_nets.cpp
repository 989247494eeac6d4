// Any bytes as the text of a net; the first byte selects its form.
#include <algorithm>
#include <set>
#include <variant>

#include "formats/g_writer.h"
#include "formats/net_file.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {
namespace {

// All else that a net promises, the readers assert themselves.
template <class List>
void require_unique_names(const List& list) {
  std::set<std::string_view> names;
  for (const auto& node : list) require(names.insert(node->name).second);
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
        require_unique_names(n.places);
        require_unique_names(n.transitions);
        try_g_round_trip(n);
      },
      *net);
}

}  // namespace vorel::fuzzing
