// Any bytes as a *.mci file, of a net and of an STG.
#include "formats/mci_reader.h"
#include "formats/mci_writer.h"
#include "fuzz/fuzzing.h"

namespace vorel::fuzzing {

void fuzz_mci(const std::string& bytes) {
  try_round_trip(bytes, formats::read_mci_net, formats::write_mci<net::Net>);
  try_round_trip(bytes, formats::read_mci_stg, formats::write_stg_mci);
}

}  // namespace vorel::fuzzing
