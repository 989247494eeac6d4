#include "formats/pnml_writer.h"

#include <gzstream.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <span>
#include <string_view>

#include "base/messages.h"
#include "base/text_sink.h"
#include "formats/save_file.h"
#include "formats/text_parts.h"
#include "formats/xml_text.h"

namespace vorel::formats {
namespace {

constexpr std::array<std::string_view, net::signal_kind_count> kind_words = {"input", "output",
                                                                             "internal", "dummy"};
constexpr std::string_view value_digits = "01?";
constexpr std::string_view sign_marks = "+-~";

template <class Predicate>
bool any_name(const net::Net& net, Predicate holds) {
  const auto name_holds = [&holds](const auto& element) { return holds(element->name); };
  return std::ranges::any_of(net.places, name_holds) ||
         std::ranges::any_of(net.transitions, name_holds);
}
template <class Predicate>
bool any_name(const net::Stg& stg, Predicate holds) {
  const auto name_holds = [&holds](const auto& element) { return holds(element->name); };
  return std::ranges::any_of(stg.places, name_holds) ||
         std::ranges::any_of(stg.transitions, name_holds) ||
         std::ranges::any_of(stg.signals, name_holds);
}

// The document in parts: the net with all before it, ranges of the conditions, conditions left out,
// ranges of the events, ranges of the events once more for their arcs, and what is left.
template <net::Process P>
class PnmlText {
 public:
  explicit PnmlText(const P& process)
      : process_{process},
        element_count_{
            static_cast<std::uint32_t>(process.conditions.size() + 2 * process.events.size())},
        range_size_{std::max(least_range, element_count_ / 48)},
        condition_ranges_{count_ranges(process.conditions.size())},
        event_ranges_{count_ranges(process.events.size())} {}

  bool run(std::ostream& stream, std::uint32_t threads) {
    base::WorkerPool pool(element_count_ < 4 * least_range ? 1 : std::max(threads, 1u));
    return write_parts(
        condition_ranges_ + 2 * event_ranges_ + 3, pool, stream,
        [this](std::uint32_t part, base::TextSink& sink) { Part(*this, sink).add(part); });
  }

 private:
  static constexpr std::uint32_t least_range = 2048;

  class Part;

  std::uint32_t count_ranges(std::size_t size) const {
    return static_cast<std::uint32_t>((size + range_size_ - 1) / range_size_);
  }

  const P& process_;
  const std::uint32_t element_count_, range_size_, condition_ranges_, event_ranges_;
};

template <net::Process P>
class PnmlText<P>::Part {
 public:
  Part(const PnmlText& text, base::TextSink& sink)
      : text_{text}, process_{text.process_}, sink_{sink} {}

  void add(std::uint32_t part) {
    if (part == 0) return add_original_net();
    part -= 1;
    if (part < text_.condition_ranges_) return add_conditions(part);
    part -= text_.condition_ranges_;
    if (part == 0) {
      return for_each_left_out(
          [this](const Event&, const Condition& c, std::size_t n) { add(c, n); });
    }
    part -= 1;
    if (part < text_.event_ranges_) return add_events(part);
    part -= text_.event_ranges_;
    if (part < text_.event_ranges_) return add_arcs(part);
    add_end();
  }

 private:
  using N = typename P::NetType;
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  // The elements of a range of one of the lists.
  template <class List>
  auto range_of(const List& list, std::uint32_t range) const {
    const std::size_t first = std::size_t{range} * text_.range_size_;
    return std::span(list).subspan(first,
                                   std::min<std::size_t>(text_.range_size_, list.size() - first));
  }

  void add_original_net() {
    constexpr std::string_view net_type = N::has_signals ? "STG" : "low_level_net";
    const bool is_plain = !any_name(process_, needs_xml_1_1);
    sink_ << "<?xml version=\"" << (is_plain ? "1.0" : "1.1") << "\" encoding=\"UTF-8\"?>\n"
          << "<pnml>\n<net id=\"process\" type=\""
          << (P::is_merged ? "merged_process:" : "branching_process:") << net_type
          << "\">\n<original_net>\n<net id=\"original\" type=\"" << net_type << "\">\n<page>\n";
    add_net();
    sink_ << "</page>\n</net>\n</original_net>\n<page>\n";
  }

  void add_conditions(std::uint32_t range) {
    for (const auto& condition : range_of(process_.conditions, range))
      add(*condition, condition->index);
  }

  void add_events(std::uint32_t range) {
    for (const auto& event : range_of(process_.events, range)) add(*event);
  }

  void add_arcs(std::uint32_t range) {
    for (const auto& event : range_of(process_.events, range)) {
      for (const auto* condition : event->preset) add_arc('c', condition->index, 'e', event->index);
      for (const auto* condition : event->postset) {
        if (condition->index != base::no_index) add_arc('e', event->index, 'c', condition->index);
      }
    }
  }

  void add_end() {
    for_each_left_out(
        [this](const Event& e, const Condition&, std::size_t n) { add_arc('e', e.index, 'c', n); });
    sink_ << "</page>\n</net>\n</pnml>\n";
  }

