// oracle/random_property.h - random properties of one state, each with its meaning.
// Here:      a generator of well-typed properties with all operators of the language.
// Not here:  the states that they are asked of (oracle/property_model.h).
// Text and meaning of an expression are made side by side, operator by operator; nothing here reads
// the text, and nothing is simplified.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "oracle/property_model.h"

namespace vorel::oracle {

struct RandomPropertyParams {
  int depth = 6;                 // of nested operators
  bool tells_instances = false;  // $ and @ are also asked of conditions and events
};

struct RandomProperty {
  std::string text;
  std::function<bool(const PropertyState&)> holds;
};

// Evaluating it raises no error. Keeps a reference to the model.
RandomProperty random_property(std::uint64_t seed, const ProcessModel& model,
                               const RandomPropertyParams& params = {});

}  // namespace vorel::oracle
