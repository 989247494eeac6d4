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
  std::optional<net::Stg> run(const std::string& text) {
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
    static const std::map<std::string, net::SignalKind> kinds{
        {".inputs", net::SignalKind::input},
        {".outputs", net::SignalKind::output},
        {".internal", net::SignalKind::internal},
        {".dummy", net::SignalKind::dummy}};
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

  static net::Sign sign_of(const std::string& node) {
    const std::size_t end = signal_of(node).size();
    if (end == node.size()) return net::Sign::toggle;
    return node[end] == '+'   ? net::Sign::plus
           : node[end] == '-' ? net::Sign::minus
                              : net::Sign::toggle;
  }

  net::Stg finish() {
    NetBuilder<net::Stg> builder;
    std::map<std::string, net::Signal*> built;
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
  std::map<std::string, net::SignalKind> signals_;
  std::map<std::string, Node> transitions_;
  Names marked_;
};

}  // namespace

std::optional<net::Stg> parse_g(const std::string& text) { return GParser().run(text); }

std::optional<std::string> read_file(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string{std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace vorel::oracle
