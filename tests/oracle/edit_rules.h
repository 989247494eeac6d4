// oracle/edit_rules.h - which insertions leave a prefix complete, word by word.
// Here:      what net/insert_transition.h asks, by configurations worked out from scratch.
// Not here:  whether the net still does what it did (oracle/resolution_checks.h).
#pragma once

#include "net/insert_transition.h"

namespace vorel::oracle {

bool keeps_prefix_complete(const net::StgPrefix& prefix, const net::Insertion& insertion);

}  // namespace vorel::oracle
