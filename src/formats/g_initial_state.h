// formats/g_initial_state.h - the tokens and initial values that a .g text tells.
// Here:      the words between the braces of .marking, and those behind .initial.state.
// Not here:  the net itself (formats/g_graph.h).
// Both are understood when all arcs are known, wherever in the text they stand.
#pragma once

#include <utility>
#include <vector>

#include "formats/g_graph.h"

namespace vorel::formats {

class GInitialState {
 public:
  GInitialState(const base::SourceText& source, GGraph& graph) : source_{source}, graph_{graph} {}

  // The words of the marking: "PLACE", "<TRANSITION,TRANSITION>", or one of these with "=TOKENS".
  // There may be commas between them instead of blanks, too.
  bool put_tokens(const std::vector<GWord>& words);

  // The words of one line: each "a", "!a", "a=0", "a=1" or "a=?"; or only one, with "0", "1" or "?"
  // for each signal that is not a dummy, in the order of their declarations. False after an error.
  bool set_values(const std::vector<GWord>& words);

 private:
  bool is_one_place(std::string_view text) const;
  bool put_tokens_on_each(const GWord& word);
  bool put_tokens(const GWord& word);
  bool put_tokens(const GWord& word, net::StgPlace& place, std::string_view tokens);
  net::StgPlace* place_to_mark(const GWord& word, std::string_view name);
  bool twins_are_settled() const;

  bool set_value(const GWord& word);
  bool set_value(const GWord& word, std::string_view name, char digit);
  bool set_value(const GWord& word, net::Signal& signal, char digit);
  bool set_all_values(const GWord& word);

  const base::SourceText& source_;
  GGraph& graph_;
  std::vector<std::pair<GWord, net::StgPlace*>> marked_with_twin_;
  base::RepeatedFault isolated_places_;
};

}  // namespace vorel::formats
