// tests/report/example_results.h - results of runs with something in every part.
#pragma once

#include <string>

#include "flow/flow_request.h"
#include "flow/flow_result.h"

namespace vorel::report {

struct ExampleRun {
  flow::FlowRequest request;
  flow::FlowResult result;
};

// A read cycle of a bus with its conflict, resolved by one signal, and a circuit that is wrong.
ExampleRun bus_controller();
// Every text and name is one that HTML, XML and scripts take amiss.
ExampleRun hostile_texts();
// Ends before there is a prefix.
ExampleRun unsafe_net();
// A trace and a Verilog text that are long and wide.
ExampleRun long_traces();

}  // namespace vorel::report
