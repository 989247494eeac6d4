#include "formats/process_file.h"

#include <fstream>
#include <string>
#include <string_view>

#include "base/messages.h"
#include "formats/mci_reader.h"
#include "formats/mp_reader.h"
#include "formats/net_file.h"
#include "formats/pnml_reader.h"
#include "net/check.h"
#include "net/sanity_checks.h"

namespace vorel::formats {
namespace {

bool is_pnml(std::string_view name) {
  return name.ends_with(".pnml") || name.ends_with(".pnml.gz");
}

std::string_view extension_of(std::string_view name) {
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos ? std::string_view{} : name.substr(dot + 1);
}

void refuse_extension(std::string_view name) {
  const std::string_view hint =
      net_format_of(name) ? "vorel-unfold makes a prefix of such a file" : "";
  base::print_error(base::with_hint(
      std::string("unexpected file extension: \"").append(extension_of(name)).append("\""), hint));
}

// False for directories too, which open well but cannot be read.
bool open_for_input(std::ifstream& stream, const std::string& name) {
  stream.open(name, std::ios::binary);
  if (stream) stream.peek();
  if (stream.bad() || !stream.is_open()) {
    base::print_error(base::cannot_open_for_input(name));
    return false;
  }
  stream.clear();  // an empty file is the business of its reader
  return true;
}

template <class P>
using LegacyReader = std::unique_ptr<P> (*)(std::istream&, const std::string&);

template <class Shape, class P>
std::unique_ptr<Shape> read_legacy(LegacyReader<P> read, const std::string& name) {
  std::ifstream stream;
  if (!open_for_input(stream, name)) return nullptr;
  const std::unique_ptr<P> process = read(stream, name);
  if (process == nullptr || !net::passes_sanity_checks(*process)) return nullptr;
  net::check(*process);
  return std::make_unique<Shape>(std::move(*process));
}

// The legacy formats do not say whether the net is an STG: a shape that takes plain nets reads it
// as one, whatever the names of its transitions look like.
template <class Shape>
std::unique_ptr<Shape> read_mci(const std::string& name) {
  if constexpr (net::shape_accepts<Shape, net::NetPrefix>) {
    return read_legacy<Shape, net::NetPrefix>(read_mci_net, name);
  } else {
    return read_legacy<Shape, net::StgPrefix>(read_mci_stg, name);
  }
}

template <class Shape>
std::unique_ptr<Shape> read_input(const std::string& name) {
  if (is_pnml(name)) return read_pnml<Shape>(name);
  const std::string_view extension = extension_of(name);
  if (extension == "mci") return read_mci<Shape>(name);
  if constexpr (net::shape_accepts<Shape, net::NetMergedProcess>) {
    if (extension == "mp") return read_legacy<Shape, net::NetMergedProcess>(read_mp_net, name);
  }
  refuse_extension(name);
  return nullptr;
}

}  // namespace

std::unique_ptr<net::FullVariant> read_full(const std::string& file_name) {
  return read_input<net::FullVariant>(file_name);
}
std::unique_ptr<net::NoStgMergedVariant> read_no_stg_mp(const std::string& file_name) {
  return read_input<net::NoStgMergedVariant>(file_name);
}
std::unique_ptr<net::StgPrefixVariant> read_stg_prefix(const std::string& file_name) {
  return read_input<net::StgPrefixVariant>(file_name);
}

}  // namespace vorel::formats
