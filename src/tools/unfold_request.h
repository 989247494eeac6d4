// tools/unfold_request.h - what a run of vorel-unfold is asked to do.
// Here:      the request as plain data, the formats of what is written.
// Not here:  where it comes from (tools/unfold_arguments.h, tools/unfold_files.h).
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "tools/input_net.h"
#include "unfolder/unfold_options.h"

namespace vorel::tools {

enum class ProcessFormat { pnml, mci, mp };

struct ProcessFormatRow {
  ProcessFormat format;
  std::string_view ending;  // of the name of the file
  bool holds_prefix, holds_merged;
};
inline constexpr std::array<ProcessFormatRow, 4> process_formats = {{
    {ProcessFormat::pnml, ".pnml", true, true},
    {ProcessFormat::pnml, ".pnml.gz", true, true},
    {ProcessFormat::mci, ".mci", true, false},
    {ProcessFormat::mp, ".mp", false, true},
}};

struct UnfoldRequest {
  std::string input;
  std::string output;                              // empty: named after the input
  std::string drawing;                             // of the prefix; empty: none
  std::string net_drawing;                         // empty: none
  std::string format_name;                         // of the input; empty: told by its name
  std::optional<formats::NetFormat> input_format;  // settled from both
  ProcessFormat output_format = ProcessFormat::pnml;
  bool merge = false;
  bool stats = false;
  bool progress = true;  // where the standard error stream is a terminal
  bool quiet = false;
  unfolder::UnfoldOptions options;
};

}  // namespace vorel::tools
