// tests/support/value_changes.h - what a value change dump says, read by its words.
#pragma once

#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

namespace vorel::support {

// The times and the edges of one-bit wires: "#0 a- b- #1 a+ #2 ".
inline std::string value_changes(const std::string& dump) {
  std::map<std::string, std::string> name_of;
  std::istringstream words(dump);
  std::string edges;
  for (std::string word; words >> word;) {
    if (word == "$var") {
      std::string type, size, code, name, end;
      words >> type >> size >> code >> name >> end;
      if (type + size + end != "wire1$end") throw std::runtime_error("no wire: " + name);
      if (!name_of.emplace(code, name).second) throw std::runtime_error("twice: " + code);
    } else if (word[0] == '#') {
      edges += word + ' ';
    } else if ((word[0] == '0' || word[0] == '1') && name_of.contains(word.substr(1))) {
      edges += name_of.at(word.substr(1)) + (word[0] == '1' ? "+ " : "- ");
    }
  }
  return edges;
}

}  // namespace vorel::support
