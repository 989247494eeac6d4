#include "toolkit/verilog_name.h"

#include <algorithm>
#include <cassert>

#include "base/messages.h"
#include "base/source_text.h"

namespace vorel::toolkit {
namespace {

// Of all versions up to 2012: what one of them takes for a keyword is escaped for all.
// clang-format off
constexpr std::string_view keywords[] = {
    "accept_on", "alias", "always", "always_comb", "always_ff", "always_latch", "and", "assert",
    "assign", "assume", "automatic", "before", "begin", "bind", "bins", "binsof", "bit", "break",
    "buf", "bufif0", "bufif1", "byte", "case", "casex", "casez", "cell", "chandle", "checker",
    "class", "clocking", "cmos", "config", "const", "constraint", "context", "continue", "cover",
    "covergroup", "coverpoint", "cross", "deassign", "default", "defparam", "design", "disable",
    "dist", "do", "edge", "else", "end", "endcase", "endchecker", "endclass", "endclocking",
    "endconfig", "endfunction", "endgenerate", "endgroup", "endinterface", "endmodule",
    "endpackage", "endprimitive", "endprogram", "endproperty", "endsequence", "endspecify",
    "endtable", "endtask", "enum", "event", "eventually", "expect", "export", "extends", "extern",
    "final", "first_match", "for", "force", "foreach", "forever", "fork", "forkjoin", "function",
    "generate", "genvar", "global", "highz0", "highz1", "if", "iff", "ifnone", "ignore_bins",
    "illegal_bins", "implements", "implies", "import", "incdir", "include", "initial", "inout",
    "input", "inside", "instance", "int", "integer", "interconnect", "interface", "intersect",
    "join", "join_any", "join_none", "large", "let", "liblist", "library", "local", "localparam",
    "logic", "longint", "macromodule", "matches", "medium", "modport", "module", "nand",
    "negedge", "nettype", "new", "nexttime", "nmos", "nor", "noshowcancelled", "not", "notif0",
    "notif1", "null", "or", "output", "package", "packed", "parameter", "pmos", "posedge",
    "primitive", "priority", "program", "property", "protected", "pull0", "pull1", "pulldown",
    "pullup", "pulsestyle_ondetect", "pulsestyle_onevent", "pure", "rand", "randc", "randcase",
    "randsequence", "rcmos", "real", "realtime", "ref", "reg", "reject_on", "release", "repeat",
    "restrict", "return", "rnmos", "rpmos", "rtran", "rtranif0", "rtranif1", "s_always",
    "s_eventually", "s_nexttime", "s_until", "s_until_with", "scalared", "sequence", "shortint",
    "shortreal", "showcancelled", "signed", "small", "soft", "solve", "specify", "specparam",
    "static", "string", "strong", "strong0", "strong1", "struct", "super", "supply0", "supply1",
    "sync_accept_on", "sync_reject_on", "table", "tagged", "task", "this", "throughout", "time",
    "timeprecision", "timeunit", "tran", "tranif0", "tranif1", "tri", "tri0", "tri1", "triand",
    "trior", "trireg", "type", "typedef", "union", "unique", "unique0", "unsigned", "until",
    "until_with", "untyped", "use", "uwire", "var", "vectored", "virtual", "void", "wait",
    "wait_order", "wand", "weak", "weak0", "weak1", "while", "wildcard", "wire", "with", "within",
    "wor", "xnor", "xor",
};
// clang-format on
static_assert(std::ranges::is_sorted(keywords));

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

bool is_plain(std::string_view name) {
  return is_letter(name.front()) &&
         std::ranges::all_of(name, [](char c) { return is_letter(c) || is_digit(c) || c == '$'; });
}

}  // namespace

bool can_stand_in_verilog(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) { return c > ' ' && c <= '~'; });
}

bool is_verilog_keyword(std::string_view word) {
  return std::ranges::binary_search(keywords, word);
}

bool report_not_for_verilog(std::string_view what, std::string_view name) {
  base::print_error(std::string(what) + ' ' + base::quoted(name) +
                    " cannot stand in Verilog, which takes names of printable ASCII characters "
                    "without blanks");
  return false;
}

std::string verilog_name(std::string_view name) {
  assert(can_stand_in_verilog(name));
  if (is_plain(name) && !is_verilog_keyword(name)) return std::string(name);
  return "\\" + std::string(name) + ' ';
}

}  // namespace vorel::toolkit
