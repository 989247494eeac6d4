#include "flow/flow_result.h"

namespace vorel::flow {

const net::StgPrefix* FlowResult::circuit_stg() const {
  if (mapped) return &*mapped;
  if (resolved) return &*resolved;
  return given ? &*given : nullptr;
}

}  // namespace vorel::flow
