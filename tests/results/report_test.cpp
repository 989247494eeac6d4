#include "results/report.h"

#include <gtest/gtest.h>
#include <gzstream.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <rapidxml/rapidxml.hpp>

#include "support/run_program.h"

namespace vorel::results {
namespace {

namespace fs = std::filesystem;

const VerdictMessages messages = {"the system has a deadlock", "the system is deadlock-free"};

class ReportTest : public testing::Test {
 protected:
  // Adds a solution whose traces are given by event numbers; event i is named after names_[i].
  void add(std::vector<std::vector<std::uint32_t>> traces, bool output_configurations = false) {
    auto solution = std::make_unique<Solution>(output_configurations);
    for (const auto& events : traces) {
      Trace& trace = solution->traces.emplace_back();
      for (const std::uint32_t event : events) trace.push_back({event, &names_.at(event)});
    }
    report_.add(std::move(solution));
  }

  std::string printed(std::ostream& stream) const {
    const support::CaughtMessages text(stream);
    report_.print(stream, messages);
    return text.text();
  }

  // Delivers to a name and keeps what comes out on the two standard streams.
  void deliver_to(const std::string& name) {
    const support::CaughtMessages out(std::cout), err;
    deliver(report_, messages, name);
    out_ = out.text();
    err_ = err.text();
  }

  std::string path(const std::string& name) const { return folder_.path(name); }
  std::string get(const std::string& name) const { return support::read_text(path(name)); }
  bool is_well_formed(const std::string& name) const {
    return std::system(("xmllint --noout '" + path(name) + "'").c_str()) == 0;
  }

  std::vector<std::string> names_ = {"a+", "b-", "c~/2"};
  Report report_;
  support::TemporaryFolder folder_;
  std::string out_, err_;
};

TEST_F(ReportTest, PeopleGetNumberedSolutionsTheirCostAndTheVerdict) {
  EXPECT_EQ(printed(std::cout), "\nthe system is deadlock-free\n");
  add({{0, 2}});
  add({{1}, {}});
  EXPECT_EQ(printed(std::cout),
            "\nSOLUTION 0:\na+, c~/2\npath cost: 2\n"
            "\nSOLUTION 1:\nb-\n\ntotal cost of all paths: 1\n"
            "\nthe system has a deadlock\n");
}

TEST_F(ReportTest, MachinesGetYesOrNoAndMarkedSequences) {
  EXPECT_EQ(printed(std::cerr), "NO\n");
  add({{0, 2}});
  add({{1}, {}});
  EXPECT_EQ(printed(std::cerr),
            "\nYES\n_SEQUENCE:\na+, c~/2\n\nYES\n_SEQUENCE:\nb-\n_SEQUENCE:\n\n");
}

TEST_F(ReportTest, AConfigurationIsToldByEventIndicesInAscendingOrder) {
  add({{2, 0, 1}}, true);
  EXPECT_EQ(printed(std::cout),
            "\nSOLUTION 0:\n0, 1, 2\npath cost: 3\n\nthe system has a deadlock\n");
}

TEST_F(ReportTest, WithoutAFileOrWithTheNameCerrTheStandardOutputIsUsed) {
  for (const char* name : {"", "cerr"}) {
    deliver_to(name);
    EXPECT_EQ(out_, "\nthe system is deadlock-free\n") << name;
    EXPECT_EQ(err_, "") << name;
  }
  EXPECT_FALSE(fs::exists("cerr"));
}

TEST_F(ReportTest, ATextFileHoldsTheFormForMachinesAndNothingIsPrinted) {
  deliver_to(path("none.txt"));
  EXPECT_EQ(get("none.txt"), "NO\n");
  add({{0}});
  for (const char* name : {"found.txt", "found.XML", "found.xml.gz"}) {
    deliver_to(path(name));
    EXPECT_EQ(get(name), "\nYES\n_SEQUENCE:\na+\n") << name;
    EXPECT_EQ(out_ + err_, "") << name;
  }
}

TEST_F(ReportTest, WhatCannotBeWrittenIsTold) {
  const std::string text = path("missing/out.txt"), xml = path("missing/out.xml");
  const std::string full = "\nError: cannot write a file\n";
  const std::pair<std::string, std::string> table[] = {
      {text, "\nWarning: cannot open \"" + text + "\" for output\nNO\n"},  // in its place
      {xml, "\nError: cannot open \"" + xml + "\" for output\n"},
      {path("full.txt"), full},
      {path("full.xml"), full}};
  for (const auto& [name, message] : table) {
    if (message == full) fs::create_symlink("/dev/full", name);
    deliver_to(name);
    EXPECT_EQ(out_, "") << name;
    EXPECT_EQ(err_, message) << name;
  }
}

TEST_F(ReportTest, TheNameXmlAloneSelectsTheResultsDocument) {
  deliver_to(path(".xml"));
  EXPECT_EQ(out_ + err_, "");
  EXPECT_TRUE(get(".xml").ends_with("\n\t<solutions/>\n</result>\n\n")) << get(".xml");
}

TEST_F(ReportTest, TheResultsDocumentHasEventsAndTransitionsWhateverIsPrinted) {
  add({{0, 2}, {}}, true);
  deliver_to(path("out.xml"));
  EXPECT_EQ(get("out.xml"),
            "<result status=\"success\" message=\"the system has a deadlock\">\n"
            "\t<solutions>\n"
            "\t\t<solution cost=\"2\">\n"
            "\t\t\t<trace>\n"
            "\t\t\t\t<step event=\"0\" transition=\"a+\"/>\n"
            "\t\t\t\t<step event=\"2\" transition=\"c~/2\"/>\n"
            "\t\t\t</trace>\n"
            "\t\t\t<trace/>\n"
            "\t\t</solution>\n"
            "\t</solutions>\n"
            "</result>\n\n");
}

TEST_F(ReportTest, ACompressedDocumentHoldsTheSameText) {
  add({{0, 1, 2}});
  ASSERT_TRUE(save_results(report_, messages, path("a.xml.gz")));
  ASSERT_TRUE(save_results(report_, messages, path("a.xml")));
  igzstream in;
  in.open(path("a.xml.gz").c_str());
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), get("a.xml"));
  EXPECT_EQ(get("a.xml.gz").substr(0, 2), "\x1F\x8B");

