// tools/flow_task.h - what a run of vorel-flow is asked to do.
// Here:      the request as plain data, with the files it is about.
// Not here:  where it comes from (tools/flow_arguments.h), what happens between the files
//            (flow/flow.h).
#pragma once

#include <string>

#include "flow/flow_request.h"

namespace vorel::tools {

struct FlowTask {
  flow::FlowRequest request;
  std::string stg;          // file, or standard_stream
  std::string format_name;  // of the STG; empty: told by its name
  std::string properties;   // file; empty: none
  std::string folder;       // for all that comes out; empty: nothing is kept
  std::string document;     // JSON, may be standard_stream; empty: none but that in the folder
  bool wants_page = true;
  bool quiet = false;
};

}  // namespace vorel::tools
