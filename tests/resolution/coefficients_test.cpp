#include "resolution/coefficients.h"

#include <gtest/gtest.h>

#include <string>

#include "base/default_params.h"
#include "base/messages.h"
#include "support/caught_messages.h"

namespace vorel::resolution {
namespace {

// 3 inputs, 2 outputs, 1 internal signal, 4 dummies, 5 places, 7 transitions.
class Coefficients : public testing::Test {
 protected:
  Coefficients() {
    const std::pair<net::SignalKind, int> counts[] = {{net::SignalKind::input, 3},
                                                      {net::SignalKind::output, 2},
                                                      {net::SignalKind::internal, 1},
                                                      {net::SignalKind::dummy, 4}};
    for (const auto& [kind, count] : counts) {
      for (int i = 0; i < count; ++i)
        net::add_signal(stg, std::string(1u + stg.signals.size(), 's'), kind);
    }
    net::sort_signals(stg);
    for (int i = 0; i < 5; ++i) base::append_new(stg.places);
    for (int i = 0; i < 7; ++i) base::append_new(stg.transitions);
  }

  std::string errors_of(const std::string& text) {
    base::MessageCapture capture;
    EXPECT_EQ(evaluate(text, stg), 0) << text;
    return support::text_of(capture);
  }

  net::Stg stg;
};

TEST_F(Coefficients, FollowTheUsualPrecedenceAndWrap) {
  const std::pair<const char*, std::int32_t> table[] = {
      {"7", 7},
      {" 1 + 2 * 3 ", 7},
      {"(1+2)*3", 9},
      {"10-4-3", 3},
      {"100/10/5", 2},
      {"17%10%4", 3},
      {"2*7/4%3", 0},
      {"1--2", 3},
      {"--5", 5},
      {"-2*-3", 6},
      {"-7/2+4", 1},
      {"-7%3+1", 0},
      {"10--3*2", 16},
      {"#i*100000+#o*10000+#I*1000+#d*100+#p*10+#t", 321457},
      {"#s", 6},
      {"#s*#s", 36},
      {"4294967297", 1},
      {"2147483647+2147483647+3", 1},
      {"65536*65536", 0},
      {"(-2147483647-1)/-1+2147483647+6", 5},
      {"(-2147483647-1)%-1", 0},
      {"-2147483648-1", 2147483647},
  };
  for (const auto& [text, value] : table) EXPECT_EQ(evaluate(text, stg), value) << text;
}

TEST_F(Coefficients, ErrorsNameTheCauseAndTheirPlace) {
  const std::string bad = "\nError: bad coefficient option: ";
  const std::string operand = ", expecting NUM or '-' or '(' when parsing ";
  const std::pair<const char*, std::string> table[] = {
      {"1-2", bad + "coefficient must be non-negative when parsing 1-2\n"},
      {"2147483647+1", bad + "coefficient must be non-negative when parsing 2147483647+1\n"},
      {"1/0", bad + "division by 0 when parsing 1/0<<<ERROR>>>\n"},
      {"1%0", bad + "division by 0 when parsing 1%0<<<ERROR>>>\n"},
      {"(1/(2-2)) + 3", bad + "division by 0 when parsing (1/(2-2)<<<ERROR>>>) + 3\n"},
      {"", bad + "syntax error, unexpected $end" + operand + "<<<ERROR>>>\n"},
      {"2+", bad + "syntax error, unexpected $end" + operand + "2+<<<ERROR>>>\n"},
      {"2+*3", bad + "syntax error, unexpected '*'" + operand + "2+*<<<ERROR>>>3\n"},
      {"()", bad + "syntax error, unexpected ')'" + operand + "()<<<ERROR>>>\n"},
      {"1 2", bad + "syntax error, unexpected NUM, expecting $end when parsing 1 2<<<ERROR>>>\n"},
      {"1)", bad + "syntax error, unexpected ')', expecting $end when parsing 1)<<<ERROR>>>\n"},
      {"(1", bad + "syntax error, unexpected $end when parsing (1<<<ERROR>>>\n"},
      {"1@+2", "\nError: incorrect character: @\n"},
      {"1\t+2", "\nError: incorrect character: \t\n"},
      {"#s#", "\nError: invalid token: #\n"},
  };
  for (const auto& [text, error] : table) EXPECT_EQ(errors_of(text), error) << text;
  EXPECT_TRUE(errors_of("#x").starts_with("\nError: invalid token: #\n"));
  EXPECT_TRUE(errors_of("#").starts_with("\nError: invalid token: #\n"));
  EXPECT_TRUE(errors_of("2+n").starts_with("\nError: incorrect character: n\n"));
}

TEST_F(Coefficients, DeepNestingIsAnErrorAndLongChainsAreNot) {
  const std::string opened(100000, '(');
  EXPECT_TRUE(errors_of(opened).starts_with(
      "\nError: bad coefficient option: memory exhausted when parsing ((("));
  EXPECT_NE(errors_of(std::string(100000, '-').append("1")).find("memory exhausted"),
            std::string::npos);
  std::string chain = "1";
  for (int i = 0; i < 100000; ++i) chain += "+1";
  EXPECT_EQ(evaluate(chain, stg), 100001);
  EXPECT_EQ(evaluate(std::string(500, '(').append("3").append(500, ')'), stg), 3);
}

TEST_F(Coefficients, OfTheDefaultTextsAreStoredUnderTheirKeys) {
  base::Params params = base::default_params();
  evaluate_coefficients({}, stg, params);
  std::string values;
  for (const char* const key :
       {"coeff_CSC_cores", "coeff_USC_cores", "coeff_delay", "coeff_logic", "coeff_seq_insertions",
        "coeff_conc_insertions", "coeff_non_locked_signals"})
    values += std::to_string(params.get(key)) + ' ';
  EXPECT_EQ(values, "48 24 12 6 24 48 50 ");
}

}  // namespace
}  // namespace vorel::resolution
