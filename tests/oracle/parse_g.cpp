#include "oracle/parse_g.h"

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <vector>

#include "oracle/net_builder.h"

namespace vorel::oracle {
namespace {

using Words = std::vector<std::string>;

Words split(const std::string& line) {
  std::istringstream stream(line.substr(0, line.find('#')));
  return {std::istream_iterator<std::string>(stream), {}};
}

class GParser {
 public:
  std::optional<Stg> run(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      const Words words = split(line);
      if (words.empty()) continue;
      if (words.front() == ".end") return finish();
      if (!take_line(words)) return std::nullopt;
    }
    return std::nullopt;  // no .end
  }

 private:
  using Names = std::vector<std::string>;
  struct Node {
    Names preset, postset;  // names of places; used for transitions only
  };

  bool take_line(const Words& words) {
    static const std::map<std::string, SignalKind> kinds{{".inputs", SignalKind::input},
                                                         {".outputs", SignalKind::output},
                                                         {".internal", SignalKind::internal},
                                                         {".dummy", SignalKind::dummy}};
    const std::string& head = words.front();
    if (head == ".model") return words.size() == 2;
    if (const auto kind = kinds.find(head); kind != kinds.end()) {
      for (std::size_t i = 1; i < words.size(); ++i) signals_[words[i]] = kind->second;
      return true;
    }
    if (head == ".graph") return in_graph_ = true;
    if (head == ".marking") return take_marking({words.begin() + 1, words.end()});
    if (head.front() == '.' || !in_graph_) return false;
    for (std::size_t i = 1; i < words.size(); ++i) {
      if (!take_arc(head, words[i])) return false;
    }
    return true;
  }

  // { NAME ... }
  bool take_marking(const Words& words) {
    if (words.size() < 2 || words.front() != "{" || words.back() != "}") return false;
    marked_.assign(words.begin() + 1, words.end() - 1);
    return true;
  }

  static std::string signal_of(const std::string& node) {
    return node.substr(0, node.find_first_of("+-~/"));
  }
  bool is_transition(const std::string& node) const { return signals_.contains(signal_of(node)); }

  bool take_arc(const std::string& from, const std::string& to) {
    const bool from_transition = is_transition(from), to_transition = is_transition(to);
    if (!from_transition && !to_transition) return false;
    const std::string place = !from_transition ? from
                              : !to_transition ? to
                                               : "<" + from + "," + to + ">";
    if (from_transition) transitions_[from].postset.push_back(place);
    if (to_transition) transitions_[to].preset.push_back(place);
    return true;
  }

  static Sign sign_of(const std::string& node) {
    const std::size_t end = signal_of(node).size();
    if (end == node.size()) return Sign::toggle;
    return node[end] == '+' ? Sign::plus : node[end] == '-' ? Sign::minus : Sign::toggle;
  }

  Stg finish() {
    NetBuilder<Stg> builder;
    std::map<std::string, Signal*> built;
    for (const auto& [name, kind] : signals_) built[name] = &builder.add_signal(name, kind);
    for (const auto& [name, arcs] : transitions_) {
      builder.add_transition(name).label(*built[signal_of(name)], sign_of(name));
      for (const std::string& place : arcs.preset) builder.consume(place);
      for (const std::string& place : arcs.postset) builder.produce(place);
    }
    for (const std::string& name : marked_) builder.mark(name);
    return builder.finish();
  }

  bool in_graph_ = false;
  std::map<std::string, SignalKind> signals_;
  std::map<std::string, Node> transitions_;
  Names marked_;
};

class LlNetParser {
 public:
  std::optional<Net> run(const std::string& text) {
    std::istringstream lines(text);
    std::string section;
    for (std::string line; std::getline(lines, line);) {
      if (is_heading(line)) {
        section = line;
      } else if (!section.empty() && !line.empty() && !take_line(section, line)) {
        return std::nullopt;
      }
    }
    if (section.empty()) return std::nullopt;
    sort_net(net_);
    return std::move(net_);
  }

 private:
  static bool is_heading(const std::string& line) {
    const auto is_capital = [](char c) { return c >= 'A' && c <= 'Z'; };
    return line.size() == 2 && is_capital(line[0]) && is_capital(line[1]);
  }

  bool take_line(const std::string& section, const std::string& line) {
    if (section == "PL") return take_place(line);
    if (section == "TR") return take_transition(line);
    if (section == "TP") return take_arc(line, '<');
    if (section == "PT") return take_arc(line, '>');
    return true;  // texts and drawings
  }

  // [NUMBER] "NAME" ATTRIBUTES, in which M1 says that the place is marked.
  bool take_place(const std::string& line) {
    const auto name = name_in(line);
    if (!name) return false;
    auto& place = append_new(net_.places);
    place.name = *name;
    place.initial_marking = without_quoted(line).find("M1") == std::string::npos ? 0 : 1;
    return true;
  }

  bool take_transition(const std::string& line) {
    const auto name = name_in(line);
    if (!name) return false;
    append_new(net_.transitions).name = *name;
    return true;
  }

  // TRANSITION<PLACE or PLACE>TRANSITION, then attributes.
  bool take_arc(const std::string& line, char separator) {
    std::istringstream stream(line);
    std::size_t left = 0, right = 0;
    char between = '\0';
    if (!(stream >> left >> between >> right) || between != separator) return false;
    const std::size_t transition = separator == '<' ? left : right;
    const std::size_t place = separator == '<' ? right : left;
    if (transition < 1 || transition > net_.transitions.size()) return false;
    if (place < 1 || place > net_.places.size()) return false;
    if (separator == '<') {
      add_arc(*net_.transitions[transition - 1], *net_.places[place - 1]);
    } else {
      add_arc(*net_.places[place - 1], *net_.transitions[transition - 1]);
    }
    return true;
  }

  static std::optional<std::string> name_in(const std::string& line) {
    const std::size_t open = line.find('"');
    const std::size_t close = open == std::string::npos ? open : line.find('"', open + 1);
    if (close == std::string::npos) return std::nullopt;
    return line.substr(open + 1, close - open - 1);
  }

  static std::string without_quoted(const std::string& line) {
    std::string rest;
    bool quoted = false;
    for (const char c : line) {
      if (c == '"') quoted = !quoted;
      if (!quoted) rest += c;
    }
    return rest;
  }

  Net net_;
};

}  // namespace

std::optional<Stg> parse_g(const std::string& text) { return GParser().run(text); }

std::optional<Net> parse_ll_net(const std::string& text) { return LlNetParser().run(text); }

std::optional<std::string> read_file(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace vorel::oracle
