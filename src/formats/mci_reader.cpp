#include "formats/mci_reader.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <string_view>

#include "base/input_text.h"
#include "base/messages.h"
#include "formats/legacy_format.h"
#include "formats/mci_layout.h"
#include "net/initial_values.h"
#include "net/transition_label.h"

namespace vorel::formats {
namespace {

// The least size of a file with these counts; one of the wrong byte order claims far more. Bytes
// that end within the counts are left to be found truncated.
bool is_long_enough(std::string_view bytes) {
  MciWords words(bytes);
  const std::uint64_t conditions = words.next();
  const std::uint64_t events = words.next();
  return words.failed() || bytes.size() >= 4 * events + 12 * conditions + 30;
}

template <class P>
class PrefixBuilder {
 public:
  explicit PrefixBuilder(const MciLayout& layout)
      : layout_{layout}, prefix_{std::make_unique<P>()} {}

  std::unique_ptr<P> run() {
    add_named(prefix_->places, layout_.place_names);
    add_named(prefix_->transitions, layout_.transition_names);
    add_events();
    add_conditions();
    set_cut_offs();
    net::rebuild_arcs(*prefix_);
    net::sort_net(*prefix_);
    net::count_initial_marking(*prefix_);
    assert(prefix_->events.size() == layout_.event_count);
    assert(prefix_->conditions.size() == layout_.condition_count);
    return std::move(prefix_);
  }

 private:
  using Event = typename P::Event;
  using Condition = typename P::Condition;

  template <class T>
  static void add_named(base::OwnedList<T>& list, const std::vector<std::string_view>& names) {
    list.reserve(names.size());
    for (const std::string_view name : names) base::append_new(list).name = name;
  }

  void add_events() {
    MciWords words(layout_.events);
    prefix_->events.reserve(layout_.event_count);
    for (std::uint32_t i = 0; i < layout_.event_count; ++i) {
      Event& event = base::append_new(prefix_->events);
      event.transition = prefix_->transitions[words.next() - 1].get();
      event.preset.reserve(layout_.consumed[i]);
      event.postset.reserve(layout_.produced[i]);
    }
  }

  // As the conditions come by index, the presets and postsets of the events end up sorted.
  void add_conditions() {
    MciWords words(layout_.conditions);
    prefix_->conditions.reserve(layout_.condition_count);
    for (std::uint32_t i = 0; i < layout_.condition_count; ++i) {
      Condition& condition = base::append_new(prefix_->conditions);
      condition.place = prefix_->places[words.next() - 1].get();
      if (const std::uint32_t producer = words.next()) {
        [[maybe_unused]] const bool is_only_producer = net::add_link(event(producer), condition);
        assert(is_only_producer);
      }
      condition.postset.reserve(words.run_length());
      while (const std::uint32_t consumer = words.next()) net::add_link(condition, event(consumer));
      net::sort_by_index(condition.postset);
    }
    assert(std::ranges::all_of(prefix_->events, [this](const auto& event) {
      return event->preset.size() == layout_.consumed[event->index] &&
             event->postset.size() == layout_.produced[event->index];
    }));
  }

  void set_cut_offs() {
    MciWords words(layout_.cut_offs);
    while (const std::uint32_t number = words.next()) {
      auto& cut_off = event(number).cut_off;
      const std::uint32_t correspondent = words.next();
      if (correspondent == mci_unknown_correspondent) {
        cut_off.set_unknown();
      } else if (correspondent == 0) {
        cut_off.set_correspondents({});
      } else {
        cut_off.set_correspondents(std::array{&event(correspondent)});
      }
    }
  }

  Event& event(std::uint32_t number) const {
    assert(0 < number && number <= prefix_->events.size());
    return *prefix_->events[number - 1];
  }

  const MciLayout& layout_;
  std::unique_ptr<P> prefix_;
};

template <class P>
std::unique_ptr<P> read_mci(std::istream& stream, const std::string& file_name) {
  warn_of_legacy_format("*.mci");
  const std::string bytes = base::read_whole_stream(stream);
  const bool is_whole = !stream.bad();
  if (is_whole && !is_long_enough(bytes)) {
    base::print_error("\"" + file_name + "\" is not in the *.mci format (or not little-endian)");
    return nullptr;
  }
  MciLayout layout;
  if (!is_whole || !find_mci_layout(bytes, layout)) {
    base::print_error("incorrect syntax of " + file_name);
    return nullptr;
  }
  return PrefixBuilder<P>(layout).run();
}

}  // namespace

std::unique_ptr<net::NetPrefix> read_mci_net(std::istream& stream, const std::string& file_name) {
  return read_mci<net::NetPrefix>(stream, file_name);
}

std::unique_ptr<net::StgPrefix> read_mci_stg(std::istream& stream, const std::string& file_name) {
  auto prefix = read_mci<net::StgPrefix>(stream, file_name);
  if (prefix == nullptr || !net::label_transitions(*prefix)) return nullptr;
  net::sort_net(*prefix);
  return net::find_initial_values(*prefix) ? std::move(prefix) : nullptr;
}

}  // namespace vorel::formats
