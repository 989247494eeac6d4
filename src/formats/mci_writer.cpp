#include "formats/mci_writer.h"

#include <algorithm>
#include <cassert>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "base/messages.h"
#include "formats/legacy_format.h"
#include "formats/mci_layout.h"
#include "net/transition_label.h"

namespace vorel::formats {
namespace {

// The transitions as the file has them.
struct TransitionTable {
  std::vector<std::string> names;      // in the order of the file
  std::vector<std::uint32_t> numbers;  // by index of the transition, 1-based
};

template <class N>
TransitionTable table_in_memory_order(const N& net) {
  TransitionTable table;
  table.names.reserve(net.transitions.size());
  for (const auto& transition : net.transitions) table.names.push_back(transition->name);
  table.numbers.resize(table.names.size());
  std::iota(table.numbers.begin(), table.numbers.end(), 1u);
  return table;
}

TransitionTable table_with_kinds(const net::Stg& stg) {
  std::vector<std::string> names;
  names.reserve(stg.transitions.size());
  for (const auto& transition : stg.transitions) {
    names.push_back(std::string(net::kind_prefix(transition->signal->kind)) + transition->name);
  }
  std::vector<std::uint32_t> order(names.size());
  std::iota(order.begin(), order.end(), 0u);
  std::ranges::stable_sort(order, [&names](std::uint32_t a, std::uint32_t b) {
    return net::name_less(names[a], names[b]);
  });
  TransitionTable table;
  table.numbers.resize(names.size());
  for (const std::uint32_t index : order) {
    table.names.push_back(std::move(names[index]));
    table.numbers[index] = static_cast<std::uint32_t>(table.names.size());
  }
  return table;
}

template <class N>
class MciText {
 public:
  MciText(const net::PrefixOf<N>& prefix, const TransitionTable& transitions)
      : prefix_{prefix}, transitions_{transitions} {}

  std::string run() {
    assert(transitions_.names.size() == prefix_.transitions.size());
    assert(transitions_.numbers.size() == prefix_.transitions.size());
    add_number(prefix_.conditions.size());
    add_number(prefix_.events.size());
    for (const auto& event : prefix_.events) {
      add_number(transitions_.numbers[event->transition->index]);
    }
    for (const auto& condition : prefix_.conditions) add_condition(*condition);
    for (const auto& event : prefix_.events) {
      if (event->is_cut_off()) add_cut_off(*event);
    }
    add_number(0);
    add_number(0);
    add_names();
    return std::move(bytes_);
  }

 private:
  using Event = net::EventOf<N>;

  void add_number(std::size_t number) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes_.push_back(static_cast<char>(static_cast<unsigned char>(number >> shift)));
    }
  }

  void add_condition(const net::ConditionOf<N>& condition) {
    assert(condition.index != base::no_index && condition.place != nullptr);
    add_number(condition.place->index + 1);
    add_number(condition.is_initial() ? 0 : condition.pre_event->index + 1);
    for (const Event* consumer : condition.postset) add_number(consumer->index + 1);
    add_number(0);
  }

  void add_cut_off(const Event& event) {
    assert(event.is_cut_off());
    add_number(event.index + 1);
    if (event.cut_off.is_unknown() || event.cut_off.correspondents().size() > 1) {
      add_number(mci_unknown_correspondent);
    } else if (event.cut_off.is_initial_marking()) {
      add_number(0);
    } else {
      add_number(event.cut_off.correspondents().front()->index + 1);
    }
  }

  void add_names() {
    std::size_t longest = 0;
    for (const auto& place : prefix_.places) longest = std::max(longest, place->name.size());
    for (const auto& name : transitions_.names) longest = std::max(longest, name.size());
    add_number(prefix_.places.size());
    add_number(transitions_.names.size());
    add_number(longest);
    for (const auto& place : prefix_.places) add_name(place->name);
    add_name("");
    for (const auto& name : transitions_.names) add_name(name);
    add_name("");
  }

  void add_name(std::string_view name) { bytes_.append(name).push_back('\0'); }

  const net::PrefixOf<N>& prefix_;
  const TransitionTable& transitions_;
  std::string bytes_;
};

// A zero byte would end a name early, and all that follows would be misread.
template <class N>
bool names_fit_the_format(const net::PrefixOf<N>& prefix) {
  const auto fits = [](const auto& node) { return node->name.find('\0') == std::string::npos; };
  return std::ranges::all_of(prefix.places, fits) && std::ranges::all_of(prefix.transitions, fits);
}

template <class N>
bool write(const net::PrefixOf<N>& prefix, const TransitionTable& transitions,
           std::ostream& stream) {
  warn_of_legacy_format("*.mci");
  if (names_fit_the_format(prefix)) {
    const std::string bytes = MciText<N>(prefix, transitions).run();
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.flush();
    if (stream) return true;
  }
  base::print_error("cannot write a file");
  return false;
}

}  // namespace

template <class N>
bool write_mci(const net::PrefixOf<N>& prefix, std::ostream& stream) {
  return write(prefix, table_in_memory_order<N>(prefix), stream);
}
template bool write_mci<net::Net>(const net::NetPrefix&, std::ostream&);
template bool write_mci<net::Stg>(const net::StgPrefix&, std::ostream&);

bool write_stg_mci(const net::StgPrefix& prefix, std::ostream& stream) {
  return write(prefix, table_with_kinds(prefix), stream);
}

}  // namespace vorel::formats
