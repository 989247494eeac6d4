#include "tools/verify_waves.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "base/text_sink.h"

namespace vorel::tools {
namespace {

constexpr char first_code = '!', last_code = '~';

// The short name of a wire within the file.
std::string code_of(std::size_t wire) {
  constexpr std::size_t base = last_code - first_code + 1;
  std::string code;
  do {
    code += static_cast<char>(first_code + static_cast<char>(wire % base));
    wire /= base;
  } while (wire > 0);
  return code;
}

// A word that begins with "$" could end a declaration, and a name that has no characters none.
std::string shown_name(const std::string& name) {
  return name.empty() || name.front() == '$' ? '\\' + name : name;
}

// The format is one of words: what divides them cannot be part of one.
std::string in_one_line(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  std::ranges::replace(text, '$', '_');
  return text;
}

}  // namespace

bool write_waves(const verify::Circuit& circuit, const verify::Finding& finding,
                 std::ostream& stream) {
  base::TextSink sink(stream);
  sink << "$comment " << in_one_line(finding.message) << " $end\n"
       << "$version vorel-verify " VOREL_VERSION " $end\n"
       << "$timescale 1 ns $end\n$scope module circuit $end\n";
  for (std::size_t w = 0; w < circuit.wires.size(); ++w)
    sink << "$var wire 1 " << code_of(w) << ' ' << shown_name(circuit.wires[w].name) << " $end\n";
  sink << "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n";
  for (std::size_t w = 0; w < circuit.wires.size(); ++w)
    sink << (circuit.wires[w].initial_value ? '1' : '0') << code_of(w) << '\n';
  sink << "$end\n";
  std::size_t time = 0;
  for (const verify::TraceEdge& edge : finding.trace)
    sink << '#' << ++time << '\n' << (edge.rises ? '1' : '0') << code_of(edge.wire.value) << '\n';
  // The last edge shall be seen, too.
  sink << '#' << ++time << '\n';
  return sink.finish();
}

}  // namespace vorel::tools
