#include "formats/g_writer.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <variant>

#include "formats/pnml_reader.h"
#include "oracle/net_builder.h"
#include "oracle/parse_g.h"
#include "oracle/random_stg.h"
#include "oracle/reference_unfolder.h"
#include "oracle/state_graph.h"
#include "support/legacy_files.h"
#include "support/run_program.h"
#include "support/seeds.h"

namespace vorel::formats {
namespace {

// A transition of an output; its label, such as "x+", is its name as well where none is given.
struct Arcs {
  std::string label;
  std::vector<std::string> from, to;
  std::string name = label;
};
net::Stg stg_of(const std::vector<Arcs>& rows, const std::vector<std::string>& marked) {
  oracle::NetBuilder<net::Stg> builder;
  std::map<std::string, net::Signal*> signals;
  for (const Arcs& row : rows) {
    const std::string name = row.label.substr(0, row.label.size() - 1);
    net::Signal*& signal = signals[name];
    if (signal == nullptr) signal = &builder.add_signal(name, net::SignalKind::output);
    const auto sign = static_cast<net::Sign>(std::string("+-~").find(row.label.back()));
    builder.add_transition(row.name).label(*signal, sign);
    for (const std::string& place : row.from) builder.consume(place);
    for (const std::string& place : row.to) builder.produce(place);
  }
  for (const std::string& place : marked) builder.mark(place);
  return builder.finish();
}

std::string written(const net::Stg& stg) {
  std::ostringstream stream;
  EXPECT_TRUE(write_g(stg, stream));
  return stream.str();
}

// What remains the same whatever the names of places and the instances of transitions.
struct Sizes {
  std::size_t states = 0, deadlocks = 0, transitions = 0, places = 0, tokens = 0;
  std::multiset<std::string> arcs;  // labels along all arcs of the state graph
  bool operator==(const Sizes&) const = default;
};
Sizes sizes_of(const net::Stg& stg) {
  Sizes sizes;
  const auto graph = oracle::explore(stg);
  sizes.states = graph.states.size();
  for (const auto& state : graph.states) {
    sizes.deadlocks += state.is_deadlock() ? 1 : 0;
    for (const auto& arc : state.arcs) {
      const net::StgTransition& t = *arc.transition;
      sizes.arcs.insert(t.signal->name + "+-~"[static_cast<std::size_t>(t.sign)] +
                        "io_d"[static_cast<std::size_t>(t.signal->kind)]);
    }
  }
  sizes.transitions = stg.transitions.size();
  sizes.places = stg.places.size();
  for (const auto& place : stg.places) sizes.tokens += place->initial_marking;
  return sizes;
}

void expect_same_when_read(const net::Stg& stg) {
  const std::string text = written(stg);
  const auto again = oracle::parse_g(text);
  ASSERT_TRUE(again) << text;
  EXPECT_TRUE(sizes_of(*again) == sizes_of(stg)) << text;
}

TEST(GWriter, TheTextIsThatOfTheFormat) {
  oracle::NetBuilder<net::Stg> b;
  net::Signal& x = b.add_signal("x", net::SignalKind::output);
  net::Signal& a = b.add_signal("a", net::SignalKind::input);
  net::Signal& d = b.add_signal("d", net::SignalKind::dummy);
  b.add_signal("bb", net::SignalKind::input);
  b.add_transition("x+").label(x, net::Sign::plus).consume("p").produce("q").produce("sink");
  b.add_transition("i.a-/2").label(a, net::Sign::minus).consume("q").produce("r");
  b.add_transition("d").label(d, net::Sign::toggle).consume("r").consume("p").produce("p");
  b.mark("p");
  b.mark("q");
  b.mark("alone");
  net::Stg stg = b.finish();
  stg.places.back()->initial_marking = 2;
  ASSERT_EQ(stg.places.back()->name, "alone");
  EXPECT_EQ(written(stg),
            "\n.inputs a bb\n.outputs x\n.dummy d"
            "\n\n.graph"
            "\np d x+"
            "\nd p"
            "\nx+ a-/2 sink"
            "\na-/2 d"
            "\n\n.marking { p <x+,a-/2> alone=2 }\n.end\n");
}

TEST(GWriter, RandomStgsAreReadBackWithTheSameBehaviour) {
  support::for_each_seed(100, [&](std::uint64_t seed) {
    expect_same_when_read(
        oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0}));
  });
}

// The second of two parallel places keeps its own marking by keeping its name.
TEST(GWriter, ValuesThatNoEdgeTellsAreWrittenIfTheyAreWanted) {
  net::Stg stg = stg_of({{"a~", {"p"}, {"q"}}, {"z~", {"q"}, {"r"}}, {"x+", {"r"}, {"s"}}}, {"p"});
  for (const auto& signal : stg.signals) signal->initial_value = signal->name == "z" ? 1 : 0;
  std::ostringstream stream;
  EXPECT_TRUE(write_g(stg, stream, GInitialValues::of_toggles));
  EXPECT_NE(stream.str().find("\n.initial.state a=0 z=1\n"), std::string::npos) << stream.str();
  EXPECT_EQ(written(stg).find(".initial"), std::string::npos);
}

