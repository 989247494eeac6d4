#include "formats/ll_net_reader.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/source_text.h"
#include "formats/repeated_names.h"

namespace vorel::formats {
namespace {

bool is_upper(char c) { return 'A' <= c && c <= 'Z'; }
bool is_letter(char c) { return is_upper(c) || ('a' <= c && c <= 'z'); }
bool is_digit(char c) { return '0' <= c && c <= '9'; }
bool starts_number(char c) { return is_digit(c) || c == '-' || c == '+' || c == '.'; }
bool is_gap(char c) { return c == ' ' || c == '\t' || c == ','; }

// Two capital letters or more.
bool are_capitals(std::string_view line) {
  return line.size() >= 2 && std::ranges::all_of(line, is_upper);
}

// One line. Every step reports what it does not find.
class LineCursor {
 public:
  LineCursor(const base::SourceText& source, std::string_view line) : source_{source}, rest_{line} {
    skip_gaps();
  }

  bool at_end() const { return rest_.empty(); }
  char next() const { return at_end() ? '\0' : rest_.front(); }
  std::size_t offset() const { return source_.offset_of(rest_); }

  bool fail(std::string_view expected) const {
    if (!at_end()) return source_.report_expected(offset(), expected, rest_);
    return source_.report_expected(offset(), expected, "the end of the line");
  }

  bool expect(char c) {
    if (next() != c) return fail(std::string{'\'', c, '\''});
    skip(1);
    return true;
  }

  bool take_number(std::uint32_t& number) {
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), number);
    if (error != std::errc()) return fail("a number");
    skip(static_cast<std::size_t>(end - rest_.data()));
    return true;
  }

  // "TEXT"
  bool take_quoted(std::string_view& text) {
    if (next() != '"') return fail("'\"'");
    const std::size_t end = rest_.find('"', 1);
    if (end == std::string_view::npos) return fail("a text that ends with '\"' on its line");
    text = rest_.substr(1, end - 1);
    skip(end + 1);
    return true;
  }

  // A sequence of what a number or a position is made of; empty if there is none.
  std::string_view take_position() {
    const auto ends = [](char c) { return !starts_number(c) && c != '@'; };
    const auto end = std::ranges::find_if(rest_, ends);
    const std::string_view position =
        rest_.substr(0, starts_number(next()) ? static_cast<std::size_t>(end - rest_.begin()) : 0);
    skip(position.size());
    return position;
  }

  void skip(std::size_t size) {
    assert(size <= rest_.size());
    rest_.remove_prefix(size);
    skip_gaps();
  }

 private:
  void skip_gaps() {
    while (!at_end() && is_gap(rest_.front())) rest_.remove_prefix(1);
  }

  const base::SourceText& source_;
  std::string_view rest_;
};

// A letter and its value; a position of its own has the letter '@'.
struct Attribute {
  char letter;
  std::string_view value;
  std::size_t offset;
};

bool take_attribute(LineCursor& cursor, Attribute& attribute) {
  attribute = {'@', {}, cursor.offset()};
  if (is_letter(cursor.next())) {
    attribute.letter = cursor.next();
    cursor.skip(1);
  } else if (!starts_number(cursor.next())) {
    return cursor.fail("an attribute");
  }
  if (cursor.next() == '"') return cursor.take_quoted(attribute.value);
  attribute.value = cursor.take_position();
  return true;
}

// The nodes of one sort, and the numbers by which arcs name them.
template <class T>
class Nodes {
 public:
  explicit Nodes(char default_initial) : default_initial_{default_initial} {}

