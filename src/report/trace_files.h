// report/trace_files.h - the traces of a run as files for viewers of waveforms.
// Here:      which traces there are, what their files are called.
// Not here:  the form of the files (formats/vcd_writer.h), writing them (tools).
//
// Names are relative to the folder of the report. Traces without steps have no file.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "flow/flow_result.h"
#include "formats/waveform.h"
#include "verify/verification.h"

namespace vorel::report {

// Of the trace of findings[i], conflicts[i] or properties[i], which is there.
std::string finding_file(const flow::FlowResult& result, std::size_t i);
enum class Branch { first, second };
std::string conflict_file(std::size_t i, Branch branch);
std::string property_file(std::size_t i);
std::string question_file(verify::Question question);

struct TraceFile {
  std::string name;
  formats::Waveform waveform;
};

std::vector<TraceFile> trace_files(const flow::FlowResult& result);

}  // namespace vorel::report
