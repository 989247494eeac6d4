#include "formats/prefix_dot.h"

#include "formats/dot_text.h"
#include "formats/save_file.h"

namespace vorel::formats {
namespace {

template <class N>
class PrefixDrawing {
 public:
  PrefixDrawing(const net::PrefixOf<N>& prefix, std::ostream& stream)
      : prefix_{prefix}, sink_{stream} {}

  bool run() {
    start_drawing(sink_, "prefix",
                  "Boxes are events, dashed for cut-offs. A condition is an arc between its two "
                  "neighbours\n  // where it can be, else a circle, filled for the initial ones.",
                  N::has_signals);
    for (const auto& condition : prefix_.conditions) {
      if (!is_implicit(*condition)) add_condition(*condition, condition->index);
    }
    for (const auto& event : prefix_.events) add_event(*event);
    sink_ << "}\n";
    return sink_.finish();
  }

 private:
  using Condition = net::ConditionOf<N>;
  using Event = net::EventOf<N>;

  static bool is_implicit(const Condition& condition) {
    return !condition.is_initial() && condition.postset.size() == 1;
  }

  void add_condition(const Condition& condition, std::size_t number) {
    add_circle(sink_, "c", number, "", condition.place->name);
    sink_ << (condition.is_initial() ? ", style=filled];\n" : "];\n");
  }

  void add_event(const Event& event) {
    const std::string_view colour = colour_of(*event.transition);
    sink_ << "  e" << event.index << " [shape=box, color=" << colour << ", label=\"";
    add_label_text(sink_, event.transition->name);
    sink_ << " e" << event.index << (event.is_cut_off() ? "\", style=dashed];\n" : "\"];\n");
    for (const Condition* condition : event.preset) {
      if (is_implicit(*condition)) continue;
      sink_ << "  c" << condition->index << " -> e" << event.index << " [color=" << colour
            << "];\n";
    }
    for (const Condition* condition : event.postset) add_product(event, *condition, colour);
  }

  void add_product(const Event& event, const Condition& condition, std::string_view colour) {
    if (is_implicit(condition)) {
      sink_ << "  e" << event.index << " -> e" << condition.postset.front()->index
            << " [color=" << colour << ", tooltip=\"";
      add_label_text(sink_, condition.place->name);
      sink_ << "\"];\n";
      return;
    }
    std::size_t number = condition.index;
    if (condition.index == base::no_index) {
      number = next_left_out_++;
      add_condition(condition, number);
    }
    sink_ << "  e" << event.index << " -> c" << number << " [color=" << colour << "];\n";
  }

  const net::PrefixOf<N>& prefix_;
  base::TextSink sink_;
  std::size_t next_left_out_ = prefix_.conditions.size();  // behind all that have a number
};

}  // namespace

template <class N>
bool write_dot(const net::PrefixOf<N>& prefix, std::ostream& stream) {
  return PrefixDrawing<N>(prefix, stream).run();
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