  bool add(std::uint32_t number, std::string_view name, std::size_t offset) {
    const auto index = static_cast<std::uint32_t>(elements.size());
    if (!index_of_.emplace(number, index).second) return false;
    last_ = number;
    offsets_.push_back(offset);
    numbers_.push_back(std::to_string(number));
    base::append_new(elements).name =
        name.empty() ? std::string(1, default_initial_) + numbers_.back() : std::string(name);
    return true;
  }
  std::uint32_t next_number() const { return last_ + 1; }
  T* find(std::uint32_t number) const {
    const auto found = index_of_.find(number);
    assert(found == index_of_.end() || found->second < elements.size());
    return found == index_of_.end() ? nullptr : elements[found->second].get();
  }
  void make_names_unique(base::RepeatedFault& renamed) {
    const std::vector<std::string_view> ids(numbers_.begin(), numbers_.end());
    for (const std::uint32_t index : formats::make_names_unique(elements, ids)) {
      renamed.note(offsets_[index], elements[index]->name);
    }
  }

  base::OwnedList<T> elements;

 private:
  char default_initial_;  // of a name where the file has none
  std::uint32_t last_ = 0;
  std::vector<std::size_t> offsets_;
  std::vector<std::string> numbers_;
  std::unordered_map<std::uint32_t, std::uint32_t> index_of_;
};

class LlNetReader {
 public:
  LlNetReader(std::string_view text, const std::string& name) : source_{text, name} {}

  std::optional<net::Net> run() {
    for (std::size_t at = 0; at < source_.size();) {
      const std::string_view line = source_.rest_of_line(at);
      if (!take_line(line)) return std::nullopt;
      at += line.size() + 1;
    }
    if (!has_places_) {
      source_.report_expected(source_.size(), "the section PL", {});
      return std::nullopt;
    }
    return finish();
  }

 private:
  struct Arc {
    net::Place* place;
    net::Transition* transition;
    bool is_output;  // from the transition to the place
    std::size_t offset;
  };
  struct Section {
    std::string_view name;
    bool (LlNetReader::*take)(LineCursor&);  // a line of it
  };

  // Null for an unknown name.
  static const Section* section_named(std::string_view name) {
    static constexpr Section table[] = {
        {"PL", &LlNetReader::take_place},
        {"TR", &LlNetReader::take_transition},
        {"TP", &LlNetReader::take_output},
        {"PT", &LlNetReader::take_input},
        {"RA", &LlNetReader::take_read},
        {"RS", &LlNetReader::refuse_reset},
        {"IA", &LlNetReader::refuse_inhibitor},
        {"PTR", &LlNetReader::skip},  // phantom transitions, whose actions the others carry out
        {"PTP", &LlNetReader::skip},
        {"PPT", &LlNetReader::skip},
        {"TX", &LlNetReader::skip},
    };
    const auto row = std::ranges::find(table, name, &Section::name);
    return row == std::end(table) ? nullptr : row;
  }

  // "DPL s7n10@-9t2"
  static bool is_line_of_defaults(std::string_view line) {
    if (!line.starts_with('D') || !are_capitals(line.substr(1, 2))) return false;
    return !are_capitals(line) || section_named(line.substr(1)) != nullptr;
  }

  bool take_line(std::string_view line) {
    while (!line.empty() && is_gap(line.back())) line.remove_suffix(1);
    LineCursor cursor(source_, line);
    if (cursor.at_end()) return true;
    if (is_line_of_defaults(line)) return true;
    if (take_section_ == nullptr && !starts_section(line)) return take_header(line);
    if (!starts_section(line)) return (this->*take_section_)(cursor);
    const Section* const section = section_named(line);
    take_section_ = section == nullptr ? &LlNetReader::skip : section->take;
    has_places_ = has_places_ || line == "PL";
    if (section == nullptr && unknown_.insert(line).second) {
      source_.warn(cursor.offset(),
                   "the section " + base::quoted(line) + " is unknown and ignored");
    }
    return true;
  }

  bool starts_section(std::string_view line) const {
    const bool is_first_of_header = take_section_ == nullptr && line == "PEP";
    return are_capitals(line) && !is_first_of_header;
  }

