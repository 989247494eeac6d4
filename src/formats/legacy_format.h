// formats/legacy_format.h - what all users of the formats *.mci and *.mp tell the user.
#pragma once

#include <string_view>

namespace vorel::formats {

// Warns that the format is deprecated; `format` is "*.mci" or "*.mp".
void warn_of_legacy_format(std::string_view format);

}  // namespace vorel::formats
