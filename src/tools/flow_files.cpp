#include "tools/flow_files.h"

#include <unistd.h>

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/input_text.h"
#include "base/messages.h"
#include "base/output_file.h"
#include "base/text_sink.h"
#include "formats/g_writer.h"
#include "formats/net_file.h"
#include "formats/overwriting.h"
#include "formats/vcd_writer.h"
#include "report/trace_files.h"
#include "tools/input_net.h"
#include "tools/output_names.h"

namespace vorel::tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* document_name = "report.json";

using base::fail;

bool cannot_make(const std::string& folder) {
  return fail("cannot make the folder \"" + folder + '"');
}

std::string path_in(const std::string& folder, const std::string& name) {
  return (fs::path(folder) / name).string();
}

std::string without_ending(std::string name, std::string_view ending) {
  if (name.size() > ending.size() && name.ends_with(ending))
    name.resize(name.size() - ending.size());
  return name;
}

// All that can be in the folder, but for traces, whose names are no others'.
std::vector<std::string> possible_names(const FlowTask& task) {
  const std::string name = circuit_name(task.stg);
  return {name + ".g",    name + ".v",   name + "_gates.v",
          name + "_tb.v", "report.html", document_name};
}

std::vector<InputName> inputs_of(const FlowTask& task) {
  return {{"is the STG", task.stg},
          {"is the library", task.request.library},
          {"is the file of properties", task.properties}};
}

// Whether it looks so beforehand.
bool can_be_made(const std::string& folder) {
  std::error_code unknown;
  fs::path parent = fs::absolute(folder, unknown).lexically_normal();
  while (!parent.empty() && !fs::exists(parent, unknown)) {
    if (parent == parent.parent_path()) break;
    parent = parent.parent_path();
  }
  if (fs::is_directory(parent, unknown) && ::access(parent.c_str(), W_OK | X_OK) == 0) return true;
  return cannot_make(folder);
}

// The characters of names that trace_files() makes.
bool is_name_of_trace(std::string_view name) {
  constexpr std::string_view folder = "traces/", ending = ".vcd";
  if (!name.starts_with(folder) || !name.ends_with(ending)) return false;
  name.remove_prefix(folder.size());
  name.remove_suffix(std::min(name.size(), ending.size()));
  return name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") == std::string_view::npos;
}

// The document of an earlier run; null if there is none.
nlohmann::json earlier_document(const std::string& folder) {
  const std::string path = path_in(folder, document_name);
  std::error_code unknown;
  std::string text;
  if (!fs::is_regular_file(path, unknown) || !base::read_whole_file(path, text)) return {};
  auto document = nlohmann::json::parse(text, nullptr, false);
  if (document.is_object() && document.value("program", nlohmann::json()) == "vorel-flow")
    return document;
  return {};
}

// What it lists, as far as this run could have written it.
std::vector<std::string> files_of_earlier_run(const FlowTask& task) {
  const nlohmann::json document = earlier_document(task.folder);
  if (document.is_null()) return {};
  std::vector<std::string> files;
  const auto possible = possible_names(task);
  for (const nlohmann::json& entry : document.value("files", nlohmann::json::array())) {
    if (!entry.is_string()) continue;
    const auto name = entry.get<std::string>();
    if (is_name_of_trace(name) || std::ranges::find(possible, name) != possible.end())
      files.push_back(name);
  }
  return files;
}

class FolderWriter {
 public:
  explicit FolderWriter(const FlowTask& task) : task_{task} {}

  bool run(const std::vector<FlowFile>& files) {
    if (!make_folders(files)) return false;
    for (const FlowFile& file : files)
      if (!write_aside(file)) return false;
    const std::vector<std::string> earlier = files_of_earlier_run(task_);
    for (const auto& file : written_)
      if (!file->commit()) return base::report_write_failure();
    for (const std::string& name : earlier) {
      const bool is_new = std::ranges::find(files, name, &FlowFile::name) != files.end();
      if (!is_new && !remove(name)) return false;
    }
    return true;
  }

 private:
  bool make_folders(const std::vector<FlowFile>& files) const {
    for (const FlowFile& file : files) {
      const fs::path folder = fs::path(path_in(task_.folder, file.name)).parent_path();
      std::error_code failure;
      fs::create_directories(folder, failure);
      if (failure || !fs::is_directory(folder)) return cannot_make(folder.string());
    }
    return true;
  }

