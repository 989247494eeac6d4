// What the writer of the .g form writes, the reader takes back.
#include <gtest/gtest.h>

#include "formats/g_writer.h"
#include "oracle/random_stg.h"
#include "oracle/state_graph.h"
#include "tools/net_reading.h"

namespace vorel {
namespace {

std::string written(const Stg& stg) {
  const CaughtMessages of_replaced_names;
  std::ostringstream text;
  EXPECT_TRUE(write_g(stg, text));
  return text.str();
}

TEST(GRoundTrip, RandomStgsKeepTheirStates) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    const Stg stg = oracle::random_stg(seed, {.dummies = seed % 2 == 0, .toggles = seed % 3 == 0});
    const std::string text = written(stg);
    const NetReading reading = read_text(text, NetFormat::g);
    ASSERT_TRUE(reading.net && reading.messages.empty()) << text << reading.messages;
    const Stg& again = std::get<Stg>(*reading.net);
    // Once implicit places have their names from the text, nothing changes any more.
    const NetReading third = read_text(written(again), NetFormat::g);
    EXPECT_EQ(third.description(), reading.description());
    const auto states = oracle::explore(stg), states_again = oracle::explore(again);
    EXPECT_EQ(states_again.outcome, states.outcome);
    EXPECT_EQ(states_again.states.size(), states.states.size()) << text;
    EXPECT_EQ(states_again.shortest_deadlock(), states.shortest_deadlock()) << text;
  }
}

TEST(GRoundTrip, PlacesThatShareTransitionsAndNamesStayApart) {
  // The places p, q and the implicit one join a+ and b+; one of the others has its name.
  const std::string head = ".outputs a b\n.graph\na+ b+ p q <b+,a+>\np b+\nq b+\n";
  const std::string texts[] = {
      head + "b+ a+\n<b+,a+> a+\n.marking { q <b+,a+> <b+,a+> }\n.end\n",
      head + "b+ r\nr a+\n<b+,a+> b+\n.marking { r p <a+,b+> }\n.end\n",
  };
  for (const std::string& text : texts) {
    const NetReading reading = read_text(text, NetFormat::g);
    ASSERT_TRUE(reading.net) << reading.messages;
    const Stg& stg = std::get<Stg>(*reading.net);
    const NetReading again = read_text(written(stg), NetFormat::g);
    ASSERT_TRUE(again.net) << written(stg) << again.messages;
    const auto tokens = [](const Stg& s) {
      std::size_t sum = 0;
      for (const auto& place : s.places) sum += place->initial_marking;
      return sum;
    };
    EXPECT_EQ(tokens(std::get<Stg>(*again.net)), tokens(stg)) << written(stg);
    EXPECT_EQ(std::get<Stg>(*again.net).places.size(), stg.places.size()) << written(stg);
  }
}

}  // namespace
}  // namespace vorel
