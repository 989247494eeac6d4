// oracle/write_files.h - processes as the text of input files.
// Here:      PNML of all four kinds; that it can be read back is what tests/formats tests.
#pragma once

#include <sstream>
#include <stdexcept>
#include <string>

#include "formats/pnml_writer.h"

namespace vorel::oracle {

template <net::Process P>
std::string pnml_text(const P& process) {
  std::ostringstream stream;
  if (!formats::write_pnml(process, stream)) throw std::runtime_error("a process is not written");
  return stream.str();
}

}  // namespace vorel::oracle
