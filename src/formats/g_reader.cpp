#include "formats/g_reader.h"

#include <algorithm>
#include <cassert>
#include <set>
#include <utility>
#include <vector>

#include "formats/g_graph.h"
#include "formats/g_initial_state.h"
#include "formats/g_words.h"

namespace vorel::formats {
namespace {

class GReader {
 public:
  GReader(std::string_view text, const std::string& name)
      : source_{text, name}, words_{source_}, graph_{source_}, initial_state_{source_, graph_} {}

  std::optional<net::Stg> run() {
    while (!has_ended_ && words_.next_line(line_)) {
      if (!take_line()) return std::nullopt;
    }
    if (words_.failed() || !is_complete()) return std::nullopt;
    graph_.connect();
    if (!initial_state_.put_tokens(marked_)) return std::nullopt;
    for (const std::vector<GWord>& values : values_) {
      if (!initial_state_.set_values(values)) return std::nullopt;
    }
    warn();
    return graph_.finish();
  }

 private:
  using Taker = bool (GReader::*)();

  // What is done with the line that starts with the keyword; null if it is not known.
  static Taker taker(std::string_view keyword) {
    static constexpr std::pair<std::string_view, Taker> table[] = {
        {".inputs", &GReader::take_signals<net::SignalKind::input>},
        {".outputs", &GReader::take_signals<net::SignalKind::output>},
        {".internal", &GReader::take_signals<net::SignalKind::internal>},
        {".dummy", &GReader::take_signals<net::SignalKind::dummy>},
        {".graph", &GReader::take_graph},
        {".marking", &GReader::take_marking},
        {".marking=", &GReader::take_marking},
        {".initial", &GReader::take_initial},
        {".initial.state", &GReader::take_values},
        {".initial_state", &GReader::take_values},
        {".init_state", &GReader::take_values},
        {".init_values", &GReader::take_values},
        {".end", &GReader::take_end},
        {".model", &GReader::skip},
        {".name", &GReader::skip},
        {".capacity", &GReader::skip},
        {".slowenv", &GReader::skip},
        {".coords", &GReader::skip_block},
        {".time", &GReader::skip_block},
        {".delays", &GReader::skip_block},
    };
    const auto row = std::ranges::find(table, keyword, &std::pair<std::string_view, Taker>::first);
    return row == std::end(table) ? nullptr : row->second;
  }

  bool take_line() {
    assert(!line_.empty() && !line_.front().text.empty());
    const GWord& head = line_.front();
    if (!head.text.starts_with('.')) {
      if (in_graph_) return graph_.add_arcs(line_);
      return source_.report_expected(head.offset, "a line that starts with '.'", head.text);
    }
    in_graph_ = false;
    if (const auto take = taker(head.text)) return (this->*take)();
    warn_of_unknown(head);
    return skip_block();
  }

  template <net::SignalKind kind>
  bool take_signals() {
    if (has_graph_) {
      return source_.report_syntax_error(line_[0].offset, "signals are declared before .graph",
                                         line_[0].text);
    }
    return std::ranges::all_of(line_.begin() + 1, line_.end(),
                               [this](const GWord& word) { return graph_.add_signal(word, kind); });
  }

  bool take_graph() { return in_graph_ = has_graph_ = true; }
  bool take_end() { return end_at(0); }
  bool skip() { return true; }

  bool skip_block() {
    words_.skip_rows();
    return true;
  }

  // At once, as it may explain an error to come; so files may have any number of them, and each
  // keyword is told once.
  void warn_of_unknown(const GWord& keyword) {
    constexpr std::size_t most = 10;
    if (unknown_.size() > most || !unknown_.insert(keyword.text).second) return;
    if (unknown_.size() > most) {
      source_.warn(keyword.offset, "more unknown lines are ignored, as are all below them");
    } else {
      source_.warn(keyword.offset, "the line " + base::quoted(keyword.text) +
                                       " is unknown and ignored, as are those below it up to the "
                                       "next keyword");
    }
  }

  // ["="] {NAME ...}, with or without blanks around the braces, over any number of lines.
  bool take_marking() {
    line_.erase(line_.begin());
    if (line_.empty() && !words_.next_line(line_)) return fail_at_end("'{'");
    if (line_.front().text.starts_with('=')) {
      drop_first_character();
      if (line_.empty() && !words_.next_line(line_)) return fail_at_end("'{'");
    }
    if (!line_.front().text.starts_with('{')) {
      return source_.report_expected(line_.front().offset, "'{'", line_.front().text);
    }
    drop_first_character();
    for (;;) {
      for (std::size_t i = 0; i < line_.size(); ++i) {
        if (takes_last_mark(line_[i])) return ends_line_after(i);
      }
      if (!words_.next_line(line_)) return fail_at_end("'}'");
      if (line_.front().text == ".end") {
        return source_.report_expected(line_.front().offset, "'}'", ".end");
      }
    }
  }

  void drop_first_character() {
    GWord& word = line_.front();
    assert(!word.text.empty());
    word.text.remove_prefix(1);
    ++word.offset;
    if (word.text.empty()) line_.erase(line_.begin());
  }

  // True if the word ends with the brace that closes the marking. A brace of a name has a partner.
  bool takes_last_mark(GWord word) {
    const bool closes = word.text.ends_with('}') &&
                        std::ranges::count(word.text, '}') > std::ranges::count(word.text, '{');
    if (closes) word.text.remove_suffix(1);
    if (!word.text.empty()) marked_.push_back(word);
    return closes;
  }

  bool ends_line_after(std::size_t position) {
    assert(position < line_.size());
    if (position + 1 == line_.size()) return true;
    const GWord& next = line_[position + 1];
    if (next.text == ".end") return end_at(position + 1);
    return source_.report_expected(next.offset, "the end of the line", next.text);
  }

  // With the number of the word in the line.
  bool end_at(std::size_t position) {
    assert(line_[position].text == ".end");
    has_ended_ = true;
    behind_end_ = position + 1 < line_.size() ? line_[position + 1].offset : words_.next_offset();
    return true;
  }

  bool take_values() {
    values_.emplace_back(line_.begin() + 1, line_.end());
    return true;
  }

  // ".initial state" is the same in two words.
  bool take_initial() {
    if (line_.size() > 1 && line_[1].text == "state") line_.erase(line_.begin());
    return take_values();
  }

  bool fail_at_end(std::string_view expected) const {
    return !words_.failed() && source_.report_expected(source_.size(), expected, {});
  }

  bool is_complete() const { return has_graph_ || fail_at_end(".graph"); }

  void warn() const {
    if (!has_ended_) source_.warn(source_.size(), "the last line is not .end");
    if (behind_end_ < source_.size()) source_.warn(behind_end_, "what follows .end is ignored");
  }

  const base::SourceText source_;
  GWords words_;
  GGraph graph_;
  GInitialState initial_state_;
  std::vector<GWord> line_;
  std::vector<GWord> marked_;
  std::vector<std::vector<GWord>> values_;
  std::set<std::string_view> unknown_;  // keywords
  bool in_graph_ = false;               // lines without a keyword are arcs
  bool has_graph_ = false;
  bool has_ended_ = false;
  std::size_t behind_end_ = source_.size();  // where text that is ignored starts
};

}  // namespace

std::optional<net::Stg> read_g_text(std::string_view text, const std::string& name) {
  return GReader(text, name).run();
}

}  // namespace vorel::formats
