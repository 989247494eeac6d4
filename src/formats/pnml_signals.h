// formats/pnml_signals.h - the `signal` elements of an STG in PNML.
// Here:      the table of signals, and the label of a transition.
// Not here:  places, transitions, arcs (formats/pnml_original_net.h).
#pragma once

#include <vector>

#include "formats/pnml_document.h"
#include "formats/pnml_ids.h"
#include "net/net.h"

namespace vorel::formats::pnml {

class SignalTable {
 public:
  // Fills the signals of the STG, sorted, from the page; false after an error.
  bool read(const XmlNode& page, net::Stg& stg);
  // Sets signal and sign from the child `signal` of the element; false after an error.
  bool label(const XmlNode& element, net::StgTransition& transition) const;

 private:
  bool read_signal(const XmlNode& element, net::Stg& stg);

  IdTable ids_;
  std::vector<net::Signal*> signals_;  // by the number of the id
  IdTable names_;
};

}  // namespace vorel::formats::pnml
