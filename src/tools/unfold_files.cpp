#include "tools/unfold_files.h"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <iostream>
#include <string>

#include "base/messages.h"
#include "formats/g_writer.h"
#include "formats/mp_writer.h"
#include "formats/pnml_writer.h"
#include "tools/enumeration.h"
#include "tools/output_names.h"

namespace vorel::tools {
namespace {

namespace fs = std::filesystem;

using base::fail;

bool settle_input_format(UnfoldRequest& request) {
  request.input_format = input_format(request.format_name, request.input);
  return request.input_format.has_value();
}

// The name without folder, ".gz" and the ending of a format.
std::string stem_of(const std::string& input) {
  fs::path name = fs::path(input).filename();
  if (name.extension() == ".gz") name.replace_extension();
  for (const formats::NetFormatRow& row : formats::net_formats) {
    if (name.native().ends_with(row.ending)) return name.stem().string();
  }
  return name.string();
}

bool settle_output_name(UnfoldRequest& request) {
  if (!request.output.empty()) return true;
  if (request.input == standard_stream) {
    return fail("no output file is given, and the standard input gives it no name");
  }
  request.output = stem_of(request.input) + (request.merge ? ".merged.pnml" : ".unf.pnml");
  return true;
}

// Of two endings that fit, .pnml.gz is not that of the other.
bool settle_output_format(UnfoldRequest& request) {
  if (request.output == standard_stream) return true;
  const auto row = std::ranges::find_if(process_formats, [&request](const ProcessFormatRow& r) {
    return request.output.ends_with(r.ending);
  });
  if (row == process_formats.end()) {
    return fail("the ending of \"" + request.output + "\" tells no format; known are " +
                enumerate(process_formats, &ProcessFormatRow::ending));
  }
  if (request.merge && !row->holds_merged) {
    return fail(std::string(row->ending) + " cannot hold a merged process: \"" + request.output +
                "\" does not go with --merge");
  }
  if (!request.merge && !row->holds_prefix) {
    return fail(std::string(row->ending) + " cannot hold a prefix: \"" + request.output +
                "\" needs --merge");
  }
  request.output_format = row->format;
  return true;
}

bool outputs_can_be_written(const UnfoldRequest& request) {
  const OutputName outputs[] = {{"the output", request.output, true},
                                {"--dot", request.drawing},
                                {"--dot-net", request.net_drawing}};
  const InputName inputs[] = {{"is the input", request.input}};
  return can_be_written(outputs, inputs);
}

}  // namespace

bool settle_files(UnfoldRequest& request) {
  return settle_input_format(request) && settle_output_name(request) &&
         settle_output_format(request) && outputs_can_be_written(request);
}

template <class N>
bool write_prefix(const net::PrefixOf<N>& prefix, const UnfoldRequest& request) {
  assert(!request.output.empty() && !request.merge);
  const std::uint32_t threads = request.options.number_of_threads;
  if (request.output == standard_stream) return formats::write_pnml(prefix, std::cout, threads);
  if (request.output_format == ProcessFormat::mci) return formats::save_mci(prefix, request.output);
  assert(request.output_format == ProcessFormat::pnml);
  return formats::save_pnml(prefix, request.output, threads);
}

template <class N>
bool write_merged(const net::MergedProcessOf<N>& process, const UnfoldRequest& request) {
  assert(!request.output.empty() && request.merge);
  const std::uint32_t threads = request.options.number_of_threads;
  if (request.output == standard_stream) return formats::write_pnml(process, std::cout, threads);
  if (request.output_format == ProcessFormat::mp)
    return formats::save_mp<N>(process, request.output);
  assert(request.output_format == ProcessFormat::pnml);
  return formats::save_pnml(process, request.output, threads);
}

#define INSTANTIATE(N)                                                          \
  template bool write_prefix<N>(const net::PrefixOf<N>&, const UnfoldRequest&); \
  template bool write_merged<N>(const net::MergedProcessOf<N>&, const UnfoldRequest&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::tools
