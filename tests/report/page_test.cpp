#include "report/page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "example_results.h"
#include "flow/flow.h"
#include "formats/vcd_writer.h"
#include "oracle/random_stg.h"
#include "report/document.h"
#include "report/trace_files.h"
#include "support/run_program.h"
#include "support/seeds.h"
#include "support/value_changes.h"

namespace vorel::report {
namespace {

const std::map<std::string, ExampleRun (*)()> examples = {{"bus.html", bus_controller},
                                                          {"hostile.html", hostile_texts},
                                                          {"unsafe.html", unsafe_net},
                                                          {"long.html", long_traces}};

// And runs of whatever comes.
std::map<std::string, ExampleRun> all_runs() {
  std::map<std::string, ExampleRun> runs;
  for (const auto& [name, make] : examples) runs.emplace(name, make());
  for (auto [seed, end] = support::seeds(5); seed < end; ++seed) {
    ExampleRun run;
    run.request.stg_name = "random.g";
    run.request.style = flow::Style::complex_gate;  // mapping takes longer than this test may
    run.result = flow::run_flow(oracle::random_stg(seed), run.request);
    runs.emplace("random" + std::to_string(seed) + ".html", std::move(run));
  }
  return runs;
}

// A page leads to them, whatever their names.
std::vector<std::string> files_of(const ExampleRun& run) {
  std::vector<std::string> names{"a&b \"c\".v", "100%.g"};
  for (const TraceFile& file : trace_files(run.result)) names.push_back(file.name);
  return names;
}

std::string page_of(const ExampleRun& run) {
  std::ostringstream stream;
  EXPECT_TRUE(write_page(run.request, run.result, files_of(run), stream));
  return stream.str();
}

TEST(Page, IsWellFormedAndHasNothingThatRunsOrLoads) {
  const support::TemporaryFolder folder;
  for (const auto& [name, run] : all_runs()) {
    const std::string page = page_of(run);
    folder.write(name, page);
    for (const char* word : {"<script", " onload=", " src=", "url(", "@import", "<link"}) {
      EXPECT_EQ(page.find(word), std::string::npos) << name << " has " << word;
    }
  }
  const auto run = support::run_program({"/bin/sh", "-c", "xmllint --noout *.html"},
                                        {.directory = folder.path()});
  EXPECT_EQ(run.exit_code, 0) << run.err;
}

// How many there are.
std::size_t compare_figures(const std::string& page, const std::string& document_text,
                            const std::string& name) {
  static const std::regex figure("<data data-json=\"([^\"]*)\" value=\"([^\"]*)\">");
  const auto document = nlohmann::json::parse(document_text);
  std::size_t count = 0;
  for (std::sregex_iterator it(page.begin(), page.end(), figure), end; it != end; ++it, ++count) {
    const auto& value = document.at(nlohmann::json::json_pointer((*it)[1].str()));
    if (value.is_string()) {
      EXPECT_EQ(value, (*it)[2].str()) << name << ' ' << (*it)[1];
    } else {
      EXPECT_EQ(value.get<double>(), std::stod((*it)[2])) << name << ' ' << (*it)[1];
    }
  }
  return count;
}

TEST(Page, HasTheFiguresOfTheDocument) {
  for (const auto& [name, run] : all_runs()) {
    std::ostringstream stream;
    ASSERT_TRUE(write_document(run.request, run.result, {}, stream));
    const std::size_t count = compare_figures(page_of(run), stream.str(), name);
    EXPECT_GE(count, run.result.given ? 10 : 3) << name;
  }
  // The same where the program has written both.
  const support::TemporaryFolder folder;
  for (const char* name : {"vme_read", "mutex2", "sequencer"}) {
    support::run_program({VOREL_FLOW_BINARY, "-q", support::example(name) + std::string(".g"), "-o",
                          folder.path(name)});
    const std::string base = folder.path(name);
    EXPECT_GE(compare_figures(support::read_text(base + "/report.html"),
                              support::read_text(base + "/report.json"), name),
              20);
  }
}

TEST(Page, HasTracesThatFilesForViewersGiveBack) {
  const auto files = trace_files(bus_controller().result);
  ASSERT_EQ(files.size(), 8);
  for (const TraceFile& file : files) {
    std::ostringstream stream;
    ASSERT_TRUE(formats::write_vcd(file.waveform, "test 1", stream));
    std::string expected = "#0 ";
    for (const auto& row : file.waveform.rows)
      expected += row.name + (row.initial_value ? "+ " : "- ");
    std::size_t time = 0;
    for (const auto& step : file.waveform.steps)
      expected += "#" + std::to_string(++time) + " " + step.label + " ";
    expected += "#" + std::to_string(++time) + " ";
    EXPECT_EQ(support::value_changes(stream.str()), expected) << file.name;
  }
}

// Each page in frames as wide as a telephone and a desk's screen, with all that is folded up open:
// name, width, how wide the content is, what a page has loaded, what stands out of it.
constexpr const char* measuring_script = R"(<pre id="measured"></pre><script>
window.onload = () => {
  document.getElementById('measured').textContent =
      [...document.querySelectorAll('iframe')].map(frame => {
    const page = frame.contentDocument, root = page.documentElement;
    page.querySelectorAll('details').forEach(details => details.open = true);
    const beyond = [...page.querySelectorAll('body *')].filter(element =>
        !element.closest('.table, .pane, pre') &&
        element.getBoundingClientRect().right > root.clientWidth + 1);
    const loaded = frame.contentWindow.performance.getEntriesByType('resource').length;
    return [frame.getAttribute('src'), frame.width, root.scrollWidth, loaded, beyond.length].join(' ');
  }).join(';');
};
</script>)";

TEST(Page, FitsScreensInABrowserWithoutErrors) {
  const char* const browser = "/usr/bin/chromium";
  if (!std::filesystem::exists(browser)) GTEST_SKIP() << "there is no " << browser;
  const support::TemporaryFolder folder;
  std::string frames, expected;
  const auto add = [&](const std::string& name, const std::string& text, bool fits) {
    folder.write(name, text);
    for (const char* width : {"360", "1200"}) {
      frames += "<iframe src=\"" + name + "\" width=\"" + width + "\" height=\"800\"></iframe>\n";
      expected +=
          name + " " + width + " " + (fits ? std::string(width) + " 0 0" : "2000 0 1") + ";";
    }
  };
  for (const auto& [name, make] : examples) add(name, page_of(make()), true);
  // What does not fit is seen.
  add("wide.html", "<!DOCTYPE html><body style='margin:0'><p style='margin:0;width:2000px'>far",
      false);
  expected.pop_back();
  const std::string harness =
      folder.write("harness.html",
                   "<!DOCTYPE html><html><body>\n" + frames + measuring_script + "</body></html>");
  const auto run = support::run_program(
      {browser, "--headless", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
       "--allow-file-access-from-files", "--enable-logging=stderr",
       "--user-data-dir=" + folder.path("profile"), "--dump-dom", "file://" + harness});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_NE(run.out.find("<pre id=\"measured\">" + expected + "</pre>"), std::string::npos)
      << run.out.substr(run.out.find("<pre"));
  EXPECT_EQ(run.err.find("CONSOLE"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace vorel::report
