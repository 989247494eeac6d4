#include "tools/input_net.h"

#include <algorithm>
#include <cassert>
#include <iostream>
#include <utility>
#include <variant>

#include "base/input_text.h"
#include "base/messages.h"
#include "tools/enumeration.h"

namespace vorel::tools {

std::optional<formats::NetFormat> input_format(const std::string& format_name,
                                               const std::string& file_name) {
  if (!format_name.empty()) {
    const auto row =
        std::ranges::find(formats::net_formats, format_name, &formats::NetFormatRow::name);
    assert(row != formats::net_formats.end() && "the option takes no other");
    return row->format;
  }
  if (file_name == standard_stream) {
    base::print_error("the standard input needs --format, one of " +
                      enumerate(formats::net_formats, &formats::NetFormatRow::name));
    return std::nullopt;
  }
  const auto format = formats::net_format_of(file_name);
  if (!format) {
    base::print_error("the ending of \"" + file_name + "\" tells no format; known are " +
                      enumerate(formats::net_formats, &formats::NetFormatRow::ending) +
                      ", each also with .gz behind, and --format tells the format of other names");
  }
  return format;
}

std::optional<formats::AnyNet> read_net(const std::string& file_name, formats::NetFormat format) {
  if (file_name != standard_stream) return formats::read_net_file(file_name, format);
  const std::string text = base::read_whole_stream(std::cin);
  if (std::cin.bad()) {
    base::print_error("cannot read the standard input");
    return std::nullopt;
  }
  return formats::read_net_text(text, format, "standard input");
}

std::optional<net::Stg> read_stg(const std::string& format_name, const std::string& file_name) {
  const auto format = input_format(format_name, file_name);
  if (!format) return std::nullopt;
  auto net = read_net(file_name, *format);
  if (!net) return std::nullopt;
  if (auto* const stg = std::get_if<net::Stg>(&*net)) return std::move(*stg);
  base::print_error("\"" + file_name + "\" has no signals, so it is no STG");
  return std::nullopt;
}

}  // namespace vorel::tools
