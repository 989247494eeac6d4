// formats/net_file.h - nets and STGs from files of any form.
// Here:      the forms and their names, reading a file or a text of one of them.
// Not here:  the forms themselves (formats/g_reader.h, formats/ll_net_reader.h,
//            formats/pnml_net_reader.h); what the net has to be like for an algorithm.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "net/net.h"

namespace vorel::formats {

// A file with signals gives an STG.
using AnyNet = std::variant<net::Net, net::Stg>;

enum class NetFormat { g, ll_net, pnml };

struct NetFormatRow {
  NetFormat format;
  std::string_view name;    // for the user
  std::string_view ending;  // of the names of files, which ".gz" may follow
};
inline constexpr std::array<NetFormatRow, 3> net_formats = {{
    {NetFormat::g, "g", ".g"},
    {NetFormat::ll_net, "ll_net", ".ll_net"},
    {NetFormat::pnml, "pnml", ".pnml"},
}};

// By the ending of the file's name; nullopt if it has none of the table.
std::optional<NetFormat> net_format_of(std::string_view file_name);

// Sorted and numbered as after any loading; each place has at most one token. nullopt after an
// error. A name that ends with ".gz" is that of a compressed file.
std::optional<AnyNet> read_net_file(const std::string& file_name, NetFormat format);
// `shown_name` is what messages call the text.
std::optional<AnyNet> read_net_text(std::string_view text, NetFormat format,
                                    const std::string& shown_name);

}  // namespace vorel::formats
