// formats/g_graph.h - the signals, nodes and arcs that a .g text tells piece by piece.
// Here:      what a word in a line of arcs names, arcs, the places between two transitions.
// Not here:  lines, keywords (formats/g_reader.h), tokens, values (formats/g_initial_state.h).
//
// A word names a transition if what precedes its sign and instance number is a declared signal, and
// a place otherwise. Words that differ name different nodes: "a+", "a+/0" and "a+/1" are three.
// Behind the first word of a line "p=1" and "p(1)" tell an arc with its weight, which may only
// be 1. Everything that fails has reported why.
#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "formats/g_words.h"
#include "formats/pnml_ids.h"
#include "net/net.h"

namespace vorel::formats {

class GGraph {
 public:
  explicit GGraph(const base::SourceText& source) : source_{source} {}

  bool add_signal(const GWord& word, net::SignalKind kind);
  // Arcs from the first word to each of the others.
  bool add_arcs(const std::vector<GWord>& words);
  // To be called once, when all arcs are known. What is asked for below is known from then on.
  void connect();

  // By a name that may be "<TRANSITION,TRANSITION>"; null if there is no such place. A place that
  // is written by a name of this form is preferred to the one between the two transitions, which
  // is the twin of it then.
  net::StgPlace* place_named(std::string_view name) const;
  net::StgPlace* twin_of(net::StgPlace* place) const;
  // A place that no arc has named. Null after the error that the word cannot name a place.
  net::StgPlace* add_isolated_place(const GWord& word);

  // Null if there is none.
  net::Signal* signal_named(std::string_view name) const;
  // In the order of their declarations.
  const base::OwnedList<net::Signal>& signals() const { return stg_.signals; }

  // To be called last. Takes the STG out, sorted.
  net::Stg finish();

 private:
  struct Node {
    net::StgPlace* place;  // either of these is null
    net::StgTransition* transition;
  };
  struct Arc {
    std::uint32_t source, target;  // numbers of nodes
    std::size_t offset;
  };

  bool is_weighted(const GWord& word) const;
  bool take_weight(GWord& word) const;
  const Node* node_named(const GWord& word);
  bool add_node(const GWord& word);
  bool add_transition(const GWord& word, net::Signal& label, std::string_view rest);
  net::StgPlace& add_place(const GWord& word);
  void connect(const Arc& arc);
  bool has_transition(std::string_view name) const;
  void warn_of_instances_zero();
  net::StgPlace& add_implicit_place(const net::StgTransition& source,
                                    const net::StgTransition& target);

  const base::SourceText& source_;
  net::Stg stg_;
  pnml::IdTable signal_ids_;  // numbers are positions in stg_.signals, which is sorted at the end
  pnml::IdTable node_ids_;
  std::vector<Node> nodes_;
  std::vector<Arc> arcs_;
  pnml::IdTable implicit_ids_;
  std::vector<net::StgPlace*> implicit_places_;
  // From a place written by name to the one between transitions that would have this name too.
  std::unordered_map<const net::StgPlace*, net::StgPlace*> twins_;
  base::RepeatedFault repeated_arcs_, signed_dummies_;
  std::vector<GWord> instances_zero_;  // transitions written like "a+/0"
};

}  // namespace vorel::formats