  bool skip(LineCursor&) { return true; }
  bool refuse_reset(LineCursor& cursor) { return refuse(cursor, "reset arcs (section RS)"); }
  bool refuse_inhibitor(LineCursor& cursor) {
    return refuse(cursor, "inhibitor arcs (section IA)");
  }
  bool refuse(const LineCursor& cursor, const std::string& what) {
    return source_.report(cursor.offset(), what + " are not supported");
  }

  bool take_header(std::string_view line) {
    return line != "HLNet" ||
           source_.report_expected(source_.offset_of(line), "a low-level net", line);
  }

  template <class T>
  bool take_node(LineCursor& cursor, Nodes<T>& nodes) {
    const std::size_t offset = cursor.offset();
    std::uint32_t number = nodes.next_number();
    std::string_view name;
    if (is_digit(cursor.next()) && !cursor.take_number(number)) return false;
    const LineCursor at_name = cursor;
    if (!cursor.take_quoted(name)) return false;
    if (base::has_control_character(name)) return at_name.fail("a name of printable characters");
    return nodes.add(number, name, offset) ||
           source_.report(offset, "number " + std::to_string(number) + " of node " +
                                      base::quoted(name) + " has been used before");
  }

  bool take_place(LineCursor& cursor) {
    if (!take_node(cursor, places_)) return false;
    net::Place& place = *places_.elements.back();
    for (Attribute attribute{}; !cursor.at_end();) {
      if (!take_attribute(cursor, attribute)) return false;
      if (attribute.letter == 'M' && !mark(place, attribute)) return false;
    }
    return true;
  }

  bool mark(net::Place& place, const Attribute& attribute) {
    assert(attribute.letter == 'M');
    const std::string_view tokens = attribute.value.empty() ? "1" : attribute.value;
    if (!std::ranges::all_of(tokens, is_digit)) {
      return source_.report_expected(attribute.offset, "a number of tokens", tokens);
    }
    if (tokens != "0" && tokens != "1") {
      return source_.report_unsafe(attribute.offset, place.name, tokens);
    }
    place.initial_marking = tokens == "1" ? 1 : 0;
    return true;
  }

  bool take_transition(LineCursor& cursor) {
    return take_node(cursor, transitions_) && skip_attributes(cursor);
  }

  bool skip_attributes(LineCursor& cursor) {
    for (Attribute attribute{}; !cursor.at_end();) {
      if (!take_attribute(cursor, attribute)) return false;
    }
    return true;
  }

  // The node whose number comes next; null after an error.
  template <class T>
  T* take_end_of_arc(LineCursor& cursor, const Nodes<T>& nodes, std::string_view sort) {
    const std::size_t offset = cursor.offset();
    std::uint32_t number = 0;
    if (!cursor.take_number(number)) return nullptr;
    T* const node = nodes.find(number);
    if (node == nullptr) {
      source_.report(
          offset,
          std::string("there is no ").append(sort).append(" ").append(std::to_string(number)));
    }
    return node;
  }

  bool take_output(LineCursor& cursor) { return take_arc(cursor, true, arcs_); }
  bool take_input(LineCursor& cursor) { return take_arc(cursor, false, arcs_); }

  // Written in either direction.
  bool take_read(LineCursor& cursor) {
    LineCursor ahead = cursor;
    std::uint32_t number = 0;
    return ahead.take_number(number) && take_arc(cursor, ahead.next() == '<', reads_);
  }

  bool take_arc(LineCursor& cursor, bool is_output, std::vector<Arc>& arcs) {
    Arc arc{nullptr, nullptr, is_output, cursor.offset()};
    if (is_output) {
      arc.transition = take_end_of_arc(cursor, transitions_, "transition");
      if (arc.transition == nullptr || !cursor.expect('<')) return false;
      arc.place = take_end_of_arc(cursor, places_, "place");
    } else {
      arc.place = take_end_of_arc(cursor, places_, "place");
      if (arc.place == nullptr || !cursor.expect('>')) return false;
      arc.transition = take_end_of_arc(cursor, transitions_, "transition");
    }
    if (arc.place == nullptr || arc.transition == nullptr) return false;
    arcs.push_back(arc);
    return take_weight(cursor);
  }

