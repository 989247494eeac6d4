// formats/save_file.h - a net or process in a file of a given name.
// Here:      opening and finishing the file, with the errors of both.
// Not here:  what is written (formats/g_writer.h, formats/pnml_writer.h, formats/mp_writer.h, ...).
#pragma once

#include <string>

#include "base/messages.h"
#include "base/output_file.h"
#include "base/text_sink.h"

namespace vorel::formats {

// `write(file)` writes to the stream or the path of the file and gives false after an error. False
// after an error; the file is then as it was, where that is possible.
template <class Write>
bool save_file(const std::string& file_name, Write write) {
  base::OutputFile file(file_name);
  if (!file.is_open()) {
    base::print_error(base::cannot_open_for_output(file_name));
    return false;
  }
  if (!write(file)) return false;
  return file.commit() || base::report_write_failure();
}

}  // namespace vorel::formats
