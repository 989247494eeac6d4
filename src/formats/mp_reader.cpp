#include "formats/mp_reader.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "base/input_text.h"
#include "base/messages.h"
#include "formats/legacy_format.h"
#include "net/transition_label.h"

namespace vorel::formats {
namespace {

// The lines of the file, one record each. A function that fails leaves the line number at the
// record at fault.
class MpLines {
 public:
  explicit MpLines(std::string_view text) : text_{text} {}

  std::uint64_t line() const { return line_; }
  std::size_t bytes_left() const { return text_.size(); }

  // number = { " " | TAB } digit { digit } .
  bool take_number(std::uint32_t& number, std::uint32_t low, std::uint32_t high) {
    text_.remove_prefix(std::min(text_.find_first_not_of(" \t"), text_.size()));
    const char* const end = text_.data() + text_.size();
    const auto [after, error] = std::from_chars(text_.data(), end, number);
    if (error != std::errc{} || number < low || number > high) return false;
    text_.remove_prefix(static_cast<std::size_t>(after - text_.data()));
    return true;
  }
  bool take_number(std::uint32_t& number) {
    return take_number(number, 0, std::numeric_limits<std::uint32_t>::max());
  }

  // end of record = LF | CR | CR LF . The last line of the file needs none.
  bool take_end_of_record() {
    if (!text_.empty() && text_.front() != '\r' && text_.front() != '\n') return false;
    const bool is_pair = text_.starts_with("\r\n");
    text_.remove_prefix(std::min(text_.size(), is_pair ? std::size_t{2} : std::size_t{1}));
    ++line_;
    return true;
  }

  // name = { any byte but LF } LF . The last name of the file needs no LF, unless it is empty.
  bool take_name(std::string& name) {
    if (text_.empty()) return false;
    const std::size_t length = std::min(text_.find('\n'), text_.size());
    name = text_.substr(0, length);
    text_.remove_prefix(std::min(length + 1, text_.size()));
    ++line_;
    return true;
  }

 private:
  std::string_view text_;  // what is left of the file
  std::uint64_t line_ = 1;
};

template <class P>
class MpParser {
 public:
  MpParser(std::string_view text, P& process) : lines_{text}, process_{process} {}

  // file = counts conditions events longest name { place name } { transition name } .
  bool run() {
    if (!take_counts() || !take_conditions() || !take_events() || !take_names()) return false;
    resolve();
    net::count_initial_marking(process_);
    net::rebuild_arcs(process_);
    net::sort_adjacency(process_);
    return true;
  }
  std::uint64_t line() const { return lines_.line(); }

 private:
  using Condition = typename P::Condition;
  using Event = typename P::Event;

  // Room for as many records as are announced, but for no more than the file can hold.
  template <class List>
  void reserve(List& list, std::uint32_t count, std::size_t least_record_size) const {
    list.reserve(std::min<std::size_t>(count, lines_.bytes_left() / least_record_size + 1));
  }

  bool take_counts() {
    return lines_.take_number(condition_count_) && lines_.take_number(event_count_) &&
           lines_.take_number(place_count_) && lines_.take_number(transition_count_) &&
           lines_.take_end_of_record();
  }

  bool take_conditions() {
    reserve(process_.conditions, condition_count_, sizeof "1 1 0");
    reserve(place_numbers_, condition_count_, sizeof "1 1 0");
    for (std::uint32_t i = 0; i < condition_count_; ++i) {
      if (!take_condition()) return false;
    }
    return true;
  }

  // condition = place depth marking . Only the first occurrence of a place can be marked.
  bool take_condition() {
    constexpr std::uint32_t highest_depth = std::numeric_limits<std::int32_t>::max();
    std::uint32_t place = 0, depth = 0, marking = 0;
    if (!lines_.take_number(place, 1, place_count_)) return false;
    if (!lines_.take_number(depth, 1, highest_depth)) return false;
    if (!lines_.take_number(marking) || (marking != 0 && depth != 1)) return false;
    Condition& condition = base::append_new(process_.conditions);
    condition.occurrence_depth = static_cast<std::int32_t>(depth);
    condition.initial_marking = marking;
    place_numbers_.push_back(place);
    return lines_.take_end_of_record();
  }

