// tools/flow_files.h - the files that a run of vorel-flow leaves.
// Here:      their names, whether they can be written, writing them together.
// Not here:  what most of them contain (report, flow/flow_result.h).
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "flow/flow_result.h"
#include "tools/flow_task.h"

namespace vorel::tools {

// "vme" of "stgs/vme.g.gz", "stg" of the standard input: what files and module are called.
std::string circuit_name(const std::string& stg_file);

// Told from names and permissions before any work. False after an error.
bool flow_files_can_be_written(const FlowTask& task);

struct FlowFile {
  std::string name;                          // within the folder
  std::function<bool(std::ostream&)> write;  // false after an error
};

// The files of a result but for the report. They refer to the result.
std::vector<FlowFile> circuit_files(const FlowTask& task, const flow::FlowResult& result);
std::vector<FlowFile> waveform_files(const flow::FlowResult& result);

// Makes the folder if need be, writes all files aside, then gives them their names in the order of
// the list: whoever sees the last one finds the others. What an earlier run has left of files that
// this one does not write is removed. False after an error.
bool write_folder(const FlowTask& task, const std::vector<FlowFile>& files);

}  // namespace vorel::tools
