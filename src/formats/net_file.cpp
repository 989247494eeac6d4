#include "formats/net_file.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "base/input_text.h"
#include "formats/g_reader.h"
#include "formats/ll_net_reader.h"
#include "formats/pnml_net_reader.h"
#include "net/check.h"

namespace vorel::formats {
namespace {

template <class N>
std::optional<AnyNet> as_any(std::optional<N> net) {
  if (!net) return std::nullopt;
  net::check(*net);
  assert(std::ranges::all_of(net->places, [](const auto& p) { return p->initial_marking <= 1; }));
  return AnyNet(std::move(*net));
}

}  // namespace

std::optional<NetFormat> net_format_of(std::string_view file_name) {
  constexpr std::string_view compressed = ".gz";
  if (file_name.ends_with(compressed)) file_name.remove_suffix(compressed.size());
  for (const NetFormatRow& row : net_formats) {
    if (file_name.ends_with(row.ending)) return row.format;
  }
  return std::nullopt;
}

std::optional<AnyNet> read_net_file(const std::string& file_name, NetFormat format) {
  std::string text;
  if (!base::read_whole_file(file_name, text)) return std::nullopt;
  return read_net_text(text, format, file_name);
}

std::optional<AnyNet> read_net_text(std::string_view text, NetFormat format,
                                    const std::string& shown_name) {
  switch (format) {
    case NetFormat::g:
      return as_any(read_g_text(text, shown_name));
    case NetFormat::ll_net:
      return as_any(read_ll_net_text(text, shown_name));
    case NetFormat::pnml:
      return as_any(read_pnml_net_text(text, shown_name));
  }
  return std::nullopt;
}

}  // namespace vorel::formats