  bool take_events() {
    reserve(process_.events, event_count_, sizeof "1 0 1 0 0");
    reserve(transition_numbers_, event_count_, sizeof "1 0 1 0 0");
    for (std::uint32_t i = 0; i < event_count_; ++i) {
      if (!take_event()) return false;
    }
    return true;
  }

  // event = transition cut-off preset size postset size { condition } { condition } .
  bool take_event() {
    std::uint32_t transition = 0, cut_off = 0, consumed = 0, produced = 0;
    if (!lines_.take_number(transition, 1, transition_count_)) return false;
    if (!lines_.take_number(cut_off, 0, 1) || !lines_.take_number(consumed) || consumed == 0 ||
        !lines_.take_number(produced)) {
      return false;
    }
    if (lines_.bytes_left() / 2 < std::uint64_t{consumed} + produced) return false;
    Event& event = base::append_new(process_.events);
    event.cut_off = cut_off != 0;
    event.preset.reserve(consumed);
    event.postset.reserve(produced);
    transition_numbers_.push_back(transition);
    const auto consume = [&event](Condition& condition) { net::add_link(condition, event); };
    const auto produce = [&event](Condition& condition) { net::add_link(event, condition); };
    return take_links(consumed, consume) && take_links(produced, produce) &&
           lines_.take_end_of_record();
  }

  template <class Enter>
  bool take_links(std::uint32_t count, const Enter& enter) {
    for (std::uint32_t i = 0; i < count; ++i) {
      std::uint32_t condition = 0;
      if (!lines_.take_number(condition) || condition >= condition_count_) return false;
      enter(*process_.conditions[condition]);
    }
    return true;
  }

  bool take_names() {
    std::uint32_t longest = 0;  // no buffer depends on it
    return lines_.take_number(longest) && lines_.take_end_of_record() &&
           take_names(process_.places, place_count_) &&
           take_names(process_.transitions, transition_count_);
  }

  template <class T>
  bool take_names(base::OwnedList<T>& list, std::uint32_t count) {
    reserve(list, count, 1);
    for (std::uint32_t i = 0; i < count; ++i) {
      if (!lines_.take_name(base::append_new(list).name)) return false;
    }
    return true;
  }

  void resolve() {
    assert(place_numbers_.size() == process_.conditions.size());
    assert(transition_numbers_.size() == process_.events.size());
    for (const auto& condition : process_.conditions) {
      condition->place = process_.places[place_numbers_[condition->index] - 1].get();
    }
    for (const auto& event : process_.events) {
      const std::uint32_t number = transition_numbers_[event->index];
      event->transition = process_.transitions[number - 1].get();
    }
  }

  MpLines lines_;
  P& process_;
  std::uint32_t condition_count_ = 0, event_count_ = 0, place_count_ = 0, transition_count_ = 0;
  std::vector<std::uint32_t> place_numbers_;       // by condition
  std::vector<std::uint32_t> transition_numbers_;  // by event
};

template <class P>
std::unique_ptr<P> read_mp(std::istream& stream, const std::string& file_name) {
  warn_of_legacy_format("*.mp");
  const std::string text = base::read_whole_stream(stream);
  auto process = std::make_unique<P>();
  MpParser<P> parser(text, *process);
  if (!parser.run() || stream.bad()) {
    base::print_error("syntax error (file " + file_name + ", line " +
                      std::to_string(parser.line()) + ")");
    return nullptr;
  }
  return process;
}

}  // namespace

std::unique_ptr<net::NetMergedProcess> read_mp_net(std::istream& stream,
                                                   const std::string& file_name) {
  return read_mp<net::NetMergedProcess>(stream, file_name);
}

std::unique_ptr<net::StgMergedProcess> read_mp_stg(std::istream& stream,
                                                   const std::string& file_name) {
  auto process = read_mp<net::StgMergedProcess>(stream, file_name);
  return process != nullptr && net::label_transitions(*process) ? std::move(process) : nullptr;
}

}  // namespace vorel::formats
