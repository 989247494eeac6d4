// verify/verilog_parser.h - structural Verilog.
// Here:      which module is taken, its ports, declarations, assignments and instances.
// Not here:  expressions (verify/verilog_expression.h), what the names of gates mean
//            (verify/netlist_gates.h), whether all makes a circuit (verify/circuit_builder.h).
//
//   module      = "module" name [ "(" [ ports ] ")" ] ";" { statement } "endmodule" .
//   ports       = name { "," name } | port { "," port } .
//   port        = [ ( "input" | "output" ) [ "wire" ] ] name .
//   statement   = ( "input" | "output" ) [ "wire" ] name { "," name } ";"
//               | "wire" name [ "=" expression ] { "," name [ "=" expression ] } ";"
//               | "assign" [ delay ] name "=" expression { "," name "=" expression } ";"
//               | gate [ delay ] instance { "," instance } ";"
//               | "initial" "begin" [ ":" name ] { initial } "end" .
//   instance    = [ name ] "(" [ connection { "," connection } ] ")" .
//   connection  = [ operand ] | "." name "(" [ operand ] ")" .
//   initial     = "force" name "=" constant ";" | "release" name ";"
//               | "wait" "(" ... ")" ";" | delay ";" .
//   delay       = "#" ( number | name | "(" ... ")" ) .
//
// A gate is a name or one of: and, nand, or, nor, xor, xnor, buf, not. Delays are skipped: a gate
// takes any time. Other modules of the file are not looked into.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/source_text.h"
#include "verify/verilog_module.h"

namespace vorel::verify {

// The module with this name; without a name the only one that is not called as a gate is, or the
// only one at all. nullopt after an error, which names file and line. The module refers to the
// text.
std::optional<VerilogModule> parse_verilog(const base::SourceText& source, const std::string& top,
                                           const std::function<bool(std::string_view)>& is_gate);

}  // namespace vorel::verify
