#include "base/run_state.h"

namespace vorel::base {

RunState& run_state() {
  static RunState state;  // the process-wide record that the header describes
  return state;
}

}  // namespace vorel::base
