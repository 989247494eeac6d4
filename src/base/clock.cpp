#include "base/clock.h"

#include "base/messages.h"

namespace vorel::base {

std::string format_seconds(double value) { return format_message("%.2f", value); }

}  // namespace vorel::base
