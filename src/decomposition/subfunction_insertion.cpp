#include "decomposition/subfunction_insertion.h"

#include <algorithm>
#include <tuple>

namespace vorel::decomposition {

bool SubfunctionInsertion::operator<(const SubfunctionInsertion& other) const {
  const auto key = [](const SubfunctionInsertion& insertion) {
    return std::tuple(!insertion.expected_implementation, insertion.ack_count, insertion.cost);
  };
  return key(*this) < key(other);
}

bool SubfunctionInsertion::is_same_as(const SubfunctionInsertion& other) const {
  return std::ranges::equal(edges, other.edges, resolution::insertion_equal);
}

std::string SubfunctionInsertion::text() const {
  std::string text = expected_implementation ? "" : "UNEXP_IMPL ";
  text += "ACK(" + std::to_string(ack_count) + ") ";
  for (std::size_t i = 0; i < edges.size(); ++i)
    text += (i == 0 ? "" : ", ") + resolution::to_text(edges[i]);
  return text;
}

}  // namespace vorel::decomposition
