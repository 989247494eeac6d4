// reach/deadlock_check.h - the engine of -D.
#pragma once

#include "base/params.h"
#include "net/process.h"

namespace vorel {

template <Process P>
class DeadlockCheck {
 public:
  DeadlockCheck(const P& process, const Params& params);
  void run();                                     // the search that the options choose
  void report() const;                            // to where the output file name selects
  void print_statistics(std::ostream& out) const; // size of the SAT instance
};

}  // namespace vorel
