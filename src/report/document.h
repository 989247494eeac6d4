// report/document.h - all that a run of the flow has to tell, as a JSON document.
// Its schema is docs/flow.schema.json.
#pragma once

#include <ostream>

#include "flow/flow_request.h"
#include "flow/flow_result.h"

namespace vorel::report {

// False after an error.
bool write_document(const flow::FlowRequest& request, const flow::FlowResult& result,
                    std::ostream& stream);

}  // namespace vorel::report
