// toolkit/verilog_name.h - names of signals and gates as Verilog takes them.
// Here:      which names can stand in Verilog, and how.
// Not here:  expressions (toolkit/logic_expr.h), modules.
#pragma once

#include <string>
#include <string_view>

namespace vorel::toolkit {

// Names of printable ASCII characters without blanks can, and at least one.
bool can_stand_in_verilog(std::string_view name);

// Of any version, SystemVerilog included.
bool is_verilog_keyword(std::string_view word);

// The error about a name that cannot; `what` is of that name, such as "the signal". Gives false,
// for a caller to pass on.
bool report_not_for_verilog(std::string_view what, std::string_view name);

// The name, if it is a plain identifier and no keyword of Verilog or SystemVerilog; else the
// escaped identifier, "\req[0] ", of which the blank is a part. Both stand for the same name.
std::string verilog_name(std::string_view name);

}  // namespace vorel::toolkit
