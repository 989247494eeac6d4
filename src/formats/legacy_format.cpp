#include "formats/legacy_format.h"

#include <string>

#include "base/messages.h"

namespace vorel::formats {

void warn_of_legacy_format(std::string_view format) {
  base::print_warning(
      std::string("the legacy ")
          .append(format)
          .append(" format is deprecated, as it does not store sufficient information for "
                  "some applications and may result in errorneous output; you are STRONGLY "
                  "ADVISED to switch to the new PNML-based format"));
}

}  // namespace vorel::formats
