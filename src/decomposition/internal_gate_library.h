// decomposition/internal_gate_library.h - the gate library of a run that names none.
// Here:      its text, in the format of toolkit/genlib_reader.h.
// Not here:  what is made of it (decomposition/gate_library.h).
#pragma once

#include <string_view>

namespace vorel::decomposition {

inline constexpr std::string_view internal_gate_library_name = "internal_gate_library";
extern const std::string_view internal_gate_library_text;

}  // namespace vorel::decomposition
