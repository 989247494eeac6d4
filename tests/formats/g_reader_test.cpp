#include <gtest/gtest.h>

#include "formats/net_reading.h"

namespace vorel::formats {
namespace {

NetReading read_g(const std::string& text) { return read_text(text, NetFormat::g); }

TEST(GReader, TakesAllFormsOfLinesAndWords) {
  const std::string two =
      "marked <b-,a+>; a+ = a+: <b-,a+> -> <a+,b->; b- = b-: <a+,b-> -> <b-,a+>";
  const std::vector<ReadingRow> rows = {
      {"comments, continued lines, line ends",
       "\xEF\xBB\xBF# head\r\n.model m # name\r\n.inputs \\ \r\n a#b\r\n.outputs b\r.graph\n"
       "a+ \\\n\tb-\t# arc\n\n b- a+\n.marking {<b- , a+>}\n.end\n\t# anything .at < all",
       "i.a=? o.b=? " + two},
      {"a last line without its end",
       ".inputs a b\n.graph\na+ b-\nb- a+\n.marking{ <b-,a+> }\n.end", "i.a=? i.b=? " + two},
      {"commas in the marking, and the end behind it",
       ".inputs a b\n.graph\na+ b-\nb- a+\np a+\nq,r b-\n.marking={,<b-,a+>,p=0, q,r }  .end",
       "i.a=? i.b=? marked q,r <b-,a+>; a+ = a+: p <b-,a+> -> <a+,b->; b- = b-: q,r <a+,b-> -> "
       "<b-,a+>"},
      {"arcs of weight 1, names that look like them",
       ".inputs a\n.dummy d(2)\n.graph\np=-1 a~=1 d(2)\na~ p/1(1) p=1\n.marking =\n{ p=1 }\n.end\n",
       "i.a=? d.d(2)=? marked p; a~ = a~: p=-1 -> p p/1; d(2) = d(2)~: p=-1 ->"},
      {"blocks that are skipped whole",
       ".inputs a\n.coords\np a+ {\n\x01 a-\n .5 1\n.graph\na+ p\n.time 1\np a+\n.delays\na+ 1\n"
       ".graph\na- q\n.end\n",
       "i.a=? marked; a+ = a+: -> p; a- = a-: -> q"},
      {"toggles, instances, dummies, a signal without transitions",
       ".internal z\n.dummy d e\n.outputs x\n.graph\nz d/2 d\nd z~/1\n.marking {}\n.end\n",
       "o.x=? r.z=? d.d=? d.e=? marked; d = d~: <z,d> -> <d,z~/1>; z = z~: -> <z,d> <z,d/2>; "
       "d/2 = d~: <z,d/2> ->; z~/1 = z~: <d,z~/1> ->"},
      {"instances are told apart by their text",
       ".inputs a\n.graph\np a+ a+/1 a+/01\n.marking { p=1\n }\n.end\n",
       "i.a=? marked p; a+ = a+: p ->; a+/1 = a+: p ->; a+/01 = a+: p ->"},
      {"places with arithmetic in their names",
       ".inputs a\n.graph\np-1 a~\na~ p/1 p\n.marking { p=1 p-1=01 p/1=0 }\n.end\n",
       "i.a=? marked p p-1; a~ = a~: p-1 -> p p/1"},
      {"a marking over lines, before the graph",
       ".inputs a\n.marking\n{p\nq # both\n}\n.graph\np a+\nq a+\n.end\n",
       "i.a=? marked p q; a+ = a+: p q ->"},
      {"lines that carry nothing",
       ".name n\n.capacity p=2\n.slowenv\n.coords\n.inputs a\n.graph\na+ p\n.time 1\n.end\n",
       "i.a=? marked; a+ = a+: -> p"},
      {"an empty graph", ".graph\n.end", "marked"},
  };
  expect_readings(rows, NetFormat::g);
}

TEST(GReader, PlacesWrittenLikeImplicitOnesAreTakenBack) {
  const std::string head = ".outputs a b\n.graph\n";
  const std::string signals = "o.a=? o.b=? ";
  const std::vector<ReadingRow> rows = {
      {"by the name of transitions that they do not join",
       head + "a+ <a+/1,b+>\n<a+/1,b+> b+\nb+ a+\n.marking { <b+,a+> <a+/1,b+> }\n.end\n",
       signals + "marked <b+,a+> <a+/1,b+>; a+ = a+: <b+,a+> -> <a+/1,b+>; "
                 "b+ = b+: <a+/1,b+> -> <b+,a+>"},
      {"one of several between two transitions",
       head + "a+ b+ p\np b+\nb+ a+\n.marking { <b+,a+> p }\n.end\n",
       signals + "marked p <b+,a+>; a+ = a+: <b+,a+> -> p <a+,b+>; b+ = b+: p <a+,b+> -> <b+,a+>"},
      {"beside an implicit place of the same name, both marked",
       head + "a+ b+ <a+,b+>\n<a+,b+> b+\n.marking { <a+,b+> <a+,b+> }\n.end\n",
       signals + "marked <a+,b+> <a+,b+>_2; a+ = a+: -> <a+,b+> <a+,b+>_2; "
                 "b+ = b+: <a+,b+> <a+,b+>_2 ->"},
      {"beside an implicit place of the same name, which one is marked?",
       head + "a+ b+ <a+,b+>\n<a+,b+> b+\n.marking { <a+,b+> }\n.end\n", "",
       "Error: '<a+,b+>' is both the name of a place and that of the place between the two "
       "transitions, and one token for them is ambiguous " +
           at(5, 12)},
  };
  expect_readings(rows, NetFormat::g);
}

TEST(GReader, InitialValuesAreTakenWhereTheyAreUnambiguous) {
  const std::string head = ".outputs b\n.inputs a c\n.dummy d\n.graph\np a+\n.marking {p}\n";
  const std::string rest = " marked p; a+ = a+: p ->";
  const struct {
    std::string line, values, message;
  } rows[] = {
      {".initial.state a !b c=0", "i.a=1 i.c=0 o.b=0 d.d=?", ""},
      {".initial state b=1", "i.a=? i.c=? o.b=1 d.d=?", ""},
      {".initial_state 01?", "i.a=1 i.c=? o.b=0 d.d=?", ""},
      {".init_values a=? b\n.init_state b", "i.a=? i.c=? o.b=1 d.d=?", ""},
      {".initial", "i.a=? i.c=? o.b=? d.d=?", ""},
      {".init_values 0110", "",
       "Error: syntax error " + at(7, 14) + ": expected 3 initial values, found '0110'"},
      {".initial.state a !a", "",
       "Error: signal 'a' has two different initial values " + at(7, 18)},
      {".initial state x", "",
       "Error: syntax error " + at(7, 16) + ": expected a signal, found 'x'"},
      {".initial.state d=0", "", "Error: dummy 'd' has an initial value " + at(7, 16)},
      {".initial.state a=2", "",
       "Error: syntax error " + at(7, 16) + ": expected a signal, found 'a=2'"},
  };
  for (const auto& row : rows) {
    const NetReading reading = read_g(head + row.line + "\n.end\n");
    EXPECT_EQ(reading.description(), row.values.empty() ? "" : row.values + rest) << row.line;
    EXPECT_EQ(reading.messages, row.message) << row.line;
  }
}

struct Fault {
  std::string text;
  int line, column;
  std::string message;
};

TEST(GReader, AFaultIsReportedWithItsPlaceAndText) {
  const std::string a = ".inputs a\n.graph\n";
  const std::string no_instance = "expected a sign or an instance number behind the signal 'a', ";
  const Fault syntax[] = {
      {"", 1, 1, "expected .graph, found the end of the file"},
      {"  a+ b+\n", 1, 3, "expected a line that starts with '.', found 'a+'"},
      {".inputs a a-", 1, 11, "expected the name of a signal, found 'a-'"},
      {".graph\n.inputs a\n", 2, 1, "signals are declared before .graph, found '.inputs'"},
      {a + "p a+b\n", 3, 3, no_instance + "found 'a+b'"},
      {a + "p a+/\n", 3, 3, no_instance + "found 'a+/'"},
      {a + "\np \\\r\n a+ q\n", 5, 5, "expected a transition behind the place 'p', found 'q'"},
      {".graph\np \x01x\n", 2, 3, "expected a name of printable characters, found '\\x01x'"},
      {".graph\n.marking p }", 2, 10, "expected '{', found 'p'"},
      {".graph\n.marking { p\n", 3, 1, "expected '}', found the end of the file"},
      {".graph\n.marking { \n.end\n", 3, 1, "expected '}', found '.end'"},
      {".graph\n.marking { } p\n.end\n", 2, 14, "expected the end of the line, found 'p'"},
      {a + "a+ p(1) q(0)\n", 3, 9, "expected an arc of weight 1, found 'q(0)'"},
      {a + "a+ p =1\n", 3, 6, "expected a node, found '=1'"},
      {a + "p(1) a+\n", 3, 1, "expected a node without a weight, found 'p(1)'"},
      {a + "a+ p\n.marking { q(1) }\n", 4, 12, "expected a place, found 'q(1)'"},
      {a + "a+ p\n.marking { p }\np a-\n.end", 5, 1,
       "expected a line that starts with '.', found 'p'"},
      {a + ".coords\n.inputs b\n", 4, 1, "signals are declared before .graph, found '.inputs'"},
      {a + "a+ p\n.marking { a+ }\n.end", 4, 12, "expected a place, found 'a+'"},
      {a + "a+ p\n.marking { =1 }\n.end", 4, 12, "expected a place, found '=1'"},
  };
  const Fault others[] = {
      {".inputs a\n.outputs b a\n", 2, 12, "signal 'a' is declared twice"},
      {a + "a+ \xC3\xA4  x+/2\n", 3, 7, "the signal of 'x+/2' is not declared"},
      {a + "a+ a-\n.marking { <a-,a+> }\n.end", 4, 12,
       "no arc goes through the marked place '<a-,a+>'"},
      {a + "p a+\n.marking { p p }\n.end", 4, 14,
       "the net is not safe, place p has 2 tokens in the initial marking"},
      {a + "a+ a-\n.marking {<a+,a->=0099999999999999999999}\n.end", 4, 11,
       "the net is not safe, place <a+,a-> has 99999999999999999999 tokens in the initial marking"},
  };
  for (const Fault& f : syntax)
    expect_faults({{f.text, "syntax error " + at(f.line, f.column) + ": " + f.message}},
                  NetFormat::g);
  for (const Fault& f : others)
    expect_faults({{f.text, f.message + " " + at(f.line, f.column)}}, NetFormat::g);
}

TEST(GReader, WhatIsOnlyOddIsReadWithOneWarning) {
  const std::string head = ".inputs a\n.dummy d\n.graph\n";
  const std::string signals = "i.a=? d.d=? marked";
  const std::string unknown =
      " is unknown and ignored, as are those below it up to the next keyword ";
  std::string many, told = "Warning: the line '.a'" + unknown + at(1, 1) + "\n";
  for (int i = 0; i < 9; ++i) {
    many += ".x" + std::to_string(i) + "\n";
    told += "Warning: the line '.x" + std::to_string(i) + "'" + unknown + at(5 + i, 1) + "\n";
  }
  const std::vector<ReadingRow> rows = {
      {"repeated arcs", head + "a+ a- a-\na+ a-\n.end",
       signals + "; a+ = a+: -> <a+,a->; a- = a-: <a+,a-> ->",
       "Warning: the arc to 'a-' is repeated, the first of 2 such cases " + at(4, 7)},
      {"unknown lines", ".smoke 1\n" + head + ".fire\na+ d\n.smoke\n.end", signals,
       "Warning: the line '.smoke'" + unknown + at(1, 1) + "\nWarning: the line '.fire'" + unknown +
           at(5, 1)},
      {"text behind the end", head + "p a+\n.end # yes\n\n p a-\n", signals + "; a+ = a+: p ->",
       "Warning: what follows .end is ignored " + at(7, 2)},
      {"an unknown line that explains an error", ".output b\n" + head + "b+ a+\n.end", "",
       "Warning: the line '.output'" + unknown + at(1, 1) +
           "\nError: the signal of 'b+' is not declared " + at(5, 1)},
      {"more unknown lines than anybody reads", ".a\n" + head + many + many + ".b\n.c\n.end",
       signals,
       told + "Warning: more unknown lines are ignored, as are all below them " + at(23, 1)},
      {"no end", head + "a+\n", signals + "; a+ = a+: ->",
       "Warning: the last line is not .end " + at(5, 1)},
      {"signs of dummies", head + "d+ d-/1\n.end",
       signals + "; d+ = d~: -> <d+,d-/1>; d-/1 = d~: "
                 "<d+,d-/1> ->",
       "Warning: dummy transition 'd+' cannot have sign, the first of 2 such cases " + at(4, 1)},
      {"a marked place without arcs", head + ".marking { p }\n.end", signals + " p",
       "Warning: the marked place 'p' has no arcs " + at(4, 12)},
      {"a marked place without arcs that is no pair", head + "<q>\n.marking { <q> <r> }\n.end",
       signals + " <q> <r>", "Warning: the marked place '<r>' has no arcs " + at(5, 16)},
      {"two ways to write the same instance", head + "p a+/0 a+ a-/0\n.end",
       signals + "; a+ = a+: p ->; a+/0 = a+: p ->; a-/0 = a-: p ->",
       "Warning: transition 'a+/0' is taken for another one than that without \"/0\" " + at(4, 3)},
  };
  expect_readings(rows, NetFormat::g);
}

TEST(GReader, NamesMayBeLongButMessagesAreNot) {
  const std::string name(10'000, 'n');
  const std::string declared =
      read_g(".inputs " + name + "\n.graph\np " + name + "+\n.marking {p}\n.end\n").description();
  EXPECT_EQ(declared.size(), 3 * name.size() + std::string("i.=? marked p; + = +: p ->").size());
  EXPECT_EQ(read_g(".graph\n" + name + "+\n").messages,
            "Error: the signal of '" + name.substr(0, 60) + "...' is not declared " + at(2, 1));
}

}  // namespace
}  // namespace vorel::formats
