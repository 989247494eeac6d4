#include "resolution/transformation.h"

#include <cassert>
#include <compare>
#include <cstdint>
#include <span>
#include <utility>

namespace vorel::resolution {
namespace {

using net::Concurrent;
using net::General;
using net::SeqAfter;
using net::SeqBefore;

// All that tells two insertions of one kind apart, as numbers.
std::vector<std::uint32_t> key_of(const net::StgTransition& base,
                                  const std::vector<const net::StgPlace*>& places) {
  std::vector<std::uint32_t> key{base.index};
  for (const net::StgPlace* place : places) key.push_back(place->index);
  return key;
}
std::vector<std::uint32_t> key_of(const SeqBefore& insertion) {
  return key_of(*insertion.target, insertion.places);
}
std::vector<std::uint32_t> key_of(const SeqAfter& insertion) {
  return key_of(*insertion.source, insertion.places);
}
std::vector<std::uint32_t> key_of(const Concurrent& insertion) {
  return {insertion.source->index, insertion.marked ? 1u : 0u, insertion.target->index};
}

// A list that begins like another comes after it.
std::vector<std::uint32_t> key_of(const General& insertion) {
  std::vector<std::uint32_t> key;
  for (const auto* source : insertion.sources) key.push_back(source->index + 1);
  key.push_back(0);
  for (const bool star : insertion.starred) key.push_back(star ? 1 : 0);
  for (const auto* target : insertion.targets) key.push_back(target->index + 1);
  return key;
}

std::strong_ordering compare(const net::Insertion& a, const net::Insertion& b) {
  if (const auto by_kind = a.index() <=> b.index(); by_kind != 0) return by_kind;
  const auto key = [](const net::Insertion& insertion) {
    return std::visit([](const auto& kind) { return key_of(kind); }, insertion);
  };
  return key(a) <=> key(b);
}

// One name as it is, several in braces.
template <class Element>
std::string names(const std::vector<const Element*>& elements) {
  assert(!elements.empty());
  if (elements.size() == 1) return elements.front()->name;
  std::string text;
  for (const Element* element : elements) text += (text.empty() ? "{" : ",") + element->name;
  return text + "}";
}

// Nothing for all of them.
std::string names_within(const std::vector<const net::StgPlace*>& places,
                         std::span<net::StgPlace* const> all) {
  return places.size() == all.size() ? std::string{} : names(places);
}

std::string text_of(const SeqBefore& insertion) {
  return names_within(insertion.places, insertion.target->preset) + "|" + insertion.target->name;
}
std::string text_of(const SeqAfter& insertion) {
  return insertion.source->name + "|" + names_within(insertion.places, insertion.source->postset);
}
std::string text_of(const Concurrent& insertion) {
  return insertion.source->name + (insertion.marked ? " -||*-> " : " -||-> ") +
         insertion.target->name;
}

std::string text_of(const General& insertion) {
  std::string text;
  for (std::size_t i = 0; i < insertion.sources.size(); ++i) {
    text += (i == 0 ? "{" : ",") + insertion.sources[i]->name;
    if (insertion.starred[i]) text += '*';
  }
  text += "}-$->";
  for (std::size_t i = 0; i < insertion.targets.size(); ++i) {
    text += (i == 0 ? "{" : ",") + insertion.targets[i]->name;
  }
  return text + "}";
}

}  // namespace

bool insertion_less(const net::Insertion& a, const net::Insertion& b) { return compare(a, b) < 0; }

bool insertion_equal(const net::Insertion& a, const net::Insertion& b) {
  return compare(a, b) == 0;
}

std::string to_text(const net::Insertion& insertion) {
  return std::visit([](const auto& kind) { return text_of(kind); }, insertion);
}

std::string to_text(const Reduction& reduction) {
  return names(reduction.sources) + (reduction.marked ? " -*-> " : " --> ") +
         reduction.target->name;
}

}  // namespace vorel::resolution
