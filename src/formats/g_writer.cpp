#include "formats/g_writer.h"

#include <array>
#include <cassert>
#include <string_view>
#include <vector>

#include "base/text_sink.h"
#include "formats/g_names.h"
#include "formats/mci_writer.h"
#include "formats/save_file.h"

namespace vorel::formats {
namespace {

struct KindKeyword {
  net::SignalKind kind;
  std::string_view keyword;
};
constexpr std::array<KindKeyword, net::signal_kind_count> kind_keywords = {
    {{net::SignalKind::input, ".inputs"},
     {net::SignalKind::output, ".outputs"},
     {net::SignalKind::internal, ".internal"},
     {net::SignalKind::dummy, ".dummy"}}};

class GText {
 public:
  GText(const net::Stg& stg, const GNames& names, GInitialValues values, std::ostream& stream)
      : stg_{stg}, names_{names}, values_{values}, sink_{stream} {
    assert(names.places.size() == stg.places.size());
    assert(names.transitions.size() == stg.transitions.size());
  }

  bool run() {
    for (const auto& [kind, keyword] : kind_keywords) add_signals(kind, keyword);
    sink_ << "\n\n.graph";
    for (const auto& place : stg_.places) add_line_of(*place);
    for (const auto& transition : stg_.transitions) add_line_of(*transition);
    if (values_ == GInitialValues::of_toggles) add_initial_values();
    sink_ << "\n\n.marking {";
    for (const auto& place : stg_.places) add_tokens_of(*place);
    sink_ << " }\n.end\n";
    return sink_.finish();
  }

 private:
  bool is_implicit(const net::StgPlace& place) const { return names_.places[place.index].empty(); }
  std::string_view name_of(const net::StgPlace& place) const { return names_.places[place.index]; }
  std::string_view name_of(const net::StgTransition& transition) const {
    return names_.transitions[transition.index];
  }

  void add_signals(net::SignalKind kind, std::string_view keyword) {
    bool is_first = true;
    for (const auto& signal : stg_.signals) {
      if (signal->kind != kind) continue;
      if (is_first) sink_ << '\n' << keyword;
      is_first = false;
      sink_ << ' ' << signal->name;
    }
  }

  void add_line_of(const net::StgPlace& place) {
    if (is_implicit(place) || place.postset.empty()) return;
    sink_ << '\n' << name_of(place);
    for (const net::StgTransition* consumer : place.postset) sink_ << ' ' << name_of(*consumer);
  }

  void add_line_of(const net::StgTransition& transition) {
    if (transition.postset.empty()) return;
    sink_ << '\n' << name_of(transition);
    for (const net::StgPlace* place : transition.postset) {
      sink_ << ' ' << (is_implicit(*place) ? name_of(*place->postset.front()) : name_of(*place));
    }
  }

  void add_initial_values() {
    std::vector<bool> only_toggles(stg_.signals.size(), true);
    for (const auto& transition : stg_.transitions)
      if (transition->sign != net::Sign::toggle) only_toggles[transition->signal->index] = false;
    bool is_first = true;
    for (const auto& signal : stg_.signals) {
      if (signal->initial_value == net::unknown_value || !only_toggles[signal->index]) continue;
      if (is_first) sink_ << "\n\n.initial.state";
      is_first = false;
      sink_ << ' ' << signal->name << '=' << std::uint32_t{signal->initial_value};
    }
  }

  void add_tokens_of(const net::StgPlace& place) {
    if (place.initial_marking == 0) return;
    if (is_implicit(place)) {
      sink_ << " <" << name_of(*place.preset.front()) << ',' << name_of(*place.postset.front())
            << '>';
    } else {
      sink_ << ' ' << name_of(place);
    }
    if (place.initial_marking > 1) sink_ << '=' << place.initial_marking;
  }

  const net::Stg& stg_;
  const GNames& names_;
  const GInitialValues values_;
  base::TextSink sink_;
};

}  // namespace

bool write_g(const net::Stg& stg, std::ostream& stream, GInitialValues values) {
  const auto names = choose_g_names(stg);
  return names && GText(stg, *names, values, stream).run();
}

bool save_g(const net::Stg& stg, const std::string& file_name) {
  return save_file(file_name,
                   [&stg](base::OutputFile& file) { return write_g(stg, file.stream()); });
}

bool save_mci(const net::StgPrefix& prefix, const std::string& file_name) {
  return save_file(file_name, [&prefix](base::OutputFile& file) {
    return write_stg_mci(prefix, file.stream());
  });
}

bool save_mci(const net::NetPrefix& prefix, const std::string& file_name) {
  return save_file(file_name,
                   [&prefix](base::OutputFile& file) { return write_mci(prefix, file.stream()); });
}

bool save_g_and_mci(const net::StgPrefix& prefix, const std::string& name) {
  return save_file(name + ".g", [&](base::OutputFile& file) {
    return write_g(prefix, file.stream()) && save_mci(prefix, name + ".mci");
  });
}

}  // namespace vorel::formats
