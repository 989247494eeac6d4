#include "net/transition_label.h"

#include <array>
#include <cassert>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "base/messages.h"

namespace vorel::net {
namespace {

constexpr std::array<std::string_view, signal_kind_count> kind_prefixes = {"i.", "O.", "I.", "d."};
static_assert(kind_prefixes[static_cast<std::size_t>(SignalKind::dummy)] == "d.");

class Labelling {
 public:
  explicit Labelling(Stg& stg) : stg_{stg} { names_.reserve(stg.transitions.size()); }

  bool label(StgTransition& transition) {
    const TransitionLabel parts = split_transition_name(transition.name);
    // The names are only ever shortened, in place, so that views of them stay valid.
    const std::size_t prefix_size = transition.name.size() - parts.name.size();
    const std::size_t signal_size = parts.signal.size();
    assert(transition.signal == nullptr && signal_size <= parts.name.size());
    transition.name.erase(0, prefix_size);
    const std::string_view name = transition.name;

    if (!names_.insert(name).second) {
      return fail("removing prefix from a transition name causes a collision: ", name);
    }
    if (parts.starts_with_sign) return fail("transition has empty signal name: ", name);
    set_sign(transition, parts);
    Signal& signal = signal_named(name.substr(0, signal_size), parts.kind);
    if (signal.kind != parts.kind) {
      return fail("signal ", name, " is declared with multiple type modifiers");
    }
    transition.signal = &signal;
    return true;
  }

 private:
  static bool fail(std::string_view before, std::string_view name, std::string_view after = "") {
    base::print_error(std::string(before).append(name).append(after));
    return false;
  }

  static void set_sign(StgTransition& transition, const TransitionLabel& parts) {
    if (parts.sign != Sign::toggle && parts.kind == SignalKind::dummy) {
      base::print_warning("dummy transition " + transition.name + " cannot have sign");
    } else {
      transition.sign = parts.sign;
    }
  }

  Signal& signal_named(std::string_view name, SignalKind kind) {
    const auto known = signals_.find(name);
    if (known != signals_.end()) return *known->second;
    Signal& signal = add_signal(stg_, std::string(name), kind);
    signals_.emplace(signal.name, &signal);
    return signal;
  }

  Stg& stg_;
  std::unordered_set<std::string_view> names_;             // without prefixes
  std::unordered_map<std::string_view, Signal*> signals_;  // by their own names
};

}  // namespace

TransitionLabel split_transition_name(std::string_view name) {
  TransitionLabel label;
  label.name = name;
  for (std::size_t kind = 0; kind < kind_prefixes.size(); ++kind) {
    if (!name.starts_with(kind_prefixes[kind])) continue;
    label.kind = static_cast<SignalKind>(kind);
    label.name.remove_prefix(kind_prefixes[kind].size());
  }
  const std::size_t end = label.name.find_first_of("+-~/");
  label.signal = label.name.substr(0, end);
  label.starts_with_sign = end == 0;
  if (end == std::string_view::npos) return label;
  if (label.name[end] == '+') label.sign = Sign::plus;
  if (label.name[end] == '-') label.sign = Sign::minus;
  return label;
}

std::string_view kind_prefix(SignalKind kind) {
  assert(static_cast<std::size_t>(kind) < kind_prefixes.size());
  return kind_prefixes[static_cast<std::size_t>(kind)];
}

std::string_view without_kind_prefix(std::string_view name) {
  return split_transition_name(name).name;
}

bool label_transitions(Stg& stg) {
  assert(stg.signals.empty() && "only names tell the signals of a legacy file");
  Labelling labelling(stg);
  for (const auto& transition : stg.transitions) {
    if (!labelling.label(*transition)) return false;
  }
  sort_signals(stg);
  assert(stg.signals.size() <= stg.transitions.size());
  return true;
}

}  // namespace vorel::net
