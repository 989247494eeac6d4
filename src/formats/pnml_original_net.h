// formats/pnml_original_net.h - the `net` inside `original_net`: the net that the process is of.
// Here:      reading its signals, places, transitions and arcs.
// Not here:  the process (formats/pnml_process.h).
#pragma once

#include <cstdint>
#include <vector>

#include "formats/pnml_page.h"
#include "net/net.h"

namespace vorel::formats::pnml {

// What `ref`s from the process lead to, whatever the numbering has become.
template <class N>
struct OriginalNodes {
  PageNodes nodes;
  std::vector<typename N::Place*> places;            // by the index of the node
  std::vector<typename N::Transition*> transitions;  // likewise
};

// Fills the net, sorted, from the child `original_net` of the element of the process. False after
// an error, or silently where the format wants a net that is missing or of the wrong type skipped.
template <class N>
bool read_original_net(const XmlNode& process_element, N& net, OriginalNodes<N>& original);

}  // namespace vorel::formats::pnml
