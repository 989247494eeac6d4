// Any bytes as a *.mci file, of a net and of an STG.
#include "fuzz/fuzzing.h"
#include "formats/mci_reader.h"
#include "formats/mci_writer.h"

namespace vorel::fuzzing {

void fuzz_mci(const std::string& bytes) {
  try_round_trip(bytes, read_mci_net, write_mci<Net>);
  try_round_trip(bytes, read_mci_stg, write_stg_mci);
}

}  // namespace vorel::fuzzing
