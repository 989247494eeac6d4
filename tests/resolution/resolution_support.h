// tests/resolution/resolution_support.h - prefixes to try transformations on.
#pragma once

#include <string>
#include <utility>

#include "oracle/parse_g.h"
#include "oracle/reference_unfolder.h"
#include "support/process_builder.h"

namespace vorel::resolution_support {

inline net::StgPrefix unfold_example(const std::string& name) {
  const auto text = oracle::read_file(VOREL_EXAMPLES "/" + name + ".g");
  return std::move(*oracle::unfold(*oracle::parse_g(text.value())));
}

inline const net::StgTransition& transition_of(const net::StgPrefix& prefix,
                                               const std::string& name) {
  return **std::ranges::find(prefix.transitions, name, [](const auto& t) { return t->name; });
}

}  // namespace vorel::resolution_support
