// report/document.h - all that a run of the flow has to tell, as a JSON document.
// Its schema is docs/flow.schema.json.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "flow/flow_request.h"
#include "flow/flow_result.h"

namespace vorel::report {

// `files` are those written beside the document, by names relative to it. False after an error: the
// stream took not all of it. Of names that are no UTF-8, which JSON cannot hold, what is none is
// replaced.
bool write_document(const flow::FlowRequest& request, const flow::FlowResult& result,
                    std::span<const std::string> files, std::ostream& stream);

}  // namespace vorel::report
