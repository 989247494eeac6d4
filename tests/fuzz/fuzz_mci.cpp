// Any bytes as a *.mci file, of a net and of an STG.
#include "fuzz/fuzzing.h"
#include "formats/mci_reader.h"
#include "formats/mci_writer.h"
#include "net/sanity_checks.h"

namespace vorel::fuzzing {
namespace {

// What was written is read back, and written once more gives the same bytes.
template <class Read, class Write>
void try_bytes(const std::string& bytes, const Read& read, const Write& write) {
  std::istringstream input(bytes);
  const auto prefix = read(input, "input");
  if (prefix == nullptr) return;
  passes_sanity_checks(*prefix);
  std::ostringstream first;
  require(write(*prefix, first));
  std::istringstream first_input(first.str());
  const auto again = read(first_input, "input");
  require(again != nullptr);
  std::ostringstream second;
  require(write(*again, second) && first.str() == second.str());
}

}  // namespace
}  // namespace vorel::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vorel;
  fuzzing::silence_messages();
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  fuzzing::try_bytes(bytes, read_mci_net, write_mci<Net>);
  fuzzing::try_bytes(bytes, read_mci_stg, write_stg_mci);
  return 0;
}
