// reachlang/builtin_sets.h - the sets that every property can name.
// Here:      their names and types, in the order of their bindings.
// Not here:  their values (reachlang/evaluator.h).
#pragma once

#include <cstdint>
#include <string_view>

#include "reachlang/reach_type.h"

namespace vorel::reachlang {

enum class BuiltinSet : std::uint8_t {
  conditions,
  events,
  cutoffs,
  places,
  transitions,
  signals,
  inputs,
  outputs,
  internal,
  dummy,
  local,
};

struct BuiltinSetRow {
  BuiltinSet set;
  std::string_view name;
  BaseType element;
};

// The position of a row is the number of its binding in the outermost frame of the environment.
inline constexpr BuiltinSetRow builtin_sets[] = {
    {BuiltinSet::conditions, "CONDITIONS", BaseType::condition},
    {BuiltinSet::events, "EVENTS", BaseType::event},
    {BuiltinSet::cutoffs, "CUTOFFS", BaseType::event},
    {BuiltinSet::places, "PLACES", BaseType::place},
    {BuiltinSet::transitions, "TRANSITIONS", BaseType::transition},
    {BuiltinSet::signals, "SIGNALS", BaseType::signal},
    {BuiltinSet::inputs, "INPUTS", BaseType::signal},
    {BuiltinSet::outputs, "OUTPUTS", BaseType::signal},
    {BuiltinSet::internal, "INTERNAL", BaseType::signal},
    {BuiltinSet::dummy, "DUMMY", BaseType::signal},
    {BuiltinSet::local, "LOCAL", BaseType::signal},
};

}  // namespace vorel::reachlang
