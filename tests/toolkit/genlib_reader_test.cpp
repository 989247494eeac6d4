#include "toolkit/genlib_reader.h"

#include <gtest/gtest.h>

#include <random>

#include "base/messages.h"
#include "base/run_state.h"
#include "support/gate_text.h"

namespace vorel::toolkit {
namespace {

struct Reading {
  std::optional<std::vector<LibraryGate>> gates;
  std::string messages;
};

// With diagnostics.
Reading read(const std::string& text) {
  base::run_state().verbosity = 1;
  testing::internal::CaptureStderr();
  auto gates = read_genlib(text, "FILE");
  base::run_state().verbosity = 0;
  return {std::move(gates), testing::internal::GetCapturedStderr()};
}

// "nand2 24 O(A B) = !(A*B)"; the feedback of a latch stands behind a ";".
std::string describe(const LibraryGate& gate) {
  std::string text = gate.name + base::format_message(" %g ", gate.area) + gate.output + "(";
  for (std::uint32_t pin = 0; pin < gate.pin_count(); ++pin) {
    text += (pin == 0 ? "" : " ") + std::string(gate.is_feedback(pin) ? "; " : "") + gate.pins[pin];
  }
  const char* const kinds[] = {"", " asynchronous", " clocked"};
  return text + ") = " + support::text_of(gate.function, gate.pins) +
         kinds[static_cast<std::size_t>(gate.gate_class)];
}

std::string description_of(const std::string& text) {
  const Reading reading = read(text);
  EXPECT_EQ(reading.messages, "") << text;
  std::string all;
  if (!reading.gates) return "an error";
  for (const LibraryGate& gate : *reading.gates) all += (all.empty() ? "" : "\n") + describe(gate);
  return all;
}

const std::string timing = " 1 999 1 .2 1 .2 ";

TEST(GenlibReader, TakesTheFormsInWhichLibrariesArePublished) {
  const struct {
    std::string text, description;
  } rows[] = {
      {"# a comment\nGATE\t\"x:comb\" .5e1 Y = A*B+C' ; # another\r\nPIN * UNKNOWN" + timing,
       "x:comb 5 Y(A B C) = ((A*B)+!C)"},
      {"GATE a(1) 1. O=a b!c;PIN * INV" + timing + "GATE zero 0 O=CONST0;GATE \"o n e\" 0 z=1;",
       "a(1) 1 O(a b c) = ((a*b)*!c)\nzero 0 O() = CONST0\no n e 0 z() = CONST1"},
      {"GATE o 1 o=x[1]*\"a+b\"+<y>.2:z-0_\\ 2B;PIN 2B INV" + timing + "PIN * INV" + timing,
       "o 1 o(2B x[1] a+b <y>.2:z-0_\\) = ((x[1]*a+b)+(<y>.2:z-0_\\*2B))"},
      {"GATE o 1 o=!!a''+!(b|c')'&d^e f;PIN f NONINV 0 -1 1e-3 0 0 0 PIN * INV" + timing,
       "o 1 o(f a b c d e) = (a+(((b+!c)*d)^(e*f)))"},
      {"\xEF\xBB\xBFGATE a 2 o=x*!y+!x*y; PIN * INV" + timing +
           "GATE a 1 o=!(y x+!x y'); PIN * INV" + timing,
       "a 1 o(x y) = ((x*!y)+(!x*y))"},
      {"LATCH sr 40 Q=Q*R+!S; SEQ Q Q ASYNCH PIN S INV" + timing + "PIN R INV" + timing,
       "sr 40 Q(S R ; Q) = ((Q*R)+!S) asynchronous"},
      {"LATCH \"dff\" 5 Q=D; PIN D NONINV" + timing + "SEQ Q ANY RISING_EDGE\nCONTROL CLK" +
           timing + "CONSTRAINT D 0.3 0.2\n",
       "dff 5 Q(D) = D clocked"},
      {"LATCH l 5 Q_NEXT=D*G+Q*!G; PIN D INV" + timing + "SEQ Q_NEXT Q ACTIVE_HIGH CONTROL G" +
           timing + "CONSTRAINT * 1 2 GATE b 1 o=ANY;PIN ANY INV" + timing,
       "l 5 Q_NEXT(D G ; Q) = ((D*G)+(Q*!G)) clocked\nb 1 o(ANY) = ANY"},
  };
  for (const auto& row : rows) EXPECT_EQ(description_of(row.text), row.description);
}

TEST(GenlibReader, AFaultIsNotedWithItsLineAndText) {
  const std::string pins = "PIN * INV" + timing,
                    area = "expected an area, a number that is not negative";
  const struct {
    std::string text, note;
  } rows[] = {
      {"#only\n\n", "3: expected 'GATE' or 'LATCH', found the end of the text"},
      {"\nPIN a INV", "2: expected 'GATE' or 'LATCH', found 'PIN'"},
      {std::string("\0\xFFGATE", 6), "1: expected a statement, found '\\x00\\xffGATE'"},
      {"GATE", "1: expected the name of a gate, found the end of the text"},
      {"GATE \"a\n 1 o=x;",
       "1: expected '\"' at the end of a name that starts with it, found '\"a'"},
      {"GATE a -1 o=x;", "1: " + area + ", found '-1'"},
      {"GATE a 1e999 o=x;", "1: " + area + ", found '1e999'"},
      {"GATE a nan o=x;", "1: " + area + ", found 'nan'"},
      {"GATE a 1 =x;", "1: expected the name of the output, found '=x;'"},
      {"GATE a 1 o x;", "1: expected '=', found 'x;'"},
      {"GATE a 1\no=x+;", "2: expected a pin, a constant or '(', found ';'"},
      {"GATE a 1 o=x)", "1: expected ';', found ')'"},
      {"GATE a 1 o=(x;", "1: expected ')', found ';'"},
      {"GATE a 1 o=" + std::string(1000000, '('),
       "1: expected no more than 500 nested brackets, found '" + std::string(60, '(') + "...'"},
      {"GATE a 1 o=x;PIN x inv", "1: expected 'INV', 'NONINV' or 'UNKNOWN', found 'inv'"},
      {"GATE a 1 o=x;PIN x INV 1 2 3 4 5;", "1: expected a load or a delay, found '5;'"},
      {"GATE a 1 o=x;PIN * INV 1 2 3 4 5 6 7", "1: expected a statement, found '7'"},
      {"GATE a 1 o=x;", "1: gate 'a': there is no PIN for 'x'"},
      {"GATE a 1 o=x;" + pins + "\nPIN y INV" + timing,
       "2: gate 'a': the equation does not mention 'y'"},
      {"GATE a 1 o=x;" + pins + pins, "1: gate 'a': a second PIN for '*'"},
      {"GATE a 1 o=o;" + pins, "1: gate 'a': the equation mentions the output 'o'"},
      {"GATE a 1 o=x;" + pins + "SEQ o ANY ASYNCH",
       "1: expected a statement of a combinational gate, found 'SEQ'"},
      {"LATCH a 1 o=x;\n" + pins + "GATE b", "1: gate 'a': a latch needs SEQ"},
      {"LATCH a 1 o=x; SEQ o",
       "1: expected the name of the feedback or 'ANY', found the end of the text"},
      {"LATCH a 1 o=x; SEQ o x LATE",
       "1: expected the type of a latch, such as 'ASYNCH', found 'LATE'"},
      {"LATCH a 1 o=x; SEQ o x ASYNCH SEQ o x ASYNCH", "1: expected only one 'SEQ', found 'o'"},
      {"LATCH a 1 o=x; SEQ x o ASYNCH", "1: gate 'a': SEQ names 'x' where the output is 'o'"},
      {"LATCH a 1 o=x; SEQ o q ASYNCH",
       "1: gate 'a': the equation does not mention the feedback 'q'"},
      {"LATCH a 1 o=x; SEQ o ANY ASYNCH CONTROL c" + timing,
       "1: gate 'a': an asynchronous latch has no CONTROL"},
      {"LATCH a 1 o=x; SEQ o ANY ASYNCH CONSTRAINT x 1",
       "1: expected a time, found the end of the text"},
      {"GATE a 1 o=x+y;" + pins + "\nGATE a 2 o=x*y;" + pins,
       "2: another gate with the name 'a' has a different function"},
      {"LATCH a 1 o=x r;" + pins + "SEQ o r ASYNCH LATCH a 1 o=x r;" + pins + "SEQ o ANY ASYNCH",
       "1: another gate with the name 'a' has a different function"},
      {"GATE a 1 o=x;" + pins + "LATCH a 1 o=x;SEQ o ANY ASYNCH " + pins,
       "1: another gate with the name 'a' has a different function"},
  };
  for (const auto& row : rows) {
    const Reading reading = read(row.text);
    EXPECT_FALSE(reading.gates) << row.text;
    EXPECT_EQ(reading.messages, "\nthe input is not read: FILE, line " + row.note +
                                    "\n\nError: incorrect syntax of FILE\n");
  }
}

TEST(GenlibReader, WideAndLongTextsTakeLittleTime) {
  std::string product = "GATE wide 1 o=!(p0";
  for (int pin = 1; pin < 1000; ++pin) product += " * (p" + std::to_string(pin) + "+p0')";
  EXPECT_EQ(read(product + ");PIN * INV" + timing).gates->at(0).pin_count(), 1000u);
  EXPECT_FALSE(read(product + "*q);PIN * INV" + timing).gates);
  std::string same;
  for (int i = 0; i < 20000; ++i) same += "GATE a 1 o=!a;PIN a INV" + timing;
  EXPECT_EQ(read(same).gates->size(), 1u);
  std::mt19937 random(7);
  std::string garbage(1000000, '\0');
  for (char& c : garbage) c = static_cast<char>(random());
  EXPECT_FALSE(read(garbage).gates);
  EXPECT_FALSE(read("GATE " + garbage).gates);
  EXPECT_FALSE(read("GATE a 1 o=" + std::string(1000000, '!')).gates);
}

}  // namespace
}  // namespace vorel::toolkit
