#include "formats/prefix_dot.h"

#include <array>
#include <cassert>
#include <string_view>

#include "base/text_sink.h"
#include "formats/save_file.h"

namespace vorel::formats {
namespace {

struct KindColour {
  std::string_view kind, colour;
};
constexpr std::array<KindColour, net::signal_kind_count> kind_colours = {
    {{"input", "red"}, {"output", "blue"}, {"internal", "darkgreen"}, {"dummy", "gray50"}}};
static_assert(kind_colours[static_cast<std::size_t>(net::SignalKind::dummy)].kind == "dummy");

std::string_view colour_of(const net::Transition&) { return "black"; }
std::string_view colour_of(const net::StgTransition& transition) {
  assert(transition.signal != nullptr);
  return kind_colours[static_cast<std::size_t>(transition.signal->kind)].colour;
}

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

template <class N>
class Drawing {
 public:
  Drawing(const net::PrefixOf<N>& prefix, std::ostream& stream) : prefix_{prefix}, sink_{stream} {}

  bool run() {
    sink_ << "digraph prefix {\n";
    add_legend();
    for (const auto& condition : prefix_.conditions) add_condition(*condition, condition->index);
    for (const auto& event : prefix_.events) add_event(*event);
    sink_ << "}\n";
    return sink_.finish();
  }

 private:
  void add_legend() {
    sink_ << "  // Circles are conditions, boxes are events; cut-offs are dashed.\n";
    if constexpr (N::has_signals) {
      sink_ << "  // Events and their arcs are coloured by the kind of their signal:\n  //";
      for (const auto& [kind, colour] : kind_colours) sink_ << ' ' << kind << ' ' << colour << ';';
      sink_ << '\n';
    }
  }

  void add_condition(const net::ConditionOf<N>& condition, std::size_t number) {
    sink_ << "  c" << number << " [shape=circle, label=\"";
    add_label_text(sink_, condition.place->name);
    sink_ << "\"];\n";
  }

  void add_event(const net::EventOf<N>& event) {
    const std::string_view colour = colour_of(*event.transition);
    sink_ << "  e" << event.index << " [shape=box, color=" << colour << ", label=\"";
    add_label_text(sink_, event.transition->name);
    sink_ << "\\ne" << event.index << (event.is_cut_off() ? "\", style=dashed];\n" : "\"];\n");
    for (const auto* condition : event.preset) {
      sink_ << "  c" << condition->index << " -> e" << event.index << " [color=" << colour
            << "];\n";
    }
    for (const auto* condition : event.postset) {
      std::size_t number = condition->index;
      if (condition->index == base::no_index) {
        number = next_left_out_++;
        add_condition(*condition, number);
      }
      sink_ << "  e" << event.index << " -> c" << number << " [color=" << colour << "];\n";
    }
  }

  const net::PrefixOf<N>& prefix_;
  base::TextSink sink_;
  std::size_t next_left_out_ = prefix_.conditions.size();  // behind all that have a number
};

}  // namespace

template <class N>
bool write_dot(const net::PrefixOf<N>& prefix, std::ostream& stream) {
  return Drawing<N>(prefix, stream).run();
}

template <class N>
bool save_dot(const net::PrefixOf<N>& prefix, const std::string& file_name) {
  return save_file(file_name,
                   [&prefix](base::OutputFile& file) { return write_dot(prefix, file.stream()); });
}

#define INSTANTIATE(N)                                                \
  template bool write_dot<N>(const net::PrefixOf<N>&, std::ostream&); \
  template bool save_dot<N>(const net::PrefixOf<N>&, const std::string&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::formats