  const support::CaughtMessages err;
  fs::create_symlink("/dev/full", path("full.xml.gz"));
  EXPECT_FALSE(save_results(report_, messages, path("full.xml.gz")));
  EXPECT_EQ(err.text(), "\nError: cannot write a file\n");
}

struct NameCase {
  std::string name, read_back;
};

TEST_F(ReportTest, NamesSurviveTheWayThroughXmlAsFarAsXmlCanHoldThem) {
  const std::string bad = "\xEF\xBF\xBD";
  const std::vector<NameCase> cases = {
      {"<a>&'\"", "<a>&'\""},
      {"'single'", "'single'"},
      {"\"double\"", "\"double\""},
      {"", ""},
      {"tab\tline\nreturn\r", "tab\tline\nreturn\r"},
      {std::string("nul\0nul", 7), "nul" + bad + "nul"},
      {"\x01\x1F\x7F", bad + bad + "\x7F"},
      {"gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9D\x84\x9E",
       "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9D\x84\x9E"},
      {"latin \xFC.", "latin " + bad + "."},
      {"cut \xE2\x82", "cut " + bad + bad},
      {"overlong \xC0\xAF", "overlong " + bad + bad},
      {"surrogate \xED\xA0\x80", "surrogate " + bad + bad + bad},
      {"not a character \xEF\xBF\xBE", "not a character " + bad + bad + bad},
      {"beyond \xF4\x90\x80\x80", "beyond " + bad + bad + bad + bad},
  };
  names_.clear();
  for (const NameCase& c : cases) names_.push_back(c.name);
  for (std::uint32_t i = 0; i < cases.size(); ++i) add({{i}});
  deliver_to(path("out.xml"));
  ASSERT_TRUE(is_well_formed("out.xml"));

  std::string text = get("out.xml");
  XmlDocument document;
  document.parse<0>(text.data());
  const XmlNode* solution = document.first_node("result")->first_node("solutions")->first_node();
  for (const NameCase& c : cases) {
    ASSERT_NE(solution, nullptr);
    const auto* attribute =
        solution->first_node("trace")->first_node("step")->first_attribute("transition");
    EXPECT_EQ(std::string(attribute->value(), attribute->value_size()), c.read_back);
    solution = solution->next_sibling();
  }
}

}  // namespace
}  // namespace vorel::results