  void add_name(std::string_view name) {
    sink_ << "<name><text>";
    add_xml_text(sink_, name);
    sink_ << "</text></name>";
  }
  void add_marking(std::uint32_t tokens) {
    if (tokens == 0) return;
    sink_ << "<initialMarking><text>" << tokens << "</text></initialMarking>";
  }
  void add_arc(char source_letter, std::size_t source, char target_letter, std::size_t target) {
    sink_ << "<arc source=\"" << source_letter << source << "\" target=\"" << target_letter
          << target << "\"/>\n";
  }

  void add_net() {
    if constexpr (N::has_signals) {
      for (const auto& signal : process_.signals) add(*signal);
    }
    for (const auto& place : process_.places) {
      sink_ << "<place id=\"p" << place->index << "\">";
      add_name(place->name);
      add_marking(place->initial_marking);
      sink_ << "</place>\n";
    }
    for (const auto& transition : process_.transitions) {
      sink_ << "<transition id=\"t" << transition->index << "\">";
      add_name(transition->name);
      if constexpr (N::has_signals) add_label(*transition);
      sink_ << "</transition>\n";
    }
    for (const auto& transition : process_.transitions) {
      for (const auto* place : transition->preset)
        add_arc('p', place->index, 't', transition->index);
      for (const auto* place : transition->postset) {
        add_arc('t', transition->index, 'p', place->index);
      }
    }
  }

  void add(const net::Signal& signal) {
    assert(signal.initial_value < value_digits.size());
    sink_ << "<signal id=\"s" << signal.index << "\" type=\""
          << kind_words[static_cast<std::size_t>(signal.kind)] << "\" initialValue=\""
          << value_digits[signal.initial_value] << "\">";
    add_name(signal.name);
    sink_ << "</signal>\n";
  }

  void add_label(const net::StgTransition& transition) {
    assert(transition.signal != nullptr);
    sink_ << "<signal ref=\"s" << transition.signal->index << "\" sign=\""
          << sign_marks[static_cast<std::size_t>(transition.sign)] << "\"/>";
  }

  // Visits the conditions left out after cut-offs with the numbers that they get.
  template <class Visit>
  void for_each_left_out(Visit visit) {
    std::size_t number = process_.conditions.size();
    for (const auto& event : process_.events) {
      if (!event->is_cut_off()) continue;
      for (const auto* condition : event->postset) {
        if (condition->index == base::no_index) visit(*event, *condition, number++);
      }
    }
  }

  void add(const Condition& condition, std::size_t number) {
    sink_ << "<place id=\"c" << number << "\"><originalNode ref=\"p" << condition.place->index
          << "\"/>";
    if constexpr (P::is_merged) {
      assert(condition.occurrence_depth >= 1);
      sink_ << "<occurrence_depth><text>" << static_cast<std::uint32_t>(condition.occurrence_depth)
            << "</text></occurrence_depth>";
      add_marking(condition.initial_marking);
    }
    sink_ << "</place>\n";
  }

  void add(const Event& event) {
    sink_ << "<transition id=\"e" << event.index << "\"><originalNode ref=\"t"
          << event.transition->index << "\"/>";
    if (event.is_cut_off()) add_cut_off(event);
    sink_ << "</transition>\n";
  }

  // No correspondents are the initial marking; one that is not known has no element.
  void add_cut_off(const Event& event) {
    if constexpr (!P::is_merged) {
      if (!event.cut_off.is_unknown()) {
        sink_ << "<cut-off><correspondent";
        for (const Event* other : event.cut_off.correspondents()) {
          sink_ << " ref=\"e" << other->index << '"';
        }
        sink_ << "/></cut-off>";
        return;
      }
    }
    sink_ << "<cut-off/>";
  }

  const PnmlText& text_;
  const P& process_;
  base::TextSink& sink_;
};

template <net::Process P>
bool write_compressed(const P& process, const std::string& path, std::uint32_t threads) {
  ogzstream stream;
  stream.open(path.c_str());
  if (!stream.rdbuf()->is_open()) return base::report_write_failure();
  if (!write_pnml(process, stream, threads)) return false;
  stream.close();
  return stream.good() || base::report_write_failure();
}

}  // namespace

template <net::Process P>
bool write_pnml(const P& process, std::ostream& stream, std::uint32_t threads) {
  const auto has_zero = [](std::string_view name) { return name.find('\0') != name.npos; };
  if (any_name(process, has_zero)) {
    base::print_error("the process cannot be written in PNML: a name has a zero byte");
    return false;
  }
  return PnmlText<P>(process).run(stream, threads);
}

template <net::Process P>
bool save_pnml(const P& process, const std::string& file_name, std::uint32_t threads) {
  return save_file(file_name, [&](base::OutputFile& file) {
    return file_name.ends_with(".gz") ? write_compressed(process, file.written_path(), threads)
                                      : write_pnml(process, file.stream(), threads);
  });
}

#define INSTANTIATE(P)                                                 \
  template bool write_pnml<P>(const P&, std::ostream&, std::uint32_t); \
  template bool save_pnml<P>(const P&, const std::string&, std::uint32_t);
VOREL_FOR_EACH_PROCESS(INSTANTIATE)
#undef INSTANTIATE

}  // namespace vorel::formats
