#include "formats/net_dot.h"

#include "formats/dot_text.h"
#include "formats/save_file.h"

namespace vorel::formats {
namespace {

constexpr std::string_view token = "\xE2\x97\x8F";  // a black dot

template <class N>
class NetDrawing {
 public:
  NetDrawing(const N& net, std::ostream& stream) : net_{net}, sink_{stream} {}

  bool run() {
    start_drawing(sink_, "net",
                  "Boxes are transitions. A place is an arc between its two neighbours where it "
                  "can be,\n  // else a circle.",
                  N::has_signals);
    for (const auto& transition : net_.transitions) add_transition(*transition);
    for (const auto& place : net_.places) {
      if (is_implicit(*place)) {
        add_implicit(*place);
      } else {
        add_explicit(*place);
      }
    }
    sink_ << "}\n";
    return sink_.finish();
  }

 private:
  using Place = typename N::Place;
  using Transition = typename N::Transition;

  static bool is_implicit(const Place& place) {
    return place.preset.size() == 1 && place.postset.size() == 1;
  }

  void add_transition(const Transition& transition) {
    sink_ << "  t" << transition.index << " [shape=box, color=" << colour_of(transition)
          << ", label=\"";
    add_label_text(sink_, transition.name);
    sink_ << "\"];\n";
  }

  static std::string tokens_of(const Place& place) {
    if (place.initial_marking == 0) return {};
    std::string text(token);
    return place.initial_marking == 1 ? text : text + ' ' + std::to_string(place.initial_marking);
  }

  void add_implicit(const Place& place) {
    const Transition& source = *place.preset.front();
    sink_ << "  t" << source.index << " -> t" << place.postset.front()->index
          << " [color=" << colour_of(source) << ", tooltip=\"";
    add_label_text(sink_, place.name);
    sink_ << "\", label=\"" << tokens_of(place) << "\"];\n";
  }

  void add_explicit(const Place& place) {
    add_circle(sink_, "p", place.index, tokens_of(place), place.name);
    sink_ << "];\n";
    for (const Transition* producer : place.preset) {
      sink_ << "  t" << producer->index << " -> p" << place.index
            << " [color=" << colour_of(*producer) << "];\n";
    }
    for (const Transition* consumer : place.postset) {
      sink_ << "  p" << place.index << " -> t" << consumer->index
            << " [color=" << colour_of(*consumer) << "];\n";
    }
  }

  const N& net_;
  base::TextSink sink_;
};

}  // namespace

template <class N>
bool write_net_dot(const N& net, std::ostream& stream) {
  return NetDrawing<N>(net, stream).run();
}

template <class N>
bool save_net_dot(const N& net, const std::string& file_name) {
  return save_file(file_name,
                   [&net](base::OutputFile& file) { return write_net_dot(net, file.stream()); });
}

#define INSTANTIATE(N)                                     \
  template bool write_net_dot<N>(const N&, std::ostream&); \
  template bool save_net_dot<N>(const N&, const std::string&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::formats
