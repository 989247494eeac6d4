#include "formats/dot_text.h"

#include <array>
#include <cassert>

namespace vorel::formats {
namespace {

struct KindColour {
  std::string_view kind, colour;
};
constexpr std::array<KindColour, net::signal_kind_count> kind_colours = {
    {{"input", "red"}, {"output", "blue"}, {"internal", "darkgreen"}, {"dummy", "gray50"}}};
static_assert(kind_colours[static_cast<std::size_t>(net::SignalKind::dummy)].kind == "dummy");

// Half an inch of A4 and of Letter paper is left free on each side.
constexpr std::string_view style =
    "  graph [size=\"7.2,10\", ranksep=0.2, nodesep=0.2];\n"
    "  node [fontsize=11, height=0.2, width=0.2, margin=\"0.05,0.02\"];\n"
    "  edge [arrowsize=0.6, fontsize=11];\n";

}  // namespace

// In labels a backslash starts an escape and an ampersand an entity. Characters that neither can
// be drawn nor may stand in the text are shown by their number.
void add_label_text(base::TextSink& sink, std::string_view text) {
  constexpr std::string_view hex_digits = "0123456789ABCDEF";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      sink << '\\' << c;
    } else if (c == '&') {
      sink << "&amp;";
    } else if (byte < 32 || byte == 127) {
      sink << "\\\\x" << hex_digits[byte / 16] << hex_digits[byte % 16];
    } else {
      sink << c;
    }
  }
}

std::string_view colour_of(const net::Transition&) { return "black"; }
std::string_view colour_of(const net::StgTransition& transition) {
  assert(transition.signal != nullptr);
  return kind_colours[static_cast<std::size_t>(transition.signal->kind)].colour;
}

void start_drawing(base::TextSink& sink, std::string_view name, std::string_view explanation,
                   bool has_signals) {
  sink << "digraph " << name << " {\n  // " << explanation << '\n';
  if (has_signals) {
    sink << "  // Boxes and their arcs are coloured by the kind of their signal:\n  //";
    for (const auto& [kind, colour] : kind_colours) sink << ' ' << kind << ' ' << colour << ';';
    sink << '\n';
  }
  sink << style;
}

void add_circle(base::TextSink& sink, std::string_view letter, std::size_t number,
                std::string_view label, std::string_view name) {
  sink << "  " << letter << number << " [shape=circle, label=\"";
  add_label_text(sink, label);
  sink << "\", xlabel=\"";
  add_label_text(sink, name);
  sink << '"';
}

}  // namespace vorel::formats
