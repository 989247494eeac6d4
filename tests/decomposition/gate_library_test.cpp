#include "decomposition/gate_library.h"

#include <gtest/gtest.h>

#include "base/messages.h"
#include "support/caught_messages.h"
#include "support/run_program.h"

namespace vorel::decomposition {
namespace {

struct Reading {
  std::optional<GateLibrary> library;
  std::string messages;
};

Reading read_file(const std::string& name) {
  base::MessageCapture capture;
  auto library = GateLibrary::read(name);
  return {std::move(library), support::text_of(capture)};
}

Reading read_text(const std::string& text) {
  const support::TemporaryFolder folder;
  return read_file(folder.write("library", text));
}

std::string gate(const std::string& name, const std::string& area, const std::string& function) {
  return "GATE " + name + " " + area + " o=" + function + ";PIN * UNKNOWN 1 9 1 1 1 1\n";
}
std::string latch(const std::string& name, const std::string& area, const std::string& function,
                  const std::string& sequence) {
  return "LATCH " + name + " " + area + " q=" + function + ";PIN * UNKNOWN 1 9 1 1 1 1 SEQ q " +
         sequence + "\n";
}

const std::string constants = gate("zero", "1", "0") + gate("one", "1", "CONST1");
const std::string wires = gate("buf", "2", "x") + gate("inv", "2", "!x");

TEST(GateLibrary, WhatCannotBeReadIsToldWithItsName) {
  const std::string folder = testing::TempDir();
  for (const std::string& name : {std::string("/absent/library"), folder}) {
    const Reading reading = read_file(name);
    EXPECT_FALSE(reading.library);
    EXPECT_EQ(reading.messages, "\nError: cannot open \"" + name + "\" for input\n");
  }
  for (const char* const text : {"", "GATE", "GATE a 1 o=x;"}) {
    const Reading reading = read_text(text);
    EXPECT_FALSE(reading.library);
    EXPECT_TRUE(reading.messages.starts_with("\nError: incorrect syntax of /")) << text;
    EXPECT_TRUE(reading.messages.ends_with("/library\n")) << reading.messages;
  }
}

TEST(GateLibrary, EachMissingBasicGateIsToldByName) {
  const std::string primitive = "[n]or2[_1]/[n]and2[_1]", nor2 = gate("nor2", "3", "(a+b)'");
  const struct {
    std::string text;
    std::vector<std::string> missing;
  } rows[] = {
      {gate("g", "1", "a*b*c"), {"const0", "const1", "buffer", "inverter", primitive}},
      // An input that changes nothing is an input.
      {gate("zero", "1", "a*a'") + gate("one", "1", "1") + wires + nor2, {"const0"}},
      // Neither a constant nor a latch that keeps its value is an inverter.
      {constants + gate("buf", "2", "x") + gate("up", "1", "x+x'") + nor2 +
           latch("keep", "1", "!x+r", "r ASYNCH"),
       {"inverter"}},
      // A clocked latch is no buffer, a latch no gate of two inputs, "**wire**" nothing.
      {constants + gate("inv", "2", "x'") + gate("**wire**", "0", "x") +
           latch("dff", "1", "d", "ANY RISING_EDGE") + latch("and", "1", "a*b", "ANY ASYNCH"),
       {"buffer", primitive}},
      {constants + wires + gate("xor", "1", "a^b") + gate("and3", "1", "a*b*c"), {primitive}},
  };
  for (const auto& row : rows) {
    const Reading reading = read_text(row.text);
    std::string expected;
    for (const std::string& name : row.missing) {
      expected += "\nError: the gate \"" + name + "\" is not in the library\n";
    }
    EXPECT_EQ(reading.messages, expected) << row.text;
    EXPECT_FALSE(reading.library);
  }
}

TEST(GateLibrary, TheCheapestWireGatesAreChosenLatchesLastAndThenByName) {
  const std::string rest = constants + gate("nor2", "3", "(a+b)'");
  const struct {
    std::string text, buffer, inverter;
  } rows[] = {
      {gate("b2", "2", "x") + gate("b1", "1", "y") + gate("i2", "2", "x'") + gate("i3", "3", "!x"),
       "b1", "i2"},
      {gate("bb", "2", "x") + gate("ba", "2", "x") + gate("ib", "2", "!x") + gate("ia", "2", "!x"),
       "ba", "ia"},
      {latch("a", "2", "x", "ANY ASYNCH") + gate("b", "2", "x") +
           latch("c", "2", "!x", "ANY ASYNCH") + gate("d", "2", "x'"),
       "b", "d"},
      {latch("a", "1", "x", "ANY ASYNCH") + gate("b", "2", "x") +
           latch("c", "1", "!x*(r+!r)", "r ASYNCH") + gate("d", "2", "x'"),
       "a", "c"},
      {gate("b", "2", "x") + gate("b", "1", "x") + gate("c", "1.5", "x") + gate("d", "2", "x'"),
       "b", "d"},
  };
  for (const auto& row : rows) {
    const Reading reading = read_text(row.text + rest);
    ASSERT_TRUE(reading.library) << row.text << reading.messages;
    EXPECT_EQ(reading.library->buffer_name(), row.buffer);
    EXPECT_EQ(reading.library->inverter_name(), row.inverter);
    EXPECT_EQ(reading.library->inverter_area(), reading.library->area(row.inverter));
  }
}

TEST(GateLibrary, TheAreaOfLiteralsComesFromNandElseNorElseTheInverter) {
  const struct {
    std::string text;
    double two, seven;
  } rows[] = {
      {gate("nor", "9", "(a+b)'") + gate("nand", "5", "!(a b)") + gate("nand_2", "4", "!a+!b"), 4,
       14},
      {gate("nor", "3.5", "(y+x)'") + gate("and", "9", "a*b"), 3.5, 11},
      {gate("or", "9", "b+a"), 3, 8},
      {gate("or_1", "9", "(b*a')'"), 3, 8},
      {gate("and_1", "9", "!(b+!a)"), 3, 8},
      {gate("and", "9", "y x") + latch("nand", "3", "!(a*b)", "ANY ASYNCH"), 3, 8},
      {gate("nand", "7", "!(a*b)"), 10, 35},
      {gate("nand", "1.5", "!(a*b)"), 1.5, -1},
  };
  for (const auto& row : rows) {
    const Reading reading = read_text(constants + wires + row.text);
    ASSERT_TRUE(reading.library) << row.text << reading.messages;
    EXPECT_EQ(reading.library->literal_area(0), 0);
    EXPECT_EQ(reading.library->literal_area(1), 0);
    EXPECT_EQ(reading.library->literal_area(2), row.two) << row.text;
    EXPECT_EQ(reading.library->literal_area(7), row.seven) << row.text;
  }
}

TEST(GateLibrary, TheBuiltInLibraryHasItsGatesInOrder) {
  const Reading reading = read_file("");
  EXPECT_EQ(reading.messages, "");
  ASSERT_TRUE(reading.library);
  const GateLibrary& library = *reading.library;
  EXPECT_EQ(library.buffer_name(), "delay:asynch");
  EXPECT_EQ(library.inverter_name(), "inv:combinational");
  EXPECT_EQ(library.inverter_area(), 16);
  EXPECT_EQ(library.literal_area(2), 24);
  EXPECT_EQ(library.literal_area(7), 64);

  std::string all;
  for (const std::string& name : library.gate_list(2147483647, true)) {
    all += name.substr(0, name.find(':')) + base::format_message(" %g ", library.area(name));
  }
  EXPECT_EQ(all,
            "delay 0 const0 8 const1 8 inv 16 delay_inv 16 nand2 24 nand2_1 24 nor2 24 "
            "and2 32 and2_1 32 aoi12 32 nand3 32 nor3 32 oai12 32 or2 32 or2_1 32 "
            "and3 40 aoi22 40 nand4 40 nor4 40 oai22 40 or3 40 "
            "c_element0 40 c_element1 40 c_element2 40 gated_latch0 40 gated_latch1 40 "
            "rs_nand 40 rs_nor 40 sr_nand 40 sr_nor 40 and4 48 or4 48 ao22 56 ");
  EXPECT_EQ(library.gate_list(2147483647, false).size(), 23u);
  EXPECT_EQ(library.gate_list(2, true).size(), 21u);
  EXPECT_EQ(library.gate_list(1, false),
            std::vector<std::string>(
                {"const0:combinational", "const1:combinational", "inv:combinational"}));
  EXPECT_EQ(library.gate_list(0, true).size(), 2u);
}

}  // namespace
}  // namespace vorel::decomposition
