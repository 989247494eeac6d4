// report/page.h - all that a run of the flow has to tell, as one HTML page that needs no network.
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "flow/flow_request.h"
#include "flow/flow_result.h"

namespace vorel::report {

// `files` are those written beside the page, by names relative to it, which lead to them. False
// after an error.
bool write_page(const flow::FlowRequest& request, const flow::FlowResult& result,
                std::span<const std::string> files, std::ostream& stream);

}  // namespace vorel::report
