// net/transition_label.h - the signal information that legacy formats keep in transition names.
// Here:      splitting a name, [prefix.]identifier[+|-][/number]; labelling a net; the prefixes.
// Not here:  the formats themselves (formats/mci_reader.h, formats/mp_reader.h,
//            formats/mci_writer.h).
#pragma once

#include <string_view>

#include "net/net.h"

namespace vorel::net {

// The parts of a name; the texts point into it.
struct TransitionLabel {
  SignalKind kind = SignalKind::dummy;  // a name without prefix is that of a dummy
  std::string_view name;                // without the prefix, but with sign and instance number
  std::string_view signal;              // empty for a name like "O.", which is no fault
  Sign sign = Sign::toggle;             // as written, whatever the kind
  bool starts_with_sign = false;        // "+", "-", "~" or "/" where the signal should be
};
TransitionLabel split_transition_name(std::string_view name);

// "i.", "O.", "I." or "d.".
std::string_view kind_prefix(SignalKind kind);
// The name without the prefix of a kind, if it has one.
std::string_view without_kind_prefix(std::string_view name);

// Labels all transitions by their names, which lose their prefixes, and adds and sorts the signals.
// The net itself is left to be sorted by the new names. False after an error.
bool label_transitions(Stg& stg);

}  // namespace vorel::net