TEST(GWriter, OfParallelPlacesAllButOneAreWrittenByName) {
  const net::Stg stg =
      stg_of({{"x+", {"p"}, {"q", "r", "s"}}, {"x-", {"q", "r", "s"}, {"p"}}}, {"p", "s"});
  const std::string text = written(stg);
  EXPECT_NE(text.find("\nr x-\ns x-\nx+ x- r s\nx- x+\n"), std::string::npos) << text;
  EXPECT_NE(text.find("{ <x-,x+> s }"), std::string::npos) << text;
  expect_same_when_read(stg);
}

TEST(GWriter, TheOneOfParallelPlacesWithTheNameOfThePairIsImplicit) {
  const net::Stg stg =
      stg_of({{"x+", {"p"}, {"q", "<x+,x->"}}, {"x-", {"q", "<x+,x->"}, {"p"}}}, {"p"});
  EXPECT_NE(written(stg).find("\n.graph\nq x-\nx+ q x-\n"), std::string::npos) << written(stg);
  expect_same_when_read(stg);
}

// "<x+,x->" has two consumers and must be written; so the place between x+ and x- must be, too. It
// is called as if it were between y+ and y-, so that those two have no implicit place either.
TEST(GWriter, APlaceMakesRoomForAWrittenOneOfTheNameThatItWouldHave) {
  const net::Stg stg = stg_of({{"x+", {"p"}, {"<y+,y->"}},
                               {"x-", {"<y+,y->"}, {"<x+,x->"}},
                               {"y+", {"<x+,x->"}, {"q"}},
                               {"y-", {"q"}, {"p"}},
                               {"y~", {"<x+,x->"}, {"p"}}},
                              {"<y+,y->"});
  const std::string text = written(stg);
  EXPECT_NE(text.find("\nq y-"), std::string::npos) << text;
  EXPECT_NE(text.find("\n<x+,x-> y+ y~"), std::string::npos) << text;
  EXPECT_NE(text.find("\n<y+,y-> x-"), std::string::npos) << text;
  EXPECT_NE(text.find("{ <y+,y-> }"), std::string::npos) << text;
  expect_same_when_read(stg);
}

// The names on the left do not suit the format, with what is written instead.
TEST(GWriter, TransitionsWhoseNamesDoNotTellThemApartGetNewInstances) {
  const std::pair<std::string, std::string> rows[] = {
      {"x+", "x+/1"},    // taken by the other transition
      {"O.x+", "x+/1"},  // likewise, without its prefix
      {"t12", "x+/1"},   // no label
      {"x-/5", "x+/1"},  // another label
      {"x+/", "x+/1"},  {"x+ /3", "x+/1"},   {"x+/#", "x+/1"},  {"x+/a,b", "x+/1"},
      {"x+y", "x+/1"},  {"x+/2(1)", "x+/1"}, {"I.x+/1", "x+/1"}};
  for (const auto& [name, expected] : rows) {
    const net::Stg stg = stg_of({{"x+", {"p"}, {"q"}},
                                 {"x+", {"p"}, {"r"}, name},
                                 {"x-", {"q"}, {}},
                                 {"x-", {"r"}, {}, "x-/2"}},
                                {"p"});
    const support::CaughtMessages messages;
    const std::string text = written(stg);
    EXPECT_NE(text.find("\n" + expected + " x-/2\n"), std::string::npos) << text;
    EXPECT_EQ(messages.text().empty(), name == "I.x+/1") << messages.text();
    expect_same_when_read(stg);
  }
}

TEST(GWriter, PlacesThatWouldBeTakenForSomethingElseGetNewNames) {
  for (const std::string name : {"", "a b", "x", "x+", "x-/7", "x/1", "z+", "p#1", ".end", "a=2",
                                 "{", "\x01", "<a", "\\", "a(1)", "p(2)"}) {
    const net::Stg stg = stg_of({{"x+", {name, "place_1"}, {"q"}},
                                 {"x-", {"q"}, {name, "place_1"}},
                                 {"x-", {"q"}, {name, "place_1"}, "x-/2"}},
                                {name, "place_1"});
    const support::CaughtMessages messages;
    EXPECT_NE(written(stg).find("\nplace_1 x+\n"), std::string::npos);
    EXPECT_EQ(messages.text(), "\nWarning: 1 name(s) of places do not suit the .g format; \"" +
                                   name + "\" is written as \"place_2\"\n");
    expect_same_when_read(stg);
  }
}

TEST(GWriter, ASignalWhoseNameDoesNotSuitTheFormatIsAnErrorAndNothingIsWritten) {
  for (const std::string name : {"", "a b", "a+", "a/b", "<a", "a,b", "#"}) {
    const net::Stg stg = stg_of({{name + "+", {"p"}, {}}}, {});
    const support::CaughtMessages messages;
    std::ostringstream stream;
    EXPECT_FALSE(write_g(stg, stream));
    EXPECT_EQ(stream.str(), "");
    EXPECT_EQ(messages.text(),
              "\nError: the name of signal \"" + name + "\" does not suit the .g format\n");
  }
}

}  // namespace
}  // namespace vorel::formats
