#include "formats/vcd_writer.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "base/text_sink.h"

namespace vorel::formats {
namespace {

constexpr char first_code = '!', last_code = '~';

// The short name of a row within the file.
std::string code_of(std::size_t row) {
  constexpr std::size_t base = last_code - first_code + 1;
  std::string code;
  do {
    code += static_cast<char>(first_code + static_cast<char>(row % base));
    row /= base;
  } while (row > 0);
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

char digit(bool value) { return value ? '1' : '0'; }

}  // namespace

bool write_vcd(const Waveform& waveform, std::string_view program, std::ostream& stream) {
  base::TextSink sink(stream);
  sink << "$comment " << in_one_line(waveform.title) << " $end\n"
       << "$version " << program << " $end\n"
       << "$timescale 1 ns $end\n$scope module circuit $end\n";
  for (std::size_t r = 0; r < waveform.rows.size(); ++r)
    sink << "$var wire 1 " << code_of(r) << ' ' << shown_name(waveform.rows[r].name) << " $end\n";
  sink << "$upscope $end\n$enddefinitions $end\n#0\n$dumpvars\n";
  for (std::size_t r = 0; r < waveform.rows.size(); ++r)
    sink << digit(waveform.rows[r].initial_value) << code_of(r) << '\n';
  sink << "$end\n";
  std::size_t time = 0;
  for (const WaveStep& step : waveform.steps) {
    sink << '#' << ++time << '\n';
    if (step.row) sink << digit(step.value) << code_of(*step.row) << '\n';
  }
  // The last step shall be seen, too.
  sink << '#' << ++time << '\n';
  return sink.finish();
}

}  // namespace vorel::formats
