#include "flow/properties.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "base/input_text.h"
#include "base/messages.h"
#include "base/source_text.h"
#include "configuration/decoding.h"
#include "flow/stg_game.h"
#include "reach/reach_check.h"

namespace vorel::flow {
namespace {

constexpr std::size_t most_events_to_search_shortest = 1000;
constexpr std::string_view blanks = " \t\r\f\v";

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view space = " \t\r\f\v\n";
  const std::size_t first = text.find_first_not_of(space);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(space) - first + 1);
}

bool is_name(std::string_view text) {
  const auto may_stand_in_name = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("-_. ").find(c) != std::string_view::npos;
  };
  return !text.empty() && std::ranges::all_of(text, may_stand_in_name);
}

class PropertiesReader {
 public:
  PropertiesReader(std::string_view text, const std::string& file_name)
      : rest_{text}, file_name_{file_name} {}

  std::optional<std::vector<NamedProperty>> run() {
    while (!rest_.empty()) {
      const std::size_t end = rest_.find('\n');
      const std::string_view line = rest_.substr(0, end);
      rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
      ++line_;
      if (!add_line(line)) return std::nullopt;
    }
    if (!end_paragraph()) return std::nullopt;
    if (properties_.empty()) base::print_warning("no property stands in " + file_name_);
    return std::move(properties_);
  }

 private:
  bool add_line(std::string_view line) {
    const std::size_t first = line.find_first_not_of(blanks);
    if (first == std::string_view::npos) return end_paragraph();
    if (line[first] == '#') {
      if (is_in_paragraph_) properties_.back().text += '\n';
      return true;
    }
    if (!is_in_paragraph_) return begin_paragraph(line);
    properties_.back().text += '\n' + std::string(line);
    return true;
  }

  bool begin_paragraph(std::string_view line) {
    const std::size_t colon = line.find(':');
    const std::string_view name = trimmed(line.substr(0, colon));
    if (colon == std::string_view::npos || !is_name(name))
      return fail(line_, "expected NAME: PROPERTY, found " + base::quoted(trimmed(line)));
    const auto known = std::ranges::find(properties_, name, &NamedProperty::name);
    if (known != properties_.end())
      return fail(line_, "property '" + std::string(name) + "' stands already in line " +
                             std::to_string(known->line));
    // Blanks in place of the name, so that columns are those of the file.
    properties_.push_back({std::string(name),
                           std::string(colon + 1, ' ') + std::string(line.substr(colon + 1)),
                           line_});
    is_in_paragraph_ = true;
    return true;
  }

  bool end_paragraph() {
    if (!std::exchange(is_in_paragraph_, false)) return true;
    const NamedProperty& property = properties_.back();
    if (!trimmed(property.text).empty()) return true;
    return fail(property.line, "nothing behind the name '" + property.name + "'");
  }

  bool fail(std::size_t line, const std::string& what) const {
    base::print_error(what + " (file " + file_name_ + ", line " + std::to_string(line) + ")");
    return false;
  }

  std::string_view rest_;
  const std::string& file_name_;
  std::size_t line_ = 0;
  bool is_in_paragraph_ = false;
  std::vector<NamedProperty> properties_;
};

std::string text_of(const reachlang::ReachValue& value) {
  if (value.is_node() && value.node().name != nullptr) return *value.node().name;
  return to_string(value);
}

void add_witness(const net::StgPrefix& prefix, const reach::Witness& witness,
                 PropertyResult& result) {
  std::vector<const net::StgTransition*> transitions;
  for (const auto* event : configuration::events_of(prefix, witness.trace))
    transitions.push_back(event->transition);
  result.answer = PropertyAnswer::witness;
  result.trace = trace_of(prefix, transitions);
  for (const auto& [name, value] : witness.elements)
    result.values.emplace_back(name, text_of(value));
}

}  // namespace

std::optional<std::vector<NamedProperty>> parse_properties(std::string_view text,
                                                           const std::string& file_name) {
  constexpr std::string_view byte_order_mark = "\xef\xbb\xbf";
  if (text.starts_with(byte_order_mark)) text.remove_prefix(byte_order_mark.size());
  return PropertiesReader(text, file_name).run();
}

std::optional<std::vector<NamedProperty>> read_properties(const std::string& file_name) {
  std::string text;
  if (!base::read_whole_file(file_name, text)) return std::nullopt;
  return parse_properties(text, file_name);
}

PropertyResult check_property(const net::StgPrefix& prefix, const NamedProperty& property,
                              const sat::CnfParams& formula) {
  PropertyResult result;
  result.name = property.name;
  result.text = trimmed(property.text);
  configuration::SearchOptions options;
  options.encoding.formula = formula;
  options.min_cost = prefix.events.size() <= most_events_to_search_shortest;
  const std::string text =
      std::string(property.line > 0 ? property.line - 1 : 0, '\n') + property.text;

  base::MessageCapture messages;
  reach::ReachCheck<net::StgPrefix> check(prefix, options, text,
                                          configuration::Enabledness::via_dummies);
  if (!messages.has_failed()) check.run();
  if (!messages.has_failed()) {
    const auto witness = check.witness();
    if (witness) add_witness(prefix, *witness, result);
    if (!witness && !messages.has_failed()) result.answer = PropertyAnswer::holds;
  }
  for (const base::Message& message : messages.take())
    result.message += (result.message.empty() ? "" : "; ") + message.text;
  return result;
}

}  // namespace vorel::flow
