#include "tools/unfold_files.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <filesystem>
#include <iostream>
#include <string>

#include "base/input_text.h"
#include "base/messages.h"
#include "formats/g_writer.h"
#include "formats/mp_writer.h"
#include "formats/overwriting.h"
#include "formats/pnml_writer.h"

namespace vorel::tools {
namespace {

namespace fs = std::filesystem;

bool fail(const std::string& text) {
  base::print_error(text);
  return false;
}

// "a, b and c" of the field of each row.
template <class Table, class Field>
std::string enumerate(const Table& table, Field field) {
  std::string names;
  for (std::size_t i = 0; i < table.size(); ++i) {
    if (i > 0) names += i + 1 == table.size() ? " and " : ", ";
    names += table[i].*field;
  }
  return names;
}

bool settle_input_format(UnfoldRequest& request) {
  if (request.input_format) return true;
  if (request.input == standard_stream) {
    return fail("the standard input needs --format, one of " +
                enumerate(formats::net_formats, &formats::NetFormatRow::name));
  }
  request.input_format = formats::net_format_of(request.input);
  if (request.input_format) return true;
  return fail("the ending of \"" + request.input + "\" tells no format; known are " +
              enumerate(formats::net_formats, &formats::NetFormatRow::ending) +
              ", each also with .gz behind, and --format tells the format of other names");
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

// Whether it looks so beforehand; whether it is so is seen when the file is written.
bool is_writable(const std::string& name) {
  std::error_code unknown;
  if (fs::exists(name, unknown)) {
    return !fs::is_directory(name, unknown) && ::access(name.c_str(), W_OK) == 0;
  }
  const fs::path folder = fs::path(name).parent_path();
  return fs::path(name).has_filename() &&
         ::access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

struct WrittenFile {
  std::string_view what;
  const std::string& name;
};

bool is_writable_output(const WrittenFile& file, const UnfoldRequest& request) {
  const auto& [what, name] = file;
  if (name.empty()) return true;
  if (name == standard_stream) {
    return &name == &request.output || fail(std::string(what) + " needs the name of a file");
  }
  if (!formats::spares_input(name, request.input, "is the input")) return false;
  if (&name != &request.output && !formats::spares_nets(name)) return false;
  return is_writable(name) || fail(base::cannot_open_for_output(name));
}

bool outputs_are_writable(const UnfoldRequest& request) {
  const WrittenFile files[] = {{"the output", request.output},
                               {"--dot", request.drawing},
                               {"--dot-net", request.net_drawing}};
  for (const WrittenFile& file : files) {
    if (!is_writable_output(file, request)) return false;
    for (const WrittenFile* before = files; before != &file; ++before) {
      if (file.name.empty() || !formats::is_same_file(file.name, before->name)) continue;
      return fail(std::string(file.what).append(" and ").append(before->what) +
                  " are the same file \"" + before->name + '"');
    }
  }
  return true;
}

}  // namespace

bool settle_files(UnfoldRequest& request) {
  return settle_input_format(request) && settle_output_name(request) &&
         settle_output_format(request) && outputs_are_writable(request);
}

std::optional<formats::AnyNet> read_net(const UnfoldRequest& request) {
  assert(request.input_format);
  if (request.input != standard_stream)
    return formats::read_net_file(request.input, *request.input_format);
  const std::string text = base::read_whole_stream(std::cin);
  if (std::cin.bad()) {
    base::print_error("cannot read the standard input");
    return std::nullopt;
  }
  return formats::read_net_text(text, *request.input_format, "standard input");
}

template <class N>
bool write_prefix(const net::PrefixOf<N>& prefix, const UnfoldRequest& request) {
  assert(!request.output.empty() && !request.merge);
  if (request.output == standard_stream) return formats::write_pnml(prefix, std::cout);
  if (request.output_format == ProcessFormat::mci) return formats::save_mci(prefix, request.output);
  assert(request.output_format == ProcessFormat::pnml);
  return formats::save_pnml(prefix, request.output);
}

template <class N>
bool write_merged(const net::MergedProcessOf<N>& process, const UnfoldRequest& request) {
  assert(!request.output.empty() && request.merge);
  if (request.output == standard_stream) return formats::write_pnml(process, std::cout);
  if (request.output_format == ProcessFormat::mp)
    return formats::save_mp<N>(process, request.output);
  assert(request.output_format == ProcessFormat::pnml);
  return formats::save_pnml(process, request.output);
}

#define INSTANTIATE(N)                                                          \
  template bool write_prefix<N>(const net::PrefixOf<N>&, const UnfoldRequest&); \
  template bool write_merged<N>(const net::MergedProcessOf<N>&, const UnfoldRequest&);
INSTANTIATE(net::Net)
INSTANTIATE(net::Stg)
#undef INSTANTIATE

}  // namespace vorel::tools