  bool write_aside(const FlowFile& file) {
    const std::string path = path_in(task_.folder, file.name);
    auto output = std::make_unique<base::OutputFile>(path);
    if (!output->is_open()) return fail(base::cannot_open_for_output(path));
    if (!file.write(output->stream())) return false;
    if (!output->finish()) return base::report_write_failure();
    written_.push_back(std::move(output));
    return true;
  }

  // Links and what this run has read stay.
  bool remove(const std::string& name) const {
    const std::string path = path_in(task_.folder, name);
    std::error_code failure;
    if (!fs::is_regular_file(fs::symlink_status(path, failure))) return true;
    const auto inputs = inputs_of(task_);
    const bool is_input = std::ranges::any_of(inputs, [&](const InputName& input) {
      return !input.name.empty() && formats::is_same_file(path, input.name);
    });
    if (is_input || fs::remove(path, failure)) return true;
    return fail("cannot remove \"" + path + "\", which is left from an earlier run");
  }

  const FlowTask& task_;
  std::vector<std::unique_ptr<base::OutputFile>> written_;
};

FlowFile text_file(std::string name, const std::string& text) {
  return {std::move(name), [&text](std::ostream& stream) {
            stream << text << std::flush;
            return stream.good() || base::report_write_failure();
          }};
}

}  // namespace

std::string circuit_name(const std::string& stg_file) {
  if (stg_file == standard_stream) return "stg";
  std::string name = without_ending(fs::path(stg_file).filename().string(), ".gz");
  for (const formats::NetFormatRow& row : formats::net_formats) {
    std::string shorter = without_ending(name, row.ending);
    if (shorter != name) return shorter;
  }
  return name;
}

bool flow_files_can_be_written(const FlowTask& task) {
  std::vector<OutputName> outputs;
  std::error_code unknown;
  if (!task.folder.empty() && fs::exists(task.folder, unknown)) {
    if (!fs::is_directory(task.folder, unknown))
      return fail("\"" + task.folder + "\" is no folder");
    // Where no run has left anything, a net is somebody's own.
    const bool is_ours = !earlier_document(task.folder).is_null();
    for (const std::string& name : possible_names(task)) {
      const std::string path = path_in(task.folder, name);
      outputs.push_back({path, path, is_ours});
    }
  } else if (!task.folder.empty() && !can_be_made(task.folder)) {
    return false;
  }
  const bool is_on_output = task.document == standard_stream;
  if (!is_on_output) outputs.push_back({"--json", task.document});
  return can_be_written(outputs, inputs_of(task));
}

std::vector<FlowFile> circuit_files(const FlowTask& task, const flow::FlowResult& result) {
  std::vector<FlowFile> files;
  if (!result.circuit) return files;
  const flow::CircuitResult& circuit = *result.circuit;
  const net::StgPrefix* const stg = result.circuit_stg();
  assert(stg != nullptr);
  const std::string name = circuit_name(task.stg);
  files.push_back({name + ".g", [stg](std::ostream& out) {
                     return formats::write_g(*stg, out, formats::GInitialValues::of_toggles);
                   }});
  files.push_back(text_file(name + ".v", circuit.module_text));
  if (!circuit.models_text.empty())
    files.push_back(text_file(name + "_gates.v", circuit.models_text));
  if (!circuit.testbench_text.empty())
    files.push_back(text_file(name + "_tb.v", circuit.testbench_text));
  return files;
}

std::vector<FlowFile> waveform_files(const flow::FlowResult& result) {
  std::vector<FlowFile> files;
  for (report::TraceFile& trace : report::trace_files(result)) {
    files.push_back(
        {std::move(trace.name), [waveform = std::move(trace.waveform)](std::ostream& stream) {
           return formats::write_vcd(waveform, "vorel-flow " VOREL_VERSION, stream);
         }});
  }
  return files;
}

bool write_folder(const FlowTask& task, const std::vector<FlowFile>& files) {
  assert(!task.folder.empty());
  return FolderWriter(task).run(files);
}

}  // namespace vorel::tools
