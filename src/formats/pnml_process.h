// formats/pnml_process.h - the `net` of a process in PNML: conditions, events and their links.
// Here:      reading one process of a known kind, and checking it.
// Not here:  finding out which kind it is (formats/pnml_reader.h), its net
//            (formats/pnml_original_net.h).
#pragma once

#include <memory>

#include "formats/pnml_document.h"
#include "net/process.h"

namespace vorel::formats::pnml {

// Reads the process from its element in the document, which is freed before the checks. False
// after an error or a silent failure.
template <net::Process P>
bool read_process(std::unique_ptr<Document> document, const XmlNode& element, P& process);

}  // namespace vorel::formats::pnml
