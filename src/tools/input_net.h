// tools/input_net.h - the net or STG that a companion reads.
// Here:      the format that its name or an option tells, the standard input.
// Not here:  the formats themselves (formats/net_file.h).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "formats/net_file.h"

namespace vorel::tools {

// The name of the standard input and of the standard output.
inline constexpr std::string_view standard_stream = "-";

// By the name of a format, or if that is empty by the file's. nullopt after an error: an ending
// that tells none.
std::optional<formats::NetFormat> input_format(const std::string& format_name,
                                               const std::string& file_name);

// nullopt after an error.
std::optional<formats::AnyNet> read_net(const std::string& file_name, formats::NetFormat format);
// The same of a circuit's environment: nor is a net without signals one.
std::optional<net::Stg> read_stg(const std::string& format_name, const std::string& file_name);

}  // namespace vorel::tools