  bool take_weight(LineCursor& cursor) {
    for (Attribute attribute{}; !cursor.at_end();) {
      if (!take_attribute(cursor, attribute)) return false;
      if (attribute.letter == 'w' && attribute.value != "1") {
        return source_.report_expected(attribute.offset, "the weight 1", attribute.value);
      }
    }
    return true;
  }

  static std::tuple<bool, std::uint32_t, std::uint32_t> place_in_net(const Arc& arc) {
    return {arc.is_output, arc.place->index, arc.transition->index};
  }

  bool has_arc(Arc arc, bool is_output) const {
    arc.is_output = is_output;
    return std::ranges::binary_search(arcs_, place_in_net(arc), {}, place_in_net);
  }

  // A token that is read is taken and put back. If the transition takes it anyway, or puts another
  // one there, it would depend on the order what this means.
  bool expand_reads(base::RepeatedFault& repeated) {
    const auto ends = [](const Arc& arc) {
      return std::pair(arc.place->index, arc.transition->index);
    };
    std::ranges::stable_sort(reads_, {}, ends);
    std::vector<Arc> added;
    for (std::size_t i = 0; i < reads_.size(); ++i) {
      Arc arc = reads_[i];
      const bool is_loop = has_arc(arc, false);
      if (is_loop != has_arc(arc, true)) {
        const std::string text = base::quoted(source_.rest_of_line(arc.offset));
        return source_.report(arc.offset,
                              "the read arc " + text + " is between nodes that another arc joins");
      }
      if (is_loop || (i > 0 && ends(reads_[i - 1]) == ends(arc))) {
        repeated.note(arc.offset, source_.rest_of_line(arc.offset));
        continue;
      }
      for (const bool is_output : {false, true}) {
        arc.is_output = is_output;
        added.push_back(arc);
      }
    }
    arcs_.insert(arcs_.end(), added.begin(), added.end());
    return true;
  }

  bool add_arcs() {
    assert(std::ranges::all_of(
        arcs_, [](const Arc& arc) { return arc.place != nullptr && arc.transition != nullptr; }));
    base::RepeatedFault repeated;
    std::ranges::stable_sort(arcs_, {}, place_in_net);
    if (!expand_reads(repeated)) return false;
    std::ranges::stable_sort(arcs_, {}, place_in_net);
    for (std::size_t i = 0; i < arcs_.size(); ++i) {
      const Arc& arc = arcs_[i];
      if (i > 0 && place_in_net(arcs_[i - 1]) == place_in_net(arc)) {
        repeated.note(arc.offset, source_.rest_of_line(arc.offset));
      } else if (arc.is_output) {
        net::add_arc(*arc.transition, *arc.place);
      } else {
        net::add_arc(*arc.place, *arc.transition);
      }
    }
    repeated.warn(source_, "the arc", "is repeated");
    return true;
  }

  std::optional<net::Net> finish() {
    if (!add_arcs()) return std::nullopt;
    base::RepeatedFault renamed;
    places_.make_names_unique(renamed);
    transitions_.make_names_unique(renamed);
    renamed.warn(source_, "node", "is renamed with its number, as its name occurred before");
    net::Net net;
    net.places = std::move(places_.elements);
    net.transitions = std::move(transitions_.elements);
    net::sort_net(net);
    return net;
  }

  const base::SourceText source_;
  bool (LlNetReader::*take_section_)(LineCursor&) = nullptr;  // null before the first section
  std::set<std::string_view> unknown_;                        // names of sections
  bool has_places_ = false;
  Nodes<net::Place> places_{'P'};
  Nodes<net::Transition> transitions_{'T'};
  std::vector<Arc> arcs_, reads_;
};

}  // namespace

std::optional<net::Net> read_ll_net_text(std::string_view text, const std::string& name) {
  return LlNetReader(text, name).run();
}

}  // namespace vorel::formats
