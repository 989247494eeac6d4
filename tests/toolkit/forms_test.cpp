// The texts, orders and hashes of cubes, covers and expressions.
#include <gtest/gtest.h>

#include "base/value_hash.h"
#include "toolkit/cover.h"
#include "toolkit/logic_expr.h"

namespace vorel::toolkit {
namespace {

LogicExpr literal(const char* name, bool negated = false) {
  return {LogicExpr::Literal{name, negated}};
}

// a (b + c') 1, and a sum of products beside it.
const LogicExpr product{LogicExpr::And{
    {literal("a"), {LogicExpr::Or{{literal("b"), literal("c", true)}}}, {LogicExpr::Const{true}}}}};
const LogicExpr sum{
    LogicExpr::Or{{{LogicExpr::And{{literal("a"), literal("b")}}}, literal("c", true)}}};

TEST(CubeForms, OrderIsByLengthThenZeroOneDashAtTheFirstDifference) {
  std::vector<Cube> all;
  for (const char* const prefix : {"", "0", "1", "-", "0-01-10-01-110-1"})  // the last fills a word
    for (const char* const last : {"", "0", "1", "-"})
      all.push_back(Cube::from_text(std::string(prefix) + last));
  const std::string_view digits = "01-";
  const auto key = [&](const Cube& cube) {
    std::string text = to_string(cube);
    for (char& c : text) c = static_cast<char>('0' + digits.find(c));
    return std::pair(text.size(), text);
  };
  for (const Cube& a : all)
    for (const Cube& b : all) EXPECT_EQ(a <=> b, key(a) <=> key(b)) << to_string(a) << to_string(b);
}

TEST(CoverForms, CubesStandOnALineEachAndMoveTheirPositions) {
  Cover cover = Cover::of({"1-0", "01-"});
  cover.sort();
  EXPECT_EQ(to_string(cover), "01-\n1-0");
  EXPECT_EQ(reindex(cover, std::vector<std::size_t>{2, 0}), Cover::of({"-0", "01"}));
}

TEST(ExpressionForms, TextsAndNegation) {
  EXPECT_EQ(to_string(product), "a (b + c') 1");
  EXPECT_EQ(to_verilog(product), "a & (b | ~c) & 1b`1");
  EXPECT_EQ(to_string(negate(product)), "a' + b' c + 0");
  EXPECT_EQ(to_verilog(negate(sum)), "(~a | ~b) & c");
  EXPECT_EQ(literal_count(product), 3u);
  EXPECT_EQ(negate(negate(product)), product);
  EXPECT_NE(negate(product), product);
}

// The known hashes of FNV-1a, then each rule written out once more.
TEST(Hashes, HaveFixedValues) {
  EXPECT_EQ(base::fnv1a(std::uint8_t{0}), 84696351u);
  EXPECT_EQ(base::fnv1a(std::uint8_t{1}), 67918732u);
  EXPECT_EQ(base::fnv1a(std::string_view("foobar")), 0xBF9CF968u);
  EXPECT_EQ(hash_of(Cube()), 12345u);
  const std::uint32_t first = 0x1999'999Au, last = 2u;  // "1001-..." and "1" in bits
  Cube cube(17);
  cube.words()[0] = first;
  cube.words()[1] = last;
  EXPECT_EQ(hash_of(cube), base::combine_hashes(base::combine_hashes(12345, base::fnv1a(last)),
                                                base::fnv1a(first)));
  EXPECT_EQ(hash_of(literal("ab", true)),
            base::combine_hashes(base::fnv1a(std::string_view("ab")), 67918732u));
  EXPECT_EQ(hash_of(LogicExpr{LogicExpr::Const{false}}), 84696351u);
}

}  // namespace
}  // namespace vorel::toolkit
