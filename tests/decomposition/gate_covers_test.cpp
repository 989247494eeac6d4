#include "decomposition/gate_covers.h"

#include <gtest/gtest.h>

#include "toolkit/genlib_reader.h"

namespace vorel::decomposition {
namespace {

TEST(GateCovers, WideGatesTakeLittleRoom) {
  const struct {
    const char* sign;
    const char* start;
  } rows[] = {{"*", "CONST1"}, {"^", "CONST0"}};
  for (const auto& row : rows) {
    std::string text = std::string("GATE g 1 o=!(") + row.start;
    bdd::Bdd expected(row.sign[0] == '*');
    for (std::uint32_t i = 0; i < 60; i += 2) {
      text += row.sign + ("(a" + std::to_string(i) + "+a" + std::to_string(i + 1) + ")");
      const bdd::Bdd either = bdd::bdd_variable(i) | bdd::bdd_variable(i + 1);
      expected = row.sign[0] == '*' ? expected & either : expected ^ either;
    }
    const auto gates = toolkit::read_genlib(text + ");PIN * UNKNOWN 1 1 1 1 1 1", "wide");
    ASSERT_TRUE(gates);
    EXPECT_EQ(covers_of(gates->front()), bdd::BDDCover(~expected));
  }
}

}  // namespace
}  // namespace vorel::decomposition
