#include <gtest/gtest.h>

#include "formats/net_reading.h"

namespace vorel::formats {
namespace {

TEST(LlNetReader, TakesAllFormsOfLines) {
  const std::string net = "PL\n\"p\"M1\n\"q\"\nTR\n\"t\"\n";
  const std::vector<ReadingRow> rows = {
      {"a header, defaults, other sections",
       "PEP\nPTNet\nFORMAT_N\nDPL s7n10@-9t2\nDTR s7\nPL\n\"p\"30@30M1m1\nDPL n1\n\"q\"\nTR\n"
       "\"t\"1@1\nTP\n1<2\nPT\n1>1\nTX\n\"any\" text\n1<9\n",
       "marked p; t: p -> q", ""},
      {"numbers in any order, and counted on",
       "PL\n7\"p\"M\n\"q\"\n3\"r\"\nTR\n10\"t\"\nTP\n10<8\n"
       "10<3\nPT\n7>10",
       "marked p; t: p -> q r", ""},
      {"attributes in any order, of all kinds",
       "PL\r\n  1 \"p q\" -5@.5, n3@-9 b\"M1 \xC3\xA4\" e M1 m1 k1\r\n\"r\"xM0\r\nTR\r\n"
       "\"t\"1@2v73b\"<x>\"R\"(1,2;3)\"\r\nTP\r\n1 < 2 w1v4 J3@4,5@6\r\nPT\r\n1>1v4\r\n",
       "marked p q; t: p q -> r", ""},
      {"self-loops and nodes without arcs",
       "PL\n\"p\"\n\"q\"M1\nTR\n\"t\"\n\"u\"\nTP\n1<1\nPT\n1>1\n", "marked q; t: p -> p; u: ->",
       ""},
      {"names that are empty or occurred before", "PL\n\"\"M1\n\"P1\"M1\n\"P1\"M1\nTR\n4\"\"\n",
       "marked P1 P1_2 P1_3; T4: ->",
       "Warning: node 'P1_2' is renamed with its number, as its name occurred before, the first of "
       "2 such cases " +
           at(3, 1)},
      {"repeated arcs", "PL\n\"p\"\nTR\n\"t\"\nPT\n1>1\n1>1\nTP\n1<1\n", "marked; t: p -> p",
       "Warning: the arc '1>1' is repeated " + at(7, 1)},
      {"names out of their order", "PL\n\"q\"M1\n\"p\"\nTR\n\"u\"\n\"t\"\nPT\n1>1\n2>2\n",
       "marked q; t: p ->; u: q ->", ""},
      {"nothing", "PL\n", "marked", ""},
      {"phantom transitions", net + "PTR\n\"x\"\n2\"y\"\nTP\n1<1\nPTP\n2<1\nPPT\n1>2\nPT\n2>1\n",
       "marked p; t: q -> p", ""},
      {"read arcs, in both directions and beside a loop",
       net + "RA\n1>1w1\n1<2v2\n1<2\nTR\n\"u\"\nPT\n1>2\nTP\n2<1\nRA\n2<1\n",
       "marked p; t: p q -> p q; u: p -> p",
       "Warning: the arc '1<2' is repeated, the first of 2 such cases " + at(9, 1)},
      {"unknown sections", "DATA\n1<9\n" + net + "XY\n1>1\nDPL\n\"\nBLOCK\n1<9\nXY\n1<1\nRS\nIA\n",
       "marked p; t: ->",
       "Warning: the section 'DATA' is unknown and ignored " + at(1, 1) +
           "\nWarning: the section 'XY' is unknown and ignored " + at(8, 1) +
           "\nWarning: the section 'BLOCK' is unknown and ignored " + at(12, 1)},
  };
  expect_readings(rows, NetFormat::ll_net);
}

TEST(LlNetReader, AFaultIsReportedWithItsPlaceAndText) {
  const std::string syntax = "syntax error ";
  const std::string net = "PL\n\"p\"\nTR\n\"t\"\n";
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"", syntax + at(1, 1) + ": expected the section PL, found the end of the file"},
      {"PEP\nTR\n", syntax + at(3, 1) + ": expected the section PL, found the end of the file"},
      {"PEP\nHLNet\nPL\n", syntax + at(2, 1) + ": expected a low-level net, found 'HLNet'"},
      {"PL\np1\n", syntax + at(2, 1) + ": expected '\"', found 'p1'"},
      {"PL\n12\n", syntax + at(2, 3) + ": expected '\"', found 'the end of the line'"},
      {"PL\n\"p\n\"",
       syntax + at(2, 1) + ": expected a text that ends with '\"' on its line, found '\"p'"},
      {"PL\n1\"p\tq\"M1\n",
       syntax + at(2, 2) + ": expected a name of printable characters, found '\"p\\x09q\"M1'"},
      {"PL\n99999999999\"p\"\n",
       syntax + at(2, 1) + ": expected a number, found '99999999999\"p\"'"},
      {"PL\n2\"p\"\n1\"q\"\n\"r\"", "number 2 of node 'r' has been used before " + at(4, 1)},
      {"PL\n\"p\"1@2 ?", syntax + at(2, 8) + ": expected an attribute, found '?'"},
      {"PL\n\"p\"b\"x",
       syntax + at(2, 5) + ": expected a text that ends with '\"' on its line, found '\"x'"},
      {"PL\n\"p\"1@2M2\n",
       "the net is not safe, place p has 2 tokens in the initial marking " + at(2, 7)},
      {"PL\n\"p\"M-1\n", syntax + at(2, 4) + ": expected a number of tokens, found '-1'"},
      {net + "TP\n1<2\n", "there is no place 2 " + at(6, 3)},
      {net + "PT\n1>0\n", "there is no transition 0 " + at(6, 3)},
      {net + "PT\n1<1\n", syntax + at(6, 2) + ": expected '>', found '<1'"},
      {net + "TP\n1<\n", syntax + at(6, 3) + ": expected a number, found 'the end of the line'"},
      {net + "TP\n1<1w2\n", syntax + at(6, 4) + ": expected the weight 1, found '2'"},
      {net + "RA\n1>1\nTP\n1<1\n",
       "the read arc '1>1' is between nodes that another arc joins " + at(6, 1)},
      {net + "RA\n1-1\n", syntax + at(6, 2) + ": expected '>', found '-1'"},
      {net + "IA\n1>1\n", "inhibitor arcs (section IA) are not supported " + at(6, 1)},
      {net + "RS\n1>1\n", "reset arcs (section RS) are not supported " + at(6, 1)},
      {"TP\n1<1\nPL\n", "there is no transition 1 " + at(2, 1)},
  };
  expect_faults(rows, NetFormat::ll_net);
}

}  // namespace
}  // namespace vorel::formats
